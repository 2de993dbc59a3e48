// A dialog that compares two texts: one before and after a change, which the user may accept, or two that are only looked at.
#pragma once

#include <QDialog>

#include "change/compare/CompareView.h"

class QLabel;
class QPushButton;

class frmCompare : public QDialog {
  Q_OBJECT
 public:
  // Before and after: both begin as a copy of the text, the language and the selection of `original`.
  explicit frmCompare(const CodeMax& original, QWidget* parent = nullptr);
  CodeMax& after() { return view_->text(compare::kRight); }   // change it before exec(), then call markChanges()
  void markChanges();
  CompareView& view() { return *view_; }
  void showOnly(const QString& before, const QString& after);   // compares two texts with these names, without an Apply button

 protected:
  void showEvent(QShowEvent* event) override;
  bool eventFilter(QObject* object, QEvent* event) override;

 private:
  void showState();
  CompareView* view_;
  QLabel* summary_;
  QPushButton *apply_, *previous_, *next_;
  bool met_ = false;   // the first difference was shown
};
