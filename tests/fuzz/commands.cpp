// Q1: Command strings: any lines over any text end, report what means nothing, and leave the file as it is unless saving was asked
// for. All files are in memory; lines that would start programs are left out.
#include <QApplication>

#include "document/Batch.h"
#include "document/CommandLine.h"
#include "control/TextModel.h"
#include "tests/fuzz/Fuzz.h"
#include "tests/support/files/CrashFileSystem.h"
#include "tests/support/files/FaultyFileSystem.h"

using fuzz::check;

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  static int argc = 1;
  static char name[] = "fuzz";
  static char* argv[] = {name, nullptr};
  qputenv("QT_QPA_PLATFORM", "offscreen");
  qputenv("XDG_CONFIG_HOME", "/nowhere/config");
  qputenv("XDG_STATE_HOME", "/nowhere/state");
  new QApplication(argc, argv);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input in(data, size);
  const std::string text(in.take(in.byte()));
  const QString commands = toQString(in.rest());
  for (const std::string& word : programArguments(commands)) check(word.size() <= size * 3, "words come from the line");
  // Each paste may double the text.
  if (commands.contains(QLatin1String("shell"), Qt::CaseInsensitive) || commands.count(QLatin1String("paste"), Qt::CaseInsensitive) > 6 ||
      commands.count(QLatin1String("logtotext"), Qt::CaseInsensitive) > 6)
    return 0;
  testing_files::CrashFileSystem disk(testing_files::DiskState{{"/d/file.v", text}});
  const testing_files::UseFileSystem use(disk);
  BatchOptions options;
  options.commands = commands;
  options.files << QStringLiteral("/d/file.v");
  const int status = batch::run(options);
  check(status >= batch::kDone && status <= batch::kFailed, "a status of its own");
  if (!commands.contains(QLatin1String("logsave"), Qt::CaseInsensitive)) check(disk.now().at("/d/file.v") == text, "nothing is saved");
  return 0;
}
