#include "control/edit/ColumnBlock.h"

#include <algorithm>

#include "text/line/Chars.h"

using namespace text;

namespace {

std::size_t index(std::int64_t n) { return static_cast<std::size_t>(n); }

std::int64_t cellsTo(std::string_view line, std::int64_t byte, int tabSize) { return displayColumn(line, byte, tabSize).value; }

}   // namespace

std::int64_t cellOf(const Snapshot& text, ByteOffset offset, std::int64_t virtualCells, int tabSize) {
  const ByteOffset start = text.lineStart(text.lineAt(offset));
  const std::string line = text.bytes({start, offset});
  return cellsTo(line, static_cast<std::int64_t>(line.size()), tabSize) + virtualCells;
}

ByteOffset offsetAtCell(const Snapshot& text, LineNo lineNo, std::int64_t cell, int tabSize, std::int64_t* virtualCells) {
  const std::string line = text.line(lineNo);
  const std::int64_t byte = byteOfDisplay(line, DisplayColumn(cell), tabSize);
  if (virtualCells) {
    *virtualCells = 0;
    if (byte == static_cast<std::int64_t>(line.size()))
      *virtualCells = std::max<std::int64_t>(0, cell - cellsTo(line, byte, tabSize));
  }
  return text.lineStart(lineNo) + byte;
}

SelectionState columnSelection(const Snapshot& text, LineNo anchorLine, std::int64_t anchorCell, LineNo caretLine,
                               std::int64_t caretCell, int tabSize) {
  SelectionState s;
  s.column = true;
  s.anchor = offsetAtCell(text, anchorLine, anchorCell, tabSize, &s.anchorVirtual);
  s.caret = offsetAtCell(text, caretLine, caretCell, tabSize, &s.caretVirtual);
  return s;
}

ColumnBlock columnBlock(const Snapshot& text, const SelectionState& s, int tabSize) {
  ColumnBlock block;
  const LineNo a = text.lineAt(s.anchor), c = text.lineAt(s.caret);
  const std::int64_t x = cellOf(text, s.anchor, s.anchorVirtual, tabSize), y = cellOf(text, s.caret, s.caretVirtual, tabSize);
  block.first = std::min(a, c);
  block.last = std::max(a, c);
  block.left = std::min(x, y);
  block.right = std::max(x, y);
  return block;
}

ColumnRow columnRow(const Snapshot& text, LineNo lineNo, std::int64_t left, std::int64_t right, int tabSize) {
  const std::string line = text.line(lineNo);
  const ByteOffset start = text.lineStart(lineNo);
  const auto size = static_cast<std::int64_t>(line.size());
  ColumnRow row;

  std::int64_t begin = byteOfDisplay(line, DisplayColumn(left), tabSize);
  const std::int64_t beginCell = cellsTo(line, begin, tabSize);
  std::int64_t bodyBegin = begin;
  bool cutByBoth = false;   // one tab reaches over the whole block
  if (beginCell < left) {
    if (begin == size) {
      row.missing = left - beginCell;
    } else {
      const std::int64_t behind = begin + clusterLength(std::string_view(line).substr(index(begin)));
      const std::int64_t behindCell = cellsTo(line, behind, tabSize);
      if (line[index(begin)] == '\t') {
        row.keepBefore = left - beginCell;
        row.insideBefore = std::min(behindCell, right) - left;
        cutByBoth = behindCell > right;
        if (cutByBoth) row.keepAfter = behindCell - right;
        bodyBegin = behind;
      } else {
        begin = bodyBegin = byteOfDisplay(line, DisplayColumn(behindCell), tabSize);
      }
    }
  }

  std::int64_t end = cutByBoth ? bodyBegin : std::max(bodyBegin, byteOfDisplay(line, DisplayColumn(right), tabSize));
  std::int64_t bodyEnd = end;
  if (!cutByBoth && end < size) {
    const std::int64_t endCell = cellsTo(line, end, tabSize);
    if (endCell >= left && endCell < right) {
      const bool tab = line[index(end)] == '\t';
      const std::int64_t behindCell = cellsTo(line, end + clusterLength(std::string_view(line).substr(index(end))), tabSize);
      row.keepAfter = behindCell - right;
      end = byteOfDisplay(line, DisplayColumn(behindCell), tabSize);
      if (tab) row.insideAfter = right - endCell;
      else bodyEnd = end;
    }
  }
  row.range = {start + begin, start + end};
  row.body = {start + bodyBegin, start + bodyEnd};
  row.textFollows = end < size || row.keepAfter > 0;
  return row;
}

std::string columnRowText(const Snapshot& text, const ColumnRow& row) {
  return std::string(index(row.insideBefore), ' ') + text.bytes(row.body) + std::string(index(row.insideAfter), ' ');
}

Edit columnRowEdit(const ColumnRow& row, std::string_view content) {
  const bool cut = row.range.length() > 0;
  if (content.empty() && !cut) return {{row.range.begin, row.range.begin}, {}};
  std::string text(index(content.empty() ? row.keepBefore : row.missing + row.keepBefore), ' ');
  text += content;
  text.append(index(row.keepAfter), ' ');
  return {row.range, std::move(text)};
}
