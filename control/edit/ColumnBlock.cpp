#include "control/edit/ColumnBlock.h"

#include <algorithm>

#include "text/line/LineMap.h"

using namespace text;

namespace {

std::size_t index(std::int64_t n) { return static_cast<std::size_t>(n); }

std::int64_t whole(double cells) { return static_cast<std::int64_t>(cells); }
LinePlace atCell(std::int64_t cell) { return LinePlace::atX(static_cast<double>(cell)); }

}   // namespace

std::int64_t cellOf(TextModel& model, ByteOffset offset, std::int64_t virtualCells, int tabSize) {
  LineMap line = model.line(model.snapshot().lineAt(offset), tabSize);
  return whole(line.at(LinePlace::atByte(offset - line.start())).x) + virtualCells;
}

ByteOffset offsetAtCell(TextModel& model, LineNo lineNo, std::int64_t cell, int tabSize, std::int64_t* virtualCells) {
  LineMap line = model.line(lineNo, tabSize);
  const LinePlace at = line.at(atCell(cell));
  if (virtualCells) *virtualCells = at.byte == line.length() ? std::max<std::int64_t>(0, cell - whole(at.x)) : 0;
  return line.start() + at.byte;
}

SelectionState columnSelection(TextModel& model, LineNo anchorLine, std::int64_t anchorCell, LineNo caretLine,
                               std::int64_t caretCell, int tabSize) {
  SelectionState s;
  s.column = true;
  s.anchor = offsetAtCell(model, anchorLine, anchorCell, tabSize, &s.anchorVirtual);
  s.caret = offsetAtCell(model, caretLine, caretCell, tabSize, &s.caretVirtual);
  return s;
}

ColumnBlock columnBlock(TextModel& model, const SelectionState& s, int tabSize) {
  const Snapshot& text = model.snapshot();
  ColumnBlock block;
  const LineNo a = text.lineAt(s.anchor), c = text.lineAt(s.caret);
  const std::int64_t x = cellOf(model, s.anchor, s.anchorVirtual, tabSize), y = cellOf(model, s.caret, s.caretVirtual, tabSize);
  block.first = std::min(a, c);
  block.last = std::max(a, c);
  block.left = std::min(x, y);
  block.right = std::max(x, y);
  return block;
}

ColumnRow columnRow(TextModel& model, LineNo lineNo, std::int64_t left, std::int64_t right, int tabSize) {
  LineMap line = model.line(lineNo, tabSize);
  const auto tabAt = [&](const LinePlace& at) { return model.snapshot().at(line.start() + at.byte) == '\t'; };
  ColumnRow row;

  LinePlace begin = line.at(atCell(left)), body = begin;
  bool cutByBoth = false;   // one tab reaches over the whole block
  if (const std::int64_t beginCell = whole(begin.x); beginCell < left) {
    if (begin.byte == line.length()) {
      row.missing = left - beginCell;
    } else {
      body = line.behind(begin);
      const std::int64_t behindCell = whole(body.x);
      if (tabAt(begin)) {
        row.keepBefore = left - beginCell;
        row.insideBefore = std::min(behindCell, right) - left;
        cutByBoth = behindCell > right;
        if (cutByBoth) row.keepAfter = behindCell - right;
      } else {
        begin = body;
      }
    }
  }

  LinePlace end = body;
  if (!cutByBoth && right > whole(body.x)) end = line.at(atCell(right));
  std::int64_t bodyEnd = end.byte;
  if (!cutByBoth && end.byte < line.length()) {
    const std::int64_t endCell = whole(end.x);
    if (endCell >= left && endCell < right) {
      const LinePlace behind = line.behind(end);
      row.keepAfter = whole(behind.x) - right;
      if (tabAt(end)) row.insideAfter = right - endCell;
      else bodyEnd = behind.byte;
      end = behind;
    }
  }
  const ByteOffset start = line.start();
  row.range = {start + begin.byte, start + end.byte};
  row.body = {start + body.byte, start + bodyEnd};
  row.textFollows = end.byte < line.length() || row.keepAfter > 0;
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
