// What is known at places along lines that are too long to be gone through each time they are looked at: found as far as
// somebody looked, dropped from an edit on. For the lines that were used last; others need no entry.
#pragma once

#include <algorithm>
#include <vector>

#include "text/store/Document.h"

namespace text {

// Place has a member `byte`, counted from the line's start.
template <class Place>
class LinePlaces {
 public:
  using Places = std::vector<Place>;   // ascending; the first is that of byte 0

  void clear() { lines_.clear(); }

  // The places of a line, `first` alone where nothing is known.
  Places& of(LineNo line, const Place& first) {
    const auto it = std::find_if(lines_.begin(), lines_.end(), [line](const Entry& e) { return e.line == line.value; });
    if (it != lines_.end()) {
      std::rotate(it, it + 1, lines_.end());
    } else {
      if (lines_.size() >= kEntries) lines_.erase(lines_.begin());
      lines_.push_back({line.value, {first}});
    }
    return lines_.back().places;
  }

  // A place was found by looking at up to `ahead` bytes behind it.
  void onChange(const Change& change, const Snapshot& now, std::int64_t ahead) {
    if (change.reset) clear();
    for (Entry& e : lines_) {
      const LineNo line(e.line);
      const Change::Span* span = change.touching(line);
      if (!span) {
        e.line += change.linesGrownAbove(line);
      } else if (span->oldLine < line) {   // its beginning went
        e.line = kGone;
      } else {   // its beginning stays; what follows may stand on another line now
        e.line = span->firstLine.value;
        const std::int64_t safe = span->begin - now.lineStart(span->firstLine) - ahead;
        while (e.places.size() > 1 && e.places.back().byte > safe) e.places.pop_back();
      }
    }
    std::erase_if(lines_, [](const Entry& e) { return e.line < 0; });
  }

 private:
  static constexpr std::size_t kEntries = 256;
  static constexpr std::int64_t kGone = -1;
  struct Entry {
    std::int64_t line;
    Places places;
  };
  std::vector<Entry> lines_;   // last used last
};

}   // namespace text
