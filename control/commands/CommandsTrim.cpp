// Blanks at the ends of the lines that differ from the file.
#include <algorithm>

#include "control/code/LanguageTable.h"
#include "control/commands/CommandFunctions.h"
#include "control/edit/Carets.h"
#include "control/edit/EditorAccess.h"
#include "control/marks/ChangeMarks.h"
#include "text/line/LineReader.h"

using namespace text;

namespace commandFunctions {

namespace {

constexpr std::int64_t kStateBudget = 4 << 20;   // bytes scanned for the colours above a stretch of lines

// Whether the blanks of the line mean something: they stand in a string or in what goes on in the next line, behind a backslash (without them it would join the lines),
// or are the two that break a line in Markdown.
struct Meaning {
  const Highlighter* colors;   // may be null
  bool markdown;

  bool has(std::string_view line, std::size_t blanks, LineState state) const {
    if (blanks > 0 && line[blanks - 1] == '\\') return true;
    if (markdown && blanks > 0 && line.substr(blanks).starts_with("  ")) return true;
    if (!colors) return false;
    std::vector<Token> tokens;
    if (colors->scanLine(line, state, &tokens) != LineState()) return true;
    if (tokens.empty()) return false;
    const Token& last = tokens.back();
    return last.kind == TokenKind::string && last.begin + last.length > static_cast<std::int64_t>(blanks);
  }
};

struct Stretch {
  LineNo begin, end;
  LineState state;   // at its begin
};

}   // namespace

void trimChangedLines(Editor& e, const QVariant&) {
  if (EditorAccess::isGuarded(e)) return;
  const Snapshot text = e.snapshot();
  const auto colors = e.model().language().isEmpty() ? nullptr : LanguageTable::find(e.model().language());
  ChangeMarks& marks = ChangeMarks::of(e.model());
  std::vector<std::pair<LineNo, LineNo>> touched;
  if (e.model().stamp) {
    const auto parts = marks.now(e.host());
    if (!parts) return;
    for (const ChangedLines::Part& part : *parts) touched.emplace_back(part.lines.afterBegin, part.lines.afterEnd);
  } else {
    touched.emplace_back(LineNo(0), LineNo(text.lineCount()));   // all of it is new
  }
  std::int64_t bytes = 0;
  for (const auto& [begin, end] : touched)
    if (begin < end) bytes += text.lineEnd(end - 1) - text.lineStart(begin);
  // The colours are looked up here, so only where there is something to trim.
  std::vector<Stretch> stretches;
  bool cancelled = false;
  e.host().work(bytes, [&](SearchControl& control) {
    for (const auto& [begin, end] : touched) {
      if (begin >= end) continue;
      LineReader reader(text, begin);
      bool trims = false;
      std::string_view line;
      while (!trims && !control.cancel && reader.line() + 1 < end && reader.next(&line))
        trims = !line.empty() && (line.back() == ' ' || line.back() == '\t');
      if (trims) stretches.push_back({begin, end, LineState()});
    }
    cancelled = control.cancel;
  });
  if (cancelled || stretches.empty() || !text.sameAs(e.snapshot())) return;
  bytes = 0;
  for (Stretch& stretch : stretches) {
    if (colors) stretch.state = e.model().stateAt(stretch.begin, kStateBudget);
    bytes += text.lineEnd(stretch.end - 1) - text.lineStart(stretch.begin);
  }
  std::vector<ByteOffset> carets{e.selection().caret};   // the blanks before one stay: it stays where it is
  for (const Caret& caret : carets::others(e)) carets.push_back(caret.caret);
  std::ranges::sort(carets);
  std::vector<Edit> edits;
  e.host().work(bytes, [&](SearchControl& control) {
    const Meaning meaning{colors.get(), e.model().language() == QStringLiteral("Markdown")};
    for (const Stretch& stretch : stretches) {
      LineReader reader(text, stretch.begin);
      LineState state = stretch.state;
      std::string_view line;
      while (!control.cancel && reader.line() + 1 < stretch.end && reader.next(&line)) {
        const std::size_t blanks = line.find_last_not_of(" \t") + 1;   // npos + 1 is 0
        if (blanks < line.size() && !meaning.has(line, blanks, state)) {
          const ByteOffset end = reader.start() + static_cast<std::int64_t>(line.size());
          ByteOffset begin = reader.start() + static_cast<std::int64_t>(blanks);
          const auto caret = std::ranges::upper_bound(carets, end);
          if (caret != carets.begin()) begin = std::max(begin, *(caret - 1));
          if (begin < end) edits.push_back({{begin, end}, {}});
        }
        if (colors) state = colors->scanLine(line, state, nullptr);
        control.bytesDone += static_cast<std::int64_t>(line.size()) + 1;
      }
    }
    cancelled = control.cancel;
  });
  if (!cancelled && !edits.empty() && text.sameAs(e.snapshot())) EditorAccess::change(e, edits);
}

}   // namespace commandFunctions
