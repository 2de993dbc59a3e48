// Shows a text before and after a change, side by side; the lines that differ bear bookmarks. Accepted: the person wants the change.
#pragma once

#include <QDialog>

class CodeMax;
class QLabel;
class QPushButton;

class frmCompare : public QDialog {
  Q_OBJECT
 public:
  explicit frmCompare(const CodeMax& original, QWidget* parent = nullptr);
  CodeMax& after() { return *after_; }   // a copy of the text, language and selection, to be changed before exec()
  void markChanges();                    // compares line by line; call once, after the change
  void showOnly(const QString& before, const QString& after);   // two texts with these names, and nothing to apply

 private:
  void goTo(int step);
  CodeMax *before_, *after_;
  QLabel *summary_, *beforeName_, *afterName_;
  QPushButton* apply_;
  int shown_ = -1;   // the change that is selected, counted among those of the text after
};
