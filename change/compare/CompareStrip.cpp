#include "change/compare/CompareStrip.h"

#include <QHelpEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QToolTip>
#include <algorithm>

#include "control/CodeMax.h"

using compare::kLeft;
using compare::kRight;
using compare::Lines;
using compare::linesOf;
using compare::Side;

namespace {

constexpr int kStripWidth = 44, kOverviewWidth = 12, kButton = 16;

QColor mixed(const QColor& a, const QColor& b, float part) {
  return QColor::fromRgbF(a.redF() + (b.redF() - a.redF()) * part, a.greenF() + (b.greenF() - a.greenF()) * part,
                          a.blueF() + (b.blueF() - a.blueF()) * part);
}

}   // namespace

CompareColors CompareColors::of(const CodeMax& text) {
  const QColor window = text.GetColor(static_cast<int>(ColorSlot::Window));
  const bool dark = window.lightness() < 128;
  const QColor blue(0x2F, 0x81, 0xF7), green(0x2D, 0xA4, 0x4E), red(0xD1, 0x3C, 0x32);
  return {window,
          mixed(window, blue, dark ? 0.20f : 0.13f),
          mixed(window, blue, dark ? 0.48f : 0.36f),
          mixed(window, green, dark ? 0.26f : 0.17f),
          mixed(window, green, 0.75f),
          mixed(window, red, dark ? 0.26f : 0.14f),
          text.GetColor(static_cast<int>(ColorSlot::Text))};
}

CompareStrip::CompareStrip(Comparison& comparison, std::array<CodeMax*, 2> texts, QWidget* parent)
    : QWidget(parent), comparison_(comparison), texts_(texts) {
  setFixedWidth(kStripWidth);
  setMouseTracking(true);
  setObjectName(QStringLiteral("compareStrip"));
}

void CompareStrip::setCurrent(int difference) {
  current_ = difference;
  update();
}

void CompareStrip::setWritable(bool left, bool right) {
  writable_ = {left, right};
  update();
}

double CompareStrip::yOf(Side side, std::int64_t line) const {
  const CodeMax::ShownPart shown = texts_[side]->shownPart();
  const int above = mapFromGlobal(texts_[side]->mapToGlobal(shown.area.topLeft())).y();
  return above + static_cast<double>(line * shown.lineHeight - shown.top);
}

std::vector<CompareStrip::Band> CompareStrip::bands() const {
  const compare::Hunks& hunks = comparison_.hunks();
  std::size_t first = hunks.size();
  for (const Side side : {kLeft, kRight}) {
    const CodeMax::ShownPart shown = texts_[side]->shownPart();
    first = std::min(first, compare::hunkFrom(hunks, side, shown.top / shown.lineHeight));
  }
  std::vector<Band> found;
  for (std::size_t i = first; i < hunks.size(); ++i) {
    Band band{comparison_.differenceOf(i), {}, {}, {}, false};
    for (const Side side : {kLeft, kRight}) {
      const Lines lines = linesOf(hunks[i], side);
      band.top[side] = yOf(side, lines.begin);
      band.bottom[side] = yOf(side, lines.end);
      band.oneSided = band.oneSided || lines.empty();
    }
    if (band.top[kLeft] > height() && band.top[kRight] > height()) break;
    if (band.difference < 0) continue;
    for (const Side side : {kLeft, kRight}) {
      if (!writable_[compare::other(side)]) continue;
      const double last = std::max(band.bottom[side], band.top[side] + kButton / 2) - kButton;   // beside its lines
      const double y = std::clamp(band.top[side], 0.0, std::max(0.0, last));
      band.button[side] = QRectF(side == kLeft ? 1 : width() - kButton - 1, y, kButton, kButton);
    }
    found.push_back(band);
  }
  return found;
}

void CompareStrip::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  const CompareColors colors = CompareColors::of(*texts_[kLeft]);
  painter.fillRect(rect(), mixed(colors.window, colors.ink, 0.05f));
  painter.setRenderHint(QPainter::Antialiasing);
  const double middle = width() / 2.0;
  for (const Band& band : bands()) {
    QPainterPath path(QPointF(0, band.top[kLeft]));
    path.cubicTo(middle, band.top[kLeft], middle, band.top[kRight], width(), band.top[kRight]);
    path.lineTo(width(), std::max(band.bottom[kRight], band.top[kRight] + 2));
    path.cubicTo(middle, band.bottom[kRight], middle, band.bottom[kLeft], 0, std::max(band.bottom[kLeft], band.top[kLeft] + 2));
    path.closeSubpath();
    painter.fillPath(path, band.oneSided ? colors.single : colors.changed);
    const QColor edge = band.oneSided ? colors.rule : colors.changedPart;
    painter.setPen(QPen(edge, band.difference == current_ ? 2 : 1));
    painter.drawPath(path);
  }
  for (const Band& band : bands()) {
    for (const Side side : {kLeft, kRight}) {
      const QRectF& box = band.button[side];
      if (box.isEmpty()) continue;
      const bool under = under_ && *under_ == std::pair(band.difference, side);
      painter.setPen(Qt::NoPen);
      painter.setBrush(mixed(colors.window, colors.ink, under ? 0.25f : 0.10f));
      painter.drawRoundedRect(box.adjusted(1, 1, -1, -1), 3, 3);
      const double way = side == kLeft ? 1 : -1, x = box.center().x(), y = box.center().y();
      painter.setPen(QPen(colors.ink, 1.4));
      painter.drawLine(QPointF(x - 4 * way, y), QPointF(x + 4 * way, y));
      painter.drawPolyline(QPolygonF({QPointF(x + way, y - 3), QPointF(x + 4 * way, y), QPointF(x + way, y + 3)}));
    }
  }
}

std::optional<std::pair<int, Side>> CompareStrip::buttonAt(const QPointF& at) const {
  for (const Band& band : bands())
    for (const Side side : {kLeft, kRight})
      if (band.button[side].contains(at)) return std::pair(band.difference, side);
  return std::nullopt;
}

void CompareStrip::mousePressEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton) return;
  if (const auto button = buttonAt(event->position())) {
    emit takeOverAsked(button->first, button->second);
    return;
  }
  for (const Band& band : bands())
    if (event->position().y() >= std::min(band.top[kLeft], band.top[kRight]) &&
        event->position().y() <= std::max(band.bottom[kLeft], band.bottom[kRight]) + 2)
      return emit chosen(band.difference);
}

void CompareStrip::mouseMoveEvent(QMouseEvent* event) {
  const auto under = buttonAt(event->position());
  if (under == under_) return;
  under_ = under;
  update();
}

void CompareStrip::leaveEvent(QEvent*) {
  under_.reset();
  update();
}

bool CompareStrip::event(QEvent* event) {
  if (event->type() != QEvent::ToolTip) return QWidget::event(event);
  const auto* help = static_cast<QHelpEvent*>(event);
  const auto button = buttonAt(help->pos());
  QToolTip::showText(help->globalPos(),
                     !button                   ? QString()
                     : button->second == kLeft ? tr("Take over to the right")
                                               : tr("Take over to the left"),
                     this);
  return true;
}

CompareOverview::CompareOverview(Comparison& comparison, std::array<CodeMax*, 2> texts, QWidget* parent)
    : QWidget(parent), comparison_(comparison), texts_(texts) {
  setFixedWidth(kOverviewWidth);
  setObjectName(QStringLiteral("compareOverview"));
  setCursor(Qt::PointingHandCursor);
}

void CompareOverview::differencesChanged() {
  known_ = false;
  update();
}

void CompareOverview::resizeEvent(QResizeEvent*) { known_ = false; }

double CompareOverview::lines() const {
  return static_cast<double>(comparison_.model(kLeft).snapshot().lineCount() + comparison_.model(kRight).snapshot().lineCount());
}

void CompareOverview::paintEvent(QPaintEvent*) {
  const double scale = height() / lines();
  if (!known_) {
    known_ = true;
    marks_.clear();
    const compare::Hunks& hunks = comparison_.hunks();
    for (std::size_t i = 0; i < hunks.size(); ++i) {
      if (hunks[i].nothing) continue;
      const Lines left = linesOf(hunks[i], kLeft), right = linesOf(hunks[i], kRight);
      const int from = std::min(height() - 3, static_cast<int>(static_cast<double>(left.begin + right.begin) * scale)),
                to = std::max(from + 3, static_cast<int>(static_cast<double>(left.end + right.end) * scale));
      if (!marks_.empty() && from < marks_.back().to) marks_.back().to = std::max(to, marks_.back().to);   // no more than pixels
      else marks_.push_back({from, to, comparison_.differenceOf(i), left.empty() || right.empty()});
    }
  }
  QPainter painter(this);
  const CompareColors colors = CompareColors::of(*texts_[kLeft]);
  painter.fillRect(rect(), mixed(colors.window, colors.ink, 0.05f));
  double top = 0, shown = 0;
  for (const CodeMax* text : texts_) {
    const CodeMax::ShownPart part = text->shownPart();
    top += static_cast<double>(part.top) / part.lineHeight;
    shown += static_cast<double>(part.area.height()) / part.lineHeight;
  }
  painter.fillRect(QRectF(0, top * scale, width(), std::max(4.0, shown * scale)), mixed(colors.window, colors.ink, 0.14f));
  for (const Mark& mark : marks_)
    painter.fillRect(2, mark.from, width() - 4, mark.to - mark.from,
                     mark.oneSided ? colors.rule : mixed(colors.changedPart, colors.ink, 0.15f));
}

void CompareOverview::mousePressEvent(QMouseEvent* event) {
  const double y = event->position().y();
  for (const Mark& mark : marks_)
    if (y >= mark.from - 2 && y <= mark.to + 2) return emit chosen(mark.difference);
  emit placeChosen(std::clamp(y / std::max(1, height()), 0.0, 1.0));
}
