// The dialog "Go to File". The user types parts of a name, the matching files are listed, best first, and one is opened, at a line
// if the user typed one ("alu:120:5"). It offers the files of the work folder and all open documents. Ranking runs on a thread, so that
// typing never waits.
#pragma once

#include <QDialog>
#include <QPointer>
#include <atomic>
#include <memory>
#include <unordered_map>
#include <vector>

#include "folder/Names.h"

class QLabel;
class QLineEdit;
class QListView;
class QStandardItemModel;
class WorkFolder;
class frmDocument;
class frmMain;

class GoToFile : public QDialog {
  Q_OBJECT
 public:
  GoToFile(frmMain& frame, WorkFolder& work);
  ~GoToFile() override;
  int exec() override;   // under a ModalGuard

 protected:
  bool eventFilter(QObject* object, QEvent* event) override;

 private:
  // What is ranked. It is shared with the thread, so it never changes.
  struct Offer {
    std::shared_ptr<const folder::NameTable> files;
    folder::NameTable open;                     // open documents outside of `files`
    std::vector<QPointer<QObject>> documents;   // of `open`, as in the tabs
    std::unordered_map<std::uint64_t, std::uint32_t> recency;
    std::string near;
    std::vector<folder::RankedName> rank(const folder::NameQuery& query, std::size_t* total, const std::atomic<bool>* cancel) const;
  };
  void makeOffer();
  void ask();
  void showFound(const std::vector<folder::RankedName>& found, std::size_t total);
  void choose();

  frmMain& frame_;
  WorkFolder& work_;
  QLineEdit* typed_;
  QListView* list_;
  QStandardItemModel* rows_;
  QLabel* note_;
  std::shared_ptr<const Offer> offer_;
  std::vector<folder::RankedName> shown_;
  std::shared_ptr<std::atomic<bool>> cancel_;
  bool asked_ = false;             // the list is still that of the text before
  bool chooseWhenShown_ = false;   // the user pressed Enter before the list was ready
};
