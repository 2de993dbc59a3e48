#include "app/start/Arguments.h"

#include <QCoreApplication>
#include <QDir>
#include <QRegularExpression>

#include "base/Options.h"
#include "bridge/FileNames.h"

namespace {

struct Option {
  const char* name;
  bool Arguments::*flag;
  const char* help;
};
// clang-format off
constexpr Option kOptions[] = {
    {"--help", &Arguments::help, QT_TRANSLATE_NOOP("Arguments", "show this text")},
    {"--version", &Arguments::version, QT_TRANSLATE_NOOP("Arguments", "show the version")},
    {"--new-instance", &Arguments::newInstance,
     QT_TRANSLATE_NOOP("Arguments", "do not hand the files to a running editor")},
    {"--wait", &Arguments::wait,
     QT_TRANSLATE_NOOP("Arguments", "return when the files have been closed ($EDITOR)")},
    {"--read-only", &Arguments::readOnly, QT_TRANSLATE_NOOP("Arguments", "guard the files against changes")},
    {"--no-session", &Arguments::noSession,
     QT_TRANSLATE_NOOP("Arguments", "do not bring the last session back")},
    {"--sessions", &Arguments::sessions, QT_TRANSLATE_NOOP("Arguments", "list the named sessions")},
    {"--batch", &Arguments::batch,
     QT_TRANSLATE_NOOP("Arguments", "run commands on files without a window (--batch --help)")},
    {"--find", &Arguments::find,
     QT_TRANSLATE_NOOP("Arguments", "find in files without a window (--find --help)")},
    {"--diff", &Arguments::diff, QT_TRANSLATE_NOOP("Arguments", "compare two files, or merge three (--diff --help)")},
    {"--print-pdf", &Arguments::printPdf,
     QT_TRANSLATE_NOOP("Arguments", "print files as PDF without a window (--print-pdf --help)")},
};
// clang-format on

constexpr char kSession[] = "--session";

QString tr(const char* text) { return QCoreApplication::translate("Arguments", text); }

qint64 number(const QString& digits) { return digits.isEmpty() ? 0 : digits.toLongLong(); }

}   // namespace

FilePlace placeIn(const QString& argument) {
  static const QRegularExpression form(QStringLiteral("\\A(.+?):(\\d{1,15})(?::(\\d{1,15}))?:?\\z"),
                                       QRegularExpression::DotMatchesEverythingOption);
  if (fileIsThere(argument)) return {argument, 0, 0};
  const auto match = form.match(argument);
  if (!match.hasMatch()) return {argument, 0, 0};
  // "a:1:2" may be line 2 of a file "a:1".
  const QString shorter = match.captured(1) + u':' + match.captured(2);
  if (!match.captured(3).isEmpty() && fileIsThere(shorter)) return {shorter, number(match.captured(3)), 0};
  return {match.captured(1), number(match.captured(2)), number(match.captured(3))};
}

Arguments parseArguments(const QStringList& arguments, const QString& folder) {
  static const QRegularExpression plusLine(QStringLiteral("^\\+(\\d{1,15})(?:[,:](\\d{1,15}))?$"));
  Arguments line;
  const QStringList options = arguments.mid(0, arguments.indexOf(QLatin1String("--")));   // all where there is none
  line.batch = options.contains(QLatin1String("--batch"));
  const auto asksFor = [&](QLatin1String name) {
    return std::any_of(options.begin(), options.end(), [&](const QString& word) { return word.section(u'=', 0, 0) == name; });
  };
  line.printPdf = asksFor(QLatin1String("--print-pdf"));
  line.find = asksFor(QLatin1String("--find"));
  line.diff = asksFor(QLatin1String("--diff"));
  if (line.diff && (line.batch || line.find || line.printPdf)) line.error = tr("--diff excludes --batch, --find and --print-pdf");
  else if (line.printPdf && line.batch) line.error = tr("--batch and --print-pdf exclude each other");
  else if (line.find && line.batch) line.error = tr("--batch and --find exclude each other");
  else if (line.find && line.printPdf) line.error = tr("--find and --print-pdf exclude each other");
  if (line.printPdf || line.batch || line.find || line.diff) return line;   // the rest is theirs

  std::vector<OptionRow> rows = optionRows(kOptions);
  rows.push_back({kSession, "NAME"});
  const Options given = parseCommandLine(arguments, rows);
  line.error = given.error;
  if (!line.error.isEmpty()) return line;
  for (const Option& option : kOptions) line.*(option.flag) = given.isOn(option.name);
  line.session = given.value(kSession);
  FilePlace next;   // of "+LINE": belongs to the file behind it
  const auto add = [&](const QString& name) {
    if (name.isEmpty()) return;
    FilePlace file = placeIn(QDir::isAbsolutePath(name) ? name : folder + u'/' + name);
    if (file.line == 0 && next.line > 0) {
      file.line = next.line;
      file.column = next.column;
    }
    next = {};
    line.files << file;
  };
  for (const QString& word : given.words) {
    const auto plus = plusLine.match(word);
    if (word == QLatin1String("-")) line.standardInput = true;
    else if (plus.hasMatch() && !fileIsThere(fullPath(word, folder)))
      next = {{}, number(plus.captured(1)), number(plus.captured(2))};
    else add(word);
  }
  for (const QString& name : given.behind) add(name);
  if (next.line > 0 && !line.files.isEmpty() && line.files.last().line == 0) {   // "FILE +LINE" is understood too
    line.files.last().line = next.line;
    line.files.last().column = next.column;
  }
  if (line.wait && line.files.isEmpty() && !line.standardInput && !line.help && !line.version)
    line.error = tr("--wait needs a file to wait for");
  return line;
}

QString argumentsHelp() {
  QString text = tr("Usage: zelkor [OPTION...] [FILE[:LINE[:COLUMN]] | +LINE FILE | -]...") + QLatin1String("\n\n");
  for (const Option& option : kOptions) text += helpLine(option.name, "", tr(option.help), 16);
  text += helpLine(kSession, "NAME", tr("open this session, beside a running editor"), 16);
  text += helpLine("-", "", tr("read a new document from standard input"), 16);
  text += helpLine("--", "", tr("all further arguments are file names"), 16);
  text += u'\n' + tr("A file whose name ends like a line number is opened by its name.") + u'\n';
  return text;
}
