// Re-indentation that reads whole lines: see indentsByWholeLine in Reindent.h.
#include <algorithm>
#include <unordered_map>

#include "control/TextModel.h"
#include "print/Reindent.h"
#include "text/Chars.h"
#include "text/Words.h"

namespace {

// A run of word characters or one other character of a line's code; a string is one piece that says nothing.
struct Piece {
  QString word;
  bool isWord = false;
  char16_t sign = 0;   // the character that is no word, where it is one unit
  BlockWords::Entry entry;
  Piece(QString text, bool isWordRun, const BlockWords& words)
      : word(std::move(text)), isWord(isWordRun), sign(!isWord && word.size() == 1 ? word[0].unicode() : u'\0'), entry(words.classify(word)) {}
  bool is(char16_t c) const { return sign == c; }
  bool is(QLatin1String lower) const { return isWord && word.size() == lower.size() && word.compare(lower, Qt::CaseInsensitive) == 0; }
};
using Pieces = std::vector<Piece>;
struct HashOfView {
  using is_transparent = void;
  std::size_t operator()(std::string_view bytes) const { return std::hash<std::string_view>()(bytes); }
};

// A block or a bracket that is open; the first level is the file itself.
struct Level {
  int base = 0;      // indent of the line that opened it
  int content = 0;   // indent of the lines inside
  bool bracket = false;
  bool byWord = false;   // a word opened it, not a sign
  int lastIf = -1;   // indent of the last "if" inside, for an "else" on a line of its own
};

// What is known of the statement that is being read.
struct Statement {
  QString first;               // its first word, behind a label
  int words = 0;
  bool opensNothing = false;   // it begins with a word~
  bool opened = false;         // one of its words has opened a block; no further one does
  bool awaitsIs = false;       // that was a word- and "is" has not come
};

class WholeLines {
 public:
  WholeLines(const BlockWords& words, int unit, const text::Highlighter* highlighter, int tabSize, const LineSource& line, qint64 count)
      : words_(words), unit_(unit), highlighter_(highlighter), tabSize_(tabSize), semicolons_(endsWithSemicolons(line, count)) {
    levels_.push_back({.byWord = true});
  }

  int next(const QString& line) {
    const bool inComment = state_ != 0;
    const Pieces pieces = scan(line);
    const int leading = leadingLength(line);
    if (leading == line.size()) return 0;
    const int old = columnsOf(line.left(leading));
    const bool ofDirective = directiveGoesOn_;
    directiveGoesOn_ = (ofDirective || isDirective(line.mid(leading), old)) && line.trimmed().endsWith(u'\\');
    if (ofDirective) return old;   // a macro over several lines stays as it is
    if (inComment && pieces.empty()) return std::max(0, old + shift_);
    if (isDirective(line.mid(leading), old)) return 0;
    const int indent = inComment ? std::max(0, old + shift_) : indentOf(pieces, old);
    shift_ = indent - old;
    if (!pieces.empty()) walk(pieces, indent);
    return indent;
  }

 private:
  // Statements end with ";" where one line of code in eight or more does so.
  bool endsWithSemicolons(const LineSource& line, qint64 count) {
    qint64 all = 0, ended = 0;
    for (qint64 i = 0; i < std::min<qint64>(count, 2000); ++i) {
      const Pieces pieces = scan(line(i));
      all += !pieces.empty();
      ended += std::any_of(pieces.begin(), pieces.end(), [](const Piece& piece) { return piece.is(u';'); });
    }
    state_ = 0;
    return ended * 8 >= all;
  }

  int columnsOf(const QString& blanks) const {
    const std::string bytes = fromQString(blanks);
    return static_cast<int>(text::displayColumn(bytes, static_cast<std::int64_t>(bytes.size()), tabSize_).value);
  }

  // "#if" stands at the margin where the language lists it so; a word with a grave accent does when it stands there already.
  bool isDirective(const QString& trimmed, int old) const {
    if (!highlighter_ || (!trimmed.startsWith(u'#') && !(trimmed.startsWith(u'`') && old == 0))) return false;
    return highlighter_->isKeyword(fromQString(trimmed[0] + firstWord(trimmed.mid(1 + leadingLength(trimmed.mid(1))))));
  }

  // A word is looked up once however often it comes.
  const Piece& known(std::string_view bytes, bool isWord) {
    auto found = known_.find(bytes);
    if (found == known_.end()) found = known_.emplace(std::string(bytes), Piece(toQString(bytes), isWord, words_)).first;
    return found->second;
  }

  Pieces scan(const QString& line) {
    const std::string bytes = fromQString(line);
    const std::string_view all(bytes);
    std::vector<text::Token> tokens;
    if (highlighter_ && highlighter_->valid()) state_ = highlighter_->scanLine(all, state_, &tokens);
    Pieces pieces;
    auto token = tokens.begin();
    for (std::size_t at = 0; at < all.size();) {
      const auto here = static_cast<std::int64_t>(at);
      while (token != tokens.end() && token->begin + token->length <= here) ++token;
      if (token != tokens.end() && token->begin <= here &&
          (token->kind == text::TokenKind::comment || token->kind == text::TokenKind::string)) {
        if (token->kind == text::TokenKind::string) pieces.push_back(known("\"", false));
        at = static_cast<std::size_t>(token->begin + token->length);
        continue;
      }
      const auto c = text::decode(all.substr(at));
      const auto kind = text::classOf(c.code);
      std::size_t end = at + static_cast<std::size_t>(c.bytes);
      while (kind == text::CharClass::word && end < all.size()) {
        const auto following = text::decode(all.substr(end));
        if (text::classOf(following.code) != kind) break;
        end += static_cast<std::size_t>(following.bytes);
      }
      if (kind != text::CharClass::blank) pieces.push_back(known(all.substr(at, end - at), kind == text::CharClass::word));
      at = end;
    }
    return pieces;
  }

  int indentOf(const Pieces& pieces, int old) const {
    const Level& level = levels_.back();
    const int shifted = std::max(0, old + shift_);
    if (pieces.empty()) return level.bracket ? shifted : level.content;   // a comment alone
    const Piece& first = pieces.front();
    const auto kind = first.entry.kind;
    if (kind == BlockClass::end) return blockBase();
    if (level.bracket) {
      if (isCloser(first)) return level.base;
      return shifted > level.base ? shifted : level.content;   // alignment by hand stays
    }
    if (headerOpen_ && (first.is(u'(') || first.is(u'#') || first.is(QLatin1String("is")))) return level.base;
    if (first.is(QLatin1String("then")) && kind == BlockClass::none && levels_.size() > 1) return level.base;
    if (unfinished_) {
      if (kind == BlockClass::start) return afterLabel_ ? statementIndent_ + unit_ : statementIndent_;
      if (shifted > statementIndent_) return afterLabel_ ? statementIndent_ + unit_ : shifted;   // alignment by hand stays
      return listGoesOn_ ? statementIndent_ : statementIndent_ + unit_;
    }
    if (kind == BlockClass::middle) return std::max(0, level.content - unit_);
    if (first.is(QLatin1String("else")) && level.lastIf >= 0) return level.lastIf;
    const bool operatorFirst = !semicolons_ && !first.isWord && QStringLiteral("+-*/|&#").contains(first.word);
    if (operatorFirst && shifted > level.content) return shifted;   // goes on with the line above, aligned by hand
    return level.content;
  }

  // A brace is a bracket where the language does not list it as a block word.
  bool isOpener(const Piece& piece) const {
    return piece.is(u'(') || piece.is(u'[') || (piece.is(u'{') && piece.entry.kind == BlockClass::none);
  }
  bool isCloser(const Piece& piece) const {
    return piece.is(u')') || piece.is(u']') || (piece.is(u'}') && piece.entry.kind == BlockClass::none);
  }

  int blockBase() const {
    for (auto level = levels_.rbegin(); level != levels_.rend(); ++level)
      if (!level->bracket) return level->base;
    return 0;
  }

  void walk(const Pieces& pieces, int indent) {
    if (!levels_.back().bracket) {
      anchor_ = indent;
      if (!unfinished_) statementIndent_ = indent;
    }
    const int base = anchor_;           // blocks hang on the line where the brackets around this one began
    const bool middleFirst = !unfinished_ && pieces[0].entry.kind == BlockClass::middle;
    if (middleFirst && levels_.size() == 1) levels_[0].content = unit_;   // sections of a file without a block around them
    bool closed = middleFirst;          // nothing of a statement is left open by the last piece
    std::size_t bracketsHere = 0;       // brackets opened in this line and still open
    bool afterEnd = false;
    for (std::size_t i = 0; i < pieces.size(); ++i) {
      const Piece& piece = pieces[i];
      const auto entry = piece.entry;
      const bool belongsToEnd = afterEnd && piece.isWord && entry.kind == BlockClass::start;   // "end if", "end process"
      const bool label = afterEnd && piece.is(u':');                                       // "end : name"
      afterEnd = false;
      if (belongsToEnd) continue;
      if (label) {
        ++i;
        continue;
      }
      if (i > 0 || !middleFirst) closed = false;
      if (isOpener(piece)) {
        const int inside = bracketsHere > 0 ? levels_.back().content : indent + unit_;
        levels_.push_back({indent, inside, true, false, -1});
        ++bracketsHere;
      } else if (isCloser(piece)) {
        if (levels_.back().bracket) levels_.pop_back();
        if (bracketsHere > 0) --bracketsHere;
      } else if (entry.kind == BlockClass::end) {
        closeBlock();
        bracketsHere = 0;
        afterEnd = closed = true;
      } else if (entry.kind == BlockClass::start && mayOpen(piece, entry)) {
        const int width = entry.doubleIndent ? 2 * unit_ : unit_;
        levels_.push_back({base, base + width, false, piece.isWord, -1});
        bracketsHere = 0;
        statement_.opened = piece.isWord;
        statement_.awaitsIs = entry.needsIs;
        closed = true;
      } else if (piece.is(u';') && !levels_.back().bracket) {
        if (statement_.awaitsIs && levels_.size() > 1) levels_.pop_back();   // only a declaration
        statement_ = {};
        headerOpen_ = false;
        closed = true;
      } else if (piece.is(u':') && statement_.words == 1 && !statement_.opened) {
        statement_ = {};   // a label
        closed = i + 1 < pieces.size();
      } else if (piece.isWord) {
        noteWord(piece, entry, base);
      }
    }
    finishLine(pieces, base, closed || middleFirst);
  }

  // A word in brackets opens nothing; of the words of one statement only the first does.
  bool mayOpen(const Piece& piece, const BlockWords::Entry& entry) {
    if (!piece.isWord) return true;
    if (levels_.back().bracket || statement_.opensNothing || statement_.opened) return false;
    if (statement_.words == 0 && entry.opensNothing) return false;
    if (statement_.words == 1 && words_.classify(statement_.first + u' ' + piece.word).opensNothing) return false;
    noteWord(piece, entry, anchor_);
    return true;
  }

  void noteWord(const Piece& piece, const BlockWords::Entry& entry, int indent) {
    if (statement_.words++ == 0) {
      statement_.first = piece.word;
      statement_.opensNothing = entry.opensNothing;
    }
    if (piece.is(QLatin1String("is"))) statement_.awaitsIs = false;
    if (piece.is(QLatin1String("if"))) levelForIf().lastIf = indent;
  }

  Level& levelForIf() {
    return statement_.opened && levels_.size() > 1 ? levels_[levels_.size() - 2] : levels_.back();
  }

  void closeBlock() {
    while (levels_.size() > 1 && levels_.back().bracket) levels_.pop_back();
    if (levels_.size() > 1) levels_.pop_back();
    else levels_[0].content = 0;
    statement_ = {};
  }

  void finishLine(const Pieces& pieces, int indent, bool closed) {
    const Piece& last = pieces.back();
    const bool openBracket = levels_.back().bracket;
    headerOpen_ = statement_.opened && !openBracket && last.entry.kind != BlockClass::start;
    if (openBracket) {
      unfinished_ = false;   // the bracket itself says how the next line stands
      return;
    }
    if (statement_.opened) {
      unfinished_ = false;
      if (!statement_.awaitsIs) statement_ = {};
      return;
    }
    const bool directive = pieces.front().word == u"`";
    const bool goesOn = semicolons_ ? true : last.is(u'\\');
    const bool startedOrHung = !unfinished_ || hangs_;
    unfinished_ = !closed && !directive && goesOn && !last.is(QLatin1String("then")) && !standsAlone(pieces);
    // The items of a list stand below each other, those of a declaration behind its first word.
    listGoesOn_ = unfinished_ && last.is(u',') && (statement_.words <= 1 || !levels_.back().byWord);
    // A label hangs its statement on itself in a block of words, and stands for itself in one of braces.
    afterLabel_ = unfinished_ && last.is(u':') && levels_.back().byWord && pieces.front().word != u"?" ;
    if (last.is(u':') && !levels_.back().byWord) unfinished_ = false;
    if (!unfinished_) statement_ = {};
    // "if (...)": what follows hangs on this line. Further lines of one statement may end like that too, and govern nothing.
    const Piece& front = pieces.front();
    const bool governs = startedOrHung || front.is(QLatin1String("if")) || front.is(QLatin1String("for")) || front.is(QLatin1String("while")) || front.is(QLatin1String("else")) || front.is(QLatin1String("repeat"));
    hangs_ = unfinished_ && front.isWord && governs && (isCloser(last) || last.is(QLatin1String("else")) || last.is(QLatin1String("do")));
    if (hangs_) statementIndent_ = indent;
  }

  // Lines that need no ";" in languages of braces: "template <...>" and macros in capital letters.
  bool standsAlone(const Pieces& pieces) const {
    if (!braces_ || unfinished_) return false;
    const Piece &first = pieces.front(), &last = pieces.back();
    if (first.is(QLatin1String("template")) && last.is(u'>')) return true;
    const bool capitals = first.isWord && first.word.size() > 2 && first.word == first.word.toUpper() && first.word != first.word.toLower();
    return capitals && (pieces.size() == 1 || (pieces[1].is(u'(') && isCloser(last)));
  }

  const BlockWords& words_;
  const bool braces_ = words_.classify(QStringLiteral("{")).kind == BlockClass::start;   // a brace opens a block
  const int unit_;
  std::unordered_map<std::string, Piece, HashOfView, std::equal_to<>> known_;
  const text::Highlighter* const highlighter_;
  const int tabSize_;
  text::LineState state_ = 0;
  const bool semicolons_;        // statements end with ";", else with the line
  std::vector<Level> levels_;
  Statement statement_;
  int statementIndent_ = 0;
  int anchor_ = 0;               // indent of the last line that did not begin within brackets
  bool unfinished_ = false;      // the statement goes on in the next line
  bool listGoesOn_ = false;      // ... with the next item of a list
  bool afterLabel_ = false;      // ... with what the label stands for
  bool hangs_ = false;           // ... with the statement that "if (...)" or "else" governs
  bool directiveGoesOn_ = false; // the next line belongs to a "#define" above
  bool headerOpen_ = false;      // a block's first statement goes on: "module m" with its brackets below
  int shift_ = 0;                // new indent less old one of the last line, for lines that go with it
};

}  // namespace

std::vector<int> indentsByWholeLine(const LineSource& line, qint64 count, const BlockWords& words, int unit,
                                    const text::Highlighter* highlighter, int tabSize) {
  std::vector<int> indents;
  indents.reserve(static_cast<std::size_t>(count));
  WholeLines lines(words, unit, highlighter, tabSize, line, count);
  for (qint64 i = 0; i < count; ++i) indents.push_back(lines.next(line(i)));
  return indents;
}
