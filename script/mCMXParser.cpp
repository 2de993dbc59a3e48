#include "script/mCMXParser.h"

#include <QCoreApplication>
#include <QRegularExpression>
#include <algorithm>
#include <optional>

#include "base/Strings.h"
#include "base/Workspace.h"
#include "base/dialog/Dialogs.h"
#include "bridge/FileNames.h"
#include "bridge/LongWork.h"
#include "control/find/UsersSearch.h"
#include "control/keys/KeyCommands.h"
#include "document/Frame.h"
#include "document/Languages.h"
#include "document/frmLog.h"
#include "document/frmRegistry.h"
#include "language/ucCM.h"
#include "script/CommandRun.h"
#include "script/Statements.h"
#include "script/TextReports.h"

using namespace Qt::StringLiterals;

namespace mCMXParser {

namespace {

using statements::Code;

QString tr(const char* text) { return QCoreApplication::translate("mCMXParser", text); }

struct Runs {
  CommandRun* current = nullptr;   // null: none
};
CommandRun*& current() { return Workspace::current().part<Runs>().current; }

frmDocument* documentOf(const CommandRun& run) { return run.document.data(); }
frmDocument* activeDocument() { return current() ? documentOf(*current()) : frame() ? frame()->activeDocument() : nullptr; }
frmLog* log() { return frame() ? frame()->log() : nullptr; }

void writeLog(CommandRun& run, const QString& text) {
  if (frmLog* const window = log()) window->AppendLog(text);
  run.showLog = true;
}

// A number as the language reads it: the digits at the beginning, 0 if there are none.
qint64 numberIn(const QString& text) {
  static const QRegularExpression number(u"^\\s*[-+]?\\d+(\\.\\d*)?"_s);
  const double value = number.match(text).captured().trimmed().toDouble();
  return qint64(std::clamp(value, -9e15, 9e15));
}

CodeMax* target(const CommandRun& run) {
  if (run.logEdit) return log() ? log()->cmx : nullptr;
  frmDocument* const document = documentOf(run);
  return document ? document->cmx : nullptr;
}

bool selectionStatement(CommandRun& run, CodeMax& cmx, const QString& name) {
  if (name == "SELGET"_L1) {
    run.saved = cmx.GetSel(false);
  } else if (name == "SELSET"_L1) {
    if (run.saved) cmx.SetSel(*run.saved);
  } else if (name == "SELECTAREA"_L1) {
    if (!run.saved) return true;
    CmRange from = *run.saved;
    const CmRange to = cmx.GetSel(true);
    if (std::pair(from.StartLineNo, from.StartColNo) > std::pair(from.EndLineNo, from.EndColNo)) {
      std::swap(from.StartLineNo, from.EndLineNo);
      std::swap(from.StartColNo, from.EndColNo);
    }
    cmx.SetSel({from.StartLineNo, from.StartColNo, to.EndLineNo, to.EndColNo, false});
  } else {
    return false;
  }
  return true;
}

bool runEditCommand(CommandRun& run, const statements::Split& statement) {
  constexpr qsizetype kPrefix = 3;   // any letters before the name of an edit command
  if (statement.verb.size() < kPrefix) return false;
  const QString name = statement.verb.mid(kPrefix);
  CodeMax* const cmx = target(run);
  if (!cmx) return true;
  if (selectionStatement(run, *cmx, name)) return true;
  const Command* const command = scriptCommandByName(name);
  if (!command) return false;
  QVariant argument;
  if (command->argument == CommandArgument::number) argument = numberIn(statement.argument);
  if (command->argument == CommandArgument::text) argument = statement.argument;
  const auto is = [&](Cmd wanted) { return command->id == static_cast<int>(wanted); };
  if (is(Cmd::WINDOWSTART) || is(Cmd::DOCUMENTSTART)) argument = 0;
  if (!run.terms.interactive && (is(Cmd::FIND) || is(Cmd::FINDREPLACE))) return true;
  return cmx->ExecuteCmd(command->id, argument);
}

QString logFile(const CommandRun& run, const QString& argument) {
  if (!argument.isEmpty()) return argument;
  const frmDocument* const document = documentOf(run);
  const QString folder = document && document->DocumentHasName() && !isInstalled(document->CurrentFileDir())
                             ? document->CurrentFileDir()
                             : currentFolder();
  return folder + u"/zelkor.log"_s;
}

// replaced: the line holds the values of its variables.
bool execute(CommandRun& run, const QString& line, bool replaced = false) {
  const statements::Split statement = statements::split(line);
  const QString& argument = statement.argument;
  if (!argument.trimmed().isEmpty() && !statements::takesArgument(statement.verb)) return false;
  frmDocument* const document = documentOf(run);
  frmLog* const window = log();
  switch (statements::codeOf(statement.verb)) {
    case Code::logColor:
      if (window && document) window->cmx->setLanguage(document->cmx->Language());
      return true;
    case Code::logClear:
      if (window) window->Clear();
      return true;
    case Code::logToText:
      if (window && document) document->cmx->InsertText(window->Text(), document->CurrentPosition());
      return true;
    case Code::logInsertFile:
      if (window) window->InsertFile();
      run.showLog = true;
      return true;
    case Code::logEdit: run.showLog = run.logEdit = true; return true;
    case Code::normalEdit: run.logEdit = false; return true;
    case Code::logSave:
      if (const QString path = logFile(run, argument); window && run.may(trust::Deed::write, path)) window->SaveDocumment(path);
      return true;
    case Code::shell:
    case Code::shellW: runs::startProgram(run, argument, statements::codeOf(statement.verb) == Code::shell, replaced); return true;
    case Code::save:
    case Code::saveAll: {
      const bool all = statements::codeOf(statement.verb) == Code::saveAll;
      const QString what = runs::toBeSaved(run, all);
      if (what.isEmpty() || !run.may(trust::Deed::write, what)) return true;
      all ? runs::saveAll(run, true) : runs::save(run);
      return true;
    }
    case Code::onError:
      run.stopOnError = argument.trimmed().compare("STOP"_L1, Qt::CaseInsensitive) == 0;
      return run.stopOnError || argument.trimmed().compare("CONTINUE"_L1, Qt::CaseInsensitive) == 0;
    case Code::echo: writeLog(run, argument.endsWith(u';') ? argument.chopped(1) : argument + u"\r\n"_s); return true;
    case Code::usage:
      if (window) window->setUsageOf(document);
      if (document) writeLog(run, reports::usage(*document, argument, frame() ? frame()->reportsAbout() : QString()));
      run.restoreCursor = true;
      return true;
    case Code::fileInfo: writeLog(run, FileInformation() + u"\r\n"_s); return true;
    case Code::invalid: return false;
    case Code::editCommand: return runEditCommand(run, statement);
    case Code::added: {
      CodeMax* const cmx = target(run);
      if (statements::addedWritesFiles(statement.verb) && !run.may(trust::Deed::write, argument)) return true;
      return !cmx || statements::addedRun(statement.verb)(*cmx, argument);
    }
  }
  return false;
}

bool startsPrograms(const QString& line) {
  const Code code = statements::codeOf(statements::split(line).verb);
  return code == Code::shell || code == Code::shellW;
}

// Processes a written line: prompts, then variables, then the statement. Text typed by the user is part of the line. The value of a
// variable may also be the whole line, but then it starts a program only after a question.
bool runLine(CommandRun& run, QString& line) {
  variables::expandPrompts(line, run.answers);
  if (run.stopped) return true;   // by the end of the session, while it asked
  if (startsPrograms(line)) return execute(run, line);
  QString typed = line;
  variables::substituteAnswers(typed, run.answers);
  if (startsPrograms(typed)) return execute(run, line = typed);
  variables::substitute(line, documentOf(run), run.answers);
  const auto reachesOut = [](const QString& text) {
    const Code code = statements::codeOf(statements::split(text).verb);
    return startsPrograms(text) || code == Code::logSave || code == Code::save || code == Code::saveAll ||
           statements::addedWritesFiles(statements::split(text).verb);
  };
  if (reachesOut(line) && !reachesOut(typed)) run.mayBeValue(line, line);
  return run.stopped || execute(run, line, true);
}

void reportInvalid(int language, int macro, const QString& line, bool interactive) {
  const QString text = InvalidCommandText(line);
  if (language > 0 && macro > 0 && frame()) frame()->showMacro(language, macro, text);
  MsgBox(plainForDisplay(text));
  // Without a window, box and log go to the same place: print it once.
  if (frmLog* const window = log(); window && interactive)
    window->AppendLog(u"\r\n"_s + tr("Invalid Command %1").arg(line), frmLog::Stream::errors);
}

Outcome runLines(CommandRun& run, const QString& commands) {
  Outcome outcome;
  const QStringList lines = toCrLf(commands).split(u"\r\n"_s);
  for (const QString& written : lines) {
    ++outcome.line;
    if (written.isEmpty()) continue;
    if (run.input) run.input->lookIn();
    QString line = written;
    const bool good = run.stopped || runLine(run, line);
    if (run.stopped || !run.document) {
      outcome.ending = Ending::stopped;
      outcome.text = run.why;
      return outcome;
    }
    if (!good) {
      outcome.ending = Ending::invalid;
      outcome.text = line;
      return outcome;
    }
  }
  outcome.line = 0;
  return outcome;
}

// Makes a run the current one until it ends in any way.
class Current {
 public:
  explicit Current(CommandRun& run) { current() = &run; }
  ~Current() { current() = nullptr; }
  Current(const Current&) = delete;
  Current& operator=(const Current&) = delete;
};

}   // namespace

QString InvalidCommandText(const QString& line) { return tr("Invalid Command : %1").arg(line); }

Outcome Run(int language, int macro, const QString& commands, Terms terms) {
  frmDocument* const document = frame() ? frame()->activeDocument() : nullptr;
  if (current()) {
    SetStatusText(tr("A command string is running already"));
    current()->inStatusBar = true;
  }
  if (current() || !document) return {Ending::refused, 0, {}};

  CommandRun run;
  std::optional<Current> mine(run);
  run.terms = terms;
  run.document = document;
  if (macro > 0 && language > 0 && language <= languages().Languages()->Count())
    run.macroOf = languages().Languages()->Item(language);
  run.caret = document->cmx->GetSel(false);
  run.busy.emplace();
  std::swap(run.search, usersSearch());   // dialogs and runs have separate search settings
  run.documentStep = std::make_unique<RunStep>(document->cmx);
  run.logStep = std::make_unique<RunStep>(log() ? log()->cmx : nullptr);
  run.input = std::make_unique<RunInput>();
  QObject::connect(run.input.get(), &RunInput::escape, run.input.get(), &Stop);
  QObject::connect(run.input.get(), &RunInput::touched, run.input.get(), [&run] { run.documentStep->closeStep(); });
  QObject::connect(QCoreApplication::instance(), &QCoreApplication::aboutToQuit, run.input.get(), &Stop);

  const Outcome outcome = [&] {
    const LongWork::Watch watch([&run](const QString& what, int percent) { return runs::goesOn(run, what, percent); });
    return runLines(run, commands);
  }();

  if (run.document && run.restoreCursor) run.document->cmx->SetSel(run.caret);
  run.input.reset();
  run.logStep.reset();
  run.documentStep.reset();
  if (run.document) run.document->update();
  if (outcome.ending == Ending::invalid) reportInvalid(language, macro, outcome.text, terms.interactive);
  if (run.inStatusBar) SetStatusText({});   // it runs no more
  const QString stopped = tr("The command string was stopped");
  if (outcome.ending == Ending::stopped) SetStatusText(outcome.text.isEmpty() ? stopped : stopped + u": "_s + outcome.text);
  std::swap(run.search, usersSearch());
  run.busy.reset();
  mine.reset();
  runs::showState(run.document);
  if (run.showLog && frame()) frame()->showLog();
  return outcome;
}

bool isRunning() { return current() != nullptr; }
bool isBetweenStatements() { return current() && current()->input && current()->input->isLooking(); }

void Stop() {
  if (!current()) return;
  current()->stopped = true;
  if (current()->program) current()->program->stop();
}

void SubstituteVariables(QString& text, const variables::Answers& answers) {
  variables::substitute(text, activeDocument(), answers);
}

QString FileInformation() {
  frmDocument* const document = activeDocument();
  return document ? reports::fileInformation(*document) : QString();
}

}   // namespace mCMXParser
