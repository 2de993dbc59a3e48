#include "script/CommandRun.h"

#include <QCoreApplication>

#include "base/Strings.h"
#include "base/dialog/Dialogs.h"
#include "control/find/UsersSearch.h"
#include "document/Frame.h"
#include "document/Languages.h"
#include "document/frmLog.h"
#include "process/CommandLine.h"
#include "settings/modRegistry.h"

using namespace Qt::StringLiterals;

bool CommandRun::may(trust::Deed deed, const QString& what) {
  stopped = stopped || (macroOf && !terms.allowPrograms && !trust::may(deed, what, *macroOf, languages()));
  return !stopped;
}

bool CommandRun::mayBeValue(const QString& what, const QString& shown) {
  stopped = stopped || (!terms.allowPrograms && !trust::mayBeValue(what, shown));
  return !stopped;
}

namespace runs {

namespace {

constexpr int kNotStarted = 127;   // the exit code that shells give
const QString kSaveFirst = u"SAVEBEFOREPROGRAMS"_s;

QString tr(const char* text) { return QCoreApplication::translate("mCMXParser", text); }

frmLog* log() { return frame() ? frame()->log() : nullptr; }

// Lets the user work while a program runs.
class Waiting {
 public:
  explicit Waiting(CommandRun& run) : run_(run), busy_(run.busy.has_value()) {
    if (run.documentStep) run.documentStep->beginWait(true);
    if (run.logStep) run.logStep->beginWait(false);
    if (run.input) run.input->setWaiting(true);
    run.busy.reset();
    std::swap(run.search, usersSearch());
    showState(run.document);
  }
  ~Waiting() {
    if (busy_) run_.busy.emplace();
    std::swap(run_.search, usersSearch());
    if (run_.input) run_.input->setWaiting(false);
    if (run_.documentStep) run_.documentStep->endWait();
    if (run_.logStep) run_.logStep->endWait();
  }

 private:
  CommandRun& run_;
  bool busy_;
};

QString waitText(quint32 result) {
  switch (result) {
    case process::kEnded: return tr("Normal completion.");
    case process::kTimedOut: return tr("Timed out!");
    case process::kAbandoned: return tr("Wait Abandoned!");
    default: return tr("Wait Error:");
  }
}

// Joins the words to a line again.
QString shownLine(const QStringList& arguments) {
  QStringList words;
  for (const QString& word : arguments) words << (word.isEmpty() || word.contains(u' ') ? u'"' + word + u'"' : word);
  return words.join(u' ');
}

// The written name of the program contains a value that others may have chosen.
bool isNamedByValue(const QString& commandLine) {
  const QStringList written = programArguments(commandLine);
  return !written.isEmpty() && variables::holdsForeignValue(written.first());
}

bool mayStart(CommandRun& run, const QStringList& arguments, bool namedByValue) {
  const QString shown = shownLine(arguments);
  return run.may(trust::Deed::start, shown) && (!namedByValue || run.mayBeValue(arguments.first(), shown));
}

// A new document with a file name that was never saved has its place too.
bool hasUnsavedFile(const frmDocument& document) { return !document.CurrentFileName().isEmpty() && document.DocumentModified(); }
bool needsSaving(const frmDocument& document) { return !document.DocumentHasName() || document.DocumentModified(); }

bool saveOne(frmDocument& document) {
  if (!needsSaving(document)) return true;
  // The frame knows the place of the text, and asks for a name.
  if (frame()->activeDocument() != &document) frame()->activate(&document);
  return frame()->saveActive();
}

}   // namespace

void showState(frmDocument* document) {
  if (!document || !frame() || frame()->activeDocument() != document) return;
  document->RowAndCol();
  frame()->setTemplatePanel(document->LanguageIndex() > 0 && frame()->isTemplateAtCaret(false));
  frame()->refreshToolbar();
}

bool savesBeforePrograms() { return modRegistry::Flag(modRegistry::kGlobalKey, kSaveFirst, true); }

void setSavesBeforePrograms(bool on) {
  modRegistry::NewKey(modRegistry::kGlobalKey);
  modRegistry::SetFlag(modRegistry::kGlobalKey, kSaveFirst, on);
}

QString toBeSaved(const CommandRun& run, bool all) {
  QStringList names;
  const auto add = [&](const frmDocument& document) {
    names << (document.CurrentFileName().isEmpty() ? document.CurrentFileTitle() : document.CurrentFileName());
  };
  if (run.document && needsSaving(*run.document)) add(*run.document);
  if (all && frame())
    for (const frmDocument* document : frame()->documents())
      if (document != run.document && hasUnsavedFile(*document)) add(*document);
  return names.join(u", "_s);
}

void save(CommandRun& run) {
  if (frame() && run.document && !saveOne(*run.document)) run.stop(tr("the document was not saved"));
}

void saveAll(CommandRun& run, bool evenUntouched) {
  if (run.document && (evenUntouched || run.document->DocumentModified())) save(run);
  if (!frame() || run.stopped) return;
  const QList<frmDocument*> open = frame()->documents();
  const QPointer<frmDocument> active = frame()->activeDocument();
  for (const QPointer<frmDocument>& document :
       QList<QPointer<frmDocument>>(open.begin(), open.end())) {   // each may ask a question, and disappear meanwhile
    if (!document || document == run.document || !hasUnsavedFile(*document)) continue;
    const QString title = document->CurrentFileTitle();
    const bool saved = document->DocumentHasName() ? document->SaveDocumment(document->CurrentFileName()) : saveOne(*document);
    if (active && frame()->activeDocument() != active) frame()->activate(active);
    if (!saved) return run.stop(tr("%1 was not saved").arg(plainForDisplay(title, 100)));
  }
}

bool goesOn(CommandRun& run, const QString& what, int percent) {
  const QString part = percent < 0 ? QString() : u" %1 %"_s.arg(percent);
  SetStatusText(what + part + tr(" (Esc stops)"));
  run.inStatusBar = true;
  if (run.input) run.input->lookIn();
  return !run.stopped;
}

void startProgram(CommandRun& run, const QString& commandLine, bool watch, bool replaced) {
  const auto substitute = [&](QString& text) {
    if (!replaced) variables::substitute(text, run.document, run.answers);
  };
  const auto typedAt = [&](QStringView rest, qsizetype* length) {
    return replaced ? nullptr : variables::answerAt(rest, run.answers, length);
  };
  const bool namedByValue = !replaced && isNamedByValue(commandLine);
  const QStringList asked = programArguments(commandLine, substitute, typedAt);
  if (!mayStart(run, asked, namedByValue)) return;
  if (run.macroOf && run.terms.interactive && savesBeforePrograms()) saveAll(run, false);
  if (run.stopped) return;
  // A document without a name has one now.
  const QStringList arguments = programArguments(commandLine, substitute, typedAt);
  if (arguments != asked && !mayStart(run, arguments, namedByValue)) return;
  std::vector<std::string> bytes;
  for (const QString& argument : arguments) bytes.push_back(fromQString(argument));
  const QObject here;   // a program that is left running outlives the run
  const auto started = [&](process::Program& program) {
    run.program = &program;
    QObject::connect(&program, &process::Program::finished, &here, [&run](int exitCode) { run.answers.result = exitCode; });
    if (frmLog* const window = log()) {
      window->watch(program);
      QObject::connect(
          &program, &process::Program::output, window,
          [] {
            if (frame()) frame()->showLog();
          },
          Qt::SingleShotConnection);
    }
  };
  quint32 result = 0;
  {
    const Waiting waiting(run);
    result = watch ? process::LaunchAndWatch(bytes, process::kNormalWindow, started)
                   : process::LaunchAndWait(bytes, process::kNormalWindow, {}, started);
  }
  int error = 0;
  QString failure;
  if (process::startFailed(result, &error)) {
    run.answers.result = kNotStarted;
    failure = tr("%1: %2").arg(commandLine, QString::fromStdString(text::errorText(error)));
    const QString about = frame() ? frame()->reportsAbout() : QString();
    if (frmLog* const window = log()) window->AppendLog((about.isEmpty() ? about : about + u": "_s) + failure + u"\r\n"_s);
    run.showLog = true;
    MsgBox(tr("Command Failure"));
  } else {
    if (!watch) SetStatusText(waitText(result));
    if (run.answers.result != 0)
      failure = tr("%1: exit code %2").arg(plainForDisplay(arguments.first(), 200)).arg(run.answers.result);
  }
  if (!watch && result == process::kAbandoned) run.stopped = true;
  if (!failure.isEmpty() && run.stopOnError && !run.stopped) {
    run.showLog = true;
    run.stop(failure);
  }
}

}   // namespace runs
