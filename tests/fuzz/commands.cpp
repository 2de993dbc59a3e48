// Q1: Command strings: any lines over any text end, report what means nothing, leave a text whose undo leads back to the one before,
// and leave the file as it is unless saving was asked for. All files are in memory; lines that would start programs are left out.
#include <QApplication>

#include "control/commands/CommandTable.h"
#include "control/edit/TextModel.h"
#include "document/frmDocument.h"
#include "process/CommandLine.h"
#include "script/Batch.h"
#include "script/Statements.h"
#include "script/mCMXParser.h"
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

namespace {

// The lines that an input picks from the tables of the language, with arguments of its own.
QString picked(fuzz::Input& in) {
  QString lines;
  for (int left = 12; left > 0 && !in.empty(); --left) {
    const auto own = statements::verbs();
    const auto edit = commands();
    const std::size_t pick = in.byte() + 256u * (in.byte() % 2);
    QString line = pick < 300 ? QLatin1String(statements::kEditPrefix) + QLatin1String(edit[pick % edit.size()].name)
                              : QString(QLatin1String(own[pick % own.size()].name));
    if (pick >= 500) line = QLatin1String("cmdSELGET\ncmdSELECTAREA");
    lines += line + u' ' + toQString(in.until('\n')) + u'\n';
  }
  return lines;
}

// One run is one step: back it leads to the text before, and forward again to the text after.
void runOn(frmDocument& document, const QString& commands) {
  text::Document& edited = document.cmx->model()->document();
  const auto bytes = [&] { return edited.snapshot().bytes(); };
  const std::string before = bytes();
  const mCMXParser::Outcome outcome = mCMXParser::Run(0, 0, commands);
  check(outcome.ending != mCMXParser::Ending::refused, "it is run");
  check((outcome.line > 0) == (outcome.ending != mCMXParser::Ending::done), "a run that did not end well names its line");
  edited.checkInvariants();
  const std::string after = bytes();
  int steps = 0;
  for (; edited.canUndo(); ++steps) edited.undo();
  check(bytes() == before, "undo leads back");
  check(edited.undoWasDropped() || steps > 0 || before == after, "a change can be undone");
  for (; steps > 0; --steps) edited.redo();
  check(bytes() == after, "redo leads forward");
  edited.checkInvariants();
  const CmRange selection = document.cmx->GetSel(false);
  check(selection.StartLineNo >= 0 && selection.StartLineNo < document.cmx->LineCount() &&
            selection.EndLineNo < document.cmx->LineCount(),
        "the selection is in the text");
  const Editor& editor = document.cmx->editor();
  for (const text::ByteOffset at : {editor.selection().anchor, editor.selection().caret}) {
    check(editor.offsetOf(editor.positionOf(at)) == at, "the caret is between characters");
    check(at == text::ByteOffset(0) || at == editor.snapshot().size() || editor.snapshot().at(at) != '\n' ||
              editor.snapshot().at(at - 1) != '\r',
          "the caret is not inside CR LF");
  }
}

}   // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input in(data, size);
  const std::string text(in.take(in.byte()));
  const bool fromTables = in.byte() % 2 == 1;
  const QString commands = fromTables ? picked(in) : toQString(in.rest());
  const std::size_t length = fromQString(commands).size();
  for (const QString& word : programArguments(commands)) check(fromQString(word).size() <= length, "words come from the line");
  // Each paste may double the text.
  if (commands.contains(QLatin1String("shell"), Qt::CaseInsensitive) ||
      commands.count(QLatin1String("paste"), Qt::CaseInsensitive) > 6 ||
      commands.count(QLatin1String("logtotext"), Qt::CaseInsensitive) > 6)
    return 0;
  testing_files::CrashFileSystem disk(testing_files::DiskState{{"/d/file.v", text}});
  const testing_files::UseFileSystem use(disk);
  const int status = batch::eachDocument({QStringLiteral("/d/file.v")}, [&](frmDocument& document) {
    document.cmx->setTabSize(1 + int(text.size() % 8));
    document.cmx->setTabExpand(text.size() % 3 == 0);
    document.cmx->setAutoIndentMode(int(text.size() % 5 % 3));
    runOn(document, commands);
    return batch::kDone;
  });
  check(status == batch::kDone, "the file is read");
  // SAVE, SAVEALL and LOGSAVE write.
  if (!commands.contains(QLatin1String("save"), Qt::CaseInsensitive)) check(disk.now().at("/d/file.v") == text, "nothing is saved");
  return 0;
}
