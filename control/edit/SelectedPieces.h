// Visits the selected text line by line in one pass, whatever its size.
#pragma once

#include <string>
#include <string_view>
#include <utility>

#include "control/edit/ColumnBlock.h"
#include "control/edit/EditorAccess.h"

// Calls use(LineNo, ByteOffset start, std::string_view bytes) for the part of each line, without its break, inside the range. Costs
// the bytes of the range. The view is valid during the call.
template <class Use>
void forEachLine(const text::Snapshot& text, text::ByteRange range, Use use) {
  const char breakByte = text.lineMode() == text::LineMode::cr ? '\r' : '\n';
  text::LineNo line = text.lineAt(range.begin);
  text::ByteOffset start = range.begin, at = range.begin;
  std::string joined;   // of a line in several blocks
  const auto finish = [&](std::string_view bytes, bool broken) {
    if (broken && breakByte == '\n' && bytes.ends_with('\r')) bytes.remove_suffix(1);
    use(line, start, bytes);
    ++line;
  };
  while (at < range.end) {
    std::string_view chunk = text.chunkAt(at);
    chunk =
        chunk.substr(0, static_cast<std::size_t>(std::min<std::int64_t>(range.end - at, static_cast<std::int64_t>(chunk.size()))));
    at += static_cast<std::int64_t>(chunk.size());
    for (std::size_t end; (end = chunk.find(breakByte)) != std::string_view::npos; chunk.remove_prefix(end + 1)) {
      if (joined.empty()) {
        finish(chunk.substr(0, end), true);
      } else {
        joined += chunk.substr(0, end);
        finish(joined, true);
        joined.clear();
      }
      start = at - static_cast<std::int64_t>(chunk.size() - end - 1);
    }
    joined += chunk;
  }
  finish(joined, false);
}

// The same for the selection, row by row for a column selection; use(start, bytes, cell) with the cell at which the part begins.
template <class Use>
void forEachSelectedPiece(Editor& e, Use use) {
  const text::Snapshot text = e.snapshot();
  const int tabSize = e.options().tabSize;
  if (!e.selection().column) {
    const text::ByteRange range = e.selectedRange();
    forEachLine(text, range, [&](text::LineNo, text::ByteOffset start, std::string_view bytes) {
      use(start, bytes, start == range.begin ? cellOf(e.model(), start, 0, tabSize) : 0);
    });
    return;
  }
  const ColumnBlock block = columnBlock(e.model(), e.selection(), tabSize);
  for (text::LineNo line = block.first; line <= block.last; ++line) {
    const ColumnRow row = columnRow(e.model(), line, block.left, block.right, tabSize);
    use(row.body.begin, text.bytes(row.body), cellOf(e.model(), row.body.begin, 0, tabSize));
  }
}

// Adds the edit from `old` at `start` to `fresh`, reduced to the difference.
inline void addDifference(std::vector<text::Edit>& edits, text::ByteOffset start, std::string_view old, std::string_view fresh) {
  std::size_t head = 0, tail = 0;
  const std::size_t most = std::min(old.size(), fresh.size());
  while (head < most && old[head] == fresh[head]) ++head;
  if (head == old.size() && head == fresh.size()) return;
  while (tail < most - head && old[old.size() - 1 - tail] == fresh[fresh.size() - 1 - tail]) ++tail;
  edits.push_back({{start + static_cast<std::int64_t>(head), start + static_cast<std::int64_t>(old.size() - tail)},
                   std::string(fresh.substr(head, fresh.size() - head - tail))});
}
