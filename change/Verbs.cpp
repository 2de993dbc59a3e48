#include "change/Verbs.h"

#include <QCoreApplication>

#include "base/Options.h"
#include "base/Strings.h"
#include "base/dialog/Dialogs.h"
#include "change/AddIns.h"
#include "change/FormatText.h"
#include "change/LineTools.h"
#include "control/keys/KeyCommands.h"
#include "document/Languages.h"
#include "language/ucCM.h"
#include "script/FilesVerbs.h"
#include "script/Statements.h"

namespace {

// A whole number of an option (0x for hexadecimal); *value stays when it is not given. False: it is no number within the bounds.
bool number(const Options& given, const char* name, qint64 low, qint64 high, qint64* value) {
  if (!given.has(name)) return true;
  bool good = false;
  *value = given.value(name).toLongLong(&good, 0);
  return good && *value >= low && *value <= high;
}

// 1-based; 0: not given.
bool choice(const Options& given, const char* name, const QStringList& choices, int* index) {
  if (!given.has(name)) return true;
  *index = static_cast<int>(choices.indexOf(given.value(name).toLower())) + 1;
  return *index > 0;
}

bool format(CodeMax& cmx, const QString& argument) {
  constexpr OptionRow rows[] = {
      {"tabs", "N"}, {"text", "CASE"}, {"keywords", "CASE"}, {"indent", "N"}, {"lineends", "unix|windows"},
      {"careful"},   {"indenttabs"},   {"selection"},        {"anycase"}};
  const Options given = parseVerb(argument, rows);
  FormatChoices choices;
  qint64 tabs = -1, indent = -1;
  const QStringList cases{QStringLiteral("upper"), QStringLiteral("lower"), QStringLiteral("capitalize")};
  if (!given.error.isEmpty() || !number(given, "tabs", 0, 100, &tabs) || !number(given, "indent", 0, 100, &indent) ||
      !choice(given, "text", cases, &choices.mainCase) || !choice(given, "keywords", cases, &choices.keywordCase) ||
      !choice(given, "lineends", {QStringLiteral("unix"), QStringLiteral("windows")}, &choices.lineEnds))
    return false;
  choices.tabs = static_cast<int>(tabs) + 1;
  choices.indent = static_cast<int>(indent) + 1;
  choices.wholeLine = given.isOn("careful");
  choices.indentTabs = given.isOn("indenttabs");
  choices.selectionOnly = given.isOn("selection");
  choices.changeCaseAnyway = given.isOn("anycase");
  const auto& all = languages().Languages();
  const int index = languages().GetIndex(cmx.Language());
  const clsLang* language = index > 0 ? all->Item(index).get() : nullptr;
  const auto say = [](const char* text) { return QCoreApplication::translate("Verbs", text); };
  QString complaint;
  if (!language && (choices.indent > 0 || choices.mainCase > 0 || choices.keywordCase > 0))
    complaint = say(QT_TRANSLATE_NOOP("Verbs", "The document has no language: its indentation and letter case are not changed."));
  else if (caseMatters(choices, language) && !choices.changeCaseAnyway)
    complaint =
        say(QT_TRANSLATE_NOOP("Verbs", "The language is case-sensitive, so letter case stays; the option anycase changes it."));
  const FormatResult result = FormatIt(cmx, language, choices);
  if (!result.error.isEmpty()) complaint = result.error;
  else complaint = (QStringList(complaint) + result.notes).join(u'\n').trimmed();
  if (!complaint.isEmpty()) MsgBox(complaint);
  return true;
}

bool columnize(CodeMax& cmx, const QString& argument) {
  QString delimiter = argument;
  ColumnizeOptions options;
  const auto take = [&](const char* option, bool* flag) {
    if (!delimiter.endsWith(QLatin1String(option))) return false;
    delimiter.chop(static_cast<qsizetype>(qstrlen(option)));
    return *flag = true;
  };
  while (take(" -g", &options.groupsApart) || take(" -c", &options.codeOnly) || take(" -b", &options.withinBlock)) {}
  if (delimiter.isEmpty()) return false;
  const LineRange lines = cmx.GetSel(true).IsEmpty() ? LineRange{0, cmx.LineCount()} : linesToColumnize(cmx);
  Columnize(cmx, lines, delimiter, options);
  return true;
}

bool series(CodeMax& cmx, const QString& argument) {
  constexpr OptionRow rows[] = {{"start", "N"},        {"step", "N"},      {"repeat", "N"},
                                {"base", "2|8|10|16"}, {"width", "N"},     {"zeros"},
                                {"prefix", "TEXT"},    {"suffix", "TEXT"}, {"upper"}};
  const Options given = parseVerb(argument, rows);
  NumberSeries s;
  qint64 repeat = 1, base = 10, width = 0;
  constexpr qint64 kMost = std::numeric_limits<qint64>::max(), kLeast = std::numeric_limits<qint64>::min();
  if (!given.error.isEmpty() || !number(given, "start", kLeast, kMost, &s.start) ||
      !number(given, "step", kLeast, kMost, &s.step) || !number(given, "repeat", 1, NumberSeries::kMostRepeats, &repeat) ||
      !number(given, "base", 2, 16, &base) || !number(given, "width", 0, 64, &width))
    return false;
  if (base != 2 && base != 8 && base != 10 && base != 16) return false;
  s.repeat = static_cast<int>(repeat);
  s.base = static_cast<int>(base);
  s.width = static_cast<int>(width);
  s.zeroFill = given.isOn("zeros");
  s.upperCase = given.isOn("upper");
  s.prefix = given.value("prefix");
  s.suffix = given.value("suffix");
  return InsertSeries(cmx, s) >= 0;
}

bool sortLines(CodeMax& cmx, const QString& argument) {
  constexpr OptionRow rows[] = {{"descending"}, {"case"}, {"numeric"}, {"unique"}};
  const Options given = parseVerb(argument, rows);
  if (!given.error.isEmpty()) return false;
  SortLines(cmx, {given.isOn("descending"), given.isOn("case"), given.isOn("numeric"), given.isOn("unique")});
  return true;
}

// "/expression/replacement/i": the first character is the separator; the i is optional. '\' escapes the separator.
bool substitute(CodeMax& cmx, const QString& argument) {
  QStringList parts{QString()};
  for (qsizetype at = 1; at < argument.size(); ++at) {
    if (argument[at] == argument[0]) {
      parts += QString();
      continue;
    }
    if (argument[at] == u'\\' && at + 1 < argument.size()) parts.last() += argument[at++];
    parts.last() += argument[at];
  }
  if (parts.size() != 3 || parts[0].isEmpty() || (!parts[2].isEmpty() && parts[2] != QLatin1String("i"))) return false;
  text::SearchOptions search;
  search.regex = true;
  search.matchCase = parts[2].isEmpty();
  const text::Finder finder(fromQString(parts[0]), search);
  if (!finder.error().empty()) return false;
  parts[1].replace(u'\\' + argument.left(1), argument.left(1));
  QString error;
  SubstituteInLines(cmx, finder, parts[1], &error);
  if (!error.isEmpty()) MsgBox(error);
  return true;
}

bool markedLines(CodeMax& cmx, const QString& argument) {
  const QString what = argument.trimmed().toUpper();
  const Command* command = what == QLatin1String("INVERT") ? anyCommandByName(u"BOOKMARKINVERT") : nullptr;
  for (const char* each : {"CUT", "COPY", "DELETE"})
    if (what == QLatin1String(each)) command = anyCommandByName(QStringLiteral("BOOKMARKLINES") + what);
  return command && executeAny(cmx.editor(), command->id);
}

template <auto Service>
bool plain(CodeMax& cmx, const QString&) {
  Service(cmx);
  return true;
}
qint64 removeDuplicates(CodeMax& cmx) { return RemoveDuplicateLines(cmx); }

}   // namespace

void AddFormatVerbs() {
  using statements::addVerb;
  AddFilesVerbs();
  addVerb("FORMAT",
          "[tabs=N] [text=CASE] [keywords=CASE] [indent=N] [lineends=unix|windows] [careful] [indenttabs] [selection] [anycase]",
          "Formats the text: tabs to N blanks (0: none, but one between two words), letter case (upper, lower, capitalize), "
          "indentation by N (careful: indenttabs indents by one tab a level instead), line ends. "
          "selection: only the selected lines, without a selection all lines; line ends always change in the whole text.",
          format);
  addVerb("COLUMNIZE", "delimiter [-g] [-c] [-b]",
          "Aligns a delimiter in the selected lines, without a selection in all lines; -g groups between blank lines, -c code "
          "only, -b within the block.",
          columnize);
  addVerb("SERIES", "[start=N] [step=N] [repeat=N] [base=2|8|10|16] [width=N] [zeros] [upper] [prefix=TEXT] [suffix=TEXT]",
          "Inserts a series of numbers into the selected lines.", series);
  addVerb(
      "SORTLINES", "[descending] [case] [numeric] [unique]",
      "Sorts the selected lines, without a selection all lines; numeric: by the first number of each line; unique: keeps one of "
      "equal lines; case: case-sensitive order.",
      sortLines);
  addVerb("UNIQUELINES", "", "Removes repeated lines.", plain<removeDuplicates>);
  addVerb("BLANKLINES", "", "Removes lines of white space only.", plain<RemoveBlankLines>);
  addVerb("TRIMLINES", "", "Removes blanks and tabs at line ends.", plain<TrimLineEnds>);
  addVerb(
      "SUBSTITUTE", "/expression/replacement/[i]",
      "Replaces the matches of a regular expression in the selected lines, else in the caret's line; \\1 to \\9 are its groups, i "
      "ignores letter case.",
      substitute);
  addVerb(
      "MARKEDLINES", "cut|copy|delete|invert",
      "Cuts, copies or deletes the lines that have a bookmark, or inverts the bookmarks; USAGE with -hl and FINDMARKALL set them.",
      markedLines);
  addVerb("JOINLINES", "", "Joins the selected lines, else the caret's line and the next.", plain<JoinLines>);
}
