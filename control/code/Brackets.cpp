#include "control/code/Brackets.h"

#include <algorithm>
#include <functional>
#include <string_view>
#include <utility>

using namespace text;

namespace {

constexpr std::string_view kOpeners = "([{", kClosers = ")]}";
constexpr std::int64_t kStep = 1 << 20;   // bytes scanned between two checks of the control
constexpr std::int64_t kLineCost = 64;    // cost of a line beside its bytes
constexpr std::int64_t kLinesBack = 64;   // number of lines that are coloured forwards and then read backwards

struct Sign {
  std::int64_t byte;   // within the line
  int depth;           // +1 opener, -1 closer
  bool code;           // not in a comment or string
};

using StateAt = std::function<LineState(LineNo line, std::int64_t budget, bool* exact)>;

class Scanner {
 public:
  Scanner(const Snapshot& text, const Highlighter* highlighter, StateAt stateAt, std::int64_t budget, SearchControl* control)
      : text_(text),
        highlighter_(highlighter),
        stateAt_(std::move(stateAt)),
        budget_(budget > 0 ? budget : INT64_MAX),
        control_(control) {}

  const Snapshot& text() const { return text_; }
  void look(char opener, char closer) {
    opener_ = opener;
    closer_ = closer;
  }
  bool spent() const { return budget_ < 0; }
  // If the budget is too small for a state, the state is guessed once; asking again for the next line would cost the same again.
  LineState stateAt(LineNo line) {
    if (!highlighter_) return 0;
    if (guessed_) budget_ = -1;
    if (spent()) return 0;
    bool exact = true;
    if (!control_) {
      const LineState state = stateAt_(line, budget_ == INT64_MAX ? 0 : budget_, &exact);
      guessed_ = !exact;
      return state;
    }
    for (;;) {
      const LineState state = stateAt_(line, kStep, &exact);
      if (exact) return state;
      if (!go(kStep)) return 0;
    }
  }

  // The brackets of one line; `state` becomes that of the next line.
  std::vector<Sign> line(LineNo number, LineState& state) {
    const std::int64_t length = text_.lineEndWithBreak(number) - text_.lineStart(number);
    budget_ -= length + kLineCost;
    if (spent() || !go(length)) return {};
    const std::string bytes = text_.line(number);
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
  bool go(std::int64_t bytes) {
    if (!control_) return true;
    if ((sinceLook_ += bytes) >= kStep / 64) {
      control_->bytesDone += std::exchange(sinceLook_, 0);
      if (control_->cancel) budget_ = -1;
    }
    return !spent();
  }

  const Snapshot& text_;
  const Highlighter* highlighter_;
  StateAt stateAt_;
  char opener_ = '(', closer_ = ')';
  std::int64_t budget_, sinceLook_ = 0;
  SearchControl* control_;
  bool guessed_ = false;
  std::vector<Token> tokens_;
};

std::optional<ByteOffset> partner(Scanner& scanner, ByteOffset at, bool forward, std::size_t kind) {
  const Snapshot& text = scanner.text();
  scanner.look(kOpeners[kind], kClosers[kind]);
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

std::optional<BracketPair> pairAt(Scanner& scanner, ByteOffset caret) {
  const Snapshot& text = scanner.text();
  for (const ByteOffset at : {caret, caret - 1}) {
    if (at < ByteOffset(0) || at >= text.size()) continue;
    const char c = text.at(at);
    const auto opener = kOpeners.find(c), closer = kClosers.find(c);
    if (opener == std::string_view::npos && closer == std::string_view::npos) continue;
    const bool forward = opener != std::string_view::npos;
    const auto found = partner(scanner, at, forward, forward ? opener : closer);
    return found ? std::optional<BracketPair>({at, *found}) : std::nullopt;
  }
  return std::nullopt;
}

}   // namespace

std::optional<BracketPair> matchingBracket(TextModel& model, ByteOffset caret, std::int64_t budgetBytes, bool* cut) {
  const auto stateAt = [&model](LineNo line, std::int64_t budget, bool* exact) { return model.stateAt(line, budget, exact); };
  Scanner scanner(model.snapshot(), model.highlighter(), stateAt, budgetBytes, nullptr);
  const auto pair = pairAt(scanner, caret);
  if (cut) *cut = scanner.spent();
  return pair;
}

std::optional<BracketPair> matchingBracket(const Snapshot& text, std::shared_ptr<const Highlighter> colors, ByteOffset caret,
                                           SearchControl& control) {
  StateCache states;
  states.setHighlighter(colors);
  const auto stateAt = [&](LineNo line, std::int64_t budget, bool* exact) { return states.stateAt(text, line, budget, exact); };
  Scanner scanner(text, colors.get(), stateAt, 0, &control);
  return pairAt(scanner, caret);
}
