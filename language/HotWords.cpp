#include "language/HotWords.h"

#include "bridge/QStringBytes.h"
#include "control/CodeMax.h"
#include "control/edit/Carets.h"
#include "language/FieldWalk.h"
#include "language/ucCM.h"

HotWords::HotWords(CodeMax& cmx, ucCM& manager, std::function<int()> languageIndex, ExpandText expand)
    : cmx_(cmx), manager_(manager), languageIndex_(std::move(languageIndex)), expand_(std::move(expand)) {}

// A hot key is known by its beginning, in its own letter case.
void HotWords::ask(const CompletionQuestion& question, const Answer& answer) {
  const int index = languageIndex_();
  if (!question.code || question.typedBytes.empty() || index < 1 || index > manager_.Languages()->Count() ||
      FieldWalk::isActive(cmx_))
    return answer({});
  std::vector<WordOffer> words;
  for (const auto& item : *manager_.Languages()->Item(index)->cTemplate()) {
    auto match = text::matchParts(fromQString(item->HotKey), question.typedBytes);
    if (match && match->fit == text::PartFit::begins)
      words.push_back({item->HotKey, CompletionKind::hotKey, item->Desc, std::move(*match)});
  }
  answer(std::move(words));
}

bool HotWords::accept(const WordOffer& word) {
  if (carets::several(cmx_.editor())) carets::atEach(cmx_.editor(), [&] { cmx_.editor().replaceSelection(word.text); });
  else cmx_.ReplaceSel(word.text);
  return ExpandTemplate(cmx_, manager_, languageIndex_(), expand_);
}
