// Counting and finding one byte value in a run of bytes, at the speed of reading memory.
#pragma once

#include <cstddef>
#include <cstdint>

namespace text::engine {

std::int64_t countByte(const char* bytes, std::size_t length, char value);

// The index just behind the nth (1-based) `value` in the run. Precondition: the run holds at least nth of them, nth >= 1.
std::size_t behindNthByte(const char* bytes, std::size_t length, char value, std::int64_t nth);

}   // namespace text::engine
