#include "app/start/BatchArguments.h"

#include <QCoreApplication>
#include <cstdio>

#include "app/start/mGlobals.h"
#include "base/Options.h"
#include "script/Batch.h"

namespace {

constexpr OptionHelp kValues[] = {
    {"--command", "TEXT", QT_TRANSLATE_NOOP("BatchArguments", "run this command string")},
    {"--script", "FILE", QT_TRANSLATE_NOOP("BatchArguments", "run the command string in FILE")},
    {"--macro", "LANGUAGE/NAME", QT_TRANSLATE_NOOP("BatchArguments", "run a macro of a language")},
    {"--output", "DIR", QT_TRANSLATE_NOOP("BatchArguments", "write the texts into DIR")},
    {"--definitions", "FILE", QT_TRANSLATE_NOOP("BatchArguments", "another definition file than that of the settings")},
};
constexpr OptionHelp kSwitches[] = {
    {"--allow-programs", "", QT_TRANSLATE_NOOP("BatchArguments", "foreign macros, and values of variables, may start programs")},
    {"--replace", "", QT_TRANSLATE_NOOP("BatchArguments", "files in DIR may be replaced")},
    {"--save", "", QT_TRANSLATE_NOOP("BatchArguments", "write the changed texts back to their files")},
};

QString tr(const char* text) { return QCoreApplication::translate("BatchArguments", text); }

Options parse(const QStringList& arguments) {
  std::vector<OptionRow> rows{{"--batch"}, {"--help"}};
  for (const OptionRow& row : optionRows(kValues)) rows.push_back(row);
  for (const OptionRow& row : optionRows(kSwitches)) rows.push_back(row);
  Options given = parseCommandLine(arguments, rows);
  if (!given.error.isEmpty() || given.isOn("--help")) return given;
  if (given.has("--command") + given.has("--script") + given.has("--macro") != 1)
    given.error = tr("--batch needs one of --command, --script and --macro");
  else if (given.files().isEmpty()) given.error = tr("--batch needs a file to work on");
  else if (given.isOn("--replace") && !given.has("--output")) given.error = tr("--replace needs --output");
  else if (given.isOn("--save") && given.has("--output")) given.error = tr("--save and --output exclude each other");
  return given;
}

QString help() {
  QString text = tr("Usage: zelkor --batch OPTION... FILE...") + QLatin1String("\n\n");
  for (const OptionHelp& option : kValues) text += helpLine(option.name, option.value, tr(option.help));
  for (const OptionHelp& option : kSwitches) text += helpLine(option.name, option.value, tr(option.help));
  text += u'\n' +
          tr("Exit status: 0 success, 1 invalid command, 2 wrong usage, a stopped run, or a file that could not be\nread or "
             "saved.") +
          u'\n';
  return text;
}

}   // namespace

int runBatch(const QStringList& arguments) {
  const Options given = parse(arguments);
  const auto fail = [](const QString& why) {
    std::fprintf(stderr, "zelkor: %s\n", qPrintable(why));
    return batch::kFailed;
  };
  if (given.isOn("--help")) return std::fputs(qPrintable(help()), stdout) < 0 ? batch::kFailed : batch::kDone;
  if (!given.error.isEmpty()) return fail(given.error);
  const batch::Session session;
  QString error = readDefinitions(given.value("--definitions"));
  if (!error.isEmpty()) return fail(error);

  BatchOptions options;
  options.commands = given.value("--command");
  options.files = given.files();
  options.save = given.isOn("--save");
  options.outputFolder = given.value("--output");
  options.replace = given.isOn("--replace");
  options.allowPrograms = given.isOn("--allow-programs");
  if (given.has("--script")) batch::commandsFromFile(given.value("--script"), &options, &error);
  else if (given.has("--macro")) batch::commandsOfMacro(given.value("--macro"), &options, &error);
  return error.isEmpty() ? batch::run(options) : fail(error);
}
