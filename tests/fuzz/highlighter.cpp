// Q1: Colouring by any tables of any text: tokens ascend within the line, and the state does not depend on how it is asked for.
#include <algorithm>
#include <memory>

#include "tests/fuzz/Fuzz.h"
#include "text/Highlight.h"

using namespace text;
using fuzz::check;

// Signs are lines of lists, so none holds a line break.
static std::string sign(fuzz::Input& in) {
  std::string text(in.until('|'));
  std::replace(text.begin(), text.end(), '\n', ' ');
  return text;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input in(data, size);
  LanguageTables tables;
  tables.caseSensitive = in.byte() % 2 == 1;
  for (auto* list : {&tables.keywords, &tables.operators, &tables.singleComments, &tables.multiCommentStart, &tables.multiCommentEnd,
                     &tables.stringDelims})
    for (int n = in.byte() % 6; n > 0; --n) list->push_back(sign(in));
  tables.escapeChar = sign(in);
  const Highlighter highlighter(tables);
  const std::string text(in.rest());
  LineState state = 0;
  std::vector<Token> tokens;
  for (std::size_t from = 0; from <= text.size();) {
    const std::size_t end = std::min(text.find('\n', from), text.size());
    const std::string_view line = std::string_view(text).substr(from, end - from);
    tokens.clear();
    const LineState next = highlighter.scanLine(line, state, &tokens);
    check(next == highlighter.scanLine(line, state, nullptr), "the state does not depend on the tokens");
    std::int64_t last = 0;
    for (const Token& token : tokens) {
      check(token.begin >= last && token.length > 0, "tokens ascend");
      last = token.begin + token.length;
      check(last <= std::int64_t(line.size()), "tokens are in the line");
    }
    state = next;
    from = end + 1;
  }
  check(state == highlighter.scanBlock(text, 0, '\n'), "a block is its lines");
  return 0;
}
