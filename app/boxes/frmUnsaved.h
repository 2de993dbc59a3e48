// Asks once about several changed texts that are about to be closed: which of them to save. The changes of the others are
// discarded. The text of the current row is shown behind the dialog.
#pragma once

#include <QDialog>
#include <QPointer>

class QListWidget;
class QPushButton;
class frmDocument;
class frmMain;

class frmUnsaved : public QDialog {
  Q_OBJECT
 public:
  // One window for each text.
  frmUnsaved(frmMain& frame, const QList<frmDocument*>& changed);
  bool isToBeSaved(int text) const;   // from 0; valid after the dialog was accepted

 private:
  void showChoice();
  QListWidget* list_;
  QPushButton* save_;
};
