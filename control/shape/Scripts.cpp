#include "control/shape/Scripts.h"

#include <algorithm>
#include <iterator>

namespace shape {

namespace {

struct Block {
  char32_t first, last;
  bool joins;
};

// Blocks of Unicode, ascending. Hebrew, Thai and Lao letters stand each for itself; their marks belong to their cluster.
// clang-format off
constexpr Block kBlocks[] = {
    {0x0590, 0x05FF, false}, {0x0600, 0x077F, true}, {0x0780, 0x07BF, false}, {0x07C0, 0x07FF, true}, {0x0800, 0x083F, false},
    {0x0840, 0x08FF, true},    // Mandaic, Syriac, Arabic
    {0x0900, 0x0DFF, true},    // Devanagari to Sinhala
    {0x0F00, 0x109F, true},    // Tibetan, Myanmar
    {0x1700, 0x18AF, true},    // Tagalog to Khmer, Mongolian
    {0x1900, 0x194F, true}, {0x1A00, 0x1AAF, true}, {0x1B00, 0x1C4F, true}, {0x1CD0, 0x1CFF, true},
    {0xA800, 0xA82F, true}, {0xA840, 0xA8FF, true}, {0xA930, 0xA9FF, true}, {0xAA00, 0xAA7F, true}, {0xAAE0, 0xAAFF, true},
    {0xABC0, 0xABFF, true},
    {0xFB1D, 0xFB4F, false}, {0xFB50, 0xFDFF, false}, {0xFE70, 0xFEFE, false},   // presentation forms: already shaped
    {0x10800, 0x10ABF, false}, {0x10AC0, 0x10AFF, true}, {0x10B00, 0x10B7F, false}, {0x10B80, 0x10BAF, true},
    {0x10C00, 0x10CFF, false}, {0x10D00, 0x10D3F, true}, {0x10D40, 0x10F2F, false}, {0x10F30, 0x10FDF, true},
    {0x10FE0, 0x10FFF, false},
    {0x11000, 0x11C6F, true}, {0x11D00, 0x11EFF, true},
    {0x1E800, 0x1E8FF, false}, {0x1E900, 0x1E95F, true}, {0x1E960, 0x1EFFF, false}};
// clang-format on

const Block* blockOf(char32_t code) {
  static_assert(kBlocks[0].first == kFirstSpecial);
  if (code < kFirstSpecial) return nullptr;
  const auto it =
      std::upper_bound(std::begin(kBlocks), std::end(kBlocks), code, [](char32_t c, const Block& b) { return c < b.first; });
  const Block& block = *std::prev(it);
  return code <= block.last ? &block : nullptr;
}

}   // namespace

bool isSpecial(char32_t code) { return blockOf(code) != nullptr; }

bool joins(char32_t code) {
  const Block* const block = blockOf(code);
  return block && block->joins && (QChar::isLetter(code) || QChar::isMark(code));
}

bool isRightToLeft(char32_t code) {
  const QChar::Direction direction = QChar::direction(code);
  return direction == QChar::DirR || direction == QChar::DirAL;
}

bool turns(char32_t code) { return code >= kFirstSpecial && (isRightToLeft(code) || QChar::direction(code) == QChar::DirAN); }

QChar::Script scriptOf(char32_t code) {
  return code == 0x640 ? QChar::Script_Arabic : QChar::script(code);   // a stretch of a joint belongs to several scripts
}

}   // namespace shape
