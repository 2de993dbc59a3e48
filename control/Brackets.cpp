#include "control/Brackets.h"

#include <algorithm>
#include <string_view>

using namespace text;

namespace {

constexpr std::string_view kOpeners = "([{", kClosers = ")]}";
constexpr std::int64_t kLinesBack = 64;   // a stretch of lines is coloured forwards, then read backwards

struct Sign {
  std::int64_t byte;   // within the line
  int depth;           // +1 opener, -1 closer
  bool code;           // neither in a comment nor in a string
};

class Scanner {
 public:
  Scanner(TextModel& model, char opener, char closer, std::int64_t budget)
      : model_(model), highlighter_(model.highlighter()), opener_(opener), closer_(closer),
        budget_(budget > 0 ? budget : INT64_MAX) {}

  bool spent() const { return budget_ < 0; }
  // A state that is not known within the budget is guessed once; asking for a further one then would cost as much again each time.
  LineState stateAt(LineNo line) {
    if (!highlighter_) return 0;
    if (guessed_) budget_ = -1;
    if (spent()) return 0;
    bool exact = true;
    const LineState state = model_.stateAt(line, budget_ == INT64_MAX ? 0 : budget_, &exact);
    guessed_ = !exact;
    return state;
  }

  // The brackets of one line; `state` becomes that of the next.
  std::vector<Sign> line(LineNo number, LineState& state) {
    const Snapshot& text = model_.snapshot();
    budget_ -= text.lineEndWithBreak(number) - text.lineStart(number);
    if (spent()) return {};
    const std::string bytes = text.line(number);
    tokens_.clear();
    if (highlighter_) state = highlighter_->scanLine(bytes, state, &tokens_);
    std::vector<Sign> signs;
    std::size_t token = 0;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
      if (bytes[i] != opener_ && bytes[i] != closer_) continue;
      const auto at = static_cast<std::int64_t>(i);
      while (token < tokens_.size() && tokens_[token].begin + tokens_[token].length <= at) ++token;
      const bool inToken = token < tokens_.size() && tokens_[token].begin <= at;
      const bool code = !inToken || (tokens_[token].kind != TokenKind::comment && tokens_[token].kind != TokenKind::string);
      signs.push_back({at, bytes[i] == opener_ ? 1 : -1, code});
    }
    return signs;
  }

 private:
  TextModel& model_;
  const Highlighter* highlighter_;
  char opener_, closer_;
  std::int64_t budget_;
  bool guessed_ = false;
  std::vector<Token> tokens_;
};

std::optional<ByteOffset> partner(TextModel& model, ByteOffset at, bool forward, std::size_t kind, std::int64_t budget) {
  const Snapshot& text = model.snapshot();
  Scanner scanner(model, kOpeners[kind], kClosers[kind], budget);
  const LineNo home = text.lineAt(at);
  const std::int64_t inLine = at - text.lineStart(home);
  LineState state = scanner.stateAt(home);
  const std::vector<Sign> own = scanner.line(home, state);
  const auto self = std::find_if(own.begin(), own.end(), [&](const Sign& s) { return s.byte == inLine; });
  if (self == own.end()) return std::nullopt;
  const bool code = self->code;
  int depth = 0;
  const auto closes = [&](const Sign& s) { return s.code == code && (depth += s.depth) == 0; };

  if (forward) {
    for (auto s = self; s != own.end(); ++s)
      if (closes(*s)) return text.lineStart(home) + s->byte;
    for (LineNo line = home + 1; line.value < text.lineCount() && !scanner.spent(); ++line)
      for (const Sign& s : scanner.line(line, state))
        if (closes(s)) return text.lineStart(line) + s.byte;
    return std::nullopt;
  }
  for (auto s = std::make_reverse_iterator(self + 1); s != own.rend(); ++s)
    if (closes(*s)) return text.lineStart(home) + s->byte;
  for (LineNo below = home; below.value > 0 && !scanner.spent();) {
    const LineNo first(std::max<std::int64_t>(0, below.value - kLinesBack));
    state = scanner.stateAt(first);
    std::vector<std::vector<Sign>> lines;
    for (LineNo line = first; line < below && !scanner.spent(); ++line) lines.push_back(scanner.line(line, state));
    if (scanner.spent()) return std::nullopt;
    for (LineNo line = below - 1; line >= first; --line) {
      const auto& signs = lines[static_cast<std::size_t>(line - first)];
      for (auto s = signs.rbegin(); s != signs.rend(); ++s)
        if (closes(*s)) return text.lineStart(line) + s->byte;
    }
    below = first;
  }
  return std::nullopt;
}

}  // namespace

std::optional<BracketPair> matchingBracket(TextModel& model, ByteOffset caret, std::int64_t budgetBytes) {
  const Snapshot& text = model.snapshot();
  for (const ByteOffset at : {caret, caret - 1}) {
    if (at < ByteOffset(0) || at >= text.size()) continue;
    const char c = text.at(at);
    const auto opener = kOpeners.find(c), closer = kClosers.find(c);
    if (opener == std::string_view::npos && closer == std::string_view::npos) continue;
    const bool forward = opener != std::string_view::npos;
    const auto found = partner(model, at, forward, forward ? opener : closer, budgetBytes);
    return found ? std::optional<BracketPair>({at, *found}) : std::nullopt;
  }
  return std::nullopt;
}
