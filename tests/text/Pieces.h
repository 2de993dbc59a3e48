// Snapshots in small blocks, and random texts full of trouble, for the tests of what reads snapshots.
#pragma once

#include <ostream>
#include <random>
#include <string>

#include "text/store/Snapshot.h"

// The text in blocks of `block` bytes, so that characters, lines and matches lie across their borders.
inline text::Snapshot inPieces(const std::string& bytes, std::size_t block, text::LineMode mode = text::LineMode::lf) {
  text::SnapshotBuilder builder(mode);
  for (std::size_t i = 0; i < bytes.size(); i += block) builder.append(bytes.substr(i, block));
  return builder.finish();
}

// A text of `count` parts taken from `alphabet` at random.
template <class Alphabet>
std::string randomText(std::mt19937& random, const Alphabet& alphabet, std::size_t count) {
  std::string out;
  for (std::size_t i = 0; i < count; ++i) out += std::data(alphabet)[random() % std::size(alphabet)];
  return out;
}

namespace text {
inline void PrintTo(const ByteRange& r, std::ostream* out) { *out << r.begin.value << ".." << r.end.value; }
inline void PrintTo(const ByteOffset& o, std::ostream* out) { *out << o.value; }
}   // namespace text

// Offsets as plain numbers, for short comparisons.
inline text::ByteOffset off(std::int64_t n) { return text::ByteOffset(n); }
inline text::ByteRange rng(std::int64_t b, std::int64_t e) { return {off(b), off(e)}; }
