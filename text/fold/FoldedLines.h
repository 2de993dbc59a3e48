// What is folded in one view of a text: ranges of lines that are hidden behind their first line. Whoever folds decides; a range then
// moves with the text and stays, also while the text has no such block. It opens when its lines can no longer be told from others:
// when the break behind its first line goes or comes there, or when its end is joined with what follows.
//
// The hidden lines of the map are those of the folds: whoever changes the folds passes the map. Lines count from 0.
#pragma once

#include <functional>
#include <span>
#include <vector>

#include "text/display/DisplayMap.h"
#include "text/fold/Blocks.h"

namespace text {

class FoldedLines {
 public:
  bool empty() const { return folds_.empty(); }
  std::span<const Fold> folds() const { return folds_; }   // ascending by their first lines, which differ; may hold one another
  const Fold* at(LineNo first) const;                      // null: none begins there

  // Each operation costs O(folds). std::bad_alloc: all lines are shown.
  void add(std::span<const Fold> folds, DisplayMap& map);   // ascending; clipped to the lines
  void set(std::span<const Fold> folds, DisplayMap& map);   // in place of all
  // Opens those that are meant, and returns them.
  std::vector<Fold> open(const std::function<bool(const Fold&)>& meant, DisplayMap& map);
  // Behind map.onChange().
  void onChange(const Change& change, const Snapshot& now, DisplayMap& map) noexcept;

 private:
  void hide(LineNo from, LineNo end, DisplayMap& map) const;   // what the folds say of these lines
  void showAll(DisplayMap& map) noexcept;

  std::vector<Fold> folds_;
};

}   // namespace text
