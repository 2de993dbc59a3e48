#include "print/PageView.h"

#include <QFontMetricsF>
#include <QKeyEvent>
#include <QPainter>
#include <QScrollBar>
#include <QWheelEvent>
#include <cmath>

namespace {
constexpr int kGap = 12;
}

PageView::PageView(QWidget* parent) : QAbstractScrollArea(parent) {
  setFocusPolicy(Qt::StrongFocus);
  viewport()->setBackgroundRole(QPalette::Dark);
  viewport()->setAutoFillBackground(true);
}

void PageView::setDocument(const PrintDocument* document) {
  document_ = document;
  relayout();
  if (document_ && !document_->pages.empty()) current_ = std::min(current_, static_cast<int>(document_->pages.size()) - 1);
}

int PageView::columns() const {
  const int count = document_ ? static_cast<int>(document_->pages.size()) : 0;
  return std::clamp(count, 1, across_);
}

void PageView::setAcross(int pages) {
  across_ = pages;
  const int page = current_;
  relayout();
  goTo(page);
}

void PageView::setFit(Fit fit) {
  fit_ = fit;
  const int page = current_;
  relayout();
  goTo(page);
}

void PageView::setZoom(double factor) {
  fit_ = Fit::none;
  zoom_ = std::clamp(factor, 0.1, 8.0);
  const int page = current_;
  relayout();
  goTo(page);
  emit zoomChanged(zoom_);
}

QSizeF PageView::sheet() const {
  const QSizeF points = document_ ? QSizeF(document_->layout.fullRectPoints().size()) : QSizeF(595, 842);
  return points * (zoom_ * logicalDpiX() / 72.0);
}

void PageView::relayout() {
  if (document_ && fit_ != Fit::none) {
    const QSizeF points(document_->layout.fullRectPoints().size());
    const double unit = logicalDpiX() / 72.0;
    const double wide = (viewport()->width() - kGap * (columns() + 1)) / (points.width() * columns() * unit);
    const double high = (viewport()->height() - 2 * kGap) / (points.height() * unit);
    zoom_ = std::clamp(fit_ == Fit::width ? wide : std::min(wide, high), 0.05, 8.0);
    emit zoomChanged(zoom_);
  }
  const int count = document_ ? static_cast<int>(document_->pages.size()) : 0;
  const int rows = (count + columns() - 1) / columns();
  const QSizeF size = sheet();
  const double height = rows * (size.height() + kGap) + kGap, width = columns() * (size.width() + kGap) + kGap;
  verticalScrollBar()->setRange(0, std::max(0, static_cast<int>(height) - viewport()->height()));
  verticalScrollBar()->setPageStep(viewport()->height());
  verticalScrollBar()->setSingleStep(40);
  horizontalScrollBar()->setRange(0, std::max(0, static_cast<int>(width) - viewport()->width()));
  horizontalScrollBar()->setPageStep(viewport()->width());
  updateCurrent();
  viewport()->update();
}

QRectF PageView::placeOf(int page) const {
  const QSizeF size = sheet();
  const double total = columns() * (size.width() + kGap) + kGap;
  const double left = std::max(0.0, (viewport()->width() - total) / 2);
  return QRectF(
      QPointF(left + kGap + (page % columns()) * (size.width() + kGap), kGap + (page / columns()) * (size.height() + kGap)), size);
}

void PageView::goTo(int page) {
  if (!document_ || document_->pages.empty()) return;
  page = std::clamp(page, 0, static_cast<int>(document_->pages.size()) - 1);
  const QRectF place = placeOf(page);
  verticalScrollBar()->setValue(static_cast<int>(place.top()) - kGap);
  const int left = horizontalScrollBar()->value();
  if (place.left() >= left + viewport()->width() || place.right() <= left)
    horizontalScrollBar()->setValue(static_cast<int>(place.left()) - kGap);
  current_ = page;
  emit currentPageChanged(current_);
}

void PageView::mark(int page, qint32 start, qint32 length) {
  markPage_ = page;
  markStart_ = start;
  markLength_ = length;
  if (page >= 0 && document_) {
    const auto& runs = document_->pages[static_cast<std::size_t>(page)]->runs;
    const auto run = std::find_if(runs.begin(), runs.end(), [&](const PrintRun& r) { return r.start + r.length > start; });
    if (run == runs.end()) return;
    const double unit = zoom_ * logicalDpiX() / 72.0;
    const double x = placeOf(page).left() + run->x * unit, y = placeOf(page).top() + run->baseline * unit;
    const int top = verticalScrollBar()->value(), left = horizontalScrollBar()->value();
    if (y < top + 40 || y > top + viewport()->height() - 40)
      verticalScrollBar()->setValue(static_cast<int>(y) - viewport()->height() / 3);
    if (x < left + 20 || x > left + viewport()->width() - 60)
      horizontalScrollBar()->setValue(static_cast<int>(x) - viewport()->width() / 3);
  }
  viewport()->update();
}

void PageView::drawMark(QPainter& painter) const {
  const auto& page = *document_->pages[static_cast<std::size_t>(markPage_)];
  for (const PrintRun& run : page.runs) {
    const qint32 from = std::max(run.start, markStart_), to = std::min(run.start + run.length, markStart_ + markLength_);
    if (from >= to) continue;
    const QFont& font = document_->styles[static_cast<std::size_t>(run.style)].font;
    const QFontMetricsF metrics(printFont(font));
    const double unit = font.pointSizeF() / printFont(font).pixelSize();
    const double before = metrics.horizontalAdvance(page.text.mid(run.start, from - run.start)) * unit;
    painter.fillRect(QRectF(run.x + before, run.baseline - metrics.ascent() * unit,
                            metrics.horizontalAdvance(page.text.mid(from, to - from)) * unit, metrics.height() * unit),
                     QColor(255, 220, 80));
  }
}

void PageView::updateCurrent() {
  if (!document_ || document_->pages.empty()) return;
  const QSizeF size = sheet();
  const int row = static_cast<int>(std::floor((verticalScrollBar()->value() + size.height() / 3) / (size.height() + kGap)));
  const int page = std::clamp(row * columns(), 0, static_cast<int>(document_->pages.size()) - 1);
  if (page / columns() == current_ / columns()) return;
  current_ = page;
  emit currentPageChanged(current_);
}

void PageView::paintEvent(QPaintEvent*) {
  if (!document_) return;
  QPainter painter(viewport());
  painter.setRenderHint(QPainter::TextAntialiasing);
  painter.translate(-horizontalScrollBar()->value(), -verticalScrollBar()->value());
  const QRectF sight = painter.transform().inverted().mapRect(QRectF(viewport()->rect()));
  const double scale = zoom_ * logicalDpiX() / 72.0;
  const QSizeF size = sheet();
  const int firstRow = std::max(0, static_cast<int>(sight.top() / (size.height() + kGap)) - 1);
  for (int page = firstRow * columns(); page < static_cast<int>(document_->pages.size()); ++page) {
    const QRectF place = placeOf(page);
    if (place.top() > sight.bottom()) break;
    if (!place.intersects(sight)) continue;
    painter.fillRect(place.translated(3, 3), QColor(0, 0, 0, 60));
    painter.fillRect(place, Qt::white);
    painter.save();
    painter.setClipRect(place);
    painter.translate(place.topLeft());
    painter.scale(scale, scale);
    if (page == markPage_) drawMark(painter);
    drawPage(painter, *document_, page);
    painter.restore();
  }
}

void PageView::resizeEvent(QResizeEvent*) { relayout(); }

void PageView::scrollContentsBy(int, int) {
  updateCurrent();
  viewport()->update();
}

void PageView::wheelEvent(QWheelEvent* event) {
  if (event->modifiers() & Qt::ControlModifier) {
    setZoom(zoom_ * std::pow(1.1, event->angleDelta().y() / 120.0));
    event->accept();
  } else {
    QAbstractScrollArea::wheelEvent(event);
  }
}

void PageView::keyPressEvent(QKeyEvent* event) {
  switch (event->key()) {
    case Qt::Key_PageDown:
    case Qt::Key_Space: goTo(current_ + columns()); break;
    case Qt::Key_PageUp:
    case Qt::Key_Backspace: goTo(current_ - columns()); break;
    case Qt::Key_Home: goTo(0); break;
    case Qt::Key_End: goTo(document_ ? static_cast<int>(document_->pages.size()) - 1 : 0); break;
    default: QAbstractScrollArea::keyPressEvent(event);
  }
}
