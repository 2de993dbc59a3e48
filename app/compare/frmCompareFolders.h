// The dialog "Compare Folders": which two, and which of their files.
#pragma once

#include <QDialog>

#include "folder/Walk.h"

class QCheckBox;
class QLabel;
class QLineEdit;

class frmCompareFolders : public QDialog {
  Q_OBJECT
 public:
  struct Choice {
    QString left, right, masks;   // whole names; masks as the user wrote them
    bool ignored = false, hidden = false;
    folder::WalkOptions options() const;
  };
  frmCompareFolders(QWidget& parent, const Choice& proposed);
  const Choice& choice() const { return choice_; }   // of an accepted dialog

  void accept() override;   // only two folders

 private:
  Choice choice_;
  QLineEdit *left_, *right_, *masks_;
  QCheckBox *ignored_, *hidden_;
  QLabel* note_;
};
