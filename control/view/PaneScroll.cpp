// Size, margin and scrolling of a pane.
#include <QScrollBar>
#include <QToolTip>
#include <algorithm>
#include <cmath>

#include "bridge/LongWork.h"
#include "control/folds/FoldMarks.h"
#include "control/folds/PaneFolds.h"
#include "control/folds/StickyLine.h"
#include "control/marks/MarkedBar.h"
#include "control/view/Pane.h"

using text::ByteOffset;
using text::LineNo;

namespace {
constexpr std::int64_t kBarLimit = 1 << 30;   // a scroll bar counts in int
constexpr std::int64_t kAtOnce = 1 << 20;     // bytes of a line counted without a thread
constexpr double kUnitsOfALine = 1 << 16;     // of the scroll bar, at most
constexpr int kFrame = 16;                    // milliseconds between two steps of smooth scrolling
}   // namespace

void Pane::fit() {
  const std::int64_t lines = snapshot().lineCount();
  int digits = 3;
  for (std::int64_t n = lines; n >= 1000; n /= 10) ++digits;
  if (!state_.leftMargin) digits = 0;
  if (digits != marginDigits_) {
    marginDigits_ = digits;
    // Room for the bookmark, the number, some space, and the handles of folds.
    view_.foldMargin = folds_->allowed() ? foldMarks::handleWidth(state_.metrics->lineHeight()) : 0;
    view_.margin =
        digits == 0 ? 0 : static_cast<int>(std::ceil(14 + digits * state_.metrics->asciiAdvance('0') + 9)) + view_.foldMargin;
    viewport()->update();
  }
  fitSticky();
  view_.width = std::max(0, viewport()->width() - view_.margin);
  view_.height = viewport()->height();
  fitRows();
  if (std::max(view_.target, view_.top) > highestTop()) {   // smooth scrolling may be on its way from below the last page
    view_.top = std::min(view_.top, highestTop());
    view_.target = std::min(view_.target, highestTop());
    viewport()->update();
  }
  fitBars();
}

// The line stands above the viewport, so that it covers nothing.
void Pane::fitSticky() {
  const int height = state_.stickyLine && folds_->allowed() ? state_.metrics->lineHeight() + 1 : 0;
  if (height == 0 && sticky_) delete std::exchange(sticky_, nullptr);
  if (viewportMargins().top() != height) setViewportMargins(0, height, 0, 0);
  if (height == 0) return;
  if (!sticky_) {
    sticky_ = new StickyLine(*this);
    sticky_->show();
  }
  sticky_->setGeometry(viewport()->x(), viewport()->y() - height, viewport()->width(), height);
}

void Pane::changeRows(const std::function<void()>& change) {
  if (scrollTimer_.isActive()) showAt(view_.target);   // else the way there would be another one
  const ByteOffset top = view_.topByte();
  change();
  MarkedBar::of(*this).marksChanged();
  view_.setTopByte(top);
  fit();
  viewport()->update();
  emit scrolled();
}

double Pane::rowWidth() const {
  const double cell = state_.metrics->cell();
  if (!state_.mayWrap || state_.wrapsNow == WordWrap::off) return 0;
  if (state_.wrapsNow == WordWrap::column) return state_.wrapColumn * cell;
  const double room = view_.width - TextView::kPadding - cell;   // behind it the caret has room, and a blank that hangs
  return std::max(10 * cell, state_.metrics->fixedPitch() ? std::floor(room / cell) * cell : room);
}

void Pane::fitRows() {
  if (const double width = rowWidth(); width != view_.rows.width()) {
    const std::uint64_t revision = state_.model->document().revision();
    if (kept_.top != view_.top || kept_.revision != revision) kept_.byte = view_.topByte();
    view_.rows.setWidth(width);
    view_.forget();
    view_.forgetWidest();
    if (state_.wrapsNow == WordWrap::window) view_.left = 0;
    else view_.widen(width);
    view_.setTopByte(kept_.byte);
    kept_.top = view_.top;
    kept_.revision = revision;
    viewport()->update();
  }
  view_.measureDown(view_.top, view_.height + view_.lineHeight());
  view_.measureEnd();
}

void Pane::fitBars() {
  settingBars_ = true;
  QScrollBar* vertical = verticalScrollBar();
  barScale_ = highestTop() / kBarLimit + 1;
  barUnit_ = std::min(kUnitsOfALine, static_cast<double>(kBarLimit) / static_cast<double>(view_.rows.map.shownLines()));
  vertical->setRange(0, barOf(highestTop()));
  const std::int64_t page = visibleLines() * view_.lineHeight();
  vertical->setPageStep(
      std::max<int>(1, view_.rows.wraps() ? barOf(view_.top + page) - barOf(view_.top) : static_cast<int>(page / barScale_)));
  vertical->setSingleStep(std::max<int>(1, static_cast<int>(view_.lineHeight() / barScale_)));
  vertical->setValue(barOf(view_.top));
  QScrollBar* horizontal = horizontalScrollBar();
  horizontal->setRange(0, static_cast<int>(std::min(highestLeft(), kBarLimit)));
  horizontal->setPageStep(std::max(1, view_.width));
  horizontal->setSingleStep(std::max(1, static_cast<int>(state_.metrics->cell() * 2)));
  horizontal->setValue(static_cast<int>(std::min(view_.left, kBarLimit)));
  settingBars_ = false;
}

int Pane::barOf(std::int64_t top) {
  if (!view_.rows.wraps()) return static_cast<int>(top / barScale_);
  const text::DisplayMap& map = view_.rows.map;
  if (top >= map.rows() * view_.lineHeight()) return static_cast<int>(static_cast<double>(map.shownLines()) * barUnit_);
  const TextView::Place place = view_.placeAt(top);
  const auto rows = static_cast<double>(map.rowsOf(place.line) * view_.lineHeight());
  const auto within = static_cast<double>(top - view_.topOf({place.line, 0}));
  return static_cast<int>((static_cast<double>(map.shownAbove(place.line)) + within / rows) * barUnit_);
}

std::int64_t Pane::topOfBar(int value) {
  if (value >= verticalScrollBar()->maximum()) return highestTop();
  if (!view_.rows.wraps()) return value * barScale_;
  const text::DisplayMap& map = view_.rows.map;
  const double lines = value / barUnit_, whole = std::floor(lines);
  const LineNo line = map.shownLine(std::clamp<std::int64_t>(static_cast<std::int64_t>(whole), 0, map.shownLines() - 1));
  view_.measure(line);
  const auto rows = static_cast<double>(map.rowsOf(line));
  return view_.topOf({line, static_cast<std::int64_t>((lines - whole) * rows)});
}

// Steps go by rows, which in a wrapped text are not all equally far on the bar.
void Pane::barActed(int action) {
  if (!view_.rows.wraps()) return;
  const std::int64_t line = view_.lineHeight(), page = std::max<std::int64_t>(1, visibleLines() - 1) * line;
  std::int64_t by = 0;
  if (action == QAbstractSlider::SliderSingleStepAdd) by = line;
  else if (action == QAbstractSlider::SliderSingleStepSub) by = -line;
  else if (action == QAbstractSlider::SliderPageStepAdd) by = page;
  else if (action == QAbstractSlider::SliderPageStepSub) by = -page;
  if (by == 0) return;
  showAt(view_.top + by);
  verticalScrollBar()->setSliderPosition(barOf(view_.top));
}

std::int64_t Pane::highestTop() const {
  return std::max<std::int64_t>(0, view_.rows.map.rows() - visibleLines()) * view_.lineHeight();
}

std::int64_t Pane::highestLeft() const {
  if (state_.mayWrap && state_.wrapsNow == WordWrap::window) return 0;
  const double widest = view_.widestSeen(), cell = state_.metrics->cell();
  if (widest + cell * 2 <= view_.width) return view_.left;   // with the caret behind them, see scrollToCaret
  return std::max<std::int64_t>(view_.left, static_cast<std::int64_t>(std::ceil(widest + cell * 4)) - view_.width);
}

qint64 Pane::topLine() const { return view_.placeAt(view_.target + view_.lineHeight() - 1).line.value; }
qint64 Pane::visibleLines() const { return std::max(1, viewport()->height() / view_.lineHeight()); }
void Pane::setTopLine(qint64 line) {
  const qint64 clipped = std::clamp<qint64>(line, 0, snapshot().lineCount() - 1);
  scrollTo(view_.topOf({LineNo(clipped), 0}), true);
}
void Pane::scrollColumns(qint64 cells) {
  scrollSideways(view_.left + static_cast<std::int64_t>(static_cast<double>(cells) * state_.metrics->cell()));
}
qint64 Pane::leftColumn() const { return static_cast<qint64>(std::ceil(static_cast<double>(view_.left) / state_.metrics->cell())); }
qint64 Pane::visibleColumns() const { return std::max<qint64>(1, static_cast<qint64>(view_.width / state_.metrics->cell())); }

void Pane::scrollTo(std::int64_t top, bool smooth) {
  view_.settle(top);
  view_.target = std::min(view_.target, highestTop());
  const std::int64_t page = std::max(1, view_.height);
  const bool far = std::abs(view_.target - view_.top) > 2 * page;
  if (!smooth || !state_.smoothScrolling || !isVisible() || state_.held > 1 || (far && view_.rows.wraps())) {
    showAt(view_.target);
    return;
  }
  if (view_.target == view_.top) return;
  // Long distances are shortened to the last page.
  top = view_.target;
  if (far) showAt(top > view_.top ? top - page : top + page);
  view_.target = top;
  if (!scrollTimer_.isActive()) scrollTimer_.start(kFrame, Qt::PreciseTimer, this);
}

void Pane::showAt(std::int64_t top) {
  scrollTimer_.stop();
  view_.settle(top);
  view_.target = std::min(view_.target, highestTop());
  if (const bool moved = view_.takeMoved(); view_.top == view_.target && !moved) return;
  view_.top = view_.target;
  showTop();
}

// After view_.top has changed.
void Pane::showTop() {
  if (view_.rows.wraps()) {
    fitBars();
  } else {
    settingBars_ = true;
    verticalScrollBar()->setValue(barOf(view_.top));
    settingBars_ = false;
  }
  viewport()->update();
  emit scrolled();
}

void Pane::stepAnimation() {
  const std::int64_t way = view_.target - view_.top, step = way * 2 / 5;
  if (std::abs(way) <= 2 || step == 0) {
    showAt(view_.target);
    return;
  }
  view_.top += step;
  showTop();
}

void Pane::scrollSideways(std::int64_t left) {
  left = std::max<std::int64_t>(0, left);
  if (left == view_.left) return;
  view_.left = left;
  view_.forget();
  fit();
  viewport()->update();
  emit scrolled();
}

// The user moved a scroll bar.
void Pane::scrollContentsBy(int, int) {
  if (settingBars_) return;
  const QScrollBar* vertical = verticalScrollBar();
  // In a wrapped text a value of the bar stands for many tops.
  if (!view_.rows.wraps() || vertical->value() != barOf(view_.top)) {
    std::int64_t top = topOfBar(vertical->value());
    if (!state_.smoothScrolling) top -= top % view_.lineHeight();
    showAt(top);
  }
  scrollSideways(std::min<std::int64_t>(horizontalScrollBar()->value(), highestLeft()));
}

void Pane::showLineTip() {
  if (!state_.lineToolTips) return;
  QScrollBar* bar = verticalScrollBar();
  // The text follows the slider after this call.
  const std::int64_t line = view_.placeAt(topOfBar(bar->sliderPosition())).line.value;
  const double part = static_cast<double>(bar->sliderPosition()) / std::max(1, bar->maximum());
  const QPoint at = bar->mapToGlobal(QPoint(-90, static_cast<int>(part * (bar->height() - 40))));
  QToolTip::showText(at, tr("Line %L1").arg(line + 1), bar);
}

void Pane::resizeEvent(QResizeEvent* event) {
  QAbstractScrollArea::resizeEvent(event);
  view_.forget();
  fit();
  emit scrolled();
}

bool Pane::showCaret(bool mayCancel) {
  bool counted = true;
  if (view_.height > 0)
    shown([&] {
      folds_->reveal();
      counted = countTo(editor_->selection().caret, mayCancel);
      if (counted) scrollToCaret();
    });
  return counted;
}

// A long line is counted the first time that somebody goes along it, on a thread where that takes long.
bool Pane::countTo(ByteOffset at, bool mayCancel) {
  const std::uint64_t revision = state_.model->document().revision();
  const LineNo line = snapshot().lineAt(at);
  const auto count = [&](text::LineMaps& maps, bool cells) {
    for (;;) {
      text::LineMap map(maps, snapshot(), line, state_.options->tabSize);
      const std::int64_t byte = at - map.start();
      if (map.reach(text::LinePlace::atByte(byte), kAtOnce)) return true;
      text::LineSurvey survey = map.survey(byte);
      const text::Widths* const widths = survey.widths;
      bool cancelled = false;
      const auto work = [&](text::SearchControl& control) {
        std::optional<GlyphMetrics> own;   // those of the panes belong to this thread
        if (!cells) survey.widths = &own.emplace(state_.metrics->font(), state_.scale);
        survey.run([&](std::int64_t done) {
          control.bytesDone = done;
          return !(cancelled = control.cancel);
        });
        survey.widths = widths;
      };
      LongWork::run(*this, survey.to - survey.from, work, tr("Measuring the line..."), mayCancel);
      if (state_.model->document().revision() != revision) return true;   // a message from outside changed it
      text::LineMap(maps, snapshot(), line, state_.options->tabSize).adopt(std::move(survey));
      if (cancelled) return false;
    }
  };
  return count(state_.model->lines(), true) && (state_.metrics->fixedPitch() || count(state_.widths, false));
}

void Pane::scrollToCaret() {
  const std::int64_t page = visibleLines() * view_.lineHeight(), last = page - view_.lineHeight();
  const TextView::Place place = view_.placeOf(editor_->selection().caret);
  const auto isShown = [&] {
    const std::int64_t y = view_.topOf(place);
    return y >= view_.target && y <= view_.target + last;
  };
  if (view_.rows.wraps()) {
    view_.measureDown(view_.target, page);
    view_.measure(place.line);
    if (!isShown()) {
      view_.measureUp(place, page);
      view_.measureDown(view_.topOf(place), page);
    }
  }
  if (!isShown()) {
    const std::int64_t y = view_.topOf(place), bottom = view_.target + last;
    const bool far = y < view_.target - page || y > bottom + page;
    scrollTo(far ? y - page / 2 : y < view_.target ? y : y - last, true);
  }
  if (view_.rows.wraps() && state_.wrapsNow == WordWrap::window) return;
  const double x = PanePainter::caretX(view_, look()), air = state_.metrics->cell() * 2, jump = view_.width / 4.0;
  view_.widen(x);
  if (x > static_cast<double>(view_.left) + view_.width - air) scrollSideways(static_cast<std::int64_t>(x - view_.width + jump));
  else if (x < static_cast<double>(view_.left) + air)
    scrollSideways(x < view_.width - jump ? 0 : static_cast<std::int64_t>(x - jump));
}
