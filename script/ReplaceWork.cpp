#include "script/ReplaceWork.h"

#include <QCoreApplication>
#include <memory>

#include "base/Strings.h"
#include "base/Workspace.h"
#include "bridge/FileNames.h"
#include "bridge/LongWork.h"
#include "document/Frame.h"
#include "document/frmDocument.h"

namespace {
QString replaceText(const char* text) { return QCoreApplication::translate("ReplaceWork", text); }
constexpr int kLongestName = 300;
}   // namespace

Replaced& newestReplaced() { return Workspace::current().part<Replaced>(); }

std::string replaceRecords() { return fromQString(userStateFolder()) + "/replaced"; }

QString namedTrouble(const std::string& path, const QString& why) {
  return nameForDisplay(toQString(path), kLongestName) + QLatin1String(": ") + plainForDisplay(why, kLongestName);
}

frmDocument* openTextOf(const std::string& path) {
  if (!frame()) return nullptr;
  const QString name = toQString(path);
  for (frmDocument* document : frame()->documents())
    if ((document->DocumentHasName() ? document->CurrentFileName() : document->CurrentFileTitle()) == name) return document;
  return nullptr;
}

Replaced makeChanges(QWidget& asker, std::vector<folder::FilePlan> plans, const QString& about) {
  struct Held {
    std::vector<folder::WindowChange> windows;
    std::vector<folder::FilePlan> files;
    std::vector<folder::Outcome> outcomes, notKept;   // notKept: changed in windows, without their old texts
    std::string about, records, record, error;
  };
  Replaced replaced;
  const auto held = std::make_shared<Held>();
  std::int64_t bytes = 0;
  for (auto& plan : plans) {
    const std::vector<text::Edit> edits = plan.edits();
    if (edits.empty()) continue;
    if (!plan.open) {
      bytes += plan.stamp.status.size;
      held->files.push_back(std::move(plan));
      continue;
    }
    const auto fail = [&](const QString& why) { replaced.troubles << namedTrouble(plan.path, why); };
    frmDocument* const document = openTextOf(plan.path);
    text::Document* const text = document ? &document->cmx->model()->document() : nullptr;
    if (!text) fail(replaceText("It is not open any more"));
    else if (text->readOnly()) fail(replaceText("It is read-only"));
    else if (!text->snapshot().sameAs(plan.text)) fail(replaceText("It has been changed since the search"));
    else if (!text->apply(edits, document->cmx->editor().selection())) fail(replaceText("It could not be changed"));
    else {
      replaced.changes += std::int64_t(edits.size());
      ++replaced.files;
      replaced.open.push_back({document, text->revision()});
      const auto& stamp = document->cmx->model()->stamp;
      bytes += text->snapshot().size().value;
      if (!document->CurrentFileName().isEmpty())
        held->windows.push_back({fromQString(document->CurrentFileName()), plan.text, text->snapshot(), document->cmx->fileFormat(),
                                 stamp ? *stamp : text::FileStamp()});
    }
  }
  const auto keep = [&] {
    if (replaced.changes > 0 || !replaced.record.empty()) newestReplaced() = replaced;
    return replaced;
  };
  if (held->files.empty() && held->windows.empty()) return keep();
  held->about = fromQString(about);
  held->records = replaceRecords();
  const auto work = [held](text::SearchControl& control) {
    const auto record = folder::ReplaceRecord::begin(held->records, held->about, &held->error);
    if (!record) return;
    for (const auto& change : held->windows)
      if (const std::string error = folder::keepOfWindow(change, *record); !error.empty())
        held->notKept.push_back({change.path, 0, error});
    for (const auto& plan : held->files) {
      if (control.cancel) held->outcomes.push_back({plan.path, 0, "Cancelled before it"});
      else held->outcomes.push_back(folder::replaceInFile(plan, *record));
      control.bytesDone += plan.stamp.status.size;
    }
    held->error = record->finish();
    held->record = record->folder();
  };
  LongWork::run(asker, bytes, work, replaceText("Replacing..."), true);
  for (const auto& outcome : held->outcomes) {
    if (!outcome.trouble.empty()) replaced.troubles << namedTrouble(outcome.path, toQString(outcome.trouble));
    replaced.changes += outcome.changes;
    replaced.files += outcome.changes > 0;
  }
  for (const auto& outcome : held->notKept)
    replaced.troubles << namedTrouble(outcome.path, replaceText("Only Undo in its window brings its old text back, as it could not "
                                                                "be kept: %1")
                                                        .arg(toQString(outcome.trouble)));
  if (held->outcomes.empty() && !held->files.empty() && !held->error.empty())
    replaced.troubles << replaceText("No file was changed, as their old texts could not be kept: %1").arg(toQString(held->error));
  else if (!held->error.empty())
    replaced.troubles << replaceText("The record of the old texts could not be finished: %1").arg(toQString(held->error));
  replaced.record = held->record;
  return keep();
}
