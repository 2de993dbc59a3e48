// Paints the lines of a pane: backgrounds, text, symbols, caret and left margin. Knows nothing of widgets or events; selection and
// caret are passed in.
#pragma once

#include <QPainter>
#include <QPainterPath>
#include <array>
#include <optional>
#include <span>

#include "control/edit/Carets.h"
#include "control/view/TextView.h"

class PaneFolds;
class ChangeMarks;

// Preedit text of an input method, shown at the caret.
struct Preedit {
  QString text;
  int cursor = 0;      // UTF-16 units into text
  LineLayout layout;   // of its own, from x 0
  std::string bytes;   // for the layout
  double cursorX() const;
};

struct PaneLook {
  text::SelectionState selection;
  std::span<const Caret> others;   // besides the main caret
  bool focused = false;
  bool caretOn = false;   // visible phase of blinking
  bool overtype = false;
  std::optional<std::array<text::ByteRange, 2>> pair;   // brackets or words of a block that match
  std::optional<text::ByteOffset> dropAt;
  const Preedit* preedit = nullptr;
  PaneFolds* folds = nullptr;             // null: without handles
  const ChangeMarks* changes = nullptr;   // null: not shown
  std::string sameWord;                   // all its places are marked; empty: none
};

class PanePainter {
 public:
  PanePainter(QPainter& painter, TextView& view, const PaneLook& look);
  void paint(const QRect& part);

  static double caretX(TextView& view, const PaneLook& look);   // from the left edge of its row
  // The caret's rectangle in the pane; in overtype mode as wide as its character.
  static QRect caretRect(TextView& view, const PaneLook& look);

 private:
  using Span = LayoutPiece;                   // x from the start of the line
  void enter(const TextView::Place& place);   // what follows paints this row
  void paintRow(const TextView::Place& place, const QRect& part);
  void paintBackgrounds(std::int64_t line, const Row& row, const QRect& band, const LineBack& back);
  void paintText(const Row& row, const LineLayout& layout, std::int64_t line, const QRect& band);
  // Draws the items [first, end) of a word.
  using Item = std::vector<LayoutItem>::const_iterator;
  void paintWord(const LineLayout& layout, Item first, Item end, const QRect& band, const QColor& ink);
  void paintLabel(const QString& label, const LayoutItem& item, int y);
  void paintWhiteSpace(const LayoutItem& item, int y);
  void paintPreedit(double x, int y);
  void paintMargin(const TextView::Place& place, int y, const LineBack& back);
  void paintContinued(int y);
  void paintHandle(std::int64_t line, int y);
  void paintHidden(std::int64_t line);   // the box behind a folded row
  QPainterPath ribbon(int y) const;
  bool holdsHit(std::int64_t first, std::int64_t last);
  QColor hitBack() const;
  void paintChange(const TextView::Place& place, int y);
  void paintLines(const std::vector<double>& places, int y, int height, double strength);
  void paintRules(int y, const LineBack& back);
  void fill(const Span& span, int y, const QColor& color);
  void fillBytes(const Row& row, const text::ByteRange& range, int y, const QColor& color);   // what is laid out of the range
  void fillCells(std::int64_t line, const Row& row, int y, const QColor& color);              // of a column selection
  void paintSelection(std::int64_t line, const Row& row, int y);
  text::ByteRange selectedBytes(std::int64_t line, const Row& row) const;
  std::span<const Caret> othersIn(const Row& row) const;   // those that touch what is laid out
  void paintOtherSelections(const Row& row, int y);
  void paintOtherCarets(const Row& row, int y);
  void paintCaret(const QRect& caret, bool block);
  QColor color(ColorSlot slot) const { return view_.state().colors.color(slot); }

  QPainter& painter_;
  TextView& view_;
  const PaneLook& look_;
  std::vector<double> rulers_;                      // x from the start of lines
  text::ByteRange selected_;                        // of a stream selection
  std::int64_t caretLine_, firstLine_, lastLine_;   // of caret and selection
  TextView::Place caretPlace_;
  // Of the row that is painted: where x 0 of its line would stand, the bytes of the line and the x that it shows, and whether it
  // shows the line's end.
  double left_ = 0;
  std::int64_t begin_ = 0, end_ = 0;
  Span shown_{};
  bool last_ = true;
  std::chrono::steady_clock::duration hitTime_{};   // spent on what is hidden
  std::int64_t blockLeft_ = 0, blockRight_ = 0;     // cells of a column selection
};
