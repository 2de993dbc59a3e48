// Finding and replacing in files for the main frame: the window that asks, the search that runs, the list that it fills, and the way
// back from what was replaced. One for each frame, its child.
#pragma once

#include <QObject>
#include <QPointer>
#include <QTimer>
#include <functional>
#include <memory>

#include "script/FindTask.h"
#include "script/ReplaceWork.h"

class FindRun;
class ResultList;
class frmDocument;
class frmFindInFiles;
class frmMain;

class FindFrame : public QObject {
  Q_OBJECT
 public:
  static FindFrame& of(frmMain& frame);
  ~FindFrame() override;

  void open(bool replace);
  void start(FindTask task);   // its rows go into a list
  bool running() const { return bool(run_); }
  void cancel();
  void step(int direction);   // through the list that was used last; without one, through the log
  ResultList* list() const;

  // Shows a list of places that `make` writes, on a thread; the user may cancel it. The rows are those of folder::appendRows, with
  // paths named by `shown`; *result says what came of it.
  struct ListAbout {
    QString title, first, about;                    // first: one of ResultList::kFirsts
    std::shared_ptr<const folder::FindText> what;   // whose hits are marked; may be null
    std::int64_t bytes = 0;                         // to look through, for the progress; 0: unknown
    const ResultList* from = nullptr;               // a list of which this is a part: it stays, and has the folder
    std::string root{};                             // the folder; empty: that of the list, else the usual one
  };
  using Named = std::function<std::string(const std::string& path)>;
  using MakeList = std::function<std::string(const Named& shown, text::SearchControl& control, QString* result)>;
  void showList(const ListAbout& about, const MakeList& make);
  void listLines();   // of the active document that hold a text that the user is asked for

  void replace(FindTask task, const folder::Replacing& by);   // shows the changes first
  void applyEdited();                                         // what the user changed in the lines of the active list
  void undoLast();
  void tellInterrupted();   // at the start: a replacing that did not come to its end

  frmFindInFiles& window();
  // Where to look when nothing else is said: the folder that the user opened, else the nearest one of version control above the
  // active text, else that of the text.
  QString usualRoot() const;

 signals:
  void pairAsked(const QString& left, const QString& right);   // by a list of pairs of files

 private:
  explicit FindFrame(frmMain& frame);
  bool readTask(FindTask* task);
  bool readFileList(FindTask* task);
  void pump();
  void finish();
  void useList(ResultList* list);
  frmDocument* listDocument(const QString& title, const std::string& folder, const ResultList* keep = nullptr);
  QString resultText() const;
  // The ticked changes of the plan. Whole files, one after the other.
  void preview(std::vector<folder::FilePlan> files, const QString& about, const std::string& root, const QString& left);
  void apply(std::vector<folder::FilePlan> files, const QString& about);

  frmMain& frame_;
  QPointer<frmFindInFiles> window_;
  std::unique_ptr<FindRun> run_;
  QPointer<ResultList> list_;      // that F8 goes through
  QPointer<ResultList> filling_;   // by the run
  QTimer timer_;
  bool hearsLog_ = false;
  bool shown_ = false;   // rows of the run
};
