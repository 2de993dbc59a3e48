// Where the words come from that the list beside the caret offers. A new kind of words is a class of its own: the list knows none of
// them.
#pragma once

#include <QString>
#include <functional>
#include <vector>

#include "control/edit/TextModel.h"
#include "text/words/PartMatch.h"

// The numbers order words that are equal in all else.
enum class CompletionKind { hotKey, word, keyword, otherText };

struct WordOffer {
  QString text;
  CompletionKind kind = CompletionKind::word;
  QString detail{};             // behind the word, in grey; may be empty
  text::PartMatch match{};      // of what was typed
  std::int64_t distance = -1;   // bytes to the nearest place in this text; -1: not known
  std::int64_t count = 0;       // how often it occurs, where that is known
};

// What is asked for. The text may be any; nothing may cost its length, or the length of a line.
struct CompletionQuestion {
  TextModel* model = nullptr;
  text::ByteRange typed;    // what was typed of the word, directly before the caret
  std::string typedBytes;   // the same, in UTF-8; may be empty
  bool code = true;         // not in a comment or string
  bool asked = false;       // the user asked for the list, else it appears by itself
};

class CompletionSource {
 public:
  virtual ~CompletionSource() = default;
  // Calls answer(words that fit) as often as it finds some, at once or later, on the thread of the windows; what takes longer than a
  // few milliseconds is work in the background. Answers to an older question are dropped.
  using Answer = std::function<void(std::vector<WordOffer> words)>;
  virtual void ask(const CompletionQuestion& question, const Answer& answer) = 0;
  // Puts the word in place of what was typed, which is selected. False: the list does it.
  virtual bool accept(const WordOffer& word) {
    (void)word;
    return false;
  }
};
