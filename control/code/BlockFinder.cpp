#include "control/code/BlockFinder.h"

#include <atomic>
#include <mutex>
#include <new>
#include <utility>
#include <vector>

#include "base/Background.h"
#include "control/code/LanguageTable.h"
#include "control/edit/Editor.h"

using namespace text;

namespace {
constexpr int kLaterMs = 60;                  // after the last change
constexpr std::size_t kMostChanges = 10000;   // kept for a reading; beyond that the text is read anew
}   // namespace

// What the readings share: each takes the changes that came since the one before.
struct BlockFinder::Shared {
  std::mutex reading;   // held while the index is used
  BlockIndex index;
  std::mutex guard;   // of what follows
  Snapshot text;
  std::shared_ptr<const FoldRules> rules;
  std::vector<Change> changes;
  std::size_t spans = 0;   // in them
  bool anew = true;

  // Null: cancelled, or without memory.
  std::shared_ptr<const Blocks> read(const std::atomic<bool>& cancel) {
    const std::lock_guard<std::mutex> one(reading);
    try {
      Snapshot now;
      std::vector<Change> made;
      {
        const std::lock_guard<std::mutex> lock(guard);
        now = text;
        made.swap(changes);
        spans = 0;
        if (std::exchange(anew, false) || index.rules() != rules) index.setRules(rules);
      }
      for (const Change& change : made) index.edit(change);
      if (!index.update(now, &cancel)) return nullptr;
      return index.blocks(now);
    } catch (const std::bad_alloc&) {
      const std::lock_guard<std::mutex> lock(guard);
      anew = true;
      return nullptr;
    }
  }
};

struct BlockFinder::Job {
  std::atomic<bool> cancel{false};
  std::shared_ptr<const Blocks> blocks;
};

BlockFinder& BlockFinder::of(TextModel& model) {
  if (auto* finder = model.findChild<BlockFinder*>(QString(), Qt::FindDirectChildrenOnly)) return *finder;
  return *new BlockFinder(model);
}

BlockFinder::BlockFinder(TextModel& model) : QObject(&model), model_(model), shared_(std::make_shared<Shared>()) {
  later_.setSingleShot(true);
  later_.setInterval(kLaterMs);
  connect(&later_, &QTimer::timeout, this, &BlockFinder::start);
  connect(&model, &TextModel::changed, this, &BlockFinder::changed);
  shared_->text = model.snapshot();
}

BlockFinder::~BlockFinder() {
  if (job_) job_->cancel = true;
}

void BlockFinder::changed(const Change& change) {
  blocks_.reset();
  const std::lock_guard<std::mutex> lock(shared_->guard);
  shared_->text = model_.snapshot();
  shared_->spans += 1 + change.spans.size();
  if (change.reset || shared_->spans >= kMostChanges) shared_->anew = true;
  if (shared_->anew) {
    shared_->changes.clear();
    return;
  }
  try {
    shared_->changes.push_back(change);
  } catch (const std::bad_alloc&) {
    shared_->changes.clear();
    shared_->anew = true;
  }
}

void BlockFinder::follow() {
  if (generation_ == LanguageTable::generation() && language_ == model_.language()) return;
  generation_ = LanguageTable::generation();
  language_ = model_.language();
  const auto rules = LanguageTable::folding(language_);
  if (rules == rules_) return;
  rules_ = rules;
  blocks_.reset();
  const std::lock_guard<std::mutex> lock(shared_->guard);
  shared_->rules = rules;
}

std::shared_ptr<const Blocks> BlockFinder::known() {
  follow();
  if (blocks_ || model_.snapshot().size().value > kLargest) return blocks_;
  asked_ = true;
  if (!job_ && !later_.isActive()) later_.start();
  return nullptr;
}

void BlockFinder::start() {
  asked_ = false;
  if (blocks_ || job_) return;
  job_ = std::make_shared<Job>();
  const auto work = [shared = shared_, job = job_] {
    job->blocks = shared->read(job->cancel);
    return job;
  };
  inBackground(this, work, [this](const std::shared_ptr<Job>& job) {
    if (job != job_) return;
    job_.reset();
    follow();
    if (!blocks_ && job->blocks && job->blocks->text().sameAs(model_.snapshot()) && &job->blocks->rules() == rules_.get())
      blocks_ = job->blocks;
    if (blocks_) emit found();
    else if (asked_ && !later_.isActive()) later_.start();   // the text has changed meanwhile
  });
}

std::shared_ptr<const Blocks> BlockFinder::now(EditorHost& host) {
  follow();
  const Snapshot text = model_.snapshot();
  if (blocks_ || text.size().value > kLargest) return blocks_;
  if (job_) job_->cancel = true;   // this goes on where that stops
  std::shared_ptr<const Blocks> read;
  host.work(text.size().value, [&read, shared = shared_](SearchControl& control) { read = shared->read(control.cancel); });
  if (!read || !read->text().sameAs(model_.snapshot())) return nullptr;
  blocks_ = read;
  emit found();
  return read;
}

bool BlockFinder::mayBePair(ByteOffset at) {
  follow();
  constexpr std::int64_t kMost = 64;   // bytes on either side
  const Snapshot& text = model_.snapshot();
  const LineNo line = text.lineAt(at);
  const ByteOffset from = std::max(text.lineStart(line), at - kMost), to = std::min(text.lineEnd(line), at + kMost);
  const std::string bytes = text.bytes({from, to});
  const auto here = static_cast<std::size_t>(at - from);
  std::size_t begin = std::min(here, bytes.size()), end = begin;
  while (begin > 0 && wordByte(bytes[begin - 1])) --begin;
  while (end < bytes.size() && wordByte(bytes[end])) ++end;
  if (begin < end && rules_->find(std::string_view(bytes).substr(begin, end - begin)) >= 0) return true;
  // A sign or a comment: only the blocks tell.
  const auto sign = [&](std::size_t i) { return i < bytes.size() && rules_->signs(static_cast<unsigned char>(bytes[i])); };
  if (sign(here) || (begin > 0 && sign(begin - 1))) return true;
  for (const FoldRules::Region& region : rules_->regions())
    for (const std::string& mark : {region.begin, region.end})
      if (bytes.find(mark) != std::string::npos) return true;
  return false;
}
