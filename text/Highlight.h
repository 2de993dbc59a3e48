// Colouring: line + state -> tokens + state, from the tables of a language alone. Knows nothing of documents or widgets.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "text/Document.h"

namespace text {

struct LanguageTables {
  bool caseSensitive = false;
  std::vector<std::string> keywords, operators;
  std::vector<std::string> singleComments;
  std::vector<std::string> multiCommentStart, multiCommentEnd;   // pairs by position
  std::vector<std::string> stringDelims;                         // a string ends at its line's end at the latest
  std::string escapeChar;                                        // inside strings; empty: none
};

enum class TokenKind : unsigned char { text, keyword, operatorSign, comment, string, number };

struct Token {
  std::int64_t begin = 0, length = 0;   // bytes within the line
  TokenKind kind = TokenKind::text;
  bool operator==(const Token&) const = default;
};

// What a line hands to the next: 0 = plain, n = inside the n-th multi-line comment.
using LineState = unsigned char;

// Compiled and immutable; shared by all documents of the language.
class Highlighter {
 public:
  // Openers and closers must be equal in number; valid() is false otherwise and nothing is coloured.
  explicit Highlighter(LanguageTables tables);
  ~Highlighter();
  bool valid() const;
  const LanguageTables& tables() const;

  // Scans one line (without its break). Tokens ascend, cover no byte twice; text between them is plain. `tokens` may
  // be null when only the state is wanted, which is much faster.
  LineState scanLine(std::string_view line, LineState state, std::vector<Token>* tokens) const;
  bool isKeyword(std::string_view word) const;

 private:
  struct Impl;
  std::unique_ptr<const Impl> impl_;
};

// The states at line starts of one document, cached at intervals, dropped behind an edit.
class StateCache {
 public:
  void setHighlighter(std::shared_ptr<const Highlighter> highlighter);
  void onChange(const Change& change);          // call for every change of the document
  // The state in which `line` starts. Costs the lines since the last cached state; `budgetBytes` bounds the scan of
  // one call (0: no bound): when it is used up, returns a best guess and *exact = false; call again to go on.
  LineState stateAt(const Snapshot& text, LineNo line, std::int64_t budgetBytes = 0, bool* exact = nullptr);

 private:
  std::shared_ptr<const Highlighter> highlighter_;
  std::vector<std::pair<std::int64_t, LineState>> states_;   // (line, state), ascending
};

}  // namespace text
