#include "change/compare/Comparison.h"

#include <QPointer>
#include <algorithm>
#include <atomic>
#include <utility>

#include "base/Background.h"
#include "bridge/LongWork.h"
#include "control/code/LanguageTable.h"
#include "text/line/LineReader.h"

using compare::kLeft;
using compare::kRight;
using compare::Lines;
using compare::linesOf;
using compare::Side;
using text::LineNo;

namespace {
constexpr int kLaterMs = 250;                                // after the last change
constexpr std::size_t kMostParts = 4096, kMostPairs = 256;   // lines and hunks of which that is kept
constexpr std::int64_t kMostPaired = 1000;                   // lines of a hunk in which pairs are looked for by likeness
constexpr std::int64_t kMostBytes = 16 << 10;                // of a line, in which parts are marked

bool sameBytes(const text::Snapshot& a, const text::Snapshot& b, const std::atomic<bool>& cancel) {
  if (a.size() != b.size()) return false;
  for (text::ByteOffset at(0); at < a.size() && !cancel;) {
    const std::string_view one = a.chunkAt(at), two = b.chunkAt(at);
    const std::size_t run = std::min(one.size(), two.size());
    if (one.substr(0, run) != two.substr(0, run)) return false;
    at += static_cast<std::int64_t>(run);
  }
  return true;
}

bool sameLines(const text::Snapshot& a, const text::Snapshot& b, const std::atomic<bool>& cancel) {
  if (a.lineCount() != b.lineCount()) return false;
  text::LineReader one(a), two(b);
  std::string_view left, right;
  while (!cancel && one.next(&left) && two.next(&right))
    if (left != right) return false;
  return true;
}
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
        equal = sameBytes(texts[0], texts[1], cancel)   ? Equal::wholly
                : sameLines(texts[0], texts[1], cancel) ? Equal::butForLineEnds
                                                        : Equal::underRules;
    } catch (const std::bad_alloc&) { failed = true; }
  }
};

Comparison::Comparison(std::shared_ptr<TextModel> left, std::shared_ptr<TextModel> right, QObject* parent)
    : QObject(parent), models_{std::move(left), std::move(right)} {
  later_.setSingleShot(true);
  later_.setInterval(kLaterMs);
  connect(&later_, &QTimer::timeout, this, &Comparison::refresh);
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
  forget();
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
  compared_ = false;
  later_.start();
  if (hunks_.size() == hunks) {
    forget();
    emit changed();
  } else {
    countDifferences();
  }
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
      const std::int64_t counterpart = there.empty() ? -1 : counterpartOf(side, line, i);
      const bool paired = counterpart >= 0;
      found.kind = paired ? Line::Kind::changed : Line::Kind::single;
      if (paired) found.parts = partsOf(side, line, counterpart);
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
  parts_.clear();
  pairs_.clear();
}

std::int64_t Comparison::counterpartOf(Side side, std::int64_t line, std::size_t hunk) const {
  const Lines here = linesOf(hunks_[hunk], side), there = linesOf(hunks_[hunk], compare::other(side));
  if (here.count() == there.count() || std::max(here.count(), there.count()) > kMostPaired) {
    const std::int64_t same = there.begin + (line - here.begin);
    return same < there.end ? same : -1;
  }
  auto known = pairs_.find(hunk);
  if (known == pairs_.end()) {
    if (pairs_.size() > kMostPairs) pairs_.clear();
    known = pairs_.emplace(hunk, text::pairLines(models_[kLeft]->snapshot(), models_[kRight]->snapshot(), hunks_[hunk])).first;
  }
  const auto of = [side](const text::LinePair& pair) { return side == kLeft ? pair.before.value : pair.after.value; };
  const auto pair = std::ranges::lower_bound(known->second, line, {}, of);
  if (pair == known->second.end() || of(*pair) != line) return -1;
  return side == kLeft ? pair->after.value : pair->before.value;
}

std::vector<text::ByteRange> Comparison::partsOf(Side side, std::int64_t line, std::int64_t counterpart) const {
  const auto known = parts_.find({side, line});
  if (known != parts_.end()) return known->second;
  if (parts_.size() > kMostParts) parts_.clear();
  const text::Snapshot &here = models_[side]->snapshot(), &there = models_[compare::other(side)]->snapshot();
  const std::string one = text::beginOfLine(here, LineNo(line), kMostBytes),
                    two = text::beginOfLine(there, LineNo(counterpart), kMostBytes);
  const text::ByteOffset start = here.lineStart(LineNo(line));
  text::DiffRules rules;
  rules.ignoreBlanks = ignore_.blanks;
  rules.ignoreCase = ignore_.letterCase;
  std::vector<text::ByteRange> parts;
  for (const text::WordHunk& part : text::diffWords(one, two, rules))
    if (part.beforeEnd > part.beforeBegin) parts.push_back({start + part.beforeBegin, start + part.beforeEnd});
  return parts_[{side, line}] = std::move(parts);
}
