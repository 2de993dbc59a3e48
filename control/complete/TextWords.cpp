#include "control/complete/TextWords.h"

#include <algorithm>

#include "bridge/QStringBytes.h"
#include "control/complete/WordIndex.h"
#include "text/color/EntryMarks.h"
#include "text/line/Words.h"

void TextWords::ask(const CompletionQuestion& question, const Answer& answer) {
  std::vector<WordOffer> near;
  for (auto& [word, distance] : wordsNear(question.model->snapshot(), question.typed)) {
    auto match = text::matchParts(word, question.typedBytes);
    if (match) near.push_back({toQString(word), CompletionKind::word, {}, std::move(*match), distance});
  }
  answer(std::move(near));
  if (question.typedBytes.empty()) return;   // all words: those nearby are enough
  WordIndex::of(*question.model).find(question.typedBytes, [answer](std::vector<text::WordCounts::Found> found) {
    std::vector<WordOffer> words;
    for (auto& each : found)
      words.push_back({toQString(each.word), CompletionKind::word, {}, std::move(each.match), -1, each.count});
    answer(std::move(words));
  });
}

void OtherWords::ask(const CompletionQuestion& question, const Answer& answer) {
  std::size_t asked = 0;
  if (question.typedBytes.empty()) return;
  for (TextModel* model : texts_()) {
    if (model == question.model || model->snapshot().size().value == 0) continue;
    if (++asked > kMostTexts) break;
    WordIndex::of(*model).find(question.typedBytes, [answer](std::vector<text::WordCounts::Found> found) {
      std::vector<WordOffer> words;
      for (auto& each : found)
        words.push_back({toQString(each.word), CompletionKind::otherText, {}, std::move(each.match), -1, each.count});
      answer(std::move(words));
    });
  }
}

void Keywords::ask(const CompletionQuestion& question, const Answer& answer) {
  const text::Highlighter* language = question.model->highlighter();
  std::vector<WordOffer> words;
  if (!language || !question.code || question.typedBytes.empty()) return answer({});
  const text::Snapshot& text = question.model->snapshot();
  const std::string before = text.bytes({std::max(text::ByteOffset(0), question.typed.begin - 4), question.typed.begin});
  const auto isSign = [](char c) { return text::classOf(static_cast<unsigned char>(c)) == text::CharClass::punctuation; };
  for (std::string keyword : language->tables().keywords) {
    text::takeMark(keyword);
    // "$display" goes on behind a "$" that stands there.
    std::string_view word = keyword;
    std::size_t signs = 0;
    while (signs < word.size() && isSign(word[signs])) ++signs;
    if (signs > 0 && !before.empty() && isSign(before.back())) {
      if (!before.ends_with(word.substr(0, signs))) continue;
      word.remove_prefix(signs);
    }
    if (auto match = text::matchParts(word, question.typedBytes); match && word != question.typedBytes)
      words.push_back({toQString(word), CompletionKind::keyword, {}, std::move(*match)});
  }
  answer(std::move(words));
}
