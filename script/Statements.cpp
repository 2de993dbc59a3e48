#include "script/Statements.h"

#include <algorithm>
#include <vector>

#include "base/Workspace.h"

namespace statements {

namespace {

// clang-format off
constexpr Verb kVerbs[] = {
    {Code::echo, "ECHO", "text", "Writes the text into the log; a text that ends in \";\" leaves the line open."},
    {Code::fileInfo, "FILEINFO", "", "Writes path, date, size, lines, comments and blank lines of the document into the log."},
    {Code::usage, "USAGE", "text [options]", "Lists the lines of the document that hold the text in the log."},
    {Code::shell, "SHELL", "program arguments", "Starts a program and waits for its end; a window titled FINISHED is closed."},
    {Code::shellW, "SHELLW", "program arguments", "Starts a program and waits for its end."},
    {Code::onError, "ONERROR", "STOP|CONTINUE", "STOP: a program that fails ends the run. CONTINUE (default): the run continues."},
    {Code::save, "SAVE", "", "Saves the document; if that fails, the run ends."},
    {Code::saveAll, "SAVEALL", "", "Saves the document and all others that are modified and have a file name; if that fails, the run ends."},
    {Code::logClear, "LOGCLEAR", "", "Empties the log."},
    {Code::logColor, "LOGCOLOR", "", "Colours the log by the document's language."},
    {Code::logEdit, "LOGEDIT", "", "Lets the following edit commands work on the log."},
    {Code::normalEdit, "NORMALEDIT", "", "Lets the following edit commands work on the document again."},
    {Code::logInsertFile, "LOGINSERTFILE", "", "Asks for a file and inserts it into the log."},
    {Code::logSave, "LOGSAVE", "[file]", "Saves the log; without a name as zelkor.log in the document's folder. A file that is open, or on which a run works, is refused."},
    {Code::logToText, "LOGTOTEXT", "", "Inserts the whole log into the document at the caret."},
};
// clang-format on

constexpr Variable kVariables[] = {
    {Value::name, "$Name", "the document's file with its path; empty for a new document", true},
    {Value::date, "$Date", "today's date in the system's short form"},
    {Value::word, "$Word", "the selected text, else the word at the caret", true},
    {Value::title, "$Title", "the document's name without its folder", true},
    {Value::stem, "$Stem", "the document's name up to its first dot", true},
    {Value::user, "$User", "the name of the user who is logged in"},
    {Value::clip, "$Clip", "the text on the clipboard", true},
    {Value::zelkor, "$Zelkor", "the folder of the program"},
    {Value::path, "$Path", "the folder of the document's file", true},
    {Value::result, "$ExitCode", "how the last program of this run ended: its exit code, 0 for success"},
    {Value::output, "$Output", "with a number: an answer given in this run, the first one is $Output0"},
};

constexpr UsageOption kOptions[] = {
    {Option::caseSensitive, " -cs", "case-sensitive"},
    {Option::skipComments, " -sc", "skips comments"},
    {Option::wholeWords, " -b", "finds whole words only"},
    {Option::verbose, " -v", "lists every occurrence with its line and column"},
    {Option::bookmark, " -hl", "sets a bookmark on each line found"},
    {Option::countOnly, " -c", "reports the number only"},
};

constexpr SelectionStatement kSelections[] = {
    {"SELGET", "Remembers the selection for this run."},
    {"SELSET", "Restores the remembered selection."},
    {"SELECTAREA", "Selects from the start of the remembered selection to the end of the current one."},
};

}   // namespace

namespace {
struct Added {
  QLatin1String name;
  AddedRun run;
  bool writesFiles;
};
struct Verbs {
  std::vector<Verb> rows{std::begin(kVerbs), std::end(kVerbs)};
  std::vector<Added> added;
};
Verbs& all() { return Workspace::current().part<Verbs>(); }
}   // namespace

std::span<const Verb> verbs() { return all().rows; }

void addVerb(const char* name, const char* argument, const char* help, AddedRun run, bool writesFiles) {
  if (addedRun(QString(QLatin1String(name)))) return;
  all().rows.push_back({Code::added, name, argument, help});
  all().added.push_back({QLatin1String(name), run, writesFiles});
}

AddedRun addedRun(QStringView verb) {
  for (const Added& one : all().added)
    if (verb == one.name) return one.run;
  return nullptr;
}

bool addedWritesFiles(QStringView verb) {
  for (const Added& one : all().added)
    if (verb == one.name) return one.writesFiles;
  return false;
}

std::span<const Variable> variables() { return kVariables; }
std::span<const UsageOption> usageOptions() { return kOptions; }
std::span<const SelectionStatement> selectionStatements() { return kSelections; }

Code codeOf(QStringView verb) {
  for (const Verb& row : verbs())
    if (verb == QLatin1String(row.name)) return row.code;
  return verb.startsWith(QLatin1String("LOG")) ? Code::invalid : Code::editCommand;
}

bool takesArgument(QStringView verb) {
  const auto rows = verbs();
  const auto row = std::find_if(rows.begin(), rows.end(), [&](const Verb& each) { return verb == QLatin1String(each.name); });
  return row == rows.end() || *row->argument;
}

Split split(const QString& line) {
  const qsizetype blank = line.indexOf(u' ');
  if (blank < 0) return {line.toUpper(), {}};
  return {line.left(blank).toUpper(), line.mid(blank + 1)};
}

}   // namespace statements
