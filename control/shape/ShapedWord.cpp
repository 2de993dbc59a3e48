#include "control/shape/ShapedWord.h"

#include <QTextLayout>
#include <algorithm>

namespace shape {

namespace {

constexpr double kNothing = 0.01;   // pixels

// Calls look(line) with the layout of the text.
template <class Look>
void shapedBy(Shaped& result, const QString& text, const QFont& font, Look look) {
  QTextLayout layout(text, font);
  QTextOption option;
  option.setTextDirection(Qt::LeftToRight);
  option.setWrapMode(QTextOption::NoWrap);
  layout.setTextOption(option);
  layout.beginLayout();
  QTextLine line = layout.createLine();
  line.setLineWidth(1e6);
  layout.endLayout();
  result.advance = line.naturalTextWidth();
  for (QGlyphRun run : layout.glyphRuns()) {
    auto positions = run.positions();
    for (QPointF& p : positions) p.ry() -= line.ascent();
    run.setPositions(positions);
    result.runs << run;
  }
  look(line);
}

}   // namespace

Shaped shaped(const QString& text, const QFont& font) {
  Shaped result;
  shapedBy(result, text, font, [](const QTextLine&) {});
  return result;
}

ShapedWord shapedWord(const QString& text, const std::vector<int>& lengths, const QFont& font) {
  ShapedWord word;
  const std::size_t count = lengths.size();
  std::vector<double> places(count + 1);
  shapedBy(word, text, font, [&](const QTextLine& line) {
    const double begin = line.cursorToX(0), end = line.cursorToX(static_cast<int>(text.size()));
    for (std::size_t i = 0, unit = 0; i <= count; ++i) {
      places[i] = end < begin ? begin - line.cursorToX(static_cast<int>(unit)) : line.cursorToX(static_cast<int>(unit)) - begin;
      if (i < count) unit += static_cast<std::size_t>(lengths[i]);
    }
  });
  for (std::size_t i = 1; i <= count; ++i) places[i] = std::max(places[i], places[i - 1]);
  // A cluster without a width of its own shares that of the one before it.
  for (std::size_t i = 0; i < count;) {
    std::size_t end = i + 1;
    while (end < count && places[end] - places[i] < kNothing) ++end;
    while (end < count && places[end + 1] - places[end] < kNothing) ++end;
    for (std::size_t k = i + 1; k < end; ++k)
      places[k] = places[i] + (places[end] - places[i]) * static_cast<double>(k - i) / static_cast<double>(end - i);
    i = end;
  }
  places[count] = word.advance;
  word.ends.assign(places.begin() + 1, places.end());
  return word;
}

}   // namespace shape
