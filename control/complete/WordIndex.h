// The words of one text, counted in the background from the first question on. Shared by all views of the text.
#pragma once

#include <QObject>
#include <atomic>
#include <functional>
#include <memory>

#include "control/edit/TextModel.h"
#include "text/words/WordCounts.h"

class WordIndex : public QObject {
 public:
  static WordIndex& of(TextModel& model);   // made when first asked for; the model owns it
  ~WordIndex() override;

  // Answers once, later, unless another question comes before the work on this one began. In texts above kLargestCounted: no words.
  using Answer = std::function<void(std::vector<text::WordCounts::Found> words)>;
  void find(std::string typed, Answer answer);

  static constexpr std::int64_t kLargestCounted = 256 << 20;   // bytes
  static constexpr std::size_t kMostFound = 100;

 private:
  explicit WordIndex(TextModel& model);
  struct Step {
    text::Snapshot old, now;
    text::Change change;
  };
  void changed(const text::Change& change);
  void work();

  TextModel& model_;
  text::Snapshot seen_;                        // the text behind the last step
  std::vector<Step> steps_;                    // not counted yet
  bool fresh_ = true;                          // the whole text is to be counted
  std::shared_ptr<text::WordCounts> counts_;   // of the work while that runs
  std::shared_ptr<std::atomic<bool>> cancel_;
  std::optional<std::pair<std::string, Answer>> question_;
  bool working_ = false;
};

// The words near a place, each with its distance in bytes: reads a bounded part of the text.
std::vector<std::pair<std::string, std::int64_t>> wordsNear(const text::Snapshot& text, text::ByteRange except);
