// The dialog "List Lines With": the text or expression whose lines are listed.
#pragma once

#include <QDialog>
#include <memory>

#include "folder/FindInFiles.h"

class Editor;
class QCheckBox;
class QLabel;
class QLineEdit;

class frmListLines : public QDialog {
  Q_OBJECT
 public:
  // Begins with the word at the caret, else the text that was searched for last, and with the switches of the search.
  frmListLines(QWidget& parent, Editor& editor);
  std::shared_ptr<const folder::FindText> what() const { return what_; }   // of an accepted dialog

  void accept() override;   // only what can be searched for

 private:
  QLineEdit* text_;
  QCheckBox *matchCase_, *wholeWord_, *regex_;
  QLabel* note_;
  std::shared_ptr<const folder::FindText> what_;
};
