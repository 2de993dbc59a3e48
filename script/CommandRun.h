// One run of a command string, as the statements see it, and the programs and saves among them.
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
  std::shared_ptr<clsLang> macroOf;   // the language whose macro it is; null: typed by the user
  bool inStatusBar = false;           // the status bar speaks of this one being on its way
  bool stopped = false;
  QString why;                          // it was stopped; empty: the user asked for it
  bool stopOnError = false;             // ONERROR STOP
  QPointer<process::Program> program;   // that it waits for
  std::optional<BusyGuard> busy;
  SearchState search;   // the user's while the run works, the run's while it waits
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

// Row, column and what else the frame shows of the caret and of what can be undone, after the program itself has edited.
void showState(frmDocument* document);

// While a statement takes long: shows how far it is (percent, -1: not known) and hears Esc. False: the run is to end.
bool goesOn(CommandRun& run, const QString& what, int percent);

// SHELL (watch) and SHELLW. The line is cut into arguments before the values of variables are put in, so that a value is never more
// than part of one; `replaced`: the values stand in the line already. With the settings' "save before programs run" a macro saves first.
void startProgram(CommandRun& run, const QString& commandLine, bool watch, bool replaced);

// What save() and, with `all`, saveAll() would write, as a text for a question; empty: nothing.
QString toBeSaved(const CommandRun& run, bool all);
// Saves the document where it is modified or has no file yet; it is asked for a name then. A failure stops the run.
void save(CommandRun& run);
// That, and every other modified document that has a file. evenUntouched: an untitled document without a change too.
void saveAll(CommandRun& run, bool evenUntouched);

// A setting, on unless the user has turned it off.
bool savesBeforePrograms();
void setSavesBeforePrograms(bool on);

}   // namespace runs
