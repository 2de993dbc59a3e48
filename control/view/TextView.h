// The visible part of a text: which lines are visible, their layout and colours, and what is at a point. Not a widget; the pane
// sets size and scroll position.
//
// All rows have the same height. Vertical positions are pixels from the top of the text (64 bits), so that a text can have any
// length; only visible lines are measured and coloured. x in a line counts from its left edge, points count from the pane's.
//
// A line takes one row, more where it is wrapped, none where it is hidden (ViewRows). What is not measured is estimated: when a line
// above the top gets another number of rows, the top moves with what is shown.
#pragma once

#include <QPoint>
#include <QRect>
#include <chrono>
#include <map>
#include <optional>
#include <utility>
#include <vector>

#include "control/view/LineLayout.h"
#include "control/view/ViewRows.h"
#include "control/view/ViewState.h"

// The layout of a visible line, or of the visible part of a long one: what stands in the window, or its visible rows.
struct Row {
  text::ByteOffset start;
  std::int64_t length = 0;                  // bytes of the line
  bool whole = true;                        // the layout covers the line
  std::int64_t firstRow = 0, lastRow = 0;   // those in the layout of a long wrapped line
  bool counted = true;                      // false: the budget did not reach what is looked at, and the layout is empty
  LineLayout layout;
  std::vector<text::Token> tokens;     // of a long line only those in the layout
  bool colored = true;                 // false: the tokens are not known within the budget
  std::vector<text::ByteRange> hits;   // within the text
  bool marked = true;                  // false: the matches are not known within the budget
};

class TextView {
 public:
  using Place = text::DisplayMap::Place;

  explicit TextView(ViewState& state) : rows(state), state_(state) {}

  ViewRows rows;

  // Set by the pane. `top` and `left` are the pixels of the text at the upper left corner of the text area; `target` is where
  // scrolling takes `top`.
  std::int64_t top = 0, target = 0, left = 0;
  int width = 0, height = 0, margin = 0;
  int foldMargin = 0;   // the right part of the margin: the handles of folds

  const ViewState& state() const { return state_; }
  const text::Snapshot& snapshot() const { return state_.model->snapshot(); }
  const GlyphMetrics& metrics() const { return *state_.metrics; }
  int lineHeight() const { return metrics().lineHeight(); }

  std::int64_t firstVisible() const { return placeAt(top).line.value; }
  std::int64_t lastVisible() const;   // inclusive; clipped to the text
  double textLeft() const { return margin + kPadding - static_cast<double>(left); }
  Place placeAt(std::int64_t y) const;   // the row at a pixel of the text; clipped to it
  Place placeAtY(int y) const { return placeAt(top + y); }
  Place placeOf(text::ByteOffset offset);   // of what is hidden: the end of the row that hides it
  std::int64_t lineAtY(int y) const { return placeAtY(y).line.value; }
  std::int64_t topOf(const Place& place) const;                               // in pixels of the text
  int yOf(std::int64_t line) const { return yOf({text::LineNo(line), 0}); }   // of the upper edge; clipped outside the view
  int yOf(const Place& place) const;
  int bottomOf(std::int64_t line) const;   // behind its last row
  bool belowText(int y) const { return top + y >= rows.map.rows() * lineHeight(); }

  // Brings the map to what the line takes now; `top` and `target` stay with what they show.
  void measure(text::LineNo line);
  void measureDown(std::int64_t from, std::int64_t pixels);   // the lines that stand there
  void measureUp(const Place& from, std::int64_t pixels);     // those above, until they fill the pixels
  void measureEnd();                                          // the last page
  // Makes `to` the target, with the lines exact between here and there, if it is near, and of the page there.
  void settle(std::int64_t to);
  bool takeMoved() { return std::exchange(moved_, false); }   // whether a line has another number of rows since the last call
  // The text at the upper edge, and `top` and `target` set to where it stands now.
  text::ByteOffset topByte();
  void setTopByte(text::ByteOffset byte);

  const Row& row(std::int64_t line);
  void forget();   // text, width or colours changed
  double widestSeen() const { return widest_; }
  void widen(double x) { widest_ = std::max(widest_, x); }
  void forgetWidest() { widest_ = 0; }

  double xOf(std::int64_t line, text::ByteOffset offset);   // of a caret there
  double shownX(text::ByteOffset offset,
                std::int64_t beyond = 0);   // from the left edge of its row; `beyond` cells behind a line's end
  QRect rectOf(text::ByteOffset offset);    // of the character there; without width at a line's end
  // The x of a column of a block selection: by cells in a fixed font, else by the row's own text.
  double xOfCell(std::int64_t line, std::int64_t cell);
  std::int64_t cellAt(const QPoint& point);
  QPoint pointOf(text::ByteOffset offset);
  // The position nearest to the point; `inside`: the start of the character under it.
  text::ByteOffset offsetAt(const QPoint& point, bool inside = false);
  bool overText(const QPoint& point);   // whether there is a character under it

  // Determines the states at the start of the visible lines, within a budget. Returns the lines (visible before and after) whose
  // state has changed.
  std::vector<std::int64_t> findStates();
  bool statesExact() const { return exact_; }
  // Goes on with counting and colouring what the budget did not reach. True when it is all there.
  bool goOnColoring();
  // Finds the matches of one line that the budget did not reach. Returns the line; none: all are found.
  std::optional<std::int64_t> goOnMarking();
  bool allMarked() const { return marked_; }

  static constexpr int kPadding = 4;   // pixels between margin and text

 private:
  text::LineState stateOf(std::int64_t line) const;
  void layOut(Row& row, std::int64_t line);
  void layOutWrapped(Row& row, text::LineNo line);
  void arrange(Row& row, text::LineNo line);
  void visibleRows(std::int64_t line, std::int64_t* first, std::int64_t* last) const;
  double lineX(const Place& place, double x);                 // of a point in the row; of another row never
  text::LinePlace placeBefore(text::LineNo line, double x);   // in pixels
  void color(Row& row, std::int64_t line, std::int64_t budget);
  void mark(Row& row);

  ViewState& state_;
  std::map<std::int64_t, Row> rows_;
  std::vector<std::pair<std::int64_t, text::LineState>> states_;   // of shown lines from statesTop_ on, ascending
  std::int64_t statesTop_ = 0, statesBottom_ = -1;
  std::uint64_t statesRevision_ = 0;
  bool exact_ = true, marked_ = true;
  std::chrono::steady_clock::duration marking_{};   // time spent on matches since findStates
  double widest_ = 0;
  bool moved_ = false, endMeasured_ = false;
};
