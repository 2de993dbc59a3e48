// What came back after the program or the machine had ended without warning: the texts in journals that nobody owns, and the copies
// that killed saves left, each with its name, time and size. The person restores them, saves them elsewhere, compares them
// with the file on disk, or discards them; nothing goes by itself, and what is left when the window closes is offered again at the
// next start, or from the File menu.
#pragma once

#include <QDialog>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "text/journal/JournalRead.h"

class QLabel;
class QPushButton;
class QTreeWidget;
class frmDocument;
class frmMain;

class frmRecovered : public QDialog {
  Q_OBJECT
 public:
  using Look = std::function<std::vector<text::LeftText>()>;   // runs on another thread, as does the reading of what it finds
  // Shows the window if `look` finds anything, one for all; null if not. It deletes itself when closed. The user waits, and may cancel.
  static frmRecovered* offer(frmMain& frame, const Look& look);
  static void offerWhenRead(frmMain& frame, Look look);   // the same, but nobody waits
  static Look leftIn(const QString& folder);              // what was left in the recovery folder
  static void offerAgain(frmMain& frame);                 // all of it, on demand

  int count() const { return int(entries_.size()); }
  void select(int entry);
  void Restore();      // all that are selected, as is Discard
  void RestoreAll();   // the newest state of each
  void SaveAs();
  void Compare();
  void Discard();

 private:
  struct Entry {
    std::shared_ptr<text::LeftText> journal;   // also held by who reads it
    text::RecoveredText facts;                 // without the text
    qint64 bytes = 0;                          // of the text
    QByteArray digest;                         // of the same
    QString file;                              // how the file on disk stands to it; empty: as the text knew it
    std::vector<std::shared_ptr<text::LeftText>>
        twins;   // that hold the same text of the same file: they are one entry, and go with it
  };
  explicit frmRecovered(frmMain& frame);
  // Without those whose text their file holds: they go.
  static std::vector<Entry> entriesOf(std::vector<text::LeftText> left);                // reads them all: takes as long as it takes
  static std::optional<std::vector<Entry>> readNow(frmMain& frame, const Look& look);   // nullopt: cancelled
  static frmRecovered* present(frmMain& frame, std::vector<Entry> entries);
  void arrange();   // newest first; older states of a file below the newest, equal ones in one entry
  static bool takeTwin(Entry& newer, Entry& entry);   // true: it was one, and the newer entry has it
  void refresh(int at);                               // after entries came or went; the window closes with the last one
  void fill();
  void showButtons();
  std::vector<int> selected() const;   // ascending
  int only() const;                    // the one that is selected; -1: none or several
  QString titleOf(const Entry& entry) const;
  bool isOlder(const Entry& entry) const;   // there is a newer state of its file, in the entry above
  QString stateOf(const Entry& entry) const;
  text::RecoveredText textOf(const Entry& entry);   // with an error that the person knows when it cannot be had
  void drop(int entry);                             // its journal goes; refresh() next

  frmMain& frame_;
  std::vector<Entry> entries_;
  QTreeWidget* list_;
  QLabel* state_;
  QPushButton *restore_, *restoreAll_, *saveAs_, *compare_, *discard_;
};
