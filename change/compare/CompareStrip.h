// What stands between the two texts of a comparison, and beside them. CompareStrip joins the lines of each difference by a band, with
// a button on either side that takes it over to the other. CompareOverview shows where in the whole texts there are differences.
#pragma once

#include <QWidget>
#include <functional>
#include <optional>
#include <vector>

#include "change/compare/Comparison.h"

class CodeMax;

struct CompareColors {
  QColor window, changed, changedPart, single, rule, conflict, ink;
  static CompareColors of(const CodeMax& text);   // suit its background
};

class CompareStrip : public QWidget {
  Q_OBJECT
 public:
  CompareStrip(Comparison& comparison, std::array<CodeMax*, 2> texts, QWidget* parent);
  void setTexts(std::array<CodeMax*, 2> texts) { texts_ = texts; }
  void setCurrent(int difference);
  // Which sides may be changed by the buttons.
  void setWritable(bool left, bool right);

 signals:
  void takeOverAsked(int difference, compare::Side from);
  void chosen(int difference);

 protected:
  void paintEvent(QPaintEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void leaveEvent(QEvent* event) override;
  bool event(QEvent* event) override;   // tool tips

 private:
  struct Band {
    int difference;
    std::array<double, 2> top, bottom;   // of the left and the right edge
    std::array<QRectF, 2> button;        // empty: none
    bool oneSided;
  };
  double yOf(compare::Side side, std::int64_t line) const;
  std::vector<Band> bands() const;   // those that are seen
  std::optional<std::pair<int, compare::Side>> buttonAt(const QPointF& at) const;

  Comparison& comparison_;
  std::array<CodeMax*, 2> texts_;
  std::array<bool, 2> writable_{};
  int current_ = -1;
  std::optional<std::pair<int, compare::Side>> under_;   // the button under the mouse
};

class CompareOverview : public QWidget {
  Q_OBJECT
 public:
  CompareOverview(Comparison& comparison, std::array<CodeMax*, 2> texts, QWidget* parent);
  void setTexts(std::array<CodeMax*, 2> texts) { texts_ = texts; }
  void differencesChanged();

 signals:
  void chosen(int difference);     // a click on its mark
  void placeChosen(double part);   // a click beside the marks: part of the height

 protected:
  void paintEvent(QPaintEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;

 private:
  double lines() const;
  struct Mark {
    int from, to;   // pixels
    int difference;
    bool oneSided;
  };
  Comparison& comparison_;
  std::array<CodeMax*, 2> texts_;
  std::vector<Mark> marks_;
  bool known_ = false;
};
