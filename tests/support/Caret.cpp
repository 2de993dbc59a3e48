#include "tests/support/Caret.h"

#include <algorithm>

namespace {

constexpr std::string_view kVirtual = "·";

// Takes the marker at `at` and the virtual cells before it out of the text.
std::int64_t takeOut(std::string& bytes, std::size_t& at) {
  bytes.erase(at, 1);
  std::int64_t cells = 0;
  while (std::string_view(bytes).substr(0, at).ends_with(kVirtual)) {
    at -= kVirtual.size();
    bytes.erase(at, kVirtual.size());
    ++cells;
  }
  return cells;
}

}   // namespace

CaretText parseCaret(std::string_view marked) {
  CaretText result;
  result.bytes = marked;
  std::size_t caret = result.bytes.find('|'), anchor = result.bytes.find_first_of("@#");
  if (caret == std::string::npos) return result;
  const bool selects = anchor != std::string::npos;
  result.selection.column = selects && result.bytes[anchor] == '#';
  if (selects && anchor > caret) {
    result.selection.anchorVirtual = takeOut(result.bytes, anchor);
    const std::size_t before = result.bytes.size();
    result.selection.caretVirtual = takeOut(result.bytes, caret);
    anchor -= before - result.bytes.size();
  } else {
    result.selection.caretVirtual = takeOut(result.bytes, caret);
    if (selects) {
      const std::size_t before = result.bytes.size();
      result.selection.anchorVirtual = takeOut(result.bytes, anchor);
      caret -= before - result.bytes.size();
    }
  }
  if (!selects) anchor = caret;
  result.selection.caret = text::ByteOffset(static_cast<std::int64_t>(caret));
  result.selection.anchor = text::ByteOffset(static_cast<std::int64_t>(anchor));
  return result;
}

std::string printCaret(std::string bytes, const text::SelectionState& s) {
  const auto marker = [](std::int64_t cells, char sign) {
    std::string text;
    while (cells-- > 0) text += kVirtual;
    return text + sign;
  };
  const auto insert = [&bytes](text::ByteOffset at, const std::string& text) {
    bytes.insert(std::min(bytes.size(), static_cast<std::size_t>(at.value)), text);
  };
  const std::string caret = marker(s.caretVirtual, '|');
  if (s.anchor == s.caret && s.anchorVirtual == s.caretVirtual && !s.column) {
    insert(s.caret, caret);
    return bytes;
  }
  const std::string anchor = marker(s.anchorVirtual, s.column ? '#' : '@');
  // Behind first, so that the other offset still holds. On one place the anchor comes first, or the one with fewer cells.
  const bool caretLast = s.caret > s.anchor || (s.caret == s.anchor && s.caretVirtual >= s.anchorVirtual);
  if (s.caret == s.anchor) {
    insert(s.caret, caretLast ? anchor + caret : caret + anchor);
  } else {
    insert(caretLast ? s.caret : s.anchor, caretLast ? caret : anchor);
    insert(caretLast ? s.anchor : s.caret, caretLast ? anchor : caret);
  }
  return bytes;
}
