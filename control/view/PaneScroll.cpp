// Size, margin and scrolling of a pane.
#include <QScrollBar>
#include <QToolTip>
#include <algorithm>
#include <cmath>

#include "bridge/LongWork.h"
#include "control/view/Pane.h"

using text::ByteOffset;
using text::LineNo;

namespace {
constexpr std::int64_t kBarLimit = 1 << 30;   // a scroll bar counts in int
constexpr std::int64_t kAtOnce = 1 << 20;     // bytes of a line counted without a thread
constexpr int kFrame = 16;                    // milliseconds between two steps of smooth scrolling
}   // namespace

void Pane::fit() {
  const std::int64_t lines = snapshot().lineCount();
  int digits = 3;
  for (std::int64_t n = lines; n >= 1000; n /= 10) ++digits;
  if (!state_.leftMargin) digits = 0;
  if (digits != marginDigits_) {
    marginDigits_ = digits;
    // Room for the bookmark, the number, and some space.
    view_.margin = digits == 0 ? 0 : static_cast<int>(std::ceil(14 + digits * state_.metrics->asciiAdvance('0') + 9));
    viewport()->update();
  }
  view_.width = std::max(0, viewport()->width() - view_.margin);
  view_.height = viewport()->height();
  if (std::max(top_, view_.top) > highestTop()) {   // smooth scrolling may be on its way from below the last page
    view_.top = highestTop();
    top_ = std::min(top_, view_.top);
    viewport()->update();
  }

  settingBars_ = true;
  QScrollBar* vertical = verticalScrollBar();
  barScale_ = highestTop() / kBarLimit + 1;
  vertical->setRange(0, static_cast<int>(highestTop() / barScale_));
  vertical->setPageStep(std::max<int>(1, static_cast<int>(visibleLines() * view_.lineHeight() / barScale_)));
  vertical->setSingleStep(std::max<int>(1, static_cast<int>(view_.lineHeight() / barScale_)));
  vertical->setValue(static_cast<int>(view_.top / barScale_));
  QScrollBar* horizontal = horizontalScrollBar();
  horizontal->setRange(0, static_cast<int>(std::min(highestLeft(), kBarLimit)));
  horizontal->setPageStep(std::max(1, view_.width));
  horizontal->setSingleStep(std::max(1, static_cast<int>(state_.metrics->cell() * 2)));
  horizontal->setValue(static_cast<int>(std::min(view_.left, kBarLimit)));
  settingBars_ = false;
}

std::int64_t Pane::highestTop() const {
  return std::max<std::int64_t>(0, snapshot().lineCount() - visibleLines()) * view_.lineHeight();
}

std::int64_t Pane::highestLeft() const {
  const double widest = view_.widestSeen() + state_.metrics->cell() * 4;
  return std::max<std::int64_t>(view_.left, static_cast<std::int64_t>(std::ceil(widest)) - view_.width);
}

qint64 Pane::topLine() const { return (top_ + view_.lineHeight() - 1) / view_.lineHeight(); }
qint64 Pane::visibleLines() const { return std::max(1, viewport()->height() / view_.lineHeight()); }
void Pane::setTopLine(qint64 line) {
  const qint64 clipped = std::clamp<qint64>(line, 0, snapshot().lineCount() - 1);
  scrollTo(clipped * view_.lineHeight(), true);
}
void Pane::scrollColumns(qint64 cells) {
  scrollSideways(view_.left + static_cast<std::int64_t>(static_cast<double>(cells) * state_.metrics->cell()));
}
qint64 Pane::leftColumn() const { return static_cast<qint64>(std::ceil(static_cast<double>(view_.left) / state_.metrics->cell())); }
qint64 Pane::visibleColumns() const { return std::max<qint64>(1, static_cast<qint64>(view_.width / state_.metrics->cell())); }

void Pane::scrollTo(std::int64_t top, bool smooth) {
  top = std::clamp<std::int64_t>(top, 0, highestTop());
  if (!smooth || !state_.smoothScrolling || !isVisible() || state_.held > 1) {
    showAt(top);
    return;
  }
  top_ = top;
  if (top_ == view_.top) return;
  // Long distances are shortened to the last page.
  const std::int64_t page = std::max(1, view_.height);
  if (std::abs(top_ - view_.top) > 2 * page) showAt(top_ > view_.top ? top_ - page : top_ + page);
  top_ = top;
  if (!scrollTimer_.isActive()) scrollTimer_.start(kFrame, Qt::PreciseTimer, this);
}

void Pane::showAt(std::int64_t top) {
  scrollTimer_.stop();
  top_ = std::clamp<std::int64_t>(top, 0, highestTop());
  if (view_.top == top_) return;
  view_.top = top_;
  settingBars_ = true;
  verticalScrollBar()->setValue(static_cast<int>(view_.top / barScale_));
  settingBars_ = false;
  viewport()->update();
  emit scrolled();
}

void Pane::stepAnimation() {
  const std::int64_t way = top_ - view_.top, step = way * 2 / 5;
  const std::int64_t target = top_;
  if (std::abs(way) <= 2 || step == 0) {
    showAt(target);
    return;
  }
  view_.top += step;
  settingBars_ = true;
  verticalScrollBar()->setValue(static_cast<int>(view_.top / barScale_));
  settingBars_ = false;
  viewport()->update();
  emit scrolled();
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
  std::int64_t top = vertical->value() == vertical->maximum() ? highestTop() : vertical->value() * barScale_;
  if (!state_.smoothScrolling) top -= top % view_.lineHeight();
  showAt(top);
  scrollSideways(std::min<std::int64_t>(horizontalScrollBar()->value(), highestLeft()));
}

void Pane::showLineTip() {
  if (!state_.lineToolTips) return;
  QScrollBar* bar = verticalScrollBar();
  // The text follows the slider after this call.
  const std::int64_t line = bar->sliderPosition() * barScale_ / view_.lineHeight();
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
  const std::int64_t line = snapshot().lineAt(editor_->selection().caret).value, lines = visibleLines();
  const std::int64_t y = line * view_.lineHeight();
  const std::int64_t bottom = top_ + lines * view_.lineHeight() - view_.lineHeight();
  if (y < top_ || y > bottom) {
    const std::int64_t page = lines * view_.lineHeight();
    const bool far = y < top_ - page || y > bottom + page;
    scrollTo(far ? y - page / 2 : y < top_ ? y : y - bottom + top_, true);
  }
  const double x = PanePainter::caretX(view_, look()), air = state_.metrics->cell() * 2, jump = view_.width / 4.0;
  view_.widen(x);
  if (x > static_cast<double>(view_.left) + view_.width - air) scrollSideways(static_cast<std::int64_t>(x - view_.width + jump));
  else if (x < static_cast<double>(view_.left) + air)
    scrollSideways(x < view_.width - jump ? 0 : static_cast<std::int64_t>(x - jump));
}
