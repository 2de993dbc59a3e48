// Inserting text: typing, new lines and rectangular blocks.
#include <QCoreApplication>
#include <algorithm>

#include "control/code/BlockIndent.h"
#include "control/code/LanguageTable.h"
#include "control/edit/ColumnBlock.h"
#include "control/edit/EditorAccess.h"
#include "text/line/Chars.h"
#include "text/line/Words.h"

using namespace text;

namespace {

std::int64_t widthOf(std::string_view bytes, int tabSize) {
  return displayColumn(bytes, static_cast<std::int64_t>(bytes.size()), tabSize).value;
}

// The blanks that replace a tab typed at `cell`.
std::string blanksToStop(std::int64_t cell, int tabSize) {
  return std::string(static_cast<std::size_t>(tabSize - cell % tabSize), ' ');
}

// The position `count` characters behind `at`, at most the end of the line.
ByteOffset overtyped(const Snapshot& text, ByteOffset at, std::int64_t count) {
  const ByteOffset end = text.lineEnd(text.lineAt(at));
  while (count-- > 0 && at < end) at = nextChar(text, at);
  return std::min(at, end);
}

std::int64_t countCharacters(std::string_view bytes) {
  std::int64_t count = 0;
  for (; !bytes.empty(); ++count) bytes.remove_prefix(static_cast<std::size_t>(clusterLength(bytes)));
  return count;
}

std::int64_t blanksBehind(const Snapshot& text, ByteOffset at) {
  const ByteOffset begin = at, end = text.lineEnd(text.lineAt(at));
  while (at < end && (text.at(at) == ' ' || text.at(at) == '\t')) ++at;
  return at - begin;
}

// Null unless the language determines the indentation.
std::shared_ptr<const BlockWords> blockWords(Editor& e) {
  return e.options().autoIndent == AutoIndent::language ? LanguageTable::blocks(e.model().language()) : nullptr;
}

}   // namespace

bool EditorAccess::fillBlock(Editor& e, const ColumnBlock& block, const std::string& content, Join join) {
  if (e.document().readOnly()) return false;
  if (content.empty() && block.left == block.right) return true;
  const int tabSize = e.options().tabSize;
  const Snapshot text = e.snapshot();
  const bool over = e.overtype && block.left == block.right;
  const LineNo anchorLine = text.lineAt(e.selection().anchor), caretLine = text.lineAt(e.selection().caret);
  std::vector<Edit> edits;
  for (LineNo line = block.first; line <= block.last; ++line) {
    ColumnRow row = columnRow(e.model(), line, block.left, block.right, tabSize);
    if (over && row.missing == 0 && row.keepAfter == 0) row.range.end = overtyped(text, row.range.end, countCharacters(content));
    Edit edit = columnRowEdit(row, content);
    if (!edit.range.empty() || !edit.text.empty()) edits.push_back(std::move(edit));
  }
  const std::int64_t cell = widthOf(std::string(static_cast<std::size_t>(block.left), ' ') + content, tabSize);
  if (!change(e, edits, std::nullopt, join)) return false;
  place(e, columnSelection(e.model(), anchorLine, cell, caretLine, cell, tabSize));
  e.document().setSelectionAfter(e.selection());
  return true;
}

bool EditorAccess::deleteSelection(Editor& e) {
  if (e.selection().column) return fillBlock(e, columnBlock(e.model(), e.selection(), e.options().tabSize), {});
  return put(e, e.selectedRange(), {});
}

bool EditorAccess::isGuarded(Editor& e) {
  if (!e.document().readOnly()) return false;
  e.host().note(QCoreApplication::translate("Editor", "The text is read-only"));
  return true;
}

bool Editor::typeText(const QString& text) {
  if (EditorAccess::isGuarded(*this)) return false;
  EditorAccess::noteForMacro(*this, [&] { keyMacros().noteText(text); });
  const EditorAccess::Inside inside(*this);
  if (carets::several(*this)) {
    carets::atEach(*this, [&] { typeText(text); });
    return true;
  }
  const LineNo line = snapshot().lineAt(selectedRange().begin);
  std::string bytes = EditorAccess::incoming(*this, text, line);
  if (selection_.column) {
    if (bytes.find_first_of("\r\n") == std::string::npos) {
      const ColumnBlock block = columnBlock(*model_, selection_, options_->tabSize);
      if (bytes == "\t" && options_->expandTabs) bytes = blanksToStop(block.left, options_->tabSize);
      return EditorAccess::fillBlock(*this, block, bytes, Join::typing);
    }
    UndoGroup group(document());
    EditorAccess::deleteSelection(*this);
    moveCaret(selectedRange().begin, false);
    return EditorAccess::put(*this, selectedRange(), std::move(bytes));
  }
  ByteRange range = selectedRange();
  if (bytes == "\t" && options_->expandTabs)
    bytes = blanksToStop(cellOf(*model_, range.begin, 0, options_->tabSize), options_->tabSize);
  if (overtype && range.empty() && bytes.find_first_of("\r\n") == std::string::npos)
    range.end = overtyped(snapshot(), range.begin, countCharacters(bytes));
  const auto blocks = blockWords(*this);
  if (!blocks || !mayStepBack(*model_, *blocks, range, text))
    return EditorAccess::put(*this, range, std::move(bytes), Join::typing);
  UndoGroup group(document());
  if (!EditorAccess::put(*this, range, std::move(bytes))) return false;
  if (!impl_->run) return EditorAccess::stepBack(*this);
  impl_->run->closers = true;   // behind the typing of all carets
  return true;
}

bool EditorAccess::stepBack(Editor& e) {
  const auto blocks = blockWords(e);
  const ByteOffset caret = e.selection().caret;
  const auto indent = blocks ? indentForCloser(e.model(), *blocks, caret, e.options()) : std::nullopt;
  if (!indent) return true;
  const LineNo line = e.snapshot().lineAt(caret);
  const ByteOffset start = e.snapshot().lineStart(line);
  const Edit edit{{start, start + static_cast<std::int64_t>(indentOf(e.snapshot(), line).size())}, *indent};
  SelectionState after;
  after.anchor = after.caret = caret + static_cast<std::int64_t>(indent->size()) - edit.range.length();
  return change(e, std::span(&edit, 1), after);
}

bool EditorAccess::breakLine(Editor& e, ByteRange range, const std::string& lineBreak, const std::string& indent) {
  if (const auto blanks = autoBlanks(e); blanks && range.begin >= blanks->begin && range.begin <= blanks->end)
    range.begin = blanks->begin;
  const SelectionState before = e.selection_;
  if (!put(e, range, lineBreak + indent)) return false;
  noteAutoBlanks(e, indent.size(), {range, lineBreak}, before);
  return true;
}

// In language mode the block words and brackets decide. If these say nothing, the nearest line above that is not blank decides, so
// that an empty line between does not lose the indent.
bool Editor::newLine() {
  if (EditorAccess::isGuarded(*this)) return false;
  if (carets::several(*this)) {
    carets::atEach(*this, [this] { newLine(); });
    return true;
  }
  if (autoClose::breakPair(*this)) return true;
  std::optional<UndoGroup> group;
  if (selection_.column) {
    group.emplace(document());
    EditorAccess::deleteSelection(*this);
    moveCaret(selection_.caret, false);
  }
  const Snapshot text = snapshot();
  ByteRange range = selectedRange();
  const LineNo line = text.lineAt(range.begin);
  std::string indent;
  if (options_->autoIndent != AutoIndent::off) {
    LineNo model = line;
    const ByteOffset start = text.lineStart(line);
    indent = EditorAccess::blanksFrom(text, start);
    // Text that moves to the new line starts at its indent, without the blanks before it.
    const bool behindIndent = range.begin >= start + static_cast<std::int64_t>(indent.size());
    if (options_->autoIndent == AutoIndent::language && behindIndent) range.end += blanksBehind(text, range.end);
    const auto blocks = blockWords(*this);
    const auto byBlocks = blocks ? indentForNewLine(*model_, *blocks, range, *options_) : std::nullopt;
    if (byBlocks) return EditorAccess::breakLine(*this, range, model_->newLineFor(line), *byBlocks);
    if (options_->autoIndent == AutoIndent::language) {
      while (model.value > 0 && text.lineStart(model) + static_cast<std::int64_t>(indent.size()) == text.lineEnd(model))
        indent = EditorAccess::indentOf(text, --model);
    }
    if (model == line)
      indent.resize(
          static_cast<std::size_t>(std::min<std::int64_t>(static_cast<std::int64_t>(indent.size()), range.begin - start)));
  }
  return EditorAccess::breakLine(*this, range, model_->newLineFor(line), indent);
}

bool Editor::insertBlock(const QString& block) {
  if (EditorAccess::isGuarded(*this)) return false;
  UndoGroup group(document());
  if (hasSelection()) EditorAccess::deleteSelection(*this);
  const int tabSize = options_->tabSize;
  const Snapshot text = snapshot();
  const bool before = selection_.caret > selection_.anchor;
  const ByteOffset at = before ? selection_.anchor : selection_.caret;
  const std::int64_t cell = cellOf(*model_, at, before ? selection_.anchorVirtual : selection_.caretVirtual, tabSize);

  const std::string bytes = fromQString(block);
  std::vector<std::string_view> rows;
  std::int64_t width = 0;
  for (std::string_view rest = bytes;;) {
    const std::size_t end = rest.find('\n');
    std::string_view row = rest.substr(0, end);
    if (row.ends_with('\r')) row.remove_suffix(1);
    rows.push_back(row);
    const std::string placed = std::string(static_cast<std::size_t>(cell % tabSize), ' ') + std::string(row);
    width = std::max(width, widthOf(placed, tabSize) - cell % tabSize);
    if (end == std::string_view::npos) break;
    rest.remove_prefix(end + 1);
  }

  std::vector<Edit> edits;
  LineNo line = text.lineAt(at);
  ByteOffset end;               // of what the last row takes the place of
  std::int64_t notBehind = 0;   // bytes of its edit that stand behind the row
  const std::string newLine = model_->newLineFor(LineNo(text.lineCount() - 1));
  std::string beyond;   // rows behind the end of the text
  for (std::string_view content : rows) {
    if (line.value >= text.lineCount()) {
      beyond += newLine;
      if (!content.empty()) beyond.append(static_cast<std::size_t>(cell), ' ').append(content);
      ++line;
      continue;
    }
    const ColumnRow row = columnRow(*model_, line, cell, cell, tabSize);
    ++line;
    std::string padded(content);
    if (row.textFollows) {
      const std::string placed = std::string(static_cast<std::size_t>(cell % tabSize), ' ') + padded;
      padded.append(static_cast<std::size_t>(width + cell % tabSize - widthOf(placed, tabSize)), ' ');
    }
    Edit edit = columnRowEdit(row, padded);
    end = edit.range.end;
    notBehind = padded.empty() ? 0 : row.keepAfter;
    if (!edit.range.empty() || !edit.text.empty()) edits.push_back(std::move(edit));
  }
  if (!beyond.empty()) {
    end = text.size();
    notBehind = 0;
    if (!edits.empty() && edits.back().range.end == text.size()) edits.back().text += beyond;
    else edits.push_back({{text.size(), text.size()}, std::move(beyond)});
  }
  const MarkId mark = document().addMark(end, Bias::right);
  const bool done = EditorAccess::change(*this, edits);
  if (done) EditorAccess::place(*this, {document().markAt(mark) - notBehind, document().markAt(mark) - notBehind, 0, 0, false});
  if (done) document().setSelectionAfter(selection_);
  document().removeMark(mark);
  return done;
}
