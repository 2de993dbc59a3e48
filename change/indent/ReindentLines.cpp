// The careful method of indentation: see indentsByWholeLine in Reindent.h.
#include <algorithm>

#include "change/indent/CommentLines.h"
#include "change/indent/IndentLevels.h"
#include "change/indent/LineScanner.h"
#include "change/indent/Reindent.h"
#include "control/edit/TextModel.h"

namespace {

constexpr qint64 kLearnt = 20000;   // lines that are read to learn the habits of the text

class WholeLines : private IndentState {
 public:
  WholeLines(const BlockWords& words, int unit, const text::Highlighter* highlighter, const FormatRules& rules, int tabSize,
             const LineSource& line, qint64 count)
      : words_(words),
        unit_(unit),
        highlighter_(highlighter),
        scanner_(words, highlighter, rules, tabSize),
        semicolons_(endsWithSemicolons(line, count)),
        habits_(detectIndent(line, count, tabSize).unit, unit) {
    levels_.push_back({.byWord = true});
    learning_ = true;
    for (qint64 i = 0; i < std::min(count, kLearnt); ++i) next(line(i));
    while (!levels_.empty()) popLevel();
    habits_.judgeUnit();
    static_cast<IndentState&>(*this) = {};
    const int whole =
        firstColumn_ > 0 ? habits_.width(QString(), 0, firstColumn_) : 0;   // a part of a text may be indented as a whole
    levels_.push_back({.content = whole, .byWord = true});
    scanner_.restart();
    learning_ = directiveGoesOn_ = false, branchOld_ = -1;
    choices_.clear();
  }

  Placed next(const QString& line) {
    const bool inComment = scanner_.inComment();
    const Pieces pieces = scanner_.scan(line);
    const bool stays = scanner_.stays();
    const int leading = leadingLength(line);
    if (stays && (pieces.empty() || leading == line.size())) return {Placed::Kind::fixed, kStays, 0};
    if (leading == line.size()) return {};
    const int old = scanner_.columnsOf(line.left(leading));
    const bool ofDirective = directiveGoesOn_, directive = !stays && isDirective(line.mid(leading));
    directiveGoesOn_ = (ofDirective || directive) && line.trimmed().endsWith(u'\\');
    if (ofDirective) return {Placed::Kind::fixed, old, old};   // a macro over several lines is not changed
    if (directive) chooseBranch(line.mid(leading + 1), old);
    if (directive && (old == 0 || line[leading] == u'#')) return {Placed::Kind::fixed, 0, old};
    if (directive) return {Placed::Kind::comment, old, old};   // follows the lines around it
    if (pieces.empty()) return {inComment ? Placed::Kind::insideComment : Placed::Kind::comment, old, old};
    if (!stays && branchOld_ >= 0) enterBranch(old);
    if (learning_ && !stays) noteHabit(pieces, old);
    if (!learning_ && !stays) settle(pieces[0], old);
    const int indent = learning_ || stays ? old : inComment ? std::max(0, old + shift_) : indentOf(pieces, old);
    shift_ = indent - old;
    walk(pieces, indent);
    if (stays) return {Placed::Kind::fixed, kStays, old};
    return {Placed::Kind::code, indent, old};
  }

  int trailingComment() const { return scanner_.trailingComment(); }

 private:
  // Statements end with ";" if at least one in eight lines of code does.
  bool endsWithSemicolons(const LineSource& line, qint64 count) {
    qint64 all = 0, ended = 0;
    bool goesOn = false;
    for (qint64 i = 0; i < std::min<qint64>(count, kLearnt); ++i) {
      const Pieces pieces = scanner_.scan(line(i));
      all += !pieces.empty() && !pieces.back().is(u',');   // in any language a comma continues a list
      const bool ofMacro = std::exchange(goesOn, !pieces.empty() && pieces.back().is(u'\\'));
      if (!ofMacro && pieces.size() > 1 && pieces[0].is(u'`'))
        macroBlocks_ += isMacro(pieces[1], "_begin") - isMacro(pieces[1], "_end");
      // Two of them (";;") end a branch of a "case" in a shell.
      ended += !pieces.empty() && pieces.back().is(u';') && !(pieces.size() > 1 && pieces[pieces.size() - 2].is(u';'));
    }
    scanner_.restart();
    return ended * 8 >= all;
  }

  // "#if" stands at the left margin if the language lists it so. A word with a grave accent does if it stands there already.
  bool isDirective(const QString& trimmed) const {
    if (!highlighter_ || (!trimmed.startsWith(u'#') && !trimmed.startsWith(u'`'))) return false;
    return highlighter_->isKeyword(fromQString(trimmed[0] + firstWord(trimmed.mid(1 + leadingLength(trimmed.mid(1))))));
  }

  // All branches of an "ifdef" begin in the state before the first one. The code behind them continues the last branch.
  void chooseBranch(const QString& directive, int old) {
    const QString word = firstWord(directive.mid(leadingLength(directive)));
    const auto is = [&](std::initializer_list<const char*> any) {
      return std::any_of(any.begin(), any.end(), [&](const char* one) { return word == QLatin1String(one); });
    };
    branchOld_ = -1;
    if (is({"ifdef", "ifndef", "if", "else", "elsif", "elif"})) branchOld_ = old;
    if (is({"endif"}) && !choices_.empty()) leaveBranch(choices_.back().levels_);
    if (is({"ifdef", "ifndef", "if"})) choices_.push_back(*this);
    else if (is({"else", "elsif", "elif"}) && !choices_.empty()) static_cast<IndentState&>(*this) = choices_.back();
    else if (is({"endif"}) && !choices_.empty()) choices_.pop_back();
  }

  // A branch may be one step deeper than its "ifdef", which then stands at the indent of the lines around it.
  void enterBranch(int old) {
    const int from = std::exchange(branchOld_, -1);
    if (from <= 0 || unfinished_ || headerOpen_ || levels_.back().bracket || old - from != habits_.unit()) return;
    if (learning_ ? from <= levels_.back().old : from + levels_.back().shift != levels_.back().content) return;
    Level& level = levels_.back();
    level.inBranch += learning_ ? old - from : unit_;
    if (!learning_) level.content += unit_;
  }
  void leaveBranch(const LevelStack& before) {
    if (levels_.size() != before.size() || std::as_const(levels_).back().inBranch <= before.back().inBranch) return;
    Level& level = levels_.back();
    if (!learning_) level.content -= level.inBranch - before.back().inBranch;
    level.inBranch = before.back().inBranch;
  }

  int indentOf(const Pieces& pieces, int old) const {
    const Level& level = levels_.back();
    const Piece& first = pieces.front();
    const auto kind = first.entry.kind;
    if (endsMacroBlock(pieces)) return level.base;
    if (kind == BlockClass::end && level.blocks == 0) {
      const std::size_t depth = ended(pieces, 0, old);
      return depth > 0 ? levels_.at(depth).base : 0;
    }
    if (level.bracket) {
      const int shifted = std::max(0, old + level.shift);
      if (level.word == u"`") return shifted;
      if (isCloser(first)) return shifted >= level.least ? shifted : level.base;
      if (shifted > level.base) return level.base + habits_.ofHand(shifted - level.base);   // alignment by hand stays
      return shifted > level.least ? shifted : level.content;
    }
    const int shifted = std::max(0, old + (unfinished_ || headerGoesOn_ ? statementShift_ : shift_));
    if (goesOnWithHeader(first)) return std::max(level.base, old + level.shift);
    if (first.is(QLatin1String("then")) && kind == BlockClass::none && levels_.size() > 1) return level.base;
    if (headerGoesOn_ && shifted > level.base) return shifted;
    if (unfinished_) {
      const int own = shifted - statementIndent_;
      if (kind == BlockClass::start) return statementIndent_ + habits_.width(hangKey(first), hangsDeeper(first) ? unit_ : 0, own);
      if (own > 0 && !afterLabel_) return statementIndent_ + habits_.ofHand(own);   // alignment by hand stays
      return statementIndent_ + (listGoesOn_ ? 0 : habits_.width(followKey(first), unit_, own));
    }
    if (kind == BlockClass::middle)
      return level.width == 0 ? std::max(0, level.content - unit_)
                              : level.base + habits_.width(middleKey(level, first), level.width - unit_, shifted - level.base);
    if (first.is(QLatin1String("else")) && level.lastIf >= 0) return level.lastIf;
    const bool operatorFirst = !semicolons_ && !first.isWord && QStringLiteral("+-*/|&#").contains(first.word);
    if (operatorFirst && shifted > level.content) return shifted;   // continues the line above, aligned by hand
    return level.content;
  }

  bool goesOnWithHeader(const Piece& first) const {
    return headerOpen_ && (first.is(u'(') || first.is(u'#') || first.is(QLatin1String("is")));
  }
  // A block below the line that it belongs to: "begin" beneath "if (...)", or "case" one level deeper beneath "always_comb".
  bool hangsDeeper(const Piece& first) const {
    return afterLabel_ || (first.isWord && !first.is(QLatin1String("begin")) && !first.is(QLatin1String("fork")));
  }
  QString hangKey(const Piece& first) const { return (afterLabel_ ? u':' : u'^') + first.word.toLower(); }
  // A continuation of the statement: behind a label, governed by "if (...)", after a bracket or name on its own line, and so on.
  QString followKey(const Piece& first) const {
    if (afterLabel_) return QStringLiteral("::");
    if (hangs_) return QStringLiteral("^^") + statement_.first.toLower();
    if (first.is(QLatin1String("generic")) || first.is(QLatin1String("port"))) return QStringLiteral("~map");
    return afterName_ ? (first.is(u'(') ? QStringLiteral("~(") : QStringLiteral("~")) : QStringLiteral("~~");
  }
  static QString middleKey(const Level& level, const Piece& first) {
    return level.word.section(u'>', 0, 0) + u'|' + first.word.toLower();
  }

  // The indent that the text itself gives to a line in its block.
  void noteHabit(const Pieces& pieces, int old) {
    Level& level = levels_.back();
    const Piece& first = pieces.front();
    const auto kind = first.entry.kind;
    if (firstColumn_ < 0) firstColumn_ = old;
    if (kind == BlockClass::end || (level.bracket && isCloser(first)) || goesOnWithHeader(first) || headerGoesOn_) return;
    if (!level.bracket && unfinished_) {
      if (kind == BlockClass::start) habits_.note(hangKey(first), old - statementIndent_);
      else habits_.note(followKey(first), old - statementIndent_);
      return;
    }
    if (!level.bracket && kind == BlockClass::middle) habits_.note(middleKey(level, first), old - level.base);
    else if (!first.is(QLatin1String("else"))) IndentHabits::count(&level.tally, old - level.base - level.inBranch);
  }

  // The first line of a block keeps its distance if the text has other blocks like it.
  void settle(const Piece& first, int old) {
    Level& level = levels_.back();
    if (level.settled || level.inBranch > 0 || level.bracket || level.width == 0 || unfinished_ || headerOpen_ ||
        first.entry.kind == BlockClass::end || first.entry.kind == BlockClass::middle)
      return;
    level.settled = true;
    level.content = level.base + habits_.width(level.word, level.content - level.base, old + level.shift - level.base);
  }

  void popLevel() {
    if (learning_) habits_.note(levels_.back().word, IndentHabits::mostOf(levels_.back().tally));
    levels_.pop_back();
  }

  // A brace is a bracket unless the language lists it as a block word.
  bool isOpener(const Piece& piece) const {
    return piece.is(u'(') || piece.is(u'[') || (piece.is(u'{') && piece.entry.kind == BlockClass::none);
  }
  bool isCloser(const Piece& piece) const {
    return piece.is(u')') || piece.is(u']') || (piece.is(u'}') && piece.entry.kind == BlockClass::none);
  }

  // Depth of the level that the closing word ends; 0: none. This is the innermost block. Exception: the innermost block is of
  // another kind and in another column, and an outer block of the kind that the word names ("endclass", "end process") began in
  // this column. So a block that was opened by mistake does not move the code behind the block around it.
  std::size_t ended(const Pieces& pieces, std::size_t at, int old) const {
    const std::size_t innermost = levels_.depthOf([](const Level& level) { return !level.bracket; });
    if (innermost <= 1) return 0;
    if (at > 0) return innermost;
    const Level& block = levels_.at(innermost);
    const QString closer = pieces[at].word.toLower();
    QString kind = closer.startsWith(QLatin1String("end")) ? closer.mid(3) : QString();
    if (closer == u"end" && at + 1 < pieces.size() && belongsToEnd(pieces[at + 1])) kind = pieces[at + 1].word.toLower();
    else if (closer == u"end" && words_.classify(QLatin1String("end") + block.opener()).kind == BlockClass::end)
      kind = QStringLiteral("begin");
    if (kind.isEmpty() || block.isOfKind(kind) || block.old == old) return innermost;
    const std::size_t outer =
        levels_.depthOf([&](const Level& level) { return !level.bracket && level.old == old && level.isOfKind(kind); });
    return outer > 1 ? outer : innermost;
  }
  // True for "end if" and "end process". False when the second word opens a block: "end begin".
  static bool belongsToEnd(const Piece& behind) {
    return behind.isWord && behind.entry.kind == BlockClass::start && !behind.is(QLatin1String("begin")) &&
           !behind.is(QLatin1String("fork"));
  }

  // "`fields_begin(c)" ... "`fields_end": the lines between keep their depth. Only if each begin in the text has its end.
  static bool isMacro(const Piece& name, const char* ending) {
    return name.isWord && name.word.endsWith(QLatin1String(ending), Qt::CaseInsensitive);
  }
  bool endsMacroBlock(const Pieces& pieces) const {
    return pieces.size() > 1 && levels_.back().word == u"`" && pieces[0].is(u'`') && isMacro(pieces[1], "_end");
  }

  // In a line that was aligned by hand, the lines of a bracket only need to be deeper than the continuation of that line.
  bool isAligned(int indent) const {
    const Level& level = levels_.back();
    if (!level.bracket) return unfinished_ && indent - shift_ > statementIndent_ - statementShift_;
    return indent - shift_ > level.old || (level.least < level.base && indent > level.least);
  }
  int leastOf(const Level& level) const { return level.bracket ? level.least : statementIndent_; }

  void walk(const Pieces& pieces, int indent) {
    if (!levels_.back().bracket) {
      anchor_ = indent, anchorOld_ = indent - shift_;
      if (!unfinished_) statementIndent_ = indent, statementShift_ = shift_;
    }
    const bool aligned = isAligned(indent);
    if (endsMacroBlock(pieces)) popLevel();
    const int base = anchor_;   // a block belongs to the line in which the brackets around this line began
    const bool middleFirst = !unfinished_ && pieces[0].entry.kind == BlockClass::middle;
    if (middleFirst && levels_.size() == 1) levels_.back().content = unit_;   // sections of a file without a block around them
    if (middleFirst && levels_.size() > 1 && !levels_.back().bracket) beginSection(levels_.back(), pieces[0]);
    // "module m" - "import p::*;" - "#(" - ")" - "("
    bool ofHeader = headerOpen_ && (levels_.back().bracket || goesOnWithHeader(pieces[0]) || pieces[0].is(QLatin1String("import")));
    bool closed = middleFirst;      // the last token leaves no statement open
    std::size_t bracketsHere = 0;   // brackets opened in this line and still open
    int closedFrom = -1;            // position of the line whose bracket this one closes
    bool afterEnd = false, imports = false;
    if (pieces.size() > 1 && pieces[0].is(u'`') && !levels_.back().bracket && macroBlocks_ == 0 && isMacro(pieces[1], "_begin"))
      levels_.push_back({.base = indent,
                         .content = indent,
                         .least = indent,
                         .bracket = true,
                         .shift = shift_,
                         .old = indent - shift_,
                         .word = pieces[0].word});
    for (std::size_t i = 0; i < pieces.size(); ++i) {
      const Piece& piece = pieces[i];
      const auto entry = piece.entry;
      const bool ofEnd = afterEnd && belongsToEnd(piece);
      const bool label = afterEnd && piece.is(u':');   // "end : name"
      afterEnd = false;
      if (ofEnd) continue;
      if (label) {
        ++i;
        continue;
      }
      if (i > 0 || !middleFirst) closed = false;
      if (piece.is(u'`') && !levels_.back().bracket &&
          (i == 0 ? !unfinished_ || hangs_ : isCloser(pieces[i - 1]) || pieces[i - 1].is(QLatin1String("else"))))
        statement_.macro = true;
      imports |= statement_.opened && piece.is(QLatin1String("import"));   // "module m import p::*;"
      if (isOpener(piece)) {
        // "if (a ||" ... "b) {": the brace belongs to the line in which the bracket before it began
        const int from =
            closedFrom >= 0 && (isCloser(pieces[0]) || (piece.is(u'{') && isCloser(pieces[i - 1]))) ? closedFrom : indent;
        const int inside = bracketsHere > 0 ? levels_.back().content : from + unit_;
        const int least = aligned ? leastOf(levels_.back()) : headerOpen_ && indent > 0 && shift_ != indent ? from - 1 : from;
        levels_.push_back({.base = from,
                           .content = inside,
                           .least = least,
                           .bracket = true,
                           .shift = shift_,
                           .old = indent - shift_,
                           .word = piece.word});
        ++bracketsHere;
      } else if (isCloser(piece)) {
        const bool ofStatements = levels_.back().bracket && levels_.back().statements;
        if (bracketsHere == 0 && levels_.back().bracket) closedFrom = levels_.back().base;
        if (levels_.back().bracket) popLevel();
        if (ofStatements && levels_.back().bracket) levels_.back().statements = true;
        if (bracketsHere > 0) --bracketsHere;
        if (ofStatements && !levels_.back().bracket) statement_ = {}, closed = true;   // "constraint c { ...; }"
      } else if (entry.kind == BlockClass::end && levels_.back().blocks > 0) {
        --levels_.back().blocks;
      } else if (entry.kind == BlockClass::end) {
        closeBlock(ended(pieces, i, indent - shift_));
        bracketsHere = 0;
        afterEnd = closed = true;
      } else if (entry.kind == BlockClass::start && mayOpen(piece, entry, i > 0 ? &pieces[i - 1] : nullptr)) {
        const int width = entry.doubleIndent ? 2 * unit_ : unit_;
        const QString word = piece.word.toLower();
        levels_.push_back({.base = base,
                           .content = base + habits_.width(word, width),
                           .byWord = piece.isWord,
                           .shift = shift_,
                           .old = anchorOld_,
                           .width = width,
                           .word = word});
        bracketsHere = 0;
        statement_.opened = piece.isWord;
        statement_.awaitsIs = entry.needsIs;
        closed = true;
        if (!standsBare(piece)) continue;
        statement_ = {};
        if (i + 1 < pieces.size() && pieces[i + 1].is(u':')) i += 2;   // "begin : name"
      } else if (piece.is(u';') && levels_.back().bracket) {
        levels_.back().statements |= levels_.back().word == u"{";
      } else if (piece.is(u';')) {
        if (statement_.awaitsIs && levels_.size() > 1) popLevel();   // only a declaration
        statement_ = {};
        headerOpen_ = false;
        ofHeader = (ofHeader || imports) && (imports || pieces[0].is(QLatin1String("import")));
        closed = true;
      } else if (piece.is(u':') && statement_.words == 1 && !statement_.opened && !statement_.choice) {
        statement_ = {};   // a label
        statement_.labelled = true;
        closed = i + 1 < pieces.size();
      } else if (piece.is(u'?')) {
        statement_.choice = true;
      } else if (piece.isWord) {
        noteWord(piece, entry, base);
      }
    }
    finishLine(pieces, base, closed || middleFirst);
    if (ofHeader) headerOpen_ = true;
  }

  // Opening words that no statement follows: the text behind them is the first line of the block.
  static bool standsBare(const Piece& opener) {
    return opener.is(QLatin1String("begin")) || opener.is(QLatin1String("fork")) || opener.is(QLatin1String("generate"));
  }

  // A middle word begins a section of its block. The lines of the section may have another indent than those before.
  void beginSection(Level& level, const Piece& middle) {
    if (learning_) habits_.note(level.word, IndentHabits::mostOf(level.tally));
    level.tally.clear();
    level.settled = false;
    level.inBranch = 0;
    const QString opener = level.word.section(u'>', 0, 0);
    level.word = opener + u'>' + middle.word.toLower();
    if (level.width > 0) level.content = level.base + habits_.width(level.word, habits_.width(opener, level.width));
  }

  // A word in brackets opens nothing. In one statement only the first opening word opens a block.
  bool mayOpen(const Piece& piece, const BlockWords::Entry& entry, const Piece* before) {
    if (!piece.isWord) return true;
    if (levels_.back().bracket) {
      levels_.back().blocks += standsBare(piece) || levels_.back().blocks > 0;
      return false;
    }
    if (statement_.opened && levels_.size() > 1) levels_.back().also += piece.word.toLower();
    if (statement_.opensNothing || statement_.opened) return false;
    if (statement_.words == 0 && entry.opensNothing) return false;
    if (statement_.labelled &&
        (piece.is(QLatin1String("component")) || piece.is(QLatin1String("entity")) || piece.is(QLatin1String("configuration"))))
      return false;
    if (before && before->isWord && (before->entry.opensNothing || words_.classify(before->word + u' ' + piece.word).opensNothing))
      return false;   // "if (...) wait fork"
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

  Level& levelForIf() { return statement_.opened && levels_.size() > 1 ? levels_.belowBack() : levels_.back(); }

  void closeBlock(std::size_t depth) {
    while (levels_.size() > 1 && levels_.size() >= depth) popLevel();
    if (depth == 0) levels_.back().content = 0;
    statement_ = {};
  }

  void finishLine(const Pieces& pieces, int indent, bool closed) {
    const Piece& last = pieces.back();
    const bool openBracket = levels_.back().bracket;
    headerOpen_ = statement_.opened && last.entry.kind != BlockClass::start;
    headerGoesOn_ = headerOpen_ && isOperator(last);
    if (openBracket) {
      unfinished_ = false;   // the bracket determines the next line
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
    const bool macroEnds = statement_.macro && (isCloser(last) || (directive && !isOperator(last) && last.sign != u'='));
    const bool arrow = last.is(u'>') && pieces.size() > 1 && pieces[pieces.size() - 2].is(u'=');
    const bool condition =
        !arrow && pieces.front().entry.kind == BlockClass::middle && isOperator(last);   // "elsif a and", "when a |"
    unfinished_ =
        (!closed || condition) && !arrow && !macroEnds && goesOn && !last.is(QLatin1String("then")) && !standsAlone(pieces);
    // The items of a list are aligned with each other, those of a declaration behind its first word.
    listGoesOn_ = unfinished_ && last.is(u',') &&
                  (statement_.words <= 1 || !levels_.back().byWord || levels_.back().word.startsWith(QLatin1String("case")));
    // With block words, the statement belongs to its label. With braces, a label stands alone.
    const bool label = last.is(u':') && !statement_.choice;
    afterLabel_ = unfinished_ && label && levels_.back().byWord;
    if (label && !levels_.back().byWord) unfinished_ = false;
    if (!unfinished_) statement_ = {};
    afterName_ = unfinished_ && (last.isWord || isCloser(last));
    // "if (...)": the next statement belongs to this line. Continuation lines of a statement may end in the same way and govern
    // nothing.
    const Piece& front = pieces.front();
    const bool governs = startedOrHung || front.is(QLatin1String("if")) || front.is(QLatin1String("for")) ||
                         front.is(QLatin1String("while")) || front.is(QLatin1String("else")) || front.is(QLatin1String("repeat"));
    // "x <= a when b else" continues and governs nothing.
    const bool elseLast = last.is(QLatin1String("else")) &&
                          (front.is(QLatin1String("if")) || front.is(QLatin1String("else")) || front.entry.kind == BlockClass::end);
    hangs_ = unfinished_ && front.isWord && governs && (isCloser(last) || elseLast || last.is(QLatin1String("do")));
    if (hangs_) statementIndent_ = indent;
  }

  static bool isOperator(const Piece& last) {
    if (!last.isWord) return last.sign != 0 && QStringLiteral("+-*/|&<>!~^,%?").contains(last.word);
    for (const char* word : {"and", "or", "xor", "nand", "nor", "xnor", "not"})
      if (last.is(QLatin1String(word))) return true;
    return false;
  }

  // Lines without ";" in languages with braces: "template <...>" and macros in capital letters.
  bool standsAlone(const Pieces& pieces) const {
    if (!braces_ || unfinished_) return false;
    const Piece &first = pieces.front(), &last = pieces.back();
    if (first.is(QLatin1String("template")) && last.is(u'>')) return true;
    const bool capitals =
        first.isWord && first.word.size() > 2 && first.word == first.word.toUpper() && first.word != first.word.toLower();
    return capitals && (pieces.size() == 1 || (pieces[1].is(u'(') && isCloser(last)));
  }

  const BlockWords& words_;
  const bool braces_ = words_.classify(QStringLiteral("{")).kind == BlockClass::start;   // a brace opens a block
  const int unit_;
  const text::Highlighter* const highlighter_;
  LineScanner scanner_;
  int macroBlocks_ = 0;     // macros that open lines, less the macros that close them
  const bool semicolons_;   // statements end with ";", else with the line
  IndentHabits habits_;
  bool learning_ = false;              // the text is only read for its habits; no line moves
  bool directiveGoesOn_ = false;       // the next line belongs to the "#define" above
  int branchOld_ = -1;                 // indent of the "ifdef" directly before the last line of code
  int firstColumn_ = -1;               // indent of the first line of code
  std::vector<IndentState> choices_;   // the state at the start of each open "ifdef"
};

}   // namespace

std::vector<int> indentsByWholeLine(const LineSource& line, qint64 count, const BlockWords& words, int unit,
                                    const text::Highlighter* highlighter, const FormatRules& rules, int tabSize) {
  std::vector<int> indents;
  indents.reserve(static_cast<std::size_t>(count));
  WholeLines lines(words, unit, highlighter, rules, tabSize, line, count);
  CommentLines comments(&indents);
  for (qint64 i = 0; i < count; ++i) {
    const Placed placed = lines.next(line(i));
    if (placed.kind == Placed::Kind::code) comments.codeFollows(&placed, lines.trailingComment());
    else if (placed.kind == Placed::Kind::comment || placed.kind == Placed::Kind::insideComment) comments.add(placed);
    indents.push_back(placed.indent);
  }
  comments.codeFollows(nullptr, -1);
  return indents;
}
