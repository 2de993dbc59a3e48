#include "control/marks/ChangeMarks.h"

#include <atomic>
#include <new>
#include <utility>

#include "base/Background.h"
#include "control/edit/Editor.h"

using namespace text;
using Part = ChangedLines::Part;

namespace {
constexpr int kCompareAgainMs = 100;                 // after the last change
constexpr std::int64_t kComparedAtOnce = 64 << 10;   // bytes compared before painting
constexpr std::int64_t kMost = 64LL << 20;           // bytes of a part that are compared at all
}   // namespace

struct ChangeMarks::Job {
  Snapshot file, text;
  std::vector<ChangedLines::Found> found;
  std::atomic<bool> cancel{false};

  void run(const std::atomic<bool>* stop) {
    for (ChangedLines::Found& each : found) {
      try {
        each.hunks = hunksIn(file, text, each.part, kMost, stop);
      } catch (const std::bad_alloc&) { each.hunks = {each.part}; }
      if (*stop) return;
    }
  }
};

ChangeMarks& ChangeMarks::of(TextModel& model) {
  if (auto* marks = model.findChild<ChangeMarks*>(QString(), Qt::FindDirectChildrenOnly)) return *marks;
  return *new ChangeMarks(model);
}

ChangeMarks::ChangeMarks(TextModel& model) : QObject(&model), model_(model), file_(model.snapshot()) {
  later_.setSingleShot(true);
  later_.setInterval(kCompareAgainMs);
  connect(&later_, &QTimer::timeout, this, &ChangeMarks::start);
  connect(&model, &TextModel::changed, this, &ChangeMarks::textChanged);
  connect(&model, &TextModel::modifiedChanged, this, [this](bool modified) {
    if (!modified) setFile(model_.snapshot());
  });
}

ChangeMarks::~ChangeMarks() { drop(); }

void ChangeMarks::drop() {
  if (job_) job_->cancel = true;
  job_.reset();
}

void ChangeMarks::saving() { sinceSaving_.emplace(); }

void ChangeMarks::saved(const Snapshot& file) {
  if (!sinceSaving_) return;
  drop();
  file_ = file;
  lines_ = std::move(*sinceSaving_);
  sinceSaving_.reset();
  settled_ = lines_.parts().empty();
  settle();
  emit changed();
}

void ChangeMarks::setFile(const Snapshot& file) {
  drop();
  file_ = file;
  if (file_.sameAs(model_.snapshot())) lines_.clear();
  else lines_.all(file_, model_.snapshot());
  settled_ = lines_.parts().empty();
  settle();
  emit changed();
}

void ChangeMarks::textChanged(const Change& change) {
  drop();
  if (change.reset) {
    sinceSaving_.reset();
    file_ = model_.snapshot();
    lines_.clear();
    settled_ = true;
    return;
  }
  try {
    if (sinceSaving_) sinceSaving_->edit(change);
    lines_.edit(change);
  } catch (const std::bad_alloc&) {
    sinceSaving_.reset();
    lines_.clear();   // one part takes no memory to speak of
    lines_.all(file_, model_.snapshot());
  }
  settled_ = false;
}

void ChangeMarks::settle() {
  if (std::exchange(settled_, true)) return;
  std::vector<ChangedLines::Found> found;
  std::int64_t left = kComparedAtOnce;
  bool all = true;
  for (const Part& part : lines_.parts()) {
    if (part.exact) continue;
    const std::int64_t bytes = bytesOf(file_, model_.snapshot(), part.lines) + 100;
    all = bytes <= left;
    if (!all) break;
    left -= bytes;
    found.push_back({part.lines, hunksIn(file_, model_.snapshot(), part.lines, kComparedAtOnce)});
    if (left <= 0) break;
  }
  lines_.refine(found);
  if (!all || left <= 0) later_.start();
  if (!found.empty()) emit changed();
}

void ChangeMarks::start() {
  if (job_) return;
  auto job = std::make_shared<Job>();
  for (const Part& part : lines_.parts())
    if (!part.exact) job->found.push_back({part.lines, {}});
  if (job->found.empty()) return;
  job->file = file_;
  job->text = model_.snapshot();
  job_ = job;
  const auto work = [job] {
    job->run(&job->cancel);
    return job;
  };
  inBackground(this, work, [this](const std::shared_ptr<Job>& done) {
    if (done != job_) return;   // the text has changed since: its next showing asks again
    job_.reset();
    lines_.refine(done->found);
    emit changed();
  });
}

const std::vector<Part>& ChangeMarks::parts() const { return hasFile() ? lines_.parts() : none_; }

std::optional<std::vector<Part>> ChangeMarks::now(EditorHost& host) {
  if (!model_.stamp) return none_;
  settle();
  Job job;
  std::int64_t bytes = 0;
  for (const Part& part : lines_.parts()) {
    if (part.exact && !part.joined) continue;
    job.found.push_back({part.lines, {}});
    bytes += std::min(kMost, bytesOf(file_, model_.snapshot(), part.lines));
  }
  if (job.found.empty()) return lines_.parts();
  job.file = file_;
  job.text = model_.snapshot();
  bool cancelled = false;
  host.work(bytes, [&](SearchControl& control) {
    job.run(&control.cancel);
    cancelled = control.cancel;
  });
  if (cancelled || !job.text.sameAs(model_.snapshot()) || !job.file.sameAs(file_)) return std::nullopt;
  std::vector<Part> all = lines_.refined(job.found);
  lines_.refine(job.found);
  emit changed();
  return all;
}

ChangeMarks::Line ChangeMarks::at(LineNo begin, LineNo end) const {
  Line line;
  if (!hasFile()) return line;
  const auto& all = lines_.parts();
  const bool last = end.value >= model_.snapshot().lineCount();
  for (std::size_t i = lines_.partFrom(begin); i < all.size(); ++i) {
    const LineHunk& hunk = all[i].lines;
    if (hunk.afterBegin > end || (hunk.afterBegin == end && !last)) break;
    if (!line.hunk) line.hunk = &hunk;
    if (hunk.afterBegin == hunk.afterEnd) {
      (hunk.afterBegin == end ? line.removedBelow : line.removedAbove) = true;
    } else if (hunk.beforeBegin < hunk.beforeEnd) {
      line.kind = Line::Kind::changed;
    } else if (line.kind == Line::Kind::same) {
      line.kind = Line::Kind::added;
    }
  }
  return line;
}
