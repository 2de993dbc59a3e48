// The hot keys of a language's templates, for the list of words beside the caret. Taking one expands its template.
//
// None in comments and strings, and while the fields of a template are being filled.
#pragma once

#include <functional>

#include "control/complete/CompletionSource.h"
#include "language/CaretWords.h"

class HotWords : public CompletionSource {
 public:
  // languageIndex returns the position of the text's language in the manager; it is called each time.
  HotWords(CodeMax& cmx, ucCM& manager, std::function<int()> languageIndex, ExpandText expand);
  void ask(const CompletionQuestion& question, const Answer& answer) override;
  bool accept(const WordOffer& word) override;

 private:
  CodeMax& cmx_;
  ucCM& manager_;
  std::function<int()> languageIndex_;
  ExpandText expand_;
};
