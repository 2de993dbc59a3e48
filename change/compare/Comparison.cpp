#include "change/compare/Comparison.h"

#include <QElapsedTimer>
#include <QPointer>
#include <algorithm>
#include <atomic>
#include <utility>

#include "base/Background.h"
#include "bridge/LongWork.h"
#include "control/code/LanguageTable.h"
#include "text/line/LineReader.h"
#include "text/line/SameLines.h"
#include "text/store/CommonEnds.h"

using compare::kLeft;
using compare::kRight;
using compare::Lines;
using compare::linesOf;
using compare::Side;
using text::LineNo;

namespace {
constexpr int kLaterMs = 250;                                 // after the last change
constexpr std::int64_t kTurnNs = 8'000'000;                   // for what is visible, in a turn of the event loop
constexpr std::size_t kMostParts = 8192, kMostHunks = 1024;   // lines and hunks of which that is kept
constexpr std::int64_t kMostPaired = 1000;                    // lines of a hunk in which pairs are looked for by likeness
constexpr std::int64_t kMostBytes = 16 << 10;                 // of a line, in which parts are marked
}   // namespace

struct Comparison::Job {
  std::array<text::Snapshot, 2> texts;
  text::DiffRules rules;
  std::atomic<bool> cancel{false};
  compare::Hunks hunks;
  Equal equal = Equal::no;
  bool failed = false;

  void run() {
    try {
      hunks = text::diffLines(texts[0], texts[1], rules, &cancel);
      const bool none = std::all_of(hunks.begin(), hunks.end(), [](const auto& hunk) { return hunk.nothing; });
      if (none)
        equal = text::sameText(texts[0], texts[1], &cancel) ? Equal::wholly
                : sameLines()                               ? Equal::butForLineEnds
                                                            : Equal::underRules;
    } catch (const std::bad_alloc&) { failed = true; }
  }
  bool sameLines() const {
    const auto end = [&](Side side) { return LineNo(texts[side].lineCount()); };
    return text::sameLines(texts[0], LineNo(0), end(kLeft), texts[1], LineNo(0), end(kRight), &cancel);
  }
};

Comparison::Comparison(std::shared_ptr<TextModel> left, std::shared_ptr<TextModel> right, QObject* parent)
    : QObject(parent), models_{std::move(left), std::move(right)} {
  later_.setSingleShot(true);
  later_.setInterval(kLaterMs);
  connect(&later_, &QTimer::timeout, this, &Comparison::refresh);
  turn_.setSingleShot(true);
  connect(&turn_, &QTimer::timeout, this, [this] {
    spentNs_ = 0;
    if (std::exchange(isMore_, false)) emit moreFound();
  });
  for (const Side side : {kLeft, kRight}) {
    lines_[side] = models_[side]->snapshot().lineCount();
    heard_[side] = connect(models_[side].get(), &TextModel::changed, this,
                           [this, side](const text::Change& change) { textChanged(side, change); });
  }
  refresh();
}

Comparison::~Comparison() {
  if (job_) job_->cancel = true;
}

void Comparison::setIgnored(const Ignore& ignore) {
  if (ignore == ignore_) return;
  ignore_ = ignore;
  forget();
  refresh();
}

void Comparison::refresh() {
  later_.stop();
  if (job_) job_->cancel = true;
  job_ = std::make_shared<Job>();
  job_->texts = {models_[kLeft]->snapshot(), models_[kRight]->snapshot()};
  job_->rules.ignoreBlanks = ignore_.blanks;
  job_->rules.ignoreCase = ignore_.letterCase;
  if (ignore_.comments) {
    job_->rules.commentsBefore = LanguageTable::find(models_[kLeft]->language());
    job_->rules.commentsAfter = LanguageTable::find(models_[kRight]->language());
  }
  const auto work = [job = job_] {
    job->run();
    return job;
  };
  inBackground(this, work, [this](const std::shared_ptr<Job>& job) {
    if (job == job_) finish();   // else it was given up
  });
}

void Comparison::finish() {
  const std::shared_ptr<Job> job = std::exchange(job_, nullptr);
  if (!job->texts[0].sameAs(models_[kLeft]->snapshot()) || !job->texts[1].sameAs(models_[kRight]->snapshot())) {
    if (!later_.isActive()) later_.start();
    return;
  }
  failed_ = job->failed;
  if (failed_) {   // the next change of a text tries again
    emit changed();
    return;
  }
  hunks_ = std::move(job->hunks);
  equal_ = job->equal;
  compared_ = true;
  countDifferences();
}

void Comparison::countDifferences() {
  differences_.clear();
  if (std::any_of(hunks_.begin(), hunks_.end(), [](const auto& hunk) { return hunk.nothing; }))
    for (std::size_t i = 0; i < hunks_.size(); ++i)
      if (!hunks_[i].nothing) differences_.push_back(i);
  const bool all = std::none_of(hunks_.begin(), hunks_.end(), [](const auto& hunk) { return hunk.nothing; });
  count_ = all ? hunks_.size() : differences_.size();
  emit changed();
}

void Comparison::textChanged(Side side, const text::Change& change) {
  const text::Snapshot& now = models_[side]->snapshot();
  const std::size_t hunks = hunks_.size();
  compare::moveHunks(hunks_, side, change, now, lines_[side]);
  lines_[side] = now.lineCount();
  forgetTouched(side, change);
  compared_ = false;
  later_.start();
  if (hunks_.size() == hunks) emit changed();
  else countDifferences();
}

void Comparison::swap() {
  for (text::LineHunk& hunk : hunks_) {
    std::swap(hunk.beforeBegin, hunk.afterBegin);
    std::swap(hunk.beforeEnd, hunk.afterEnd);
  }
  std::swap(models_[kLeft], models_[kRight]);
  std::swap(lines_[kLeft], lines_[kRight]);
  for (const Side side : {kLeft, kRight}) {
    disconnect(heard_[side]);
    heard_[side] = connect(models_[side].get(), &TextModel::changed, this,
                           [this, side](const text::Change& change) { textChanged(side, change); });
  }
  forget();
  refresh();
  emit changed();
}

std::size_t Comparison::hunkOf(int difference) const {
  const auto at = static_cast<std::size_t>(difference);
  return differences_.empty() ? at : differences_[at];
}

int Comparison::differenceOf(std::size_t hunk) const {
  if (hunk >= hunks_.size() || hunks_[hunk].nothing) return -1;
  if (differences_.empty()) return static_cast<int>(hunk);
  return static_cast<int>(std::lower_bound(differences_.begin(), differences_.end(), hunk) - differences_.begin());
}

int Comparison::differenceAt(Side side, std::int64_t line) const {
  const std::int64_t last = models_[side]->snapshot().lineCount() - 1;
  for (std::size_t i = compare::hunkFrom(hunks_, side, line); i < hunks_.size(); ++i) {
    const Lines lines = linesOf(hunks_[i], side);
    const std::int64_t begin = std::min(lines.begin, last);   // missing behind the last line: at the last line
    if (begin > line) break;
    if (!hunks_[i].nothing) return differenceOf(i);
  }
  return -1;
}

Comparison::Line Comparison::lineAt(Side side, std::int64_t line) const {
  Line found;
  const std::int64_t last = models_[side]->snapshot().lineCount() - 1;
  for (std::size_t i = compare::hunkFrom(hunks_, side, line); i < hunks_.size(); ++i) {
    const Lines here = linesOf(hunks_[i], side), there = linesOf(hunks_[i], compare::other(side));
    if (here.begin > line + (line == last ? 1 : 0)) break;
    if (hunks_[i].nothing) continue;
    if (here.empty()) {
      (here.begin > line ? found.missingBelow : found.missingAbove) = true;
    } else if (here.begin <= line) {
      const std::optional<std::int64_t> counterpart = there.empty() ? -1 : counterpartOf(side, line, hunks_[i]);
      found.kind = counterpart == -1 ? Line::Kind::single : Line::Kind::changed;
      if (counterpart && *counterpart >= 0) found.parts = partsOf(side, line, *counterpart, hunks_[i]);
    }
  }
  return found;
}

bool Comparison::takeOver(QWidget& asker, const compare::TakeOver& what, const text::SelectionState& before) {
  TextModel& to = *models_[compare::other(what.from)];
  const std::array<text::Snapshot, 2> texts{models_[kLeft]->snapshot(), models_[kRight]->snapshot()};
  compare::TakeOver wanted = what;
  compare::Hunks hunks;
  if (what.only) hunks = {hunks_.at(*what.only)}, wanted.only = 0;
  else hunks = hunks_;
  std::vector<text::Edit> edits;
  bool cancelled = false;
  const QPointer<Comparison> alive = this;
  LongWork::run(
      asker, texts[what.from].size().value,
      [&, newLines = to.newLines()](text::SearchControl& control) {
        edits = compare::takeOver(hunks, texts, newLines, wanted);
        cancelled = control.cancel;
      },
      tr("Taking over..."), true);
  if (!alive || cancelled || !texts[0].sameAs(models_[kLeft]->snapshot()) || !texts[1].sameAs(models_[kRight]->snapshot()))
    return false;
  if (edits.empty() || !to.document().apply(edits, before)) return false;
  to.document().breakJoin();
  refresh();   // nobody waits a while for what he did by one key
  return true;
}

void Comparison::forget() {
  found_.clear();
  lineParts_ = 0;
}

void Comparison::forgetTouched(Side side, const text::Change& change) {
  if (change.reset) return forget();
  std::map<Place, Found> kept;
  const std::size_t begin = side == kLeft ? 0 : 2;
  while (!found_.empty()) {
    auto one = found_.extract(found_.begin());
    Place& place = one.key();
    const LineNo above(std::max<std::int64_t>(0, place[begin] - 1)), end(place[begin + 1]);
    const auto touching = std::ranges::partition_point(change.spans, [&](const auto& span) { return span.oldLastLine() < above; });
    if (touching != change.spans.end() && touching->oldLine <= end) {
      lineParts_ -= one.mapped().parts.size();
      continue;
    }
    const std::int64_t grown = change.linesGrownAbove(end);
    place[begin] += grown, place[begin + 1] += grown;
    kept.insert(std::move(one));
  }
  found_ = std::move(kept);
}

Comparison::Found& Comparison::foundOf(const text::LineHunk& hunk) const {
  if (found_.size() > kMostHunks || lineParts_ > kMostParts) found_.clear(), lineParts_ = 0;
  return found_[{hunk.beforeBegin.value, hunk.beforeEnd.value, hunk.afterBegin.value, hunk.afterEnd.value}];
}

bool Comparison::inTime(const std::function<void()>& work) const {
  if (!turn_.isActive()) turn_.start(0);
  if (spentNs_ >= kTurnNs) isMore_ = true;
  if (isMore_) return false;
  QElapsedTimer clock;
  clock.start();
  work();
  spentNs_ += clock.nsecsElapsed();
  return true;
}

std::optional<std::int64_t> Comparison::counterpartOf(Side side, std::int64_t line, const text::LineHunk& hunk) const {
  const Lines here = linesOf(hunk, side), there = linesOf(hunk, compare::other(side));
  const std::int64_t at = line - here.begin;
  if (here.count() == there.count() || std::max(here.count(), there.count()) > kMostPaired)
    return at < there.count() ? there.begin + at : -1;
  auto& pairs = foundOf(hunk).pairs;
  const auto find = [&] {
    std::vector<std::pair<std::int64_t, std::int64_t>> found;
    for (const text::LinePair& pair : text::pairLines(models_[kLeft]->snapshot(), models_[kRight]->snapshot(), hunk))
      found.push_back({pair.before - hunk.beforeBegin, pair.after - hunk.afterBegin});
    pairs = std::move(found);
  };
  if (!pairs && !inTime(find)) return std::nullopt;
  const auto of = [side](const auto& pair) { return side == kLeft ? pair.first : pair.second; };
  const auto pair = std::ranges::lower_bound(*pairs, at, {}, of);
  if (pair == pairs->end() || of(*pair) != at) return -1;
  return there.begin + (side == kLeft ? pair->second : pair->first);
}

std::vector<text::ByteRange> Comparison::partsOf(Side side, std::int64_t line, std::int64_t counterpart,
                                                 const text::LineHunk& hunk) const {
  auto& known = foundOf(hunk).parts;
  const std::array<std::int64_t, 2> lines{side == kLeft ? line : counterpart, side == kLeft ? counterpart : line};
  const auto key = [&](Side of) { return std::pair(int(of), lines[of] - linesOf(hunk, of).begin); };
  const auto find = [&] {
    const auto begin = [&](Side of) { return text::beginOfLine(models_[of]->snapshot(), LineNo(lines[of]), kMostBytes); };
    text::DiffRules rules;
    rules.ignoreBlanks = ignore_.blanks;
    rules.ignoreCase = ignore_.letterCase;
    std::vector<text::ByteRange> left, right;
    for (const text::WordHunk& part : text::diffWords(begin(kLeft), begin(kRight), rules)) {
      const auto add = [](auto& parts, std::int64_t from, std::int64_t to) {
        if (to > from) parts.push_back({text::ByteOffset(from), text::ByteOffset(to)});
      };
      add(left, part.beforeBegin, part.beforeEnd);
      add(right, part.afterBegin, part.afterEnd);
    }
    known[key(kLeft)] = std::move(left), known[key(kRight)] = std::move(right);
    lineParts_ += 2;
  };
  if (!known.contains(key(side)) && !inTime(find)) return {};
  std::vector<text::ByteRange> parts = known[key(side)];
  const text::ByteOffset start = models_[side]->snapshot().lineStart(LineNo(line));
  for (text::ByteRange& part : parts) part = {start + part.begin.value, start + part.end.value};
  return parts;
}
