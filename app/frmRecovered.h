// What came back after the program or the machine had ended without warning: the texts in journals that nobody owns, each
// with its name, time and size. The person restores them, saves them elsewhere, compares them with the file on disk, or discards
// them; nothing goes by itself, and what is left when the window closes is offered again at the next start.
#pragma once

#include <QDialog>
#include <vector>

#include "text/JournalRead.h"

class QLabel;
class QPushButton;
class QTreeWidget;
class frmDocument;
class frmMain;

class frmRecovered : public QDialog {
  Q_OBJECT
 public:
  // Shows the window if journals were left in the folder; null if not. It deletes itself when closed.
  static frmRecovered* offer(frmMain& frame, const QString& folder);

  int count() const { return int(entries_.size()); }
  void select(int entry);
  void Restore();
  void SaveAs();
  void Compare();
  void Discard();

 private:
  struct Entry {
    text::LeftJournal journal;
    text::RecoveredText facts;   // without the text
    qint64 bytes = 0;            // of the text
    bool sameAsFile = false;
  };
  frmRecovered(frmMain& frame, std::vector<text::LeftJournal> left);
  void fill();
  void showButtons();
  int selected() const;          // -1: none
  QString titleOf(const Entry& entry) const;
  QString stateOf(const Entry& entry) const;
  text::RecoveredText textOf(const Entry& entry);   // tells the person when it cannot be had any more
  void drop(int entry);          // its journal goes

  frmMain& frame_;
  std::vector<Entry> entries_;
  QTreeWidget* list_;
  QLabel* state_;
  QPushButton *restore_, *saveAs_, *compare_, *discard_;
};
