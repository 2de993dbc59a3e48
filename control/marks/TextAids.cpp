#include "control/marks/TextAids.h"

#include <QTimerEvent>
#include <algorithm>

#include "control/edit/Carets.h"
#include "control/view/Pane.h"
#include "text/line/LineReader.h"
#include "text/line/WordNear.h"
#include "text/line/Words.h"

using text::ByteOffset;
using text::ByteRange;
using text::LineNo;

namespace {

constexpr std::int64_t kLongestIndent = 400;   // bytes
constexpr std::int64_t kLinesAround = 25;      // lines looked at around a blank one
constexpr std::size_t kLongestMarked = 128;    // bytes

// The cells of the blanks that a line begins with; -1: it has nothing else.
std::int64_t indentOf(const TextView& view, LineNo line) {
  const int tabSize = view.state().options->tabSize;
  std::int64_t cells = 0;
  for (const char c : text::beginOfLine(view.snapshot(), line, kLongestIndent)) {
    if (c == '\t') cells += tabSize - cells % tabSize;
    else if (c == ' ') ++cells;
    else return cells;
  }
  return -1;
}

std::int64_t guidedCells(const TextView& view, LineNo line) {
  const std::int64_t own = indentOf(view, line);
  if (own >= 0) return own;
  std::int64_t above = -1, below = -1;
  for (std::int64_t i = 1; i <= kLinesAround && above < 0 && line.value - i >= 0; ++i)
    above = indentOf(view, LineNo(line.value - i));
  for (std::int64_t i = 1; i <= kLinesAround && below < 0 && line.value + i < view.snapshot().lineCount(); ++i)
    below = indentOf(view, LineNo(line.value + i));
  return std::min(above, below);
}

bool inWord(char c) { return (c & 0x80) != 0 || text::classOf(static_cast<unsigned char>(c)) == text::CharClass::word; }

}   // namespace

std::vector<double> textAids::guidesOf(const TextView& view, LineNo line) {
  std::vector<double> guides;
  if (!view.metrics().fixedPitch()) return guides;
  const std::int64_t cells = guidedCells(view, line);
  for (std::int64_t cell = 0; cell < cells; cell += view.state().options->tabSize)
    guides.push_back(static_cast<double>(cell) * view.metrics().cell());
  return guides;
}

std::pair<std::int64_t, std::int64_t> textAids::withBlanksAround(const TextView& view, std::int64_t first, std::int64_t last) {
  const auto blank = [&](std::int64_t line) { return indentOf(view, LineNo(line)) < 0; };
  const std::int64_t lines = view.snapshot().lineCount(), top = std::max<std::int64_t>(0, first - kLinesAround),
                     bottom = std::min(lines - 1, last + kLinesAround);
  while (first > top && blank(first - 1)) --first;
  while (last < bottom && blank(last + 1)) ++last;
  return {first, last};
}

std::vector<double> textAids::rulers(const TextView& view) {
  std::vector<double> all;
  if (!view.metrics().fixedPitch()) return all;
  for (const int column : view.state().options->aids.rulers) all.push_back(column * view.metrics().cell());
  return all;
}

std::vector<ByteRange> textAids::places(const text::Snapshot& text, const Row& row, std::int64_t begin, std::int64_t end,
                                        const std::string& word) {
  std::vector<ByteRange> found;
  if (word.empty() || row.layout.items().empty()) return found;
  const auto around = static_cast<std::int64_t>(word.size());   // a word may stand in two rows
  const ByteOffset from = row.start + std::max(begin - around, row.layout.begin().byte),
                   to = row.start + std::min(end > row.length ? row.length : end + around, row.layout.end().byte);
  if (to <= from) return found;
  const std::string bytes = text.bytes({from, to});
  for (std::size_t at = bytes.find(word); at != std::string::npos; at = bytes.find(word, at + word.size())) {
    const std::size_t behind = at + word.size();
    if ((at > 0 && inWord(bytes[at - 1])) || (behind < bytes.size() && inWord(bytes[behind]))) continue;
    found.push_back({from + static_cast<std::int64_t>(at), from + static_cast<std::int64_t>(behind)});
  }
  return found;
}

std::string SameWord::atCaret() const {
  const Editor& editor = pane_.editor();
  const text::SelectionState& s = editor.selection();
  if (s.anchor != s.caret || s.column || carets::several(editor) || !pane_.view().state().options->aids.markWord) return {};
  const ByteRange range = text::wordNear(editor.snapshot(), s.caret);
  if (range.length() < 2 || range.length() > static_cast<std::int64_t>(kLongestMarked)) return {};
  std::string word = editor.snapshot().bytes(range);
  const bool name = inWord(word[0]) && !(word[0] >= '0' && word[0] <= '9');
  return name ? word : std::string();
}

void SameWord::moved() {
  if (!pane_.view().state().options->aids.markWord && word_.empty()) return;
  rest_.start(kRestMs, this);
  if (word_.empty() || atCaret() == word_) return;
  word_.clear();
  pane_.viewport()->update();
}

void SameWord::timerEvent(QTimerEvent* event) {
  if (event->timerId() != rest_.timerId()) return QObject::timerEvent(event);
  rest_.stop();
  std::string word = atCaret();
  if (word == word_) return;
  word_ = std::move(word);
  pane_.viewport()->update();
}
