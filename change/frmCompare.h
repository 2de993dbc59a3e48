// Shows a text before and after a change side by side. Lines that differ have bookmarks, also lines next to an insertion or
// removal. Accepted: the user wants the change.
#pragma once

#include <QDialog>
#include <vector>

#include "text/diff/LineDiff.h"

class CodeMax;
class QLabel;
class QPushButton;

class frmCompare : public QDialog {
  Q_OBJECT
 public:
  explicit frmCompare(const CodeMax& original, QWidget* parent = nullptr);
  CodeMax& after() { return *after_; }   // a copy of text, language and selection; change it before exec()
  void markChanges();                    // call once, after the change
  int changes() const { return static_cast<int>(hunks_.size()); }
  void showOnly(const QString& before, const QString& after);   // compares two texts with these names, without an Apply button

 protected:
  void showEvent(QShowEvent* event) override;

 private:
  void goTo(int step);
  CodeMax *before_, *after_;
  QLabel *summary_, *beforeName_, *afterName_;
  QPushButton* apply_;
  std::vector<text::LineHunk> hunks_;
  QPushButton* next_;
  int shown_ = -1;   // the selected hunk
};
