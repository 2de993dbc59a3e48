// One run of a command string as the statements see it, with its programs and saves.
#pragma once

#include <QPointer>
#include <QString>
#include <memory>
#include <optional>

#include "base/Program.h"
#include "document/frmDocument.h"
#include "process/Process.h"
#include "script/RunGuards.h"
#include "script/Trust.h"
#include "script/mCMXParser.h"

class clsLang;

struct CommandRun {
  mCMXParser::Terms terms;
  QPointer<frmDocument> document;
  variables::Answers answers;
  bool showLog = false, logEdit = false, restoreCursor = false;
  std::optional<CmRange> saved;   // by SELGET
  CmRange caret;
  std::shared_ptr<clsLang> macroOf;   // the language of the macro; null: typed by the user
  bool inStatusBar = false;           // the status bar shows that this run is in progress
  bool stopped = false;
  QString why;                          // it was stopped; empty: the user asked for it
  bool stopOnError = false;             // ONERROR STOP
  QPointer<process::Program> program;   // that it waits for
  std::optional<BusyGuard> busy;
  SearchState search;   // holds the user's search while the run works, and the run's while it waits
  std::unique_ptr<RunStep> documentStep, logStep;
  std::unique_ptr<RunInput> input;

  void stop(const QString& reason) {
    stopped = true;
    why = reason;
  }
  // May its macro do this; may the value of a variable (Trust.h)? Asks if need be. False: the run is stopped.
  bool may(trust::Deed deed, const QString& what);
  bool mayBeValue(const QString& what, const QString& shown);
};

namespace runs {

// Updates row, column and other parts of the frame after the program itself has edited.
void showState(frmDocument* document);

// During a long statement: shows the progress (percent, -1: unknown) and handles Esc. False: the run must end.
bool goesOn(CommandRun& run, const QString& what, int percent);

// SHELL (watch) and SHELLW. The line is cut into arguments before the values of variables are put in, so that a value is never more
// than part of one; `replaced`: the values stand in the line already. With the settings' "save before programs run" a macro saves first.
void startProgram(CommandRun& run, const QString& commandLine, bool watch, bool replaced);

// What save() or (`all`) saveAll() would write, as a text for a question; empty: nothing.
QString toBeSaved(const CommandRun& run, bool all);
// Saves the document if it is modified or has no file yet; asks for a name in that case. A failure stops the run.
void save(CommandRun& run);
// The same and every other modified document that has a file. evenUntouched: also an untitled document without changes.
void saveAll(CommandRun& run, bool evenUntouched);

// A setting that is on unless the user has switched it off.
bool savesBeforePrograms();
void setSavesBeforePrograms(bool on);

}   // namespace runs
