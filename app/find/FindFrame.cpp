#include "app/find/FindFrame.h"

#include <algorithm>

#include "app/find/FindRun.h"
#include "app/find/ResultList.h"
#include "app/find/frmFindInFiles.h"
#include "app/find/frmListLines.h"
#include "app/folder/FolderParts.h"
#include "app/folder/WorkFolder.h"
#include "app/frame/frmMain.h"
#include "base/Counted.h"
#include "base/Program.h"
#include "base/Strings.h"
#include "base/dialog/Dialogs.h"
#include "bridge/FileNames.h"
#include "bridge/LongWork.h"
#include "document/frmDocument.h"
#include "document/frmLog.h"
#include "folder/GitFolder.h"

using namespace Qt::StringLiterals;

namespace {

constexpr std::size_t kAtOnce = 256 << 10;   // bytes of rows that are put into the list in one go
constexpr int kTitleLength = 40;
constexpr std::int64_t kMostLines = 1'000'000, kLongestLine = 2000;   // of a list of the lines of a text; bytes

}   // namespace

FindFrame& FindFrame::of(frmMain& frame) {
  auto* found = frame.findChild<FindFrame*>(QString(), Qt::FindDirectChildrenOnly);
  return found ? *found : *new FindFrame(frame);
}

FindFrame::FindFrame(frmMain& frame) : QObject(&frame), frame_(frame) {
  timer_.setSingleShot(true);
  connect(&timer_, &QTimer::timeout, this, &FindFrame::pump);
  connect(&frame, &frmMain::documentOpened, this, [this](frmDocument* document) {
    if (ResultList* list = ResultList::adopt(document)) useList(list);
  });
}

FindFrame::~FindFrame() = default;

QString FindFrame::usualRoot() const {
  const WorkFolder& work = frame_.folders().work();
  if ((work.kind() == WorkFolder::Kind::folder || work.kind() == WorkFolder::Kind::list) && !work.root().isEmpty())
    return work.root();
  const frmDocument* document = frame_.activeDocument();
  const QString folder = document && !document->CurrentFileDir().isEmpty() ? document->CurrentFileDir() : currentFolder();
  const auto git = folder::gitFolderAbove(fromQString(folder));
  return git ? toQString(git->top) : folder;
}

ResultList* FindFrame::list() const { return list_; }

frmFindInFiles& FindFrame::window() {
  if (!window_) {
    window_ = new frmFindInFiles(frame_);
    frame_.addDockWidget(Qt::BottomDockWidgetArea, window_, Qt::Vertical);
    connect(&frame_.folders().work(), &WorkFolder::changed, window_, [this] {
      const WorkFolder& work = frame_.folders().work();
      if (work.kind() == WorkFolder::Kind::list) window_->follow(usualRoot(), work.list());
      else if (work.kind() == WorkFolder::Kind::folder) window_->follow(usualRoot(), {});
    });
    connect(window_, &frmFindInFiles::cancelAsked, this, &FindFrame::cancel);
    connect(window_, &frmFindInFiles::findAsked, this, [this] {
      FindTask made;
      if (readTask(&made)) start(std::move(made));
    });
    connect(window_, &frmFindInFiles::replaceAsked, this, [this] {
      FindTask made;
      if (readTask(&made)) replace(std::move(made), {fromQString(window_->replaceText()), window_->preserveCase()});
    });
  }
  return *window_;
}

// What the window asks for, with the files that it only names. False: it cannot be done, and the user has been told.
bool FindFrame::readTask(FindTask* task) {
  if (!window_->readTask(task)) return false;
  if (task->where != FindTask::Where::files) return true;
  if (window_->inFileList()) return readFileList(task);
  ResultList* from = ResultList::of(frame_.activeDocument());
  if (!from) from = list_;
  if (!from) {
    window_->tell(tr("There is no list of results"), true);
    return false;
  }
  task->root = from->root();
  task->filesOf = fromQString(tr("a list of results"));
  const text::Snapshot text = from->document()->cmx->model()->snapshot();
  LongWork::run(
      frame_, text.size().value, [&](text::SearchControl&) { task->files = from->paths(text); }, tr("Looking at the lines..."),
      false);
  return true;
}

bool FindFrame::readFileList(FindTask* task) {
  const WorkFolder& work = frame_.folders().work();
  if (work.kind() != WorkFolder::Kind::list) {
    window_->tell(tr("No file list is open"), true);
    return false;
  }
  task->filesOf = fromQString(tr("the file list %1").arg(work.list()));
  if (const auto known = work.fileList()) {
    task->root = fromQString(work.root());
    task->files = known->files;
  } else {   // nothing has shown it yet
    struct Read {
      std::string root;
      folder::FileList list;
    };
    const auto read = std::make_shared<Read>();
    const auto look = [read, list = fromQString(work.list()), root = fromQString(work.root()),
                       relative = work.relativeToList()](text::SearchControl& control) {
      read->root = root.empty() ? folder::likelyWorkingFolder(list) : root;
      read->list = folder::readFileList(list, read->root, relative, &control.cancel);
    };
    if (!LongWork::runOrLeave(frame_, look, tr("Reading the file list..."))) return false;
    task->root = std::move(read->root);
    task->files = std::move(read->list.files);
  }
  std::sort(task->files.begin(), task->files.end());
  return true;
}

void FindFrame::open(bool replace) {
  const WorkFolder& work = frame_.folders().work();
  window().open(usualRoot(), work.kind() == WorkFolder::Kind::list ? work.list() : QString(), replace);
}

void FindFrame::useList(ResultList* list) {
  if (list_ == list) return;
  if (!hearsLog_) {   // F8 goes where something came last
    connect(frame_.log(), &frmLog::appended, this, [this] { list_ = nullptr; });
    hearsLog_ = true;
  }
  list_ = list;
  connect(list, &ResultList::used, this, &FindFrame::useList, Qt::UniqueConnection);
  connect(list, &ResultList::pairAsked, this, &FindFrame::pairAsked, Qt::UniqueConnection);
}

void FindFrame::cancel() {
  if (run_) run_->cancel();
}

frmDocument* FindFrame::listDocument(const QString& title, const std::string& folder, const ResultList* keep) {
  // A list that the user did not touch, and that is no file, gives way to the next one.
  frmDocument* document = list_ && list_ != keep && !list_->document()->DocumentHasName() && !list_->document()->DocumentModified()
                              ? list_->document()
                              : nullptr;
  if (document) {
    if (run_ && filling_ == list_) {   // nobody will see what it finds
      run_.reset();
      window().setRunning(false);
    }
    delete list_.data();
    frame_.activate(document);
  } else {
    document = frame_.LoadNewDoc();
  }
  document->setUntitled(title, toQString(folder));
  return document;
}

void FindFrame::start(FindTask task) {
  run_.reset();
  const bool asked = window().hasKeys();
  filling_ = ResultList::make(
      listDocument(tr("Found: %1").arg(plainForDisplay(toQString(task.what->what()), kTitleLength)), task.root), task);
  connect(filling_, &ResultList::cancelAsked, this, &FindFrame::cancel);
  useList(filling_);
  // The keys go to the list when something stands in it: without a hit the next text is typed.
  if (asked) window().takeKeys();
  shown_ = false;
  run_ = std::make_unique<FindRun>(std::move(task), nullptr);
  connect(run_.get(), &FindRun::came, this, &FindFrame::pump);
  window().setRunning(true);
  window().tell(tr("Searching..."));
  timer_.start(100);
}

void FindFrame::showList(const ListAbout& about, const MakeList& make) {
  ResultList::Whole whole{about.first, about.about, {}, {}, {}, about.what};
  whole.root = !about.root.empty() ? about.root : about.from ? about.from->root() : fromQString(usualRoot());
  FindTask names;
  names.root = whole.root;
  bool cancelled = false;
  LongWork::run(
      frame_, about.bytes,
      [&](text::SearchControl& control) {
        whole.rows = make([&](const std::string& path) { return names.shown(path); }, control, &whole.result);
        cancelled = control.cancel;
      },
      tr("Looking at the lines..."), true);
  if (cancelled) return SetStatusText(tr("Cancelled"));
  if (whole.rows.empty()) {   // an empty list would take the place of a good one
    MsgBox(about.title + QLatin1String("\r\n") + plainForDisplay(whole.result));
    return;
  }
  frmDocument* document = listDocument(about.title, whole.root, about.from);
  useList(ResultList::make(document, std::move(whole)));
  frame_.UpdateEditMenu();
}

// A part of what came at a time: keys and painting come in between.
void FindFrame::pump() {
  if (!run_) return;
  if (!filling_) {   // the user closed the list
    run_.reset();
    window().setRunning(false);
    return;
  }
  const bool done = run_->done();
  const std::string rows = run_->take(kAtOnce);
  if (!rows.empty()) {
    filling_->append(rows);
    if (!std::exchange(shown_, true) && window().leavesKeys() && frame_.activeDocument() == filling_->document())
      filling_->document()->cmx->setFocus();
  }
  window().tell(tr("%1, %2 searched...").arg(countedHits(run_->hits()), countedFiles(run_->files())));
  if (done && run_->empty()) return finish();
  timer_.start(rows.empty() ? 100 : 5);
}

QString FindFrame::resultText() const {
  const folder::FindSummary& summary = run_->summary();
  if (!summary.error.empty()) return toQString(summary.error);
  QString text =
      summary.hits == 0
          ? tr("0 hits; %1 searched").arg(countedFiles(summary.files))
          : tr("%1 in %2; %L3 searched").arg(countedHits(summary.hits), countedFiles(summary.filesWithHits)).arg(summary.files);
  if (summary.cut) text += tr("; ended at the limit of %1").arg(countedHits(run_->task().mostHits));
  if (summary.cancelled) text += tr("; cancelled");
  if (const std::string skipped = folder::skippedText(summary); !skipped.empty()) text += u"; "_s + toQString(skipped);
  const folder::WalkReport& walked = run_->walked();
  if (walked.unreadable > 0) text += tr("; %L1 folders could not be read").arg(walked.unreadable);
  if (!walked.error.empty()) text += u"; "_s + toQString(walked.error);
  const auto name = [&](const std::string& path, const std::string& why) {
    text += u"\n  "_s + toQString(folder::shownPath(run_->task().shown(path)) + ": " + why);
  };
  for (const auto& [path, why] : summary.skippedNames) name(path, why);
  for (const auto& one : walked.troubles) name(one.path, one.reason);
  const std::int64_t left = notNamed(summary, walked);
  if (left > 0) text += u"\n  "_s + tr("and %L1 more").arg(left);
  return text;
}

void FindFrame::finish() {
  const QString text = resultText();
  filling_->end(text);
  window().setRunning(false);
  const QString result = text.section(u'\n', 0, 0);
  window().tell(result, !run_->summary().error.empty());
  SetStatusText(plainForDisplay(result));   // also where the window is too low to show it
  run_.reset();
  frame_.UpdateEditMenu();
}

void FindFrame::listLines() {
  frmDocument* document = frame_.activeDocument();
  if (!document) return;
  const QPointer<frmDocument> alive = document;
  frmListLines box(frame_, document->cmx->editor());
  {
    const ModalGuard guard;
    if (box.exec() != QDialog::Accepted || !alive) return;
  }
  const auto what = box.what();
  const ResultList* const from = ResultList::of(document);
  const QString& name = document->CurrentFileName();
  const std::string path = fromQString(name.isEmpty() ? document->CurrentFileTitle() : name);
  const text::Snapshot text = document->cmx->model()->snapshot();
  const auto make = [&](const Named& shown, text::SearchControl& control, QString* result) {
    folder::FindRules rules;
    rules.mostHits = kMostLines;
    rules.longestLine = from ? 0 : kLongestLine;
    rules.mostLines = kMostLines;
    folder::FileFinds file;
    file.path = shown(path);
    folder::TextFinds finds = folder::findRows(text, *what, rules, &control);
    file.rows = std::move(finds.rows);
    std::string rows;
    if (!from) folder::appendRows(file, &rows);
    else   // what is a row there is one here
      for (const folder::FoundRow& row : file.rows)
        if (folder::rowOf(row.lines)) rows += row.lines + '\n';
    *result = finds.error.empty()
                  ? tr("%1 in %2").arg(countedHits(finds.hits), counted(qint64(file.rows.size()), tr("line"), tr("lines")))
                  : toQString(finds.error);
    if (finds.cut) *result += tr("; ended at the limit of %1").arg(countedHits(rules.mostHits));
    return rows;
  };
  const QString shown = toQString(folder::shownPath(what->what()));
  showList({tr("Lines with: %1").arg(plainForDisplay(toQString(what->what()), kTitleLength)), QLatin1String(ResultList::kFirsts[1]),
            shown, what, text.size().value, from},
           make);
}

void FindFrame::step(int direction) {
  if (ResultList* active = ResultList::of(frame_.activeDocument())) useList(active);
  if (list_) list_->step(direction);
  else if (direction > 0) frame_.log()->nextMessage();
  else frame_.log()->previousMessage();
}
