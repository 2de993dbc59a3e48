// Counts and finds one byte value in a run of bytes, as fast as memory can be read.
#pragma once

#include <cstddef>
#include <cstdint>

namespace text::engine {

std::int64_t countByte(const char* bytes, std::size_t length, char value);

// The index behind the nth (from 1) `value` in the run. Precondition: the run holds at least n of them, nth >= 1.
std::size_t behindNthByte(const char* bytes, std::size_t length, char value, std::int64_t nth);

}   // namespace text::engine
