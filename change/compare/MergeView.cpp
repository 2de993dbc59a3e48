#include "change/compare/MergeView.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QShortcut>
#include <QToolButton>
#include <algorithm>
#include <utility>

#include "base/Counted.h"
#include "change/compare/CompareStrip.h"
#include "change/compare/Hunks.h"
#include "control/CodeMax.h"
#include "text/line/LineReader.h"
#include "text/line/SameLines.h"

using text::LineNo;

namespace {
constexpr std::string_view kBegin = "<<<<<<<", kEnd = ">>>>>>>", kMarks[] = {kBegin, "|||||||", kEnd},
                           kMiddle = "=======";   // it also stands below headings

bool isMark(std::string_view line, std::string_view mark) {
  return line.starts_with(mark) && (line.size() == mark.size() || line[mark.size()] == ' ');
}

bool hasMarks(const text::Snapshot& text, const text::SearchControl& control) {
  text::LineReader reader(text);
  for (std::string_view line; !control.cancel && reader.next(&line);)
    for (const std::string_view mark : kMarks)
      if (isMark(line, mark)) return true;
  return false;
}

bool hasMiddle(const text::Snapshot& text, const compare::Lines& lines) {
  text::LineReader reader(text, LineNo(std::min(lines.begin, text.lineCount() - 1)));
  std::string_view line;
  for (std::int64_t at = lines.begin; at < lines.end && reader.next(&line); ++at)
    if (line == kMiddle) return true;
  return false;
}

struct Version {
  const text::Snapshot& text;
  compare::Lines lines;
};

// True when the lines are those of the versions, one behind the other.
bool isMadeOf(const text::Snapshot& text, const compare::Lines& lines, const std::vector<Version>& versions) {
  std::int64_t count = 0;
  for (const Version& version : versions) count += version.lines.count();
  if (count != lines.count()) return false;
  LineNo at(lines.begin);
  return std::ranges::all_of(versions, [&](const Version& version) {
    const LineNo from = std::exchange(at, at + version.lines.count());
    return text::sameLines(text, from, at, version.text, LineNo(version.lines.begin), LineNo(version.lines.end));
  });
}

compare::Lines leftOf(const text::MergeRegion& region) { return {region.leftBegin.value, region.leftEnd.value}; }
compare::Lines rightOf(const text::MergeRegion& region) { return {region.rightBegin.value, region.rightEnd.value}; }
}

MergeView::MergeView(CodeMax* result, const text::Snapshot& left, const text::Snapshot& right,
                     const std::vector<text::MergeRegion>& regions, const text::MergedText& merged, QWidget* parent)
    : QWidget(parent),
      result_(result),
      sides_{left, right},
      made_(merged.text),
      lineEnds_(merged.lineEndConflicts),
      count_(new QLabel(this)) {
  result_->setParent(this);
  text::Document& document = result_->model()->document();
  const text::Snapshot& now = document.snapshot();
  for (std::size_t i = 0; i < regions.size(); ++i) {
    if (regions[i].kind != text::MergeRegion::conflict) continue;
    Conflict conflict{regions[i], merged.starts[i], LineNo(made_.lineCount()), 0, 0, i + 1 == regions.size()};
    if (!conflict.toEnd) conflict.madeEnd = merged.starts[i + 1];
    conflict.begin = document.addMark(now.lineStart(merged.starts[i]) + 1, text::Bias::left);   // not before a line typed above it
    if (!conflict.toEnd) conflict.end = document.addMark(now.lineStart(merged.starts[i + 1]), text::Bias::right);
    conflicts_.push_back(conflict);
  }
  count_->setObjectName(QStringLiteral("conflicts"));
  count_->setTextFormat(Qt::PlainText);
  count_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);   // the buttons leave little on a small screen
  auto* bar = new QHBoxLayout;
  bar->setContentsMargins(4, 2, 4, 2);
  bar->addWidget(count_, 1);
  const auto button = [&](const QString& caption, const char* keys, std::vector<QToolButton*>& group, auto run) {
    auto* made = new QToolButton(this);
    made->setObjectName(QString::fromLatin1(keys));
    made->setText(caption);
    // Not the button's own, which acts only after it was seen pressed: the next key would come too early.
    auto* shortcut = new QShortcut(QKeySequence(QString::fromLatin1(keys)), this);
    connect(shortcut, &QShortcut::activated, made, &QToolButton::click);
    made->setToolTip(shortcut->key().toString(QKeySequence::NativeText));
    made->setFocusPolicy(Qt::NoFocus);
    connect(made, &QToolButton::clicked, this, run);
    bar->addWidget(made);
    group.push_back(made);
  };
  button(tr("Previous Conflict"), "Shift+F8", steps_, [this] { step(-1); });
  button(tr("Next Conflict"), "F8", steps_, [this] { step(1); });
  button(tr("Take Left"), "Alt+1", takes_, [this] { take(Take::left); });
  button(tr("Take Right"), "Alt+2", takes_, [this] { take(Take::right); });
  button(tr("Take Both"), "Alt+3", takes_, [this] { take(Take::both); });
  lineEndsTaken_ = new QToolButton(this);
  lineEndsTaken_->setText(tr("Keep These Line Ends"));
  lineEndsTaken_->setObjectName(QStringLiteral("lineEnds"));
  lineEndsTaken_->setToolTip(tr("Both sides changed line ends, not in the same way; they are as in the left text"));
  lineEndsTaken_->setFocusPolicy(Qt::NoFocus);
  lineEndsTaken_->setVisible(lineEnds_ > 0);
  connect(lineEndsTaken_, &QToolButton::clicked, this, [this] {
    lineEnds_ = 0;
    lineEndsTaken_->hide();
    showCount();
  });
  bar->insertWidget(1, lineEndsTaken_);
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(0);
  layout->addLayout(bar);
  layout->addWidget(result_, 1);
  result_->setHSplitter(false);
  result_->setVSplitter(false);
  result_->setLineBacks([this](LineNo line) {
    LineBack back;
    if (at(line.value)) back.line = CompareColors::of(*result_).conflict;
    return back;
  });
  connect(result_, &CodeMax::SelChange, this, &MergeView::showState);
  connect(result_->model().get(), &TextModel::changed, this, &MergeView::textChanged);
  connect(result_->model().get(), &TextModel::appearanceChanged, this, &MergeView::showState);
  left_ = static_cast<int>(conflicts_.size());
  showCount();
}

MergeView::~MergeView() {
  disconnect(result_, nullptr, this, nullptr);
  text::Document& document = result_->model()->document();   // it may go on in another window
  for (const Conflict& conflict : conflicts_) {
    document.removeMark(conflict.begin);
    document.removeMark(conflict.end);
  }
}

std::pair<std::int64_t, std::int64_t> MergeView::linesOf(const Conflict& conflict) const {
  const text::Document& document = result_->model()->document();
  const text::Snapshot& now = document.snapshot();
  return {now.lineAt(document.markAt(conflict.begin)).value,
          conflict.toEnd ? now.lineCount() : now.lineAt(document.markAt(conflict.end)).value};
}

bool MergeView::stands(const Conflict& conflict) const {
  const text::Snapshot& now = result_->model()->snapshot();
  const auto [begin, end] = linesOf(conflict);
  return begin < end && isMark(text::beginOfLine(now, LineNo(begin), std::ssize(kBegin) + 1), kBegin);
}

const MergeView::Conflict* MergeView::at(std::int64_t line) const {
  const auto behind = std::ranges::partition_point(conflicts_, [&](const Conflict& one) { return linesOf(one).first <= line; });
  if (behind == conflicts_.begin()) return nullptr;
  const Conflict& conflict = *(behind - 1);
  return line < linesOf(conflict).second && conflict.stands ? &conflict : nullptr;
}

const MergeView::Conflict* MergeView::current() const { return at(result_->CurrentPosition().LineNo); }

bool MergeView::step(int direction) {
  std::vector<const Conflict*> open;
  for (const Conflict& conflict : conflicts_)
    if (conflict.stands) open.push_back(&conflict);
  if (open.empty()) return false;
  const std::int64_t line = result_->CurrentPosition().LineNo;
  const auto begins = [this](const Conflict* conflict) { return linesOf(*conflict).first; };
  const Conflict* next = direction > 0 ? open.front() : open.back();
  if (direction > 0) {
    const auto found = std::ranges::find_if(open, [&](const Conflict* one) { return begins(one) > line; });
    if (found != open.end()) next = *found;
  } else {
    const Conflict* here = current();
    for (const Conflict* one : open)
      if (begins(one) < (here ? linesOf(*here).first : line)) next = one;
  }
  const std::int64_t at = begins(next);
  result_->SetSel({at, 0, at, 0, false});
  result_->ExecuteCmd(Cmd::WINDOWSCROLLTOCENTER);
  result_->setFocus();
  emit shown(next->region);
  return true;
}

// Which conflict stands at the first line of this one, and the line behind it; null: that cannot be told. The marks alone do not say:
// they are all at one place where their text was deleted and brought back, and what is typed behind a conflict comes before its end.
std::pair<const MergeView::Conflict*, std::int64_t> MergeView::whole(const Conflict* conflict) const {
  const text::Snapshot& now = result_->model()->snapshot();
  const std::int64_t begin = linesOf(*conflict).first;
  const Conflict* const first =
      &*std::ranges::partition_point(conflicts_, [&](const auto& one) { return linesOf(one).first < begin; });
  const Conflict* last = first;
  for (const Conflict* one = first; one != conflicts_.data() + conflicts_.size() && linesOf(*one).first == begin; last = one++) {
    text::LineReader is(now, LineNo(begin)), was(made_, one->madeBegin);
    std::string_view line, old;
    LineNo at = one->madeBegin;
    while (at < one->madeEnd && is.next(&line) && was.next(&old) && line == old) ++at;
    if (at == one->madeEnd) return {one, begin + (one->madeEnd - one->madeBegin)};
  }
  if (first != last) return {};
  text::LineReader reader(now, LineNo(begin));   // it was edited by hand
  std::string_view line;
  for (reader.next(&line); reader.next(&line) && !isMark(line, kBegin);)
    if (isMark(line, kEnd)) return {conflict, reader.line().value + 1};
  return {};
}

bool MergeView::take(Take what) {
  if (!current() || result_->ReadOnly()) return false;
  const auto [conflict, end] = whole(current());
  if (!conflict) return false;
  const std::int64_t begin = linesOf(*conflict).first;
  const compare::Lines left = leftOf(conflict->region), right = rightOf(conflict->region);
  text::Snapshot from = sides_[what == Take::right ? 1 : 0];
  compare::Lines fresh = what == Take::right ? right : left;
  if (what == Take::both) {
    std::string both;
    const auto add = [&](const text::Snapshot& side, const compare::Lines& lines) {
      for (std::int64_t line = lines.begin; line < lines.end; ++line) both += side.line(LineNo(line)) + '\n';
    };
    add(sides_[0], left);
    add(sides_[1], right);
    from = text::Snapshot(std::move(both));
    fresh = {0, left.count() + right.count()};
  }
  TextModel& model = *result_->model();
  const text::Edit edit = compare::exchangeLines(model.snapshot(), {begin, end}, from, fresh, model.newLines());
  if (!model.document().apply(edit, result_->editor().selection())) return false;
  const std::int64_t line = std::min<std::int64_t>(begin, result_->LineCount() - 1);
  result_->SetSel({line, 0, line, 0, false});
  return true;
}

std::function<bool(text::SearchControl&)> MergeView::remains() const {
  std::vector<std::pair<compare::Lines, text::MergeRegion>> parts;
  for (const Conflict& conflict : conflicts_) {
    const auto [begin, end] = linesOf(conflict);
    parts.push_back({{begin, end}, conflict.region});
  }
  return [text = result_->model()->snapshot(), sides = sides_, parts = std::move(parts),
          lineEnds = lineEnds_](const text::SearchControl& control) {
    if (lineEnds > 0 || hasMarks(text, control)) return true;
    for (const auto& [lines, region] : parts) {
      if (control.cancel) return false;
      const Version left{sides[0], leftOf(region)}, right{sides[1], rightOf(region)};
      if (hasMiddle(text, lines) && !isMadeOf(text, lines, {left}) && !isMadeOf(text, lines, {right}) &&
          !isMadeOf(text, lines, {left, right}))
        return true;
    }
    return false;
  };
}

// Only the conflicts at a changed place are looked at: there may be very many.
void MergeView::textChanged(const text::Change& change) {
  auto from = conflicts_.begin(), to = conflicts_.end();
  if (!change.reset && !change.spans.empty()) {
    const std::int64_t first = change.spans.front().firstLine.value;
    const std::int64_t last = (change.spans.back().firstLine + change.spans.back().linesInserted).value;
    from = std::ranges::partition_point(conflicts_, [&](const Conflict& one) { return linesOf(one).second < first; });
    to = std::partition_point(from, to, [&](const Conflict& one) { return linesOf(one).first <= last; });
  }
  for (; from < to; ++from) {
    const bool stood = std::exchange(from->stands, stands(*from));
    left_ += int(from->stands) - int(stood);
  }
  showCount();
}

void MergeView::showCount() {
  QString text = left_ == 0 ? tr("Result: no conflict is left")
                            : tr("Result: %1").arg(counted(left_, tr("conflict left"), tr("conflicts left")));
  if (lineEnds_ > 0) text += tr("; %1 in conflict").arg(counted(lineEnds_, tr("line end"), tr("line ends")));
  count_->setText(text);
  count_->setToolTip(text);
  for (QToolButton* each : steps_) each->setEnabled(left_ > 0);
  showState();
}

void MergeView::showState() {
  const bool here = current() && !result_->ReadOnly();
  for (QToolButton* each : takes_) each->setEnabled(here);
}
