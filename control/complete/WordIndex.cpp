#include "control/complete/WordIndex.h"

#include <algorithm>
#include <unordered_map>

#include "base/Background.h"

using text::ByteOffset;

namespace {
constexpr std::size_t kMostWaitingChanges = 256;   // old texts are kept until the steps are counted
constexpr std::int64_t kNearCaret = 32 << 10;
}   // namespace

WordIndex& WordIndex::of(TextModel& model) {
  for (QObject* child : model.children())
    if (auto* index = dynamic_cast<WordIndex*>(child)) return *index;
  return *new WordIndex(model);
}

WordIndex::WordIndex(TextModel& model)
    : QObject(&model), model_(model), seen_(model.snapshot()), cancel_(std::make_shared<std::atomic<bool>>(false)) {
  connect(&model, &TextModel::changed, this, &WordIndex::changed);
}

WordIndex::~WordIndex() { *cancel_ = true; }

void WordIndex::changed(const text::Change& change) {
  const text::Snapshot now = model_.snapshot();
  if (change.reset || fresh_) {
    if (!fresh_ && working_) *cancel_ = true;
    fresh_ = true;
    steps_.clear();
  } else {
    steps_.push_back({seen_, now, change});
  }
  seen_ = now;
  if (steps_.size() >= kMostWaitingChanges) work();
}

void WordIndex::find(std::string typed, Answer answer) {
  question_ = {std::move(typed), std::move(answer)};
  work();
}

void WordIndex::work() {
  if (working_) return;
  if (seen_.size().value > kLargestCounted) {
    counts_.reset();
    fresh_ = true;
    steps_.clear();
    if (const auto question = std::exchange(question_, std::nullopt)) question->second({});
    return;
  }
  if (!counts_) {
    counts_ = std::make_shared<text::WordCounts>();
    fresh_ = true;
  }
  working_ = true;
  struct Result {
    bool counted = false;
    std::vector<text::WordCounts::Found> found;
  };
  if (*cancel_) cancel_ = std::make_shared<std::atomic<bool>>(false);
  const bool asks = question_.has_value();
  auto job = [counts = counts_, fresh = std::exchange(fresh_, false), text = seen_, steps = std::exchange(steps_, {}),
              typed = asks ? question_->first : std::string(), asks, cancel = cancel_] {
    Result result;
    try {
      result.counted = !fresh || counts->count(text, *cancel);
      for (const Step& step : steps) counts->change(step.old, step.now, step.change);
      if (asks && result.counted) result.found = counts->find(typed, kMostFound);
    } catch (const std::bad_alloc&) { result.counted = false; }
    return result;
  };
  auto answer = asks ? std::exchange(question_, std::nullopt)->second : Answer();
  inBackground(this, std::move(job), [this, answer = std::move(answer)](Result result) {
    working_ = false;
    if (!result.counted) {
      fresh_ = true;
      steps_.clear();
    }
    if (answer && result.counted) answer(std::move(result.found));
    if (question_ || steps_.size() >= kMostWaitingChanges) work();
  });
}

std::vector<std::pair<std::string, std::int64_t>> wordsNear(const text::Snapshot& text, text::ByteRange except) {
  std::unordered_map<std::string, std::int64_t> nearest;
  const auto look = [&](text::ByteRange range) {
    text::eachWord(text, range, [&](std::string_view word, ByteOffset at) {
      const ByteOffset end = at + static_cast<std::int64_t>(word.size());
      // Cut by the bound, or the rest of the word that is being typed.
      if ((at == range.begin && at.value > 0) || (end == range.end && end < text.size())) return;
      const std::int64_t distance = at >= except.end ? at - except.end : except.begin - end;
      const auto [known, added] = nearest.emplace(word, distance);
      if (!added) known->second = std::min(known->second, distance);
    });
  };
  look({std::max(ByteOffset(0), except.begin - kNearCaret), except.begin});
  look({except.end, std::min(text.size(), except.end + kNearCaret)});
  return {nearest.begin(), nearest.end()};
}
