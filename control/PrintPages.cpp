#include "control/PrintPages.h"

#include <QFontMetricsF>
#include <QPainter>

#include "base/Strings.h"

namespace {
// Fonts are drawn at this many pixels a point and scaled down: sizes in whole pixels lose nothing then.
constexpr double kScale = 20;
}  // namespace

QFont printFont(const QFont& font) {
  QFont scaled(font);
  scaled.setHintingPreference(QFont::PreferNoHinting);
  scaled.setKerning(false);
  scaled.setPixelSize(std::max(1, qRound((font.pointSizeF() > 0 ? font.pointSizeF() : 10) * kScale)));
  return scaled;
}

PrintEdge splitEdge(const QString& text) {
  return {text.section(u'|', 0, 0), text.section(u'|', 1, 1), text.section(u'|', 2)};
}

namespace {

void drawText(QPainter& painter, double x, double baseline, const QString& text) {
  painter.save();
  painter.translate(x, baseline);
  painter.scale(1 / kScale, 1 / kScale);
  painter.drawText(QPointF(0, 0), text);
  painter.restore();
}

void drawEdge(QPainter& painter, const PrintDocument& document, const PrintEdge& edge, int page, bool top) {
  if (edge.isEmpty()) return;
  const QFont font = printFont(document.edgeFont);
  const QFontMetricsF metrics(font);
  const QRectF sheet(QPointF(0, 0), document.layout.fullRectPoints().size());
  const QMarginsF margins = document.layout.margins(QPageLayout::Point);
  const double left = margins.left(), right = sheet.width() - margins.right(), width = std::max(1.0, right - left);
  const double height = metrics.height() / kScale;
  const double room = top ? margins.top() : margins.bottom();
  const double y = top ? std::max(0.0, room - height * 1.6) : sheet.height() - room + std::max(0.0, std::min(height * 0.6, room - height));
  const double baseline = y + metrics.ascent() / kScale;
  painter.setFont(font);
  painter.setPen(Qt::black);
  const auto shown = [&](QString part) {
    part.replace(QLatin1String("%d"), QString::number(page));
    part.replace(u'\r', u' ').replace(u'\n', u' ').replace(u'\t', u' ');
    return metrics.elidedText(plainForDisplay(part, 1000), Qt::ElideRight, width * kScale);
  };
  const auto widthOf = [&](const QString& part) { return metrics.horizontalAdvance(part) / kScale; };
  const QString l = shown(edge.left), c = shown(edge.centre), r = shown(edge.right);
  drawText(painter, left, baseline, l);
  drawText(painter, left + (width - widthOf(c)) / 2, baseline, c);
  drawText(painter, right - widthOf(r), baseline, r);
}

}  // namespace

void drawPage(QPainter& painter, const PrintDocument& document, int index) {
  const PrintPage& page = *document.pages[static_cast<std::size_t>(index)];
  painter.save();
  painter.setPen(QPen(Qt::black, 0.5));
  for (const PrintRule& rule : page.rules) painter.drawLine(QPointF(rule.x1, rule.y1), QPointF(rule.x2, rule.y2));
  int style = -1;
  for (const PrintRun& run : page.runs) {
    if (run.style != style) {
      style = run.style;
      const PrintStyle& s = document.styles[static_cast<std::size_t>(style)];
      painter.setFont(printFont(s.font));
      painter.setPen(s.color);
    }
    drawText(painter, run.x, run.baseline, page.runText(run));
  }
  drawEdge(painter, document, document.header, index + 1, true);
  drawEdge(painter, document, document.footer, index + 1, false);
  painter.restore();
}
