// Colouring: line + state -> tokens + state, from the tables of a language only. Knows nothing of documents or widgets.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "text/store/Document.h"

namespace text {

struct LanguageTables {
  bool caseSensitive = false;
  std::vector<std::string> keywords{}, operators{};
  std::vector<std::string> singleComments{};
  std::vector<std::string> multiCommentStart{}, multiCommentEnd{};   // pairs by position
  std::vector<std::string> stringDelims{};                           // a string ends at the end of its line at the latest
  std::string escapeChar{};                                          // inside strings; empty: none
};

enum class TokenKind : unsigned char { text, keyword, operatorSign, comment, string, number };

struct Token {
  std::int64_t begin = 0, length = 0;   // bytes within the line
  TokenKind kind = TokenKind::text;
  bool operator==(const Token&) const = default;
};

// The state passed from line to line: 0 = plain, n = inside the n-th multi-line comment.
using LineState = unsigned char;

// A part of a block of lines that is no code; bytes within the block, half-open. It goes on behind the block when it ends with it.
struct HiddenPart {
  enum Kind : unsigned char { lineComment, blockComment, string, name };   // name: an escaped one
  std::size_t begin = 0, end = 0;
  Kind kind = lineComment;
};

// A position within a line at which a scan can resume: between two tokens, or inside a comment or string that continues.
struct LinePoint {
  enum Inside : unsigned char { nothing, comment, block, string, lost };
  std::int64_t byte = 0;   // within the line
  Inside inside = nothing;
  std::size_t index = 0;   // of the pair or the delimiter
  bool operator==(const LinePoint&) const = default;
};

// Compiled and immutable; shared by all documents of the language.
//
// How the tables are read:
// - A word is a run of letters, digits and '_'. A keyword may hold other characters ("$display", "end-if"): then the
//   longest that fits counts, and it must not go on as a word at either end. An unlisted "$word" is one plain word
//   where the language has keywords with such a sign in front.
// - Comment introducers, openers and string delimiters: the longest that fits counts, before keywords and operators of
//   the same length; inside a comment only its own closer counts (no nesting). One that begins or ends with a letter
//   or digit ("REM") must stand as a word there. A keyword that is longer and begins the same ("#include") wins.
// - A string ends at the same delimiter or at its line's end; the escape character takes the next character with it.
//   Where delimiter and escape character are the same, two of them stand for one.
// - Numbers begin with a digit: 12, 1_000, 1.5e-3, 0xFF, 10ns, 16#FF#, 8'hFF, and 'b01, '0 without one. Where the tick is a string
//   delimiter it is none between the digits of a number: 1'000.
// - Without case, letters are compared by simple case folding (in signs: of ASCII letters only).
// - At most 255 pairs of multi-line comments, and signs of 128 bytes; more are not coloured.
class Highlighter {
 public:
  // The numbers of openers and closers must be equal; else valid() is false and nothing is coloured.
  explicit Highlighter(LanguageTables tables);
  ~Highlighter();
  bool valid() const;
  const LanguageTables& tables() const;

  // Scans one line (without its break). Tokens ascend and do not overlap; text between them is plain. `tokens` may be null when
  // only the state is wanted, which is much faster. Linear in the length of any line.
  LineState scanLine(std::string_view line, LineState state, std::vector<Token>* tokens) const;
  // The same for a part of a line too long to be scanned at one go, from a point of it up to byte `upTo`. `part` is the line
  // from byte `begin` on: it holds kBehind bytes before the point and kAhead behind upTo, as far as the line goes (toEnd: the
  // line ends with it). Adds the tokens that begin before upTo; their bytes count from the line's start, and one that goes on
  // may be cut behind upTo. Returns where to go on, at or behind upTo. Behind a word or number that is longer than kAhead the
  // scan is `lost`, and the rest of the line plain.
  static constexpr std::int64_t kBehind = 128, kAhead = 64 << 10;
  LinePoint scanPart(std::string_view part, std::int64_t begin, bool toEnd, LinePoint from, std::int64_t upTo,
                     std::vector<Token>* tokens) const;
  LinePoint startOf(LineState state) const;   // the point at the beginning of a line that starts in `state`
  // The state behind a block of whole lines, each ended by `breaker` (the last one may lack it). Adds what is not code to `hidden`,
  // ascending, unless it is null.
  LineState scanBlock(std::string_view block, LineState state, char breaker, std::vector<HiddenPart>* hidden = nullptr) const;
  bool isKeyword(std::string_view word) const;

 private:
  struct Impl;
  std::unique_ptr<const Impl> impl_;
};

// The states at line starts of one document, kept at intervals. An edit makes only the stretch around it doubtful: when
// a new scan comes to the state that was kept behind the edit, everything further down is right again.
class StateCache {
 public:
  void setHighlighter(std::shared_ptr<const Highlighter> highlighter);
  void onChange(const Change& change);   // call for every change of the document
  // The state in which `line` starts. Costs the lines since the last cached state; `budgetBytes` bounds the scan of
  // one call (0: no bound; an interval of 64 KB or a line is always finished): when it is used up, returns a best
  // guess and *exact = false; call again to go on.
  LineState stateAt(const Snapshot& text, LineNo line, std::int64_t budgetBytes = 0, bool* exact = nullptr);

 private:
  struct Checkpoint {
    std::int64_t line;
    LineState state;
    bool doubtful;   // something between the one before and this one has changed since
  };
  std::shared_ptr<const Highlighter> highlighter_;
  std::vector<Checkpoint> points_;   // ascending; line 0 is not among them
  std::size_t sound_ = 0;            // the first sound_ points are right
};

}   // namespace text
