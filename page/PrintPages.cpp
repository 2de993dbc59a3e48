#include "page/PrintPages.h"

#include <QFontMetricsF>
#include <QImage>
#include <QPaintEngine>
#include <QPainter>
#include <algorithm>
#include <array>

#include "base/Strings.h"
#include "bridge/QStringBytes.h"
#include "control/shape/Bidi.h"
#include "control/shape/Scripts.h"
#include "text/line/Chars.h"
#include "text/line/Segments.h"

namespace {
// Fonts are drawn at this many pixels a point and scaled down, so that sizes in whole pixels are exact enough.
constexpr double kScale = 20;
}   // namespace

QFont printFont(const QFont& font) {
  QFont scaled(font);
  scaled.setHintingPreference(QFont::PreferNoHinting);
  scaled.setKerning(false);
  scaled.setLetterSpacing(QFont::AbsoluteSpacing,
                          1.0 / 64);   // the smallest possible value: letters that touch cannot be copied out of a PDF file
  scaled.setPixelSize(std::max(1, qRound((font.pointSizeF() > 0 ? font.pointSizeF() : 10) * kScale)));
  return scaled;
}

PrintEdge splitEdge(const QString& text) { return {text.section(u'|', 0, 0), text.section(u'|', 1, 1), text.section(u'|', 2)}; }

QString leftToRight(const QString& text) { return turns(text) ? QChar(0x202D) + text : text; }

bool turns(QStringView text) {
  if (std::all_of(text.begin(), text.end(), [](QChar c) { return c.unicode() < shape::kFirstSpecial; })) return false;
  const auto codes = text.toUcs4();
  return std::any_of(codes.begin(), codes.end(), shape::turns);
}

double edgeHeight(const PrintDocument& document) { return QFontMetricsF(printFont(document.edgeFont)).height() / kScale * 1.2; }

namespace {

bool holdsPicture(const QString& text) {
  for (const char32_t code : text.toUcs4())
    if (code > 0xff && text::isPictograph(code)) return true;
  return false;
}

// A colour bitmap font cannot be embedded in a PDF file: such a character is drawn as an image there.
void drawPicture(QPainter& painter, double x, const QString& cluster, double width) {
  const QFontMetricsF metrics(painter.font());
  constexpr double kFiner = 0.2;   // dots a unit: 4 a point
  QFont font(painter.font());
  font.setPixelSize(std::max(1, qRound(font.pixelSize() * kFiner)));
  QImage image(std::max(1, qRound(width * kFiner)), std::max(1, qRound(metrics.height() * kFiner)),
               QImage::Format_ARGB32_Premultiplied);
  image.fill(Qt::transparent);
  QPainter into(&image);
  into.setFont(font);
  into.setPen(painter.pen());
  into.drawText(QPointF(0, metrics.ascent() * kFiner), cluster);
  into.end();
  painter.drawImage(QRectF(x, -metrics.ascent(), width, metrics.height()), image);
}

// Its characters from left to right.
std::vector<QString> clustersOf(const QString& text, bool natural) {
  const std::string bytes = fromQString(text);
  std::vector<QString> clusters;
  std::vector<shape::Sign> signs;
  for (std::string_view rest = bytes; !rest.empty();) {
    const auto length = static_cast<std::size_t>(text::clusterLength(rest));
    signs.push_back({text::decode(rest).code, rest[0] == ' ' ? shape::Sign::blank : shape::Sign::plain});
    clusters.push_back(toQString(rest.substr(0, length)));
    rest.remove_prefix(length);
  }
  if (!natural) return clusters;
  auto levels = shape::levels(signs);
  std::vector<QString> ordered;
  for (const std::size_t at : shape::visualOrder(signs, levels)) ordered.push_back(clusters[at]);
  return ordered;
}

void drawText(QPainter& painter, double x, double baseline, const QString& text, bool natural = false) {
  painter.save();
  painter.translate(x, baseline);
  painter.scale(1 / kScale, 1 / kScale);
  const bool raster = !painter.paintEngine() || painter.paintEngine()->type() == QPaintEngine::Raster;
  if (raster || !holdsPicture(text)) {
    painter.setLayoutDirection(Qt::LeftToRight);
    painter.drawText(QPointF(0, 0), natural ? text : leftToRight(text));
  } else {
    const QFontMetricsF metrics(painter.font());
    double at = 0;
    for (const QString& cluster : clustersOf(text, natural && turns(text))) {
      const double width = metrics.horizontalAdvance(leftToRight(cluster));
      if (holdsPicture(cluster)) drawPicture(painter, at, cluster, width);
      else painter.drawText(QPointF(at, 0), leftToRight(cluster));
      at += width;
    }
  }
  painter.restore();
}

// The widths of the three parts: each gets what it needs, but at most a fair share of the room.
std::array<double, 3> shares(std::array<double, 3> needs, double room) {
  std::array<int, 3> order{0, 1, 2};
  std::sort(order.begin(), order.end(),
            [&](int a, int b) { return needs[static_cast<std::size_t>(a)] < needs[static_cast<std::size_t>(b)]; });
  int left = 3;
  for (const int i : order) {
    double& need = needs[static_cast<std::size_t>(i)];
    need = std::min(need, room / left--);
    room -= need;
  }
  return needs;
}

void drawEdge(QPainter& painter, const PrintDocument& document, const PrintEdge& edge, int index, bool top) {
  if (edge.isEmpty()) return;
  const int page = document.firstPage + index,
            pages = document.pageTotal > 0 ? document.pageTotal : static_cast<int>(document.pages.size());
  const QFont font = printFont(document.edgeFont);
  const QFontMetricsF metrics(font);
  const QRectF sheet(QPointF(0, 0), document.layout.fullRectPoints().size());
  const QMarginsF margins = document.layout.margins(QPageLayout::Point);
  const double left = margins.left(), right = sheet.width() - margins.right(), width = std::max(1.0, right - left);
  const double height = metrics.height() / kScale;
  const double room = std::max(top ? margins.top() : margins.bottom(), edgeHeight(document));
  const double y =
      top ? std::max(0.0, room - height * 1.6) : sheet.height() - room + std::max(0.0, std::min(height * 0.6, room - height));
  const double baseline = y + metrics.ascent() / kScale;
  painter.setFont(font);
  painter.setPen(Qt::black);
  const auto shown = [&](QString part) {
    part.replace(QLatin1String("%d"), QString::number(page)).replace(QLatin1String("%n"), QString::number(pages));
    part.remove(kNoField).replace(u'\r', u' ').replace(u'\n', u' ').replace(u'\t', u' ');
    return plainForDisplay(part, 1000);
  };
  const auto widthOf = [&](const QString& part) {
    return part.isEmpty() ? 0 : metrics.horizontalAdvance(leftToRight(part)) / kScale;
  };
  std::array<QString, 3> parts{shown(edge.left), shown(edge.centre), shown(edge.right)};
  const double between = height;   // gap between the parts
  const auto room3 = shares({widthOf(parts[0]), widthOf(parts[1]), widthOf(parts[2])}, std::max(1.0, width - 2 * between));
  for (std::size_t i = 0; i < 3; ++i)
    if (widthOf(parts[i]) > room3[i] + 0.01) parts[i] = metrics.elidedText(parts[i], Qt::ElideMiddle, room3[i] * kScale);
  const double l = widthOf(parts[0]), c = widthOf(parts[1]), r = widthOf(parts[2]);
  const double lowest = l > 0 ? left + l + between : left, highest = (r > 0 ? right - r - between : right) - c;
  drawText(painter, left, baseline, parts[0]);
  drawText(painter, std::max(lowest, std::min(left + (width - c) / 2, highest)), baseline, parts[1]);
  drawText(painter, right - r, baseline, parts[2]);
}

}   // namespace

void drawPage(QPainter& painter, const PrintDocument& document, int index) {
  const PrintPage& page = *document.pages[static_cast<std::size_t>(index)];
  painter.save();
  painter.setPen(QPen(Qt::black, 0.5));
  for (const PrintRule& rule : page.rules) painter.drawLine(QPointF(rule.x1, rule.y1), QPointF(rule.x2, rule.y2));
  int style = -1;
  bool natural = false;
  for (const PrintRun& run : page.runs) {
    if (run.style != style) {
      style = run.style;
      const PrintStyle& s = document.styles[static_cast<std::size_t>(style)];
      painter.setFont(printFont(s.font));
      painter.setPen(s.color);
      natural = s.natural;
    }
    drawText(painter, run.x, run.baseline, page.runText(run), natural);
  }
  drawEdge(painter, document, document.header, index, true);
  drawEdge(painter, document, document.footer, index, false);
  painter.restore();
}
