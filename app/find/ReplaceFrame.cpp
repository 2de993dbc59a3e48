// What FindFrame does for replacing: plan, preview, the changes themselves, and the way back.
#include <QHash>
#include <QLocale>
#include <QPointer>
#include <QWidget>
#include <algorithm>
#include <map>
#include <utility>

#include "app/find/FindFrame.h"
#include "app/find/ResultList.h"
#include "app/find/frmFindInFiles.h"
#include "app/find/frmReplacePreview.h"
#include "app/frame/frmMain.h"
#include "base/Background.h"
#include "base/Counted.h"
#include "base/Program.h"
#include "base/Strings.h"
#include "base/dialog/Dialogs.h"
#include "bridge/FileNames.h"
#include "bridge/LongWork.h"
#include "control/commands/CommandTable.h"
#include "document/frmDocument.h"

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype kMostNamed = 20;   // files in one box

// more: that are not in the list.
QString listOf(const QStringList& lines, std::int64_t more = 0) {
  QString text = lines.mid(0, kMostNamed).join(u"\r\n"_s);
  more += std::max<qsizetype>(0, lines.size() - kMostNamed);
  if (more > 0) text += u"\r\n"_s + FindFrame::tr("... and %L1 more").arg(more);
  return text;
}

QString sizeOf(std::int64_t bytes) { return QLocale().formattedDataSize(bytes); }

}   // namespace

void FindFrame::replace(FindTask task, const folder::Replacing& by) {
  if (run_) return;
  struct Held {
    FindTask task;
    folder::Replacing by;
    folder::ReplacePlanned planned;
    folder::WalkReport walked;
  };
  const auto held = std::make_shared<Held>();
  held->task = std::move(task);
  held->by = by;
  // A document of results is no place to replace in.
  std::erase_if(held->task.open, [](const FindTask::Open& one) {
    const frmDocument* document = openTextOf(one.path);
    return document && ResultList::of(document) && !one.hasFile;
  });
  const auto work = [held](text::SearchControl& control) { held->planned = held->task.plan(held->by, control, &held->walked); };
  if (!LongWork::runOrLeave(frame_, work, tr("Searching..."))) return window().tell(tr("Cancelled"));
  folder::ReplacePlanned& planned = held->planned;
  if (planned.cancelled) return window().tell(tr("Cancelled"));
  if (!planned.error.empty()) return window().tell(toQString(planned.error), true);
  QStringList left;
  for (const auto& [path, why] : planned.found.skippedNames) left << namedTrouble(path, toQString(why));
  for (const auto& one : held->walked.troubles) left << namedTrouble(one.path, toQString(one.reason));
  if (!held->walked.error.empty()) left << toQString(held->walked.error);
  const QString notSearched = listOf(left, notNamed(planned.found, held->walked));
  if (planned.files.empty()) {
    window().tell(tr("Nothing to replace in %1").arg(countedFiles(planned.found.files)));
    if (!left.isEmpty()) MsgBox(tr("These could not be searched:") + u"\r\n"_s + notSearched, tr("Replace in Files"));
    return;
  }
  const QString about = tr("Replace \"%1\" by \"%2\"")
                            .arg(plainForDisplay(toQString(held->task.what->what()), 60), plainForDisplay(toQString(by.by), 60));
  preview(std::move(planned.files), about, held->task.root, notSearched);
}

void FindFrame::preview(std::vector<folder::FilePlan> files, const QString& about, const std::string& root, const QString& left) {
  const QString note = left.isEmpty() ? QString() : tr("Left out:") + u'\n' + QString(left).remove(u'\r');
  frmReplacePreview dialog(std::move(files), toQString(root), about, note, &frame_);
  const ModalGuard guard;
  if (dialog.exec() != QDialog::Accepted) {
    if (window_) window_->tell(tr("Nothing was replaced"));
    return;
  }
  apply(dialog.takeFiles(), about);
}

void FindFrame::apply(std::vector<folder::FilePlan> files, const QString& about) {
  const Replaced replaced = makeChanges(frame_, std::move(files), about);
  QString done = tr("%1 in %2").arg(countedChanges(replaced.changes), countedFiles(replaced.files));
  if (!replaced.troubles.isEmpty()) done += tr("; %1 left alone").arg(countedFiles(replaced.troubles.size()));
  if (window_) window_->tell(done);
  SetStatusText(done);
  if (!replaced.troubles.isEmpty())
    MsgBox(done + u".\r\n\r\n"_s + tr("These were left alone:") + u"\r\n"_s + listOf(replaced.troubles), tr("Replace in Files"));
}

namespace {

// The open documents by their files, also by a link to one.
class Windows {
 public:
  explicit Windows(const QList<frmDocument*>& documents) {
    for (frmDocument* document : documents) {
      byName_.insert(document->CurrentFileName(), document);
      if (const auto& known = document->cmx->model()->stamp; known && known->exists)
        byFile_[{known->status.device, known->status.inode}] = document;
    }
  }
  frmDocument* on(const folder::ReplacedFile& file) const {
    if (frmDocument* document = byName_.value(toQString(file.path))) return document;
    const auto found = file.inode == 0 ? byFile_.end() : byFile_.find({file.device, file.inode});
    return found == byFile_.end() ? nullptr : found->second.data();
  }

 private:
  QHash<QString, QPointer<frmDocument>> byName_;
  std::map<std::pair<std::uint64_t, std::uint64_t>, QPointer<frmDocument>> byFile_;
};

// What taking back a replacing does: in windows that did not save it, and to files on disk, whose windows follow.
struct WayBack {
  std::vector<QPointer<frmDocument>> undo;
  std::vector<folder::ReplacedFile> files;
  std::int64_t fresh = 0;   // of the files: that will be written
  QStringList left;         // with the reason
};

WayBack wayBack(const std::vector<folder::ReplacedFile>& files, std::vector<Replaced::Open> open, const Windows& windows) {
  WayBack way;
  const auto unchanged = [](const Replaced::Open& one) {
    return one.document->cmx->model()->document().revision() == one.revision;
  };
  for (const auto& file : files) {
    frmDocument* const document = windows.on(file);
    const auto one = std::ranges::find_if(open, [document](const Replaced::Open& other) {
      return document && other.document->cmx->model() == document->cmx->model();
    });
    const bool saved = file.side == folder::Side::new_, unsaved = document && document->DocumentModified();
    const bool takesBack = unsaved && !saved && one != open.end() && unchanged(*one);
    if (one != open.end()) open.erase(one);
    QString why;
    if (unsaved && !takesBack) why = FindFrame::tr("Its window has changes that are not saved");
    else if (!file.trouble.empty()) why = toQString(file.trouble);
    else if (file.side == folder::Side::gone) why = FindFrame::tr("It is not there any more");
    else if (file.side == folder::Side::other) why = FindFrame::tr("It has been changed since the replacing");
    if (takesBack) way.undo.push_back(document);
    if (!why.isEmpty()) way.left << namedTrouble(file.path, why);
    else way.files.push_back(file);
    way.fresh += why.isEmpty() && saved;
  }
  for (const auto& one : open)   // without a file
    if (unchanged(one)) way.undo.push_back(one.document);
    else
      way.left << nameForDisplay(one.document->CurrentFileTitle()) + u": "_s +
                      FindFrame::tr("It has been changed since; Undo in its window goes step by step");
  return way;
}

}   // namespace

void FindFrame::undoLast() {
  const auto last = std::make_shared<std::optional<folder::LastReplace>>();
  const auto look = [last, where = replaceRecords()](text::SearchControl&) { *last = folder::lastReplace(where); };
  if (!LongWork::runOrLeave(frame_, look, tr("Looking at the files..."))) return;
  const QString title = tr("Undo Last Replace in Files");
  // Only what one replacing changed: the newest may have changed texts without files alone, and another copy of the program, or a
  // script, may have replaced since.
  Replaced& newest = newestReplaced();
  std::erase_if(newest.open, [](const Replaced::Open& one) { return !one.document; });
  if (!newest.open.empty() && newest.record.empty()) last->reset();
  const bool ofNewest = !*last || (*last)->folder == newest.record;
  const Windows windows(frame_.documents());
  WayBack way = wayBack(*last ? (*last)->files : std::vector<folder::ReplacedFile>(),
                        ofNewest ? newest.open : std::vector<Replaced::Open>(), windows);
  const auto named = [&] { return tr("These are left alone:") + u"\r\n"_s + listOf(way.left); };
  if (way.fresh == 0 && way.undo.empty()) {
    MsgBox(way.left.isEmpty() ? tr("Nothing was replaced in files, or it has been brought back.") : named(), title,
           way.left.isEmpty() ? Icon::information : Icon::exclamation);
    return;
  }
  QStringList question;
  if (*last) question << plainForDisplay(toQString((*last)->about), 300) << QString();
  if (way.fresh > 0) question << tr("%1 get the old text back.").arg(countedFiles(way.fresh));
  if (!way.undo.empty())
    question
        << tr("The change is taken back in %1.").arg(counted(qint64(way.undo.size()), tr("open document"), tr("open documents")));
  if (*last)
    question << tr("The old texts (%1) lie in %2, until the next replacing and at most 30 days.")
                    .arg(sizeOf((*last)->bytes), plainForDisplay(toQString((*last)->folder)));
  if (!way.left.isEmpty()) question << QString() << named();
  if (MsgBox(question.join(u"\r\n"_s), title, Icon::question, Buttons::okCancel) != Answer::ok) return;
  if (ofNewest) newest.open.clear();
  for (const auto& document : way.undo)
    if (document) document->cmx->ExecuteCmd(Cmd::UNDO);
  if (*last) {
    (*last)->files = way.files;
    const auto undone = std::make_shared<std::vector<folder::UndoneFile>>();
    LongWork::run(
        frame_, (*last)->bytes, [last, undone](text::SearchControl&) { *undone = folder::undoReplace(**last); },
        tr("Bringing back the old texts..."), false);
    for (std::size_t i = 0; i < undone->size(); ++i) {
      const folder::UndoneFile& file = (*undone)[i];
      if (!file.trouble.empty()) way.left << namedTrouble(file.path, toQString(file.trouble));
      frmDocument* const document = file.changed ? windows.on(way.files[i]) : nullptr;
      if (document && !document->DocumentModified()) document->ReloadDocument();
    }
  }
  SetStatusText(way.left.isEmpty() ? tr("The old texts are back")
                                   : tr("The old texts are back; %1 left alone").arg(countedFiles(way.left.size())));
  if (!way.left.isEmpty()) MsgBox(tr("These were left alone:") + u"\r\n"_s + listOf(way.left), title);
}

void FindFrame::applyEdited() {
  ResultList* const list = ResultList::of(frame_.activeDocument());
  const QString title = tr("Apply Edited Lines");
  if (!list) {
    MsgBox(tr("The active document is no list of results."), title);
    return;
  }
  if (run_) {
    MsgBox(tr("The search is not at its end yet."), title);
    return;
  }
  QString error;
  std::vector<ResultList::Edited> edited;
  const text::Snapshot now = list->document()->cmx->model()->snapshot();
  LongWork::run(
      frame_, now.size().value, [&](text::SearchControl&) { edited = list->edited(now, &error); }, tr("Looking at the lines..."),
      false);
  if (error.isEmpty() && edited.empty()) error = tr("No line of the list was changed.");
  if (!error.isEmpty()) {
    MsgBox(error, title, Icon::information);
    return;
  }
  QStringList left;
  std::vector<folder::FilePlan> files;
  for (const auto& one : edited) {
    std::vector<folder::NewLine> lines;
    for (const auto& [line, texts] : one.lines) lines.push_back({line, texts.first, texts.second});
    folder::FilePlan plan;
    plan.path = one.path;
    std::string why;
    if (const frmDocument* document = openTextOf(one.path)) {
      plan.open = true;
      plan.text = document->cmx->model()->snapshot();
      why = folder::planLines(plan.text, lines, &plan);
    } else {
      why = folder::planLines(one.path, lines, &plan);
    }
    if (!why.empty()) left << namedTrouble(one.path, toQString(why));
    else files.push_back(std::move(plan));
  }
  if (files.empty()) {
    MsgBox(tr("These were left alone:") + u"\r\n"_s + listOf(left), title);
    return;
  }
  preview(std::move(files), title, list->root(), listOf(left));
}

void FindFrame::tellInterrupted() {
  const auto look = [where = replaceRecords()] {
    return std::make_shared<const std::optional<folder::LastReplace>>(folder::interruptedReplace(where));
  };
  inBackground(this, look, [](const std::shared_ptr<const std::optional<folder::LastReplace>>& last) {
    if (!*last) return;
    const folder::LastReplace& replace = **last;
    QStringList olds, news;
    for (const auto& file : replace.files)
      (file.side == folder::Side::new_ ? news : olds) << nameForDisplay(toQString(file.path), 300);
    MsgBox(tr("Replacing in files did not come to its end:") + u"\r\n"_s + plainForDisplay(toQString(replace.about), 300) +
               u"\r\n\r\n"_s + tr("%1 with the new text:").arg(countedFiles(news.size())) + u"\r\n"_s + listOf(news) +
               u"\r\n\r\n"_s +
               (olds.isEmpty() ? QString() : tr("Still old, or changed since:") + u"\r\n"_s + listOf(olds) + u"\r\n\r\n"_s) +
               tr("All others were not touched. Undo Last Replace in Files, in the Edit menu, brings the old texts back."),
           tr("Replace in Files"), Icon::information);
    folder::markTold(replace);
  });
}

#include "moc_FindFrame.cpp"
