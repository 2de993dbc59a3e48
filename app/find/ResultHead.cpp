#include "app/find/ResultHead.h"

#include <QCoreApplication>

#include "bridge/QStringBytes.h"

using namespace Qt::StringLiterals;

namespace {
QString ofList(const char* text) { return QCoreApplication::translate("ResultList", text); }
}   // namespace

QString optionsOf(const folder::FindText& what, bool limited) {
  const text::SearchOptions& options = what.options();
  QStringList words;
  if (options.matchCase) words << ofList("match case");
  if (options.wholeWord) words << ofList("whole word");
  if (options.regex) words << ofList("regular expression");
  if (!limited) words << ofList("no limit");
  return words.isEmpty() ? QString() : u" ("_s + words.join(u", "_s) + u')';
}

QString filesOf(const FindTask& task) {
  const auto shown = [](const std::string& text) { return toQString(folder::shownPath(text)); };
  QString files = task.where == FindTask::Where::folder          ? ofList("all of the folder")
                  : task.where == FindTask::Where::openDocuments ? ofList("open documents")
                                                                 : ofList("those of %1").arg(shown(task.filesOf));
  if (!task.masks.empty()) files += ofList("; masks %1").arg(shown(task.masks));
  QStringList also, without;
  const auto kind = [&](bool on, const QString& name) { (on ? also : without) << name; };
  if (task.where == FindTask::Where::folder) {
    kind(task.walk.ignored, ofList("ignored"));
    kind(task.walk.hidden, ofList("hidden"));
  }
  if (task.where != FindTask::Where::openDocuments) kind(task.binary, ofList("binary"));
  if (!also.isEmpty()) files += ofList("; with %1 ones").arg(also.join(u", "_s));
  if (!without.isEmpty()) files += ofList("; without %1 ones").arg(without.join(u", "_s));
  return ofList("Files: %1").arg(files);
}

QString headOf(const QString& first, const QString& about, const std::string& root, const QString& result) {
  return first + about + u'\n' + QLatin1String(kHeadFolder) + toQString(folder::shownPath(root)) + u'\n' + result + u"\n\n"_s;
}
