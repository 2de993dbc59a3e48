// The four units of positions in a text. Each is its own type, so that they cannot be mixed up; conversions are named functions
// (Snapshot::lineAt, columnOf, displayColumn ...). All count from 0 and have 64 bits.
#pragma once

#include <compare>
#include <cstdint>

namespace text {

template <class Tag>
struct Unit {
  std::int64_t value = 0;

  constexpr Unit() = default;
  constexpr explicit Unit(std::int64_t v) : value(v) {}
  constexpr auto operator<=>(const Unit&) const = default;
  constexpr Unit operator+(std::int64_t n) const { return Unit(value + n); }
  constexpr Unit operator-(std::int64_t n) const { return Unit(value - n); }
  constexpr std::int64_t operator-(Unit other) const { return value - other.value; }
  constexpr Unit& operator+=(std::int64_t n) {
    value += n;
    return *this;
  }
  constexpr Unit& operator-=(std::int64_t n) {
    value -= n;
    return *this;
  }
  constexpr Unit& operator++() {
    ++value;
    return *this;
  }
  constexpr Unit& operator--() {
    --value;
    return *this;
  }
};

using ByteOffset = Unit<struct ByteOffsetTag>;         // bytes from the start of the text
using LineNo = Unit<struct LineNoTag>;                 // lines from the top
using CharColumn = Unit<struct CharColumnTag>;         // UTF-16 units from the start of a line (what QString counts);
                                                       // a byte that is not valid UTF-8 counts as one
using DisplayColumn = Unit<struct DisplayColumnTag>;   // cells from the start of a line: tabs expanded, wide
                                                       // characters two cells, combining marks none

// A half-open range of bytes [begin, end), begin <= end.
struct ByteRange {
  ByteOffset begin, end;
  constexpr std::int64_t length() const { return end - begin; }
  constexpr bool empty() const { return begin == end; }
  constexpr bool operator==(const ByteRange&) const = default;
};

}   // namespace text
