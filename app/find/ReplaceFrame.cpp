// What FindFrame does for replacing: plan, preview, the changes themselves, and the way back.
#include <QApplication>
#include <QLocale>
#include <QWidget>
#include <thread>
#include <utility>

#include "app/find/FindFrame.h"
#include "app/find/ResultList.h"
#include "app/find/frmFindInFiles.h"
#include "app/find/frmReplacePreview.h"
#include "app/frame/frmMain.h"
#include "base/Counted.h"
#include "base/Program.h"
#include "base/Strings.h"
#include "base/dialog/Dialogs.h"
#include "bridge/FileNames.h"
#include "bridge/LongWork.h"
#include "control/edit/CommandTable.h"
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

// What the last replacing changed in windows, where nothing was changed since. Gives the names of the others.
QStringList FindFrame::undoOpen() {
  QStringList left;
  for (const Replaced::Open& one : std::exchange(newestReplaced().open, {})) {
    if (!one.document) continue;
    CodeMax* const cmx = one.document->cmx;
    if (cmx->model()->document().revision() == one.revision) cmx->ExecuteCmd(Cmd::UNDO);
    else
      left << nameForDisplay(one.document->CurrentFileTitle()) + u": "_s +
                  tr("It has been changed since; Undo in its window goes step by step");
  }
  return left;
}

void FindFrame::undoLast() {
  const auto last = std::make_shared<std::optional<folder::LastReplace>>();
  const auto look = [last, where = replaceRecords()](text::SearchControl&) { *last = folder::lastReplace(where); };
  if (!LongWork::runOrLeave(frame_, look, tr("Looking at the files..."))) return;
  const QString title = tr("Undo Last Replace in Files");
  // Only what one replacing changed: the newest may have changed open texts alone, and another copy of the program, or a script, may have
  // replaced since.
  Replaced& newest = newestReplaced();
  std::erase_if(newest.open, [](const Replaced::Open& one) { return !one.document; });
  if (!newest.open.empty() && newest.record.empty()) last->reset();
  const std::size_t open = !*last || (*last)->folder == newest.record ? newest.open.size() : 0;
  if (!*last && open == 0) {
    MsgBox(tr("Nothing was replaced in files, or it has been brought back."), title, Icon::information);
    return;
  }
  QString question;
  if (*last) {
    std::int64_t fresh = 0, other = 0;
    for (const auto& file : (*last)->files) (file.side == folder::Side::new_ ? fresh : other) += file.side != folder::Side::old;
    question =
        plainForDisplay(toQString((*last)->about), 300) + u"\r\n\r\n"_s + tr("%1 get the old text back.").arg(countedFiles(fresh));
    if (other > 0) question += u' ' + tr("Changed since, and left alone: %1.").arg(countedFiles(other));
    question += u"\r\n"_s + tr("The old texts (%1) lie in %2, until the next replacing and at most 30 days.")
                                .arg(sizeOf((*last)->bytes), plainForDisplay(toQString((*last)->folder)));
  }
  if (open > 0)
    question +=
        u"\r\n"_s + tr("The change is taken back in %1.").arg(counted(qint64(open), tr("open document"), tr("open documents")));
  if (MsgBox(question.trimmed(), title, Icon::question, Buttons::okCancel) != Answer::ok) return;
  QStringList left;
  if (open > 0) left = undoOpen();
  if (*last) {
    const auto undone = std::make_shared<std::vector<folder::UndoneFile>>();
    LongWork::run(
        frame_, (*last)->bytes, [last, undone](text::SearchControl&) { *undone = folder::undoReplace(**last); },
        tr("Bringing back the old texts..."), false);
    for (const auto& file : *undone)
      if (!file.trouble.empty()) left << namedTrouble(file.path, toQString(file.trouble));
  }
  SetStatusText(tr("The old texts are back"));
  if (!left.isEmpty()) MsgBox(tr("These were left alone:") + u"\r\n"_s + listOf(left), title);
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
  std::thread([self = QPointer<FindFrame>(this), where = replaceRecords()] {
    const auto last = std::make_shared<const std::optional<folder::LastReplace>>(folder::interruptedReplace(where));
    if (!*last) return;
    QMetaObject::invokeMethod(
        qApp,
        [self, last] {
          if (!self) return;
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
        },
        Qt::QueuedConnection);
  }).detach();
}

#include "moc_FindFrame.cpp"
