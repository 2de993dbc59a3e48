// State shared by the panes of one control: the text, its options, colours, font measures and decorations.
#pragma once

#include <QFont>
#include <functional>
#include <memory>
#include <optional>

#include "control/edit/Editor.h"
#include "control/view/ColorScheme.h"
#include "control/view/GlyphMetrics.h"
#include "control/view/LineBack.h"
#include "text/find/Finder.h"
#include "text/line/LineMap.h"

class HitLines;

// The numbers are stored in the settings.
enum class WordWrap { off = 0, window = 1, column = 2 };
inline constexpr int kLeastWrapColumn = 10, kMostWrapColumn = 1000;

struct ViewState {
  std::shared_ptr<TextModel> model;
  std::shared_ptr<EditOptions> options;

  ColorScheme colors;
  QFont font;   // the chosen font; shown at `zoom` percent
  int zoom = 100;
  std::unique_ptr<GlyphMetrics> metrics;
  text::LineMaps widths;   // places of a font whose letters are not equally wide; in any other they follow from the cells

  text::LineMap line(text::LineNo line) {
    return {metrics->fixedPitch() ? model->lines() : widths, model->snapshot(), line, options->tabSize};
  }
  double unit() const { return metrics->fixedPitch() ? metrics->cell() : 1; }   // pixels of an x of line()

  bool hScrollBar = true, vScrollBar = true, smoothScrolling = true, lineToolTips = true, leftMargin = true;
  bool colorSyntax = true, whiteSpace = false, stickyLine = false;
  WordWrap wordWrap = WordWrap::off;                // as the options say
  WordWrap wrapsNow = WordWrap::off;                // as the user has switched it since
  int wrapColumn = 80;                              // kLeastWrapColumn to kMostWrapColumn
  bool mayWrap = true;                              // false: each line is one row, whatever else is said
  std::function<LineBack(text::LineNo)> lineBack;   // null: nothing
  std::optional<text::Finder> hits;                 // matches to mark in the visible text
  std::shared_ptr<HitLines> hitLines;               // their lines; null: no matches are marked

  int held = 0;   // > 0: changes are only noted; they are shown and reported when it is 0 again

  double scale = 1;   // device pixels per logical pixel
  void remeasure() {
    QFont shown = font;
    if (font.pixelSize() > 0) shown.setPixelSize(std::max(2, font.pixelSize() * zoom / 100));
    else shown.setPointSizeF(std::max(2.0, font.pointSizeF() * zoom / 100));
    metrics = std::make_unique<GlyphMetrics>(shown, scale);
    widths.measureIn(metrics.get());
  }
};
