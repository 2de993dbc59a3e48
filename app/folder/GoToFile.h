// The dialog "Go to File": parts of a name are typed, the files that fit are listed, best first, and one is opened, at a line if
// one was typed too ("alu:120:5"). Offered are the files of the folder that is worked in and all open documents. Ranking is done on a
// thread, so that typing never waits.
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
  int exec() override;   // with the box of its own kind that other commands see (ModalGuard)

 protected:
  bool eventFilter(QObject* object, QEvent* event) override;

 private:
  // What is ranked; shared with the thread, so it does not change.
  struct Offer {
    std::shared_ptr<const folder::NameTable> files;
    folder::NameTable open;                         // documents that are none of the files
    std::vector<QPointer<frmDocument>> documents;   // of `open`
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
  bool asked_ = false;             // the list is of what was typed before
  bool chooseWhenShown_ = false;   // Enter came before the list
};
