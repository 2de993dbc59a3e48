// What can be recovered after the program or the machine stopped without warning: the texts in journals without an owner, and the
// copies that killed saves left, each with its name, time and size. The user restores them, saves them elsewhere, compares them
// with the file on disk, or discards them. Nothing is removed automatically; what is left when the window closes is offered again
// at the next start and in the File menu.
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
  using Look = std::function<std::vector<text::LeftText>()>;   // runs on another thread, as does reading its result
  // Shows the window (one for all texts) if `look` finds anything; null if not. It deletes itself when closed. The user waits and
  // may cancel.
  static frmRecovered* offer(frmMain& frame, const Look& look);
  static void offerWhenRead(frmMain& frame, Look look);       // the same in the background
  static Look leftIn(const QString& folder);                  // finds what is in the recovery folder
  static void offerAgain(frmMain& frame, const Look& look);   // on demand, with the copies beside the open files

  int count() const { return int(entries_.size()); }
  void select(int entry);
  void Restore();      // all selected entries; so does Discard
  void RestoreAll();   // the newest state of each text
  void SaveAs();
  void Compare();
  void Discard();

 private:
  struct Entry {
    std::shared_ptr<text::LeftText> journal;   // shared with the thread that reads it
    text::RecoveredText facts;                 // without the text
    qint64 bytes = 0;                          // of the text
    QByteArray digest;                         // of the same
    QString file;                              // how the file on disk differs; empty: it is as the text knew it
    std::vector<std::shared_ptr<text::LeftText>>
        twins;   // further journals with the same text of the same file; they share this entry and its fate
  };
  explicit frmRecovered(frmMain& frame);
  // Removes texts that their file holds.
  static std::vector<Entry> entriesOf(std::vector<text::LeftText> left);                // reads all of them: may take long
  static std::optional<std::vector<Entry>> readNow(frmMain& frame, const Look& look);   // nullopt: cancelled
  static frmRecovered* present(frmMain& frame, std::vector<Entry> entries);
  void arrange();   // newest first; older states of a file below its newest, equal ones in one entry
  static bool takeTwin(Entry& newer, Entry& entry);   // true: it was a twin, and the newer entry has taken it
  void refresh(int at);                               // after entries were added or removed; the window closes with the last one
  void fill();
  void showButtons();
  std::vector<int> selected() const;   // ascending
  int only() const;                    // the selected entry; -1: none or several
  QString titleOf(const Entry& entry) const;
  bool isOlder(const Entry& entry) const;   // the entry above is a newer state of its file
  QString stateOf(const Entry& entry) const;
  text::RecoveredText textOf(const Entry& entry);   // with an error that was shown to the user if it cannot be read
  void drop(int entry);                             // removes its journal; call refresh() next

  frmMain& frame_;
  std::vector<Entry> entries_;
  QTreeWidget* list_;
  QLabel* state_;
  QPushButton *restore_, *restoreAll_, *saveAs_, *compare_, *discard_;
};
