#include "control/code/BlockIndent.h"

#include <algorithm>
#include <cctype>
#include <map>
#include <utility>
#include <vector>

#include "control/edit/Editor.h"
#include "text/line/Chars.h"
#include "text/line/Words.h"

using namespace text;

namespace {

// How far a look back goes.
constexpr std::int64_t kLinesSearched = 1000, kBytesBack = 128 << 10, kLongLine = 4096, kLongestWord = 64;
constexpr std::int64_t kColored = 1 << 20;   // bytes read anew for what is comment or string; beyond that it is guessed

// The leading white space of a line; empty for a line that is too long to be examined.
std::string leadingOf(const Snapshot& text, LineNo line) {
  std::string leading;
  const ByteOffset end = std::min(text.lineEnd(line), text.lineStart(line) + kLongLine);
  for (ByteOffset at = text.lineStart(line); at < end && (text.at(at) == ' ' || text.at(at) == '\t'); ++at) leading += text.at(at);
  return leading;
}

bool blankFrom(const Snapshot& text, ByteOffset at, ByteOffset end) {
  if (end - at > kLongLine) return false;
  for (; at < end; ++at)
    if (text.at(at) != ' ' && text.at(at) != '\t') return false;
  return true;
}

std::int64_t cellsOf(const std::string& blanks, int tabSize) {
  return displayColumn(blanks, static_cast<std::int64_t>(blanks.size()), tabSize).value;
}

bool isOpener(char c) { return c == '(' || c == '[' || c == '{'; }
bool isCloser(char c) { return c == ')' || c == ']' || c == '}'; }

// "if (a)" and its like, which one statement follows, as far as it was read.
enum class Header { none, begun, condition, whole };

Header headerOf(std::string_view word) {
  static constexpr std::string_view kWithCondition[] = {"if",     "while",  "for",       "foreach",
                                                        "repeat", "always", "always_ff", "always_latch"};
  static constexpr std::string_view kWithout[] = {"else", "forever", "initial", "final", "always_comb"};
  if (std::ranges::find(kWithCondition, word) != std::end(kWithCondition)) return Header::begun;
  return std::ranges::find(kWithout, word) != std::end(kWithout) ? Header::whole : Header::none;
}

// Whether a statement may stand alone where others open a block: "if" opens none itself.
bool hasLoneStatements(const BlockWords& blocks) {
  const auto opens = [&](const char* word) { return blocks.classify(QString::fromLatin1(word)).opens(); };
  return !opens("if") && (opens("{") || opens("begin"));
}

// In shells a line ends its statement, unless a backslash does not let it.
bool endsWithLine(const BlockWords& blocks) { return blocks.classify(QStringLiteral("fi")).closes(); }

struct Open {
  LineNo line{0}, base{0};   // line: where it is; base: where the statement around it begins
  bool bracket = false, twice = false;
};

// Reads the text above a place and keeps the open blocks and brackets.
class LookBack {
 public:
  LookBack(TextModel& model, const BlockWords& blocks, ByteOffset end, const EditOptions& options)
      : text_(model.snapshot()),
        blocks_(blocks),
        tabSize_(options.tabSize),
        expand_(options.expandTabs),
        hasHeaders_(hasLoneStatements(blocks)),
        hasDirectives_(hasHeaders_ && blocks.classify(QStringLiteral("{")).opens()),
        endsWithLine_(endsWithLine(blocks)) {
    last_ = text_.lineAt(end);
    LineNo first = last_;
    while (first.value > 0 && last_.value - first.value < kLinesSearched && end - text_.lineStart(first - 1) < kBytesBack &&
           text_.lineEnd(first - 1) - text_.lineStart(first - 1) < kLongLine)
      --first;
    const Highlighter* highlighter = model.highlighter();
    LineState state = model.stateAt(first, kColored);
    for (LineNo line = first; line <= last_; ++line) {
      const ByteOffset stop = line == last_ ? end : text_.lineEnd(line);
      if (stop - text_.lineStart(line) >= kLongLine) return;
      const std::string bytes = text_.bytes({text_.lineStart(line), stop});
      std::vector<Token> tokens;
      if (highlighter) state = highlighter->scanLine(bytes, state, &tokens);
      noteStep(bytes);
      read(bytes, tokens, line);
    }
  }

  const std::vector<Open>& open() const { return open_; }
  LineNo last() const { return last_; }
  LineNo statementStart(LineNo line) const {
    const auto found = begins_.find(line.value);
    return found == begins_.end() ? line : LineNo(found->second);
  }
  // The line of a header that the last statement has got so far and nothing else; that statement is alone in the line below.
  std::optional<LineNo> header() const { return header_ == Header::whole ? std::optional(headerLine_) : std::nullopt; }
  // Where the headers began before the lone statement that ends the text.
  std::optional<LineNo> loneSince() const { return loneSince_; }
  // The line of the "if" that an "else" behind that statement belongs to.
  std::optional<LineNo> loneIf() const { return loneIfs_.empty() ? std::nullopt : std::optional(loneIfs_.back()); }
  bool middleFirst() const { return middleFirst_; }
  bool insideStatement() const { return words_ > 0 && !opened_ && !middleStatement_; }
  std::string leading(LineNo line) const { return leadingOf(text_, line); }

  // One level of indentation as the text has it, else as the Tab key makes it.
  std::string unit() const {
    if (tabLines_ > blankLines_ || (tabLines_ == 0 && blankLines_ == 0 && !expand_)) return "\t";
    const auto most =
        std::max_element(steps_.begin(), steps_.end(), [](const auto& a, const auto& b) { return a.second < b.second; });
    return std::string(static_cast<std::size_t>(most == steps_.end() ? tabSize_ : most->first), ' ');
  }

 private:
  void noteStep(const std::string& bytes) {
    const std::size_t code = bytes.find_first_not_of(" \t");
    if (code == std::string::npos) return;
    (bytes[0] == '\t' ? tabLines_ : blankLines_) += code > 0;
    const std::int64_t cells = cellsOf(bytes.substr(0, code), tabSize_), step = cells - cells_;
    if (step > 1 && step <= 8) ++steps_[step];
    cells_ = cells;
  }

  void read(const std::string& bytes, const std::vector<Token>& tokens, LineNo line) {
    const std::string_view all(bytes);
    bool any = false;
    middleFirst_ = afterEnd_ = false;
    if (const std::size_t code = all.find_first_not_of(" \t"); hasDirectives_ && code != std::string_view::npos &&
                                                               code + 1 < all.size() && all[code] == '#' &&
                                                               std::isalpha(static_cast<unsigned char>(all[code + 1])))
      return;
    auto token = tokens.begin();
    for (std::size_t at = 0; at < all.size();) {
      const auto here = static_cast<std::int64_t>(at);
      while (token != tokens.end() && token->begin + token->length <= here) ++token;
      if (token != tokens.end() && token->begin <= here &&
          (token->kind == TokenKind::comment || token->kind == TokenKind::string)) {
        at = static_cast<std::size_t>(token->begin + token->length);
        continue;
      }
      std::size_t end = at;
      while (end < all.size()) {
        const auto c = decode(all.substr(end));
        if (classOf(c.code) != CharClass::word) break;
        end += static_cast<std::size_t>(c.bytes);
      }
      const bool word = end > at;
      if (!word) end = at + static_cast<std::size_t>(decode(all.substr(at)).bytes);
      const std::string_view piece = all.substr(at, end - at);
      at = end;
      if (piece == " " || piece == "\t") continue;
      const bool directive = std::exchange(tick_, piece == "`") && word;   // `else
      if (tick_ || directive) continue;
      readPiece(piece, word, line, !any);
      any = true;
    }
    const bool inBracket = !open_.empty() && open_.back().bracket;
    if (any && !inBracket && (middleFirst_ || (opened_ && !awaitsIs_) || (endsWithLine_ && !all.ends_with('\\'))))
      resetStatement();   // the lines of the block follow
  }

  void readPiece(std::string_view piece, bool word, LineNo line, bool first) {
    const auto kind = blocks_.classify(toQString(piece));
    const bool ofEnd = afterEnd_ && word && kind.opens();   // "end if"
    afterEnd_ = false;
    if (ofEnd) return;
    const bool inBracket = !open_.empty() && open_.back().bracket;
    if (piece == "else" && !loneIfs_.empty()) {   // goes on with that statement
      ifs_ = loneIfs_;
      ifs_.pop_back();
      headersSince_ = loneSince_;
    }
    loneSince_.reset();
    loneIfs_.clear();
    if (hasHeaders_ && !inBracket) followHeader(piece, word, line);
    if (kind.closes()) {
      while (!open_.empty() && open_.back().bracket) close(line);
      if (!open_.empty()) close(line);
      resetStatement();
      afterEnd_ = true;
    } else if (kind.opens() && (!word || mayOpen(piece, kind, inBracket))) {
      open_.push_back({line, statementStart(line), false, kind.doubleIndent});
      opened_ = word;
      awaitsIs_ = kind.needsIs;
      if (!word || piece == "begin" || piece == "fork") resetStatement();
    } else if (piece.size() == 1 && isOpener(piece[0])) {
      open_.push_back({line, statementStart(line), true, false});
    } else if (piece.size() == 1 && isCloser(piece[0])) {
      if (inBracket) close(line);
      if (header_ == Header::condition && open_.size() == headerDepth_) header_ = Header::whole;
    } else if (piece == ";" && !inBracket) {
      if (headersSince_ && *headersSince_ < line) {
        loneSince_ = headersSince_;
        loneIfs_ = ifs_;
      }
      if (awaitsIs_ && !open_.empty()) open_.pop_back();   // only a declaration
      resetStatement();
    } else if (piece == ":" && words_ == 1 && !opened_) {
      resetStatement();   // a label
    } else if (word && !inBracket) {
      if (first && kind.isMiddle() && !insideStatement()) middleFirst_ = middleStatement_ = true;
      noteWord(toQString(piece), kind);
    }
  }

  void followHeader(std::string_view piece, bool word, LineNo line) {
    const Header kind = word && (words_ == 0 || header_ == Header::whole) ? headerOf(piece) : Header::none;
    if (kind != Header::none) {
      header_ = kind;
      headerLine_ = line;
      if (!headersSince_) headersSince_ = line;
      if (piece == "if") ifs_.push_back(line);
    } else if (header_ == Header::begun && piece == "(") {
      header_ = Header::condition;
      headerDepth_ = open_.size();
    } else if (header_ == Header::begun && (piece == "@" || piece == "*")) {
      if (piece == "*") header_ = Header::whole;
    } else {
      header_ = Header::none;
      if (blocks_.classify(toQString(piece)).opens()) headersSince_.reset();
    }
  }

  bool mayOpen(std::string_view piece, const BlockWords::Entry& kind, bool inBracket) {
    if (inBracket || opened_ || opensNothing_ || (words_ == 0 && kind.opensNothing)) return false;
    const QString word = toQString(piece);
    if (words_ == 1 && blocks_.classify(firstWord_ + u' ' + word).opensNothing) return false;
    noteWord(word, kind);
    return true;
  }

  void noteWord(const QString& word, const BlockWords::Entry& kind) {
    if (words_++ == 0) {
      firstWord_ = word;
      opensNothing_ = kind.opensNothing;
    }
    if (word.compare(QLatin1String("is"), Qt::CaseInsensitive) == 0) awaitsIs_ = false;
  }

  void close(LineNo line) {
    if (open_.back().bracket && open_.back().line != line)
      begins_[line.value] = std::min(statementStart(line).value, open_.back().base.value);
    open_.pop_back();
  }

  void resetStatement() {
    words_ = 0;
    opened_ = opensNothing_ = awaitsIs_ = middleStatement_ = false;
    header_ = Header::none;
    headersSince_.reset();
    ifs_.clear();
  }

  const Snapshot text_;
  const BlockWords& blocks_;
  const int tabSize_;
  const bool expand_, hasHeaders_, hasDirectives_, endsWithLine_;
  LineNo last_{0};
  std::vector<Open> open_;
  std::map<std::int64_t, std::int64_t> begins_;   // for lines that close brackets of earlier lines: where those statements began
  std::map<std::int64_t, int> steps_;
  std::int64_t cells_ = 0;
  int tabLines_ = 0, blankLines_ = 0, words_ = 0;
  Header header_ = Header::none;
  LineNo headerLine_{0};
  std::size_t headerDepth_ = 0;   // of what is open around its condition
  std::optional<LineNo> headersSince_, loneSince_;
  std::vector<LineNo> ifs_, loneIfs_;   // of the headers since then
  bool tick_ = false;
  QString firstWord_;
  bool opened_ = false, opensNothing_ = false, awaitsIs_ = false, middleStatement_ = false, middleFirst_ = false, afterEnd_ = false;
};

// The text between the leading white space of the line and the range. None when text follows the range in its line, or the line is
// long.
std::optional<std::string> aloneBefore(const Snapshot& text, ByteRange range) {
  const LineNo line = text.lineAt(range.begin);
  const ByteOffset begin = std::min(range.begin, text.lineStart(line) + static_cast<std::int64_t>(leadingOf(text, line).size()));
  if (range.begin - begin > kLongestWord || !blankFrom(text, range.end, text.lineEnd(text.lineAt(range.end)))) return std::nullopt;
  return text.bytes({begin, range.begin});
}

// The word or sign in the line behind `at` and white space.
std::string wordBehind(const Snapshot& text, ByteOffset at) {
  const std::string all = text.bytes({at, std::min(text.lineEnd(text.lineAt(at)), at + kLongLine)});
  const std::size_t begin = std::min(all.size(), all.find_first_not_of(" \t"));
  std::string_view rest = std::string_view(all).substr(begin);
  std::size_t end = 0;
  while (end < rest.size() && end <= kLongestWord && classOf(decode(rest.substr(end)).code) == CharClass::word)
    end += static_cast<std::size_t>(decode(rest.substr(end)).bytes);
  if (end == 0 && !rest.empty()) end = static_cast<std::size_t>(decode(rest).bytes);
  return std::string(rest.substr(0, end));
}

bool oneWord(std::string_view bytes) {
  while (!bytes.empty()) {
    const auto c = decode(bytes);
    if (classOf(c.code) != CharClass::word) return false;
    bytes.remove_prefix(static_cast<std::size_t>(c.bytes));
  }
  return true;
}

bool opensBlock(std::string_view word) { return word == "{" || word == "begin"; }

bool isBracket(std::string_view word, const BlockWords::Entry& kind) {
  return word.size() == 1 && isCloser(word[0]) && !kind.closes();
}

// The indent of a closing word or bracket; none if it closes nothing.
std::optional<std::string> closerIndent(const LookBack& above, std::string_view word, const BlockWords::Entry& kind) {
  const bool bracket = isBracket(word, kind);
  if (const auto header = above.header(); header && kind.opens() && opensBlock(word)) return above.leading(*header);
  if (word == "else" && !kind.isMiddle() && above.loneIf()) return above.leading(*above.loneIf());
  if (!bracket && !kind.closes() && (!kind.isMiddle() || above.insideStatement())) return std::nullopt;
  const auto& open = above.open();
  auto found = open.rbegin();
  if (!bracket)
    while (found != open.rend() && found->bracket) ++found;
  if (found == open.rend() || found->bracket != bracket) return std::nullopt;
  std::string indent = above.leading(bracket ? found->line : found->base);
  if (kind.isMiddle() && found->twice) indent += above.unit();
  return indent;
}

}   // namespace

std::optional<std::string> indentForNewLine(TextModel& model, const BlockWords& blocks, ByteRange range,
                                            const EditOptions& options) {
  const Snapshot& text = model.snapshot();
  LineNo line = text.lineAt(range.begin);
  if (range.begin < text.lineStart(line) + static_cast<std::int64_t>(leadingOf(text, line).size()))
    return std::nullopt;   // within the white space
  // Below lines of white space, the line above them counts.
  ByteOffset at = range.begin;
  for (std::int64_t back = 0; back < kLinesSearched && line.value > 0 && blankFrom(text, text.lineStart(line), at); ++back)
    at = text.lineEnd(--line);
  const LookBack above(model, blocks, at, options);
  // A closing word behind the caret is moved at once.
  const std::string behind = wordBehind(text, range.end);
  if (const auto indent = closerIndent(above, behind, blocks.classify(toQString(behind)))) return indent;
  const auto& open = above.open();
  const LineNo begin = above.statementStart(line);
  if (const auto header = above.header()) return above.leading(*header) + above.unit();
  if (const auto since = above.loneSince()) return above.leading(*since);
  if (!open.empty() && open.back().line >= begin)
    return above.leading(open.back().bracket ? open.back().line : begin) + above.unit();
  if (above.middleFirst()) return above.leading(line) + above.unit();
  if (begin < line) return above.leading(begin);
  return std::nullopt;
}

bool mayStepBack(const TextModel& model, const BlockWords& blocks, ByteRange range, const QString& typed) {
  if (typed.size() != 1) return false;
  const auto before = aloneBefore(model.snapshot(), range);
  if (!before) return false;
  const QString word = toQString(*before) + typed;
  if (before->empty() && typed[0].unicode() < 128 && isCloser(static_cast<char>(typed[0].unicode()))) return true;
  if (!oneWord(fromQString(word)) && word.size() > 1) return false;
  const auto counts = [&](const QString& w) {
    const auto kind = blocks.classify(w);
    return kind.closes() || kind.isMiddle() ||
           ((w == QLatin1String("else") || (kind.opens() && opensBlock(fromQString(w)))) && hasLoneStatements(blocks));
  };
  return counts(word) || counts(toQString(*before));
}

std::optional<std::string> indentForCloser(TextModel& model, const BlockWords& blocks, ByteOffset caret,
                                           const EditOptions& options) {
  const Snapshot& text = model.snapshot();
  const LineNo line = text.lineAt(caret);
  const std::string word = aloneBefore(text, {caret, caret}).value_or(std::string()), present = leadingOf(text, line);
  if (word.empty() || line.value == 0) return std::nullopt;
  const auto kind = blocks.classify(toQString(word));
  const LookBack above(model, blocks, text.lineEnd(line - 1), options);
  if (isBracket(word, kind) || kind.closes() || kind.isMiddle() || (kind.opens() && above.header() && opensBlock(word))) {
    const auto indent = closerIndent(above, word, kind);
    return indent && cellsOf(*indent, options.tabSize) < cellsOf(present, options.tabSize) ? indent : std::nullopt;
  }
  if (word == "else" && !kind.isMiddle() && above.loneIf() && above.loneSince()) {   // from where Return has put it
    const std::string indent = above.leading(*above.loneIf());
    return indent != present && present == above.leading(*above.loneSince()) ? std::optional(indent) : std::nullopt;
  }
  // The word was continued and is not a closing word any more: its old indent is restored.
  const QString before = toQString(word).chopped(1);
  const auto beforeKind = blocks.classify(before);
  const bool opened = (beforeKind.opens() && above.header() && opensBlock(fromQString(before))) ||
                      (before == QLatin1String("else") && above.loneIf());
  if ((!beforeKind.closes() && !beforeKind.isMiddle() && !opened) || blocks.beginsACloser(toQString(word))) return std::nullopt;
  if (present != closerIndent(above, fromQString(before), beforeKind)) return std::nullopt;
  const ByteOffset end = text.lineEnd(line - 1);
  const auto fresh = indentForNewLine(model, blocks, {end, end}, options);
  return fresh ? fresh : std::optional(leadingOf(text, line - 1));
}
