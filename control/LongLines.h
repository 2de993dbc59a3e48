// Places along the lines that are too long to be measured anew each time they are looked at: every few kilobytes one known
// place, found as far as somebody looked and dropped from an edit on. Short lines need no entry.
#pragma once

#include <vector>

#include "control/LineLayout.h"
#include "text/Document.h"

class LongLines {
 public:
  static constexpr std::int64_t kLong = 8 * 1024;     // bytes of a line that is measured by places

  // Forgets all: another font, tab size or text.
  void clear() { lines_.clear(); }
  void onChange(const text::Change& change, const text::Snapshot& now);

  // The last known place at or before the byte, or the x. Measures the line up to there the first time.
  LinePlace before(const text::Snapshot& text, text::LineNo line, std::int64_t byte, const GlyphMetrics& metrics, int tabSize);
  LinePlace beforeX(const text::Snapshot& text, text::LineNo line, double x, const GlyphMetrics& metrics, int tabSize);

 private:
  struct Entry {
    std::int64_t line;
    std::vector<LinePlace> places;   // ascending, first {0, 0}
  };
  Entry& entry(std::int64_t line);
  static void extend(Entry& entry, const text::Snapshot& text, std::int64_t byte, double x, const GlyphMetrics& metrics, int tabSize);

  std::vector<Entry> lines_;         // last used last
};
