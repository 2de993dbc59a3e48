// Asks once about several changed texts that are about to be closed: which of them are saved. The changes of the others are
// discarded. The text of the row chosen is shown behind the dialog.
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
  // One window of each text.
  frmUnsaved(frmMain& frame, const QList<frmDocument*>& changed);
  bool isToBeSaved(int text) const;   // from 0; after it was accepted

 private:
  void showChoice();
  QListWidget* list_;
  QPushButton* save_;
};
