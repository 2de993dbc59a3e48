#include "app/BatchArguments.h"

#include <QCoreApplication>
#include <cstdio>

#include "app/mGlobals.h"
#include "document/Batch.h"

namespace {

struct BatchArguments {
  bool help = false, save = false, allowPrograms = false, replace = false;
  QString command, script, macro, output, definitions;
  QStringList files;
  QString error;
};

struct ValueOption {
  const char *name, *value;
  QString BatchArguments::*target;
  const char* help;
};
constexpr ValueOption kValues[] = {
    {"--command", "TEXT", &BatchArguments::command, QT_TRANSLATE_NOOP("BatchArguments", "run this command string")},
    {"--script", "FILE", &BatchArguments::script, QT_TRANSLATE_NOOP("BatchArguments", "run the command string in FILE")},
    {"--macro", "LANGUAGE/NAME", &BatchArguments::macro, QT_TRANSLATE_NOOP("BatchArguments", "run a macro of a language")},
    {"--output", "DIR", &BatchArguments::output, QT_TRANSLATE_NOOP("BatchArguments", "write the texts into DIR")},
    {"--definitions", "FILE", &BatchArguments::definitions,
     QT_TRANSLATE_NOOP("BatchArguments", "language definitions other than those of the settings")},
};

QString tr(const char* text) { return QCoreApplication::translate("BatchArguments", text); }

BatchArguments parse(const QStringList& arguments) {
  BatchArguments parsed;
  bool onlyFiles = false;
  for (qsizetype i = 0; i < arguments.size() && parsed.error.isEmpty(); ++i) {
    const QString& argument = arguments[i];
    const QString name = argument.section(u'=', 0, 0);
    const auto* option = std::find_if(std::begin(kValues), std::end(kValues),
                                      [&](const ValueOption& o) { return name == QLatin1String(o.name); });
    if (onlyFiles || !argument.startsWith(u'-')) parsed.files << argument;
    else if (argument == QLatin1String("--")) onlyFiles = true;
    else if (argument == QLatin1String("--batch")) continue;
    else if (argument == QLatin1String("--help")) parsed.help = true;
    else if (argument == QLatin1String("--save")) parsed.save = true;
    else if (argument == QLatin1String("--replace")) parsed.replace = true;
    else if (argument == QLatin1String("--allow-programs")) parsed.allowPrograms = true;
    else if (option == std::end(kValues)) parsed.error = tr("unknown option %1").arg(argument);
    else if (argument.contains(u'=')) parsed.*(option->target) = argument.mid(argument.indexOf(u'=') + 1);
    else if (++i < arguments.size()) parsed.*(option->target) = arguments[i];
    else parsed.error = tr("%1 needs a value").arg(argument);
  }
  if (!parsed.error.isEmpty() || parsed.help) return parsed;
  const int sources = !parsed.command.isEmpty() + !parsed.script.isEmpty() + !parsed.macro.isEmpty();
  if (sources != 1) parsed.error = tr("--batch needs one of --command, --script and --macro");
  else if (parsed.files.isEmpty()) parsed.error = tr("--batch needs a file to work on");
  else if (parsed.replace && parsed.output.isEmpty()) parsed.error = tr("--replace needs --output");
  else if (parsed.save && !parsed.output.isEmpty()) parsed.error = tr("--save and --output exclude each other");
  return parsed;
}

QString help() {
  QString text = tr("Usage: zelkor --batch OPTION... FILE...") + QLatin1String("\n\n");
  const auto line = [&](const QString& option, const QString& what) {
    text += QLatin1String("  ") + option.leftJustified(24) + what + u'\n';
  };
  for (const ValueOption& option : kValues)
    line(QString::fromLatin1(option.name) + u' ' + QString::fromLatin1(option.value), tr(option.help));
  line(QStringLiteral("--allow-programs"), tr("macros from elsewhere, and values of variables, may start programs"));
  line(QStringLiteral("--replace"), tr("files in DIR may be replaced"));
  line(QStringLiteral("--save"), tr("write the changed texts back to their files"));
  text += u'\n' + tr("Exit status: 0 done, 1 invalid command, 2 wrong use, a run that was stopped, or a file that could\nnot be read or saved.") + u'\n';
  return text;
}

}  // namespace

int runBatch(const QStringList& arguments) {
  const BatchArguments given = parse(arguments);
  if (given.help) return std::fputs(qPrintable(help()), stdout) < 0 ? batch::kFailed : batch::kDone;
  const auto fail = [](const QString& why) {
    std::fprintf(stderr, "zelkor: %s\n", qPrintable(why));
    return batch::kFailed;
  };
  if (!given.error.isEmpty()) return fail(given.error);
  const batch::Session session;
  QString error = readDefinitions(given.definitions);
  if (!error.isEmpty()) return fail(error);

  BatchOptions options;
  options.commands = given.command;
  options.files = given.files;
  options.save = given.save;
  options.outputFolder = given.output;
  options.replace = given.replace;
  options.allowPrograms = given.allowPrograms;
  if (!given.script.isEmpty()) batch::commandsFromFile(given.script, &options, &error);
  else if (!given.macro.isEmpty()) batch::commandsOfMacro(given.macro, &options, &error);
  return error.isEmpty() ? batch::run(options) : fail(error);
}
