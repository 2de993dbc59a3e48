// What a pane looks at: which lines are visible, how they are laid out and coloured, and what stands at a point. No widget; the
// pane sets the size and the scroll position.
//
// All lines are equally high. Vertical places are pixels from the top of the text (64 bits), so a text of any length has its place; what
// is measured and coloured is what is visible. x within a line counts from its left edge, points from the pane's.
#pragma once

#include <QPoint>
#include <chrono>
#include <map>
#include <optional>
#include <vector>

#include "control/view/LineLayout.h"
#include "control/view/ViewState.h"

// A visible line, laid out; of a long one the part that is looked at.
struct Row {
  text::ByteOffset start;
  std::int64_t length = 0;   // bytes of the line
  bool whole = true;         // the layout covers the line
  bool counted = true;       // false: the budget did not reach what is looked at, and the layout is empty
  LineLayout layout;
  std::vector<text::Token> tokens;     // of a long one those in the layout
  bool colored = true;                 // false: the budget did not reach the tokens
  std::vector<text::ByteRange> hits;   // within the text
  bool marked = true;                  // false: the budget did not reach the hits
};

class TextView {
 public:
  explicit TextView(ViewState& state) : state_(state) {}

  // Set by the pane. `top` and `left` are the pixels of the text at the upper and left edge of the text area.
  std::int64_t top = 0, left = 0;
  int width = 0, height = 0, margin = 0;

  const ViewState& state() const { return state_; }
  const text::Snapshot& snapshot() const { return state_.model->snapshot(); }
  const GlyphMetrics& metrics() const { return *state_.metrics; }
  int lineHeight() const { return metrics().lineHeight(); }

  std::int64_t firstVisible() const { return top / lineHeight(); }
  std::int64_t lastVisible() const;   // inclusive; clipped to the text
  double textLeft() const { return margin + kPadding - static_cast<double>(left); }
  std::int64_t lineAtY(int y) const;   // clipped to the text
  int yOf(std::int64_t line) const;    // of the upper edge; clipped to some distance outside

  const Row& row(std::int64_t line);
  void forget() { rows_.clear(); }   // text, width or colours changed
  double widestSeen() const { return widest_; }
  void widen(double x) { widest_ = std::max(widest_, x); }
  void forgetWidest() { widest_ = 0; }

  double xOf(std::int64_t line, text::ByteOffset offset);
  // A column of a block selection: cells in a fixed font, else the place that the row gives it.
  double xOfCell(std::int64_t line, std::int64_t cell);
  std::int64_t cellAt(const QPoint& point);
  QPoint pointOf(text::ByteOffset offset);
  // The place nearest to the point, or (inside) the start of the character under it.
  text::ByteOffset offsetAt(const QPoint& point, bool inside = false);
  bool overText(const QPoint& point);   // a character is under it

  // Finds the states in which the visible lines start, within a budget. Returns the lines (of those visible before and after)
  // whose state is another one now.
  std::vector<std::int64_t> findStates();
  bool statesExact() const { return exact_; }
  // Goes on with counting and colouring what the budget did not reach. True when it is all there.
  bool goOnColoring();
  // Finds the hits of one line that the budget did not reach. The line; none: all are there.
  std::optional<std::int64_t> goOnMarking();
  bool allMarked() const { return marked_; }

  static constexpr int kPadding = 4;   // pixels between margin and text

 private:
  text::LineState stateOf(std::int64_t line) const;
  void layOut(Row& row, std::int64_t line);
  text::LinePlace placeBefore(text::LineNo line, double x);   // in pixels
  void color(Row& row, std::int64_t line, std::int64_t budget);
  void mark(Row& row);

  ViewState& state_;
  std::map<std::int64_t, Row> rows_;
  std::vector<text::LineState> states_;   // of the lines from statesTop_ on
  std::int64_t statesTop_ = 0, statesBottom_ = -1;
  std::uint64_t statesRevision_ = 0;
  bool exact_ = true, marked_ = true;
  std::chrono::steady_clock::duration marking_{};   // spent on hits since findStates
  double widest_ = 0;
};
