// Two texts side by side, each on an edit control of its own: scrolled along with each other, their differences coloured, joined and
// counted, and taken over from one side to the other.
//
// A control that shares the text of a document shows and edits that very text. Differences count from 0.
#pragma once

#include <QWidget>
#include <array>

#include "change/compare/Comparison.h"
#include "control/view/LineBack.h"

class CodeMax;
class CompareOverview;
class CompareStrip;
class QGridLayout;
class QLabel;

class CompareView : public QWidget {
  Q_OBJECT
 public:
  // Takes both controls.
  CompareView(CodeMax* left, CodeMax* right, QWidget* parent = nullptr);
  ~CompareView() override;

  Comparison& comparison() { return *comparison_; }
  CodeMax& text(compare::Side side) const { return *texts_[side]; }
  void setName(compare::Side side, const QString& name);   // plain text above it
  QString name(compare::Side side) const { return full_[side]; }
  compare::Side active() const { return active_; }   // has or last had the focus
  void activate(compare::Side side);

  int count() const { return static_cast<int>(comparison_->count()); }
  int current() const;                              // the difference at the caret; -1: none
  void showDifference(int difference);              // puts the carets there
  void showLine(compare::Side side, qint64 line);   // in the middle
  bool step(int direction);                         // from the caret on, round at the ends; false: there is none
  // The current difference, or the selected lines of the active side. One undo step.
  bool canTakeOver(compare::Side from) const;
  bool takeOver(compare::Side from);
  bool takeOver(compare::Side from, int difference);
  // The side that undo and redo concern: the one that was last changed by taking over, until the user edits a text or moves in the
  // active one; else the active one.
  compare::Side undoSide() const { return takenTo_.value_or(active_); }
  bool undo(int command);   // Cmd::UNDO or Cmd::REDO, on that side
  void swapSides();
  QString summary() const;   // "Difference 3 of 17", "The texts are equal" ...

 signals:
  void stateChanged();   // of any of the above

 protected:
  void resizeEvent(QResizeEvent* event) override;
  bool eventFilter(QObject* object, QEvent* event) override;

 private:
  void showNames();
  void setUp(compare::Side side);
  void arrange();
  void syncFrom(compare::Side side);
  LineBack backOf(compare::Side side, text::LineNo line) const;
  void showBacks();   // of the lines, anew
  void repaint();
  compare::Side sideOf(const CodeMax* text) const { return texts_[compare::kLeft] == text ? compare::kLeft : compare::kRight; }
  bool apply(const compare::TakeOver& what);
  QString formats() const;

  std::array<CodeMax*, 2> texts_;
  std::array<QLabel*, 2> names_;
  std::array<QString, 2> full_;   // the names, which may be too long to be shown whole
  Comparison* comparison_;
  CompareStrip* strip_;
  CompareOverview* overview_;
  QGridLayout* grid_;
  compare::Side active_ = compare::kLeft;
  std::optional<compare::Side> takenTo_;
  bool own_ = false;          // what changes or moves now is not the user's editing
  bool inSequence_ = false;   // the last key began a sequence of two
  bool syncing_ = false;
  bool updatePosted_ = false;
  mutable bool formatsKnown_ = false;
  mutable QString formats_;   // how line ends and encodings differ
};
