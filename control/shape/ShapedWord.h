// Text that is shaped as a whole: one cluster, or a word whose clusters join.
#pragma once

#include <QFont>
#include <QGlyphRun>
#include <QList>
#include <QString>
#include <vector>

namespace shape {

struct Shaped {
  QList<QGlyphRun> runs;   // relative to the baseline at the left edge
  double advance = 0;
};

struct ShapedWord : Shaped {
  // How far each cluster's end is from where the word begins, in the direction in which it is read; the last one is `advance`.
  // Clusters drawn as one sign divide it.
  std::vector<double> ends;
};

Shaped shaped(const QString& text, const QFont& font);
// `lengths`: of the clusters, in UTF-16 units.
ShapedWord shapedWord(const QString& text, const std::vector<int>& lengths, const QFont& font);

}   // namespace shape
