// Places along the lines that are too long to be measured anew each time they are looked at: every few kilobytes one known
// place, found as far as somebody looked and dropped from an edit on. Short lines need no entry.
#pragma once

#include "control/view/LineLayout.h"
#include "text/line/LinePlaces.h"

class LongLines {
 public:
  static constexpr std::int64_t kLong = 8 * 1024;   // bytes of a line that is measured by places

  // Forgets all: another font, tab size or text.
  void clear() { places_.clear(); }
  void onChange(const text::Change& change, const text::Snapshot& now) { places_.onChange(change, now, LineWalker::kLookAhead); }

  // The last known place at or before the byte, or the x. Measures the line up to there the first time.
  LinePlace before(const text::Snapshot& text, text::LineNo line, std::int64_t byte, const GlyphMetrics& metrics, int tabSize);
  LinePlace beforeX(const text::Snapshot& text, text::LineNo line, double x, const GlyphMetrics& metrics, int tabSize);

 private:
  using Places = text::LinePlaces<LinePlace>::Places;
  static void extend(Places& places, const text::Snapshot& text, text::LineNo line, std::int64_t byte, double x,
                     const GlyphMetrics& metrics, int tabSize);
  text::LinePlaces<LinePlace> places_;
};
