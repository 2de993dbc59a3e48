#include "control/marks/HitLines.h"

#include <algorithm>
#include <chrono>
#include <new>
#include <utility>

#include "base/Background.h"
#include "text/find/Finder.h"

using namespace text;

namespace {
constexpr int kReadAgainMs = 300;   // after the last change
}

struct HitLines::Job {
  Snapshot text;
  std::string what;
  SearchOptions options;
  SearchControl control;
  std::vector<LineNo> lines;

  void run() {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(kSeconds);
    try {
      const Finder finder(what, options);
      if (!finder.error().empty()) return;
      ByteOffset behind(-1);   // of the line that was found last
      const auto take = [&](const Match& match) {
        if (match.range.begin < behind) return true;
        const LineNo line = text.lineAt(match.range.begin);
        lines.push_back(line);
        behind = text.lineEndWithBreak(line);
        return lines.size() < kMost && std::chrono::steady_clock::now() < end;
      };
      finder.each(text, {ByteOffset(0), text.size()}, take, &control);
    } catch (const std::bad_alloc&) {   // what was found is shown
    }
  }
};

HitLines::HitLines(TextModel& model, std::string what, const SearchOptions& options)
    : model_(model), what_(std::move(what)), options_(options) {
  later_.setSingleShot(true);
  connect(&later_, &QTimer::timeout, this, &HitLines::start);
  connect(&model, &TextModel::changed, this, &HitLines::textChanged);
  later_.start(0);   // the user may type on
}

HitLines::~HitLines() {
  if (job_) job_->control.cancel = true;
}

void HitLines::start() {
  job_ = std::make_shared<Job>();
  job_->text = model_.snapshot();
  job_->what = what_;
  job_->options = options_;
  const auto work = [job = job_] {
    job->run();
    return job;
  };
  inBackground(this, work, [this](const std::shared_ptr<Job>& job) {
    if (job != job_) return;   // the text has changed since
    job_.reset();
    lines_ = std::move(job->lines);
    complete_ = true;
    emit changed();
  });
}

void HitLines::textChanged(const Change& change) {
  if (job_) job_->control.cancel = true;
  job_.reset();
  complete_ = false;
  later_.start(kReadAgainMs);
  if (change.reset) return lines_.clear();
  if (std::ranges::all_of(change.spans, [](const Change::Span& span) { return span.linesGrown() == 0; })) return;
  for (LineNo& line : lines_) line = change.mapLine(line, model_.snapshot());
  lines_.erase(std::unique(lines_.begin(), lines_.end()), lines_.end());
}
