#include "control/folds/FoldMarks.h"

#include <QCoreApplication>
#include <QFontMetricsF>
#include <algorithm>
#include <cmath>

#include "control/view/TextView.h"

namespace foldMarks {

int handleWidth(int lineHeight) { return std::clamp(lineHeight * 3 / 4, 10, 28); }

void paintHandle(QPainter& painter, const QRectF& cell, bool folded, const QColor& ink) {
  const double size = std::floor(std::min(cell.width(), cell.height()) * 0.28);
  const QPointF middle = cell.center();
  const QPolygonF down({QPointF(-size, -size / 2), QPointF(0, size / 2), QPointF(size, -size / 2)});
  painter.save();
  painter.setRenderHint(QPainter::Antialiasing);
  painter.translate(middle);
  if (folded) painter.rotate(-90);
  painter.setPen(QPen(ink, folded ? 1.8 : 1.3, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
  painter.drawPolyline(down);
  painter.restore();
}

QString boxText(std::int64_t lines) {
  return lines == 1 ? QCoreApplication::translate("PaneFolds", "1 line")
                    : QCoreApplication::translate("PaneFolds", "%L1 lines").arg(lines);
}

QRectF boxOf(TextView& view, std::int64_t line) {
  const text::LineNo next(line + 1);
  const text::DisplayMap& map = view.rows.map;
  if (next.value >= map.lines() || !map.isHidden(next) || map.isHidden(text::LineNo(line))) return {};
  const TextView::Place place{text::LineNo(line), map.rowsOf(text::LineNo(line)) - 1};
  const Row& row = view.row(line);
  const double cell = view.metrics().cell(), right = view.margin + view.width - 3.0;
  const double width = QFontMetricsF(view.metrics().labelFont()).horizontalAdvance(boxText(map.shownFrom(next) - next)) + 2 * cell;
  const double gap = view.state().whiteSpace ? 4 * cell : cell;   // for the name of the line end
  double left = view.textLeft() + row.layout.end().x + view.rows.shift(place.line, place.row) + gap;
  if (row.layout.end().byte < row.length) left = right;   // the text goes on
  left = std::max<double>(view.margin + 1, std::min(left, right - width));
  return {std::floor(left) + 0.5, view.yOf(place) + 1.5, std::ceil(width), view.lineHeight() - 3.0};
}

void paintBox(QPainter& painter, const QRectF& box, std::int64_t lines, const QColor& back, const QColor& edge, const QColor& ink) {
  painter.save();
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(edge);
  painter.setBrush(back);
  painter.drawRoundedRect(box, 3, 3);
  painter.setPen(ink);
  painter.drawText(box, Qt::AlignCenter | Qt::TextDontClip, boxText(lines));
  painter.restore();
}

}   // namespace foldMarks
