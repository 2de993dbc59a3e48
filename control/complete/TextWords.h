// The sources that every text has: its own words, those of other open texts, and the keywords of its language.
#pragma once

#include <functional>

#include "control/complete/CompletionSource.h"

// The words near the caret at once, all others of the text later.
class TextWords : public CompletionSource {
 public:
  void ask(const CompletionQuestion& question, const Answer& answer) override;
};

class OtherWords : public CompletionSource {
 public:
  // The texts, the most important first; asked each time.
  explicit OtherWords(std::function<std::vector<TextModel*>()> texts) : texts_(std::move(texts)) {}
  void ask(const CompletionQuestion& question, const Answer& answer) override;
  static constexpr std::size_t kMostTexts = 16;

 private:
  std::function<std::vector<TextModel*>()> texts_;
};

class Keywords : public CompletionSource {
 public:
  void ask(const CompletionQuestion& question, const Answer& answer) override;
};
