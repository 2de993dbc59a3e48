#include "script/FilesVerbs.h"

#include <QCoreApplication>

#include "base/Options.h"
#include "base/Strings.h"
#include "base/dialog/Dialogs.h"
#include "bridge/FileNames.h"
#include "bridge/LongWork.h"
#include "document/Frame.h"
#include "document/frmDocument.h"
#include "document/frmLog.h"
#include "script/FindTask.h"
#include "script/ReplaceWork.h"
#include "script/Statements.h"

using namespace Qt::StringLiterals;

namespace {

constexpr std::int64_t kMostHits = 100'000;   // that the log takes

QString filesText(const char* text) { return QCoreApplication::translate("FilesVerbs", text); }

struct Asked {
  FindTask task;
  folder::Replacing by;
};

// What the argument asks for; false: it means nothing. *complaint: it does, but cannot be done.
bool ask(const QString& argument, bool replace, Asked* asked, QString* complaint) {
  static constexpr OptionRow kFind[] = {{"text", "TEXT"}, {"in", "FOLDER"}, {"mask", "GLOBS"}, {"regex"}, {"word"},
                                        {"case"},         {"ignored"},      {"hidden"},        {"binary"}};
  static constexpr OptionRow kReplace[] = {{"text", "TEXT"}, {"in", "FOLDER"}, {"mask", "GLOBS"}, {"regex"},
                                           {"word"},         {"case"},         {"ignored"},       {"hidden"},
                                           {"binary"},       {"by", "TEXT"},   {"preserve"}};
  const Options given = replace ? parseVerb(argument, kReplace, true) : parseVerb(argument, kFind, true);
  if (!given.error.isEmpty() || given.value("text").isEmpty() || given.has("by") != replace) return false;
  FindTask& task = asked->task;
  text::SearchOptions options;
  options.regex = given.isOn("regex");
  options.wholeWord = given.isOn("word");
  options.matchCase = given.isOn("case");
  task.what = std::make_shared<const folder::FindText>(fromQString(given.value("text")), options);
  task.walk.ignored = given.isOn("ignored");
  task.walk.hidden = given.isOn("hidden");
  task.binary = given.isOn("binary");
  task.setMasks(fromQString(given.value("mask")));
  task.mostHits = kMostHits;
  asked->by = {fromQString(given.value("by")), given.isOn("preserve")};
  const frmDocument* const document = frame() ? frame()->activeDocument() : nullptr;
  const QString base = document && !document->CurrentFileDir().isEmpty() ? document->CurrentFileDir() : currentFolder();
  const QString root = fullPath(given.value("in", base), base);
  task.root = fromQString(root);
  if (frame()) task.addOpen(frame()->documents());
  if (!task.what->error().empty()) *complaint = toQString(task.what->error());
  else if (!isFolder(root)) *complaint = filesText("There is no folder %1").arg(plainForDisplay(root));
  return true;
}

void log(const QString& line) {
  if (frame() && frame()->log()) frame()->log()->AppendLog(line + u"\r\n"_s);
}

bool findInFiles(CodeMax& cmx, const QString& argument) {
  struct Held {
    Asked asked;
    folder::FindSummary summary;
    folder::WalkReport walked;
    std::string rows;
  };
  const auto held = std::make_shared<Held>();
  QString complaint;
  if (!ask(argument, false, &held->asked, &complaint)) return false;
  if (complaint.isEmpty()) {
    const auto work = [held](text::SearchControl& control) {
      const FindTask& task = held->asked.task;
      held->summary = folder::findInFiles(
          *task.what, task.rules(), [&](const auto& give) { task.each(give, control, &held->walked); },
          [&](folder::FileFinds file) {
            file.path = task.shown(file.path);
            folder::appendRows(file, &held->rows);
          },
          control);
    };
    if (!LongWork::runOrLeave(cmx, work, filesText("Searching..."))) return true;
    complaint = toQString(held->summary.error);
  }
  if (!complaint.isEmpty()) {
    MsgBox(complaint);
    return true;
  }
  if (!held->rows.empty()) log(toQString(std::string_view(held->rows).substr(0, held->rows.size() - 1)));
  QString end = filesText("%1 in %2").arg(countedHits(held->summary.hits), countedFiles(held->summary.filesWithHits));
  if (held->summary.cut) end += filesText("; ended at the limit of %1").arg(countedHits(kMostHits));
  if (const std::string skipped = folder::skippedText(held->summary); !skipped.empty()) end += u"; "_s + toQString(skipped);
  if (held->walked.unreadable > 0) end += filesText("; %1 folders could not be read").arg(held->walked.unreadable);
  log(end);
  return true;
}

bool replaceInFiles(CodeMax& cmx, const QString& argument) {
  struct Held {
    Asked asked;
    folder::ReplacePlanned planned;
    folder::WalkReport walked;
  };
  const auto held = std::make_shared<Held>();
  QString complaint;
  if (!ask(argument, true, &held->asked, &complaint)) return false;
  if (complaint.isEmpty()) {
    const auto work = [held](text::SearchControl& control) {
      held->planned = held->asked.task.plan(held->asked.by, control, &held->walked);
    };
    if (!LongWork::runOrLeave(cmx, work, filesText("Searching...")) || held->planned.cancelled) return true;
    complaint = toQString(held->planned.error);
  }
  if (!complaint.isEmpty()) {
    MsgBox(complaint);
    return true;
  }
  const Asked& asked = held->asked;
  const QString about =
      filesText("Replace \"%1\" by \"%2\"")
          .arg(plainForDisplay(toQString(asked.task.what->what()), 60), plainForDisplay(toQString(asked.by.by), 60));
  const Replaced replaced = makeChanges(cmx, std::move(held->planned.files), about);
  log(filesText("%1 in %2").arg(countedChanges(replaced.changes), countedFiles(replaced.files)));
  QStringList troubles = replaced.troubles;
  for (const auto& [path, why] : held->planned.found.skippedNames) troubles << namedTrouble(path, toQString(why));
  for (const auto& one : held->walked.troubles) troubles << namedTrouble(one.path, toQString(one.reason));
  if (const std::int64_t more = notNamed(held->planned.found, held->walked); more > 0)
    troubles << filesText("... and %L1 more").arg(more);
  if (!troubles.isEmpty()) MsgBox(filesText("These were left alone:") + u"\r\n"_s + troubles.join(u"\r\n"_s));
  return true;
}

}   // namespace

void AddFilesVerbs() {
  statements::addVerb(
      "FINDINFILES", "text=\"TEXT\" [regex] [word] [case] [in=FOLDER] [mask=GLOBS] [ignored] [hidden] [binary]",
      "Writes path:line:column: text of each line with a hit to the log; open texts as they stand. FOLDER, at first "
      "that of the document, is taken against it. \\\" is a quotation mark.",
      findInFiles);
  statements::addVerb(
      "REPLACEINFILES",
      "text=\"TEXT\" by=\"TEXT\" [regex] [word] [case] [preserve] [in=FOLDER] [mask=GLOBS] [ignored] [hidden] [binary]",
      "Replaces in the files of the folder, without a preview; texts that are open are changed in their windows. "
      "Undo Last Replace in Files brings the files back.",
      replaceInFiles, true);
}
