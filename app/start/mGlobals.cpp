#include "app/start/mGlobals.h"

#include <QApplication>
#include <QHash>
#include <QTimer>
#include <QUrl>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <utility>

#include "app/boxes/HandbookWindow.h"
#include "app/compare/FolderCompare.h"
#include "app/find/FindFrame.h"
#include "app/folder/FolderParts.h"
#include "app/frame/FrameMenus.h"
#include "app/frame/frmMain.h"
#include "app/look/Icons.h"
#include "app/look/Look.h"
#include "app/session/Session.h"
#include "app/start/Arguments.h"
#include "app/start/BatchArguments.h"
#include "app/start/DiffArguments.h"
#include "app/start/FindArguments.h"
#include "app/start/Instance.h"
#include "app/start/LeftoverLook.h"
#include "app/start/PrintArguments.h"
#include "app/start/SessionEnd.h"
#include "app/start/StandardInput.h"
#include "base/Program.h"
#include "base/Strings.h"
#include "base/Workspace.h"
#include "base/dialog/Dialogs.h"
#include "base/dialog/FitScreen.h"
#include "base/dialog/Memory.h"
#include "base/dialog/PressAtOnce.h"
#include "base/dialog/TypedKeys.h"
#include "bridge/FileNames.h"
#include "change/Verbs.h"
#include "control/edit/TextModel.h"
#include "control/keys/KeyMacro.h"
#include "document/CMXRegistry.h"
#include "document/Languages.h"
#include "document/Recovery.h"
#include "document/frmDocument.h"
#include "document/frmLog.h"
#include "document/frmRegistry.h"
#include "language/Registration.h"
#include "language/ucCM.h"
#include "script/Trust.h"
#include "settings/modRegistry.h"
#include "text/file/FileIo.h"
#include "text/file/Leftovers.h"

namespace {

QString webHome;

constexpr int kFocusMs = 500;   // until the first window has the focus and shows its file name in the status bar

const QString kIniFile = QStringLiteral("INIFILE"), kCurDir = QStringLiteral("CURDIR");

QString defaultDefinitionFile() {
  return joinPath(joinPath(applicationFolder(), QStringLiteral("config")), QStringLiteral("Zelkor.ini"));
}

// A copy that only handed its command line over writes empty values; these count as missing.
void loadSettings(frmMain& frame) {
  using namespace modRegistry;
  frmRegistry& service = frmRegistry::instance();
  const bool known = KeyValid(kGlobalKey);
  useDefinitionFileOfSettings();
  if (known) {
    setWebHome(Text(kGlobalKey, QStringLiteral("WEBHOME")));
    service.followFolder(Text(kGlobalKey, kCurDir));
    CMXRegistry::loadMacros();
    CMXRegistry::loadHotKeys();
    showStoredLook();
  } else {
    NewKey(kGlobalKey);
    service.SetupMRUList();
  }
  InitLanguages();
  frame.menus().refreshKeys();
  service.GetProfile(frame, QStringLiteral("mnuFileMRU"));
  // What a crash must not take away is written when it changes.
  keyMacros().onRecorded = [] { CMXRegistry::saveMacros(); };
  languages().iniFileChanged = [] { SetText(kGlobalKey, kIniFile, languages().IniFile()); };
}

// A copy that only hands over does not load the settings but writes these at its end, like any other. So it reads them first.
void readWhatTheEndWrites() {
  languages().setIniFile(modRegistry::Text(modRegistry::kGlobalKey, kIniFile));
  CMXRegistry::loadMacros();
  CMXRegistry::loadHotKeys();
}

void writeSettings() {
  using namespace modRegistry;
  SetText(kGlobalKey, kIniFile, languages().IniFile());
  SetText(kGlobalKey, kCurDir, currentFolder());
  frmRegistry::instance().SetProfile();
  CMXRegistry::saveHotKeys();
  CMXRegistry::saveMacros();
  if (Flush() != 0)
    std::fprintf(stderr, "zelkor: %s\n", qPrintable(QCoreApplication::translate("mGlobals", "the settings could not be saved")));
}

int complain(const QString& text, int status) {
  std::fprintf(stderr, "zelkor: %s\n", qPrintable(plainForDisplay(text)));
  return status;
}

int listSessions() {
  for (const QString& name : Session::names())
    if (std::printf("%s\n", qPrintable(plainForDisplay(name))) < 0) return 1;
  return 0;
}

QList<HandOff> commandLinesOf(const Arguments& arguments, const QString& spooled) {
  QList<HandOff> lines;
  const QString token = qEnvironmentVariable("XDG_ACTIVATION_TOKEN");
  for (const FilePlace& file : arguments.files)
    lines << HandOff{file.path, token, arguments.readOnly, arguments.wait, false, file.line, file.column};
  if (!spooled.isEmpty()) lines << HandOff{spooled, token, arguments.readOnly, arguments.wait, true};
  return lines;
}

bool displayOpen = false;

// Qt reports which folder it uses instead of a missing one. That does not concern the user: standard error is for failures. Without
// a display Qt aborts; the user has to correct a wrong DISPLAY.
void tellMessage(QtMsgType type, const QMessageLogContext& context, const QString& text) {
  if (!displayOpen && type == QtFatalMsg) {
    complain(
        QStringLiteral("the display cannot be opened (DISPLAY is \"%1\", WAYLAND_DISPLAY is \"%2\", QT_QPA_PLATFORM is \"%3\")")
            .arg(qEnvironmentVariable("DISPLAY"), qEnvironmentVariable("WAYLAND_DISPLAY"), qEnvironmentVariable("QT_QPA_PLATFORM")),
        2);
    std::_Exit(2);
  }
  if (!displayOpen && QLatin1String(context.category).startsWith(QLatin1String("qt.qpa."))) return;   // said once, above
  if (!text.startsWith(QLatin1String("QStandardPaths: ")))
    std::fprintf(stderr, "%s\n", qPrintable(qFormatLogMessage(type, context, text)));
}

// The last resort for lack of memory: the current event is abandoned and the program continues.
class Application : public QApplication {
 public:
  using QApplication::QApplication;
  bool notify(QObject* receiver, QEvent* event) override {
    bool result = true;
    withMemory([&] { result = QApplication::notify(receiver, event); });
    return result;
  }
};

// Runs a function when the frame has been placed and painted, so that a question is shown in front of a complete window. Does not
// wait for a frame that is not visible (on another work space).
class OncePainted : public QObject {
 public:
  OncePainted(QWidget& frame, std::function<void()> what) : QObject(&frame), what_(std::move(what)) {
    frame.installEventFilter(this);
    startTimer(kUnseenMs);
  }

 protected:
  bool eventFilter(QObject* frame, QEvent* event) override {
    if (event->type() != QEvent::Paint) return false;
    frame->removeEventFilter(this);
    startTimer(0);   // after the parts of the frame
    return false;
  }
  void timerEvent(QTimerEvent*) override {
    if (!what_) return;
    deleteLater();
    std::exchange(what_, {})();
  }

 private:
  static constexpr int kUnseenMs = 2000;
  std::function<void()> what_;
};

}   // namespace

const std::shared_ptr<colLangs>& gLangs() { return languages().Languages(); }
const QString& gWebHome() { return webHome; }
void setWebHome(const QString& address) { webHome = address; }

void useDefinitionFileOfSettings() {
  const QString file = modRegistry::Text(modRegistry::kGlobalKey, kIniFile);
  languages().setIniFile(file.isEmpty() ? defaultDefinitionFile() : file);
}

QString readDefinitions(const QString& named) {
  QString error;
  if (named.isEmpty()) {
    useDefinitionFileOfSettings();
    languages().Init();
  } else {
    languages().setIniFile(fullPath(named));
    error = languages().ReadIniFile();
    if (!error.isEmpty())
      error = QCoreApplication::translate("mGlobals", "the definitions %1 cannot be read: %2").arg(plainForDisplay(named), error);
  }
  AddLanguages(*gLangs());
  return error;
}

void InitLanguages() {
  languages().Init();
  AddLanguages(*gLangs());
}

void ReloadLanguages() {
  Frame* main = frame();
  QHash<const frmDocument*, QString> chosen;
  for (const frmDocument* document : main ? main->documents() : QList<frmDocument*>())
    if (document->LanguageIsChosen()) chosen[document] = document->cmx->Language();   // empty: none
  RemoveLanguages();
  AddLanguages(*gLangs());
  if (!main) return;
  for (frmDocument* document : main->documents()) {
    const auto kept = chosen.constFind(document);
    const int index = kept == chosen.cend() || kept->isEmpty() ? 0 : languages().GetIndex(*kept);
    const bool stays = kept != chosen.cend() && (kept->isEmpty() || index > 0);
    document->SetLanguage(stays ? index : languageOfFile(document->CurrentFileTitle(), *document->cmx));
  }
  if (frmDocument* active = main->activeDocument()) active->focusWork();
}

frmDocument* OpenCommandLine(frmMain& frame, const QString& text) {
  QString name = text.trimmed();
  ReplaceAll(name, QStringLiteral("\""), {});
  if (name.isEmpty()) return nullptr;
  const FilePlace place = placeIn(name);
  return frame.openAt(place.path, place.line, place.column);
}

void openHandbook(QWidget& beside) {
  auto* window = beside.findChild<HandbookWindow*>();
  if (!window) window = new HandbookWindow(&beside);
  if (window->page().isEmpty() && !window->showPage(QStringLiteral("handbook.md"))) {
    MsgBox(QCoreApplication::translate("mGlobals", "The handbook is not installed"));
    return;
  }
  window->show();
  window->raise();
  window->activateWindow();
}

void openLanguageHelp(const frmDocument* about) {
  QString file = languages().GetHelp();
  if (file.isEmpty()) return;
  const bool isFile = fileIsThere(fullPath(file));
  const QString path = isFile ? file : QUrl(file).path();   // the part behind "?" or "#" does not belong to the name
  const bool page = path.endsWith(QLatin1String(".html")) || path.endsWith(QLatin1String(".htm"));
  const QString word = about ? about->GetCurrentWord() : QString();
  // The desktop might start a local file; a page is only shown.
  const QString scheme = QUrl(file).scheme();
  if (!page && scheme != QLatin1String("http") && scheme != QLatin1String("https") &&
      !trust::may(trust::Deed::start, file, *languages().Language(), languages()))
    return;
  QUrl url = isFile ? fileUrl(fullPath(file)) : QUrl(file);
  if (page && !word.isEmpty()) url.setFragment(word);
  if (!dialogs().openUrl(isFile || url.hasFragment() ? url.toString(QUrl::FullyEncoded) : file))
    MsgBox(QCoreApplication::translate("mGlobals", "The help file cannot be shown: %1").arg(file));
}

void openWebPage(const QString& page) {
  if (webHome.isEmpty()) return;
  const QString address = page.isEmpty() || webHome.endsWith(u'/') ? webHome + page : webHome + u'/' + page;
  if (!dialogs().openUrl(address)) MsgBox(QCoreApplication::translate("mGlobals", "%1 cannot be shown").arg(address));
}

int Main(int argc, char** argv) try {
  Workspace workspace;
  QStringList words;
  for (int i = 1; i < argc; ++i) words << toQString(argv[i]);
  const QString startFolder = currentFolder();   // names are relative to it; the settings will change it
  Arguments arguments = parseArguments(words, startFolder);
  if (!arguments.error.isEmpty()) return complain(arguments.error, 2);
  if (arguments.help) return std::fputs(qPrintable(argumentsHelp()), stdout) < 0;
  if (arguments.sessions) return listSessions();
  if (!arguments.session.isEmpty() && !Session::isThere(arguments.session))
    return complain(
        QCoreApplication::translate("mGlobals", "there is no session %1 (--sessions lists them)").arg(arguments.session), 2);
  if (arguments.version) return std::printf("%s %s\n", kApplicationTitle, ZELKOR_VERSION) < 0;
  if (arguments.find) return runFind(words);
  DiffTask diff;
  if (arguments.diff) {
    diff = parseDiffArguments(words, startFolder);
    if (diff.error.isEmpty() && !diff.help) diff.error = diffTrouble(diff);
    if (!diff.error.isEmpty()) return complain(diff.error, 2);
    if (diff.help) return std::fputs(qPrintable(diffHelp()), stdout) < 0;
  }
  // No display is needed, not even one that is named. The programs that a run starts may have their own.
  const bool windowless = arguments.batch || arguments.printPdf;
  const std::optional<QByteArray> platform =
      qEnvironmentVariableIsSet("QT_QPA_PLATFORM") ? std::optional(qgetenv("QT_QPA_PLATFORM")) : std::nullopt;
  if (windowless) qputenv("QT_QPA_PLATFORM", "offscreen");
#ifdef Q_OS_UNIX
  for (const char* place : {"QT_QPA_PLATFORM", "DISPLAY", "WAYLAND_DISPLAY"})
    if (!qEnvironmentVariableIsEmpty(place)) goto display;
  return complain(QStringLiteral("no display: set DISPLAY or WAYLAND_DISPLAY, or start it from a desktop session"), 2);
display:
#endif
  qInstallMessageHandler(&tellMessage);
  QCoreApplication::setApplicationName(QString::fromLatin1(kApplicationTitle));
  QCoreApplication::setApplicationVersion(QStringLiteral(ZELKOR_VERSION));
  QGuiApplication::setDesktopFileName(QStringLiteral("zelkor"));
  Application application(argc, argv);
  displayOpen = true;
  if (!windowless) useStyle();
  PressAtOnce pressAtOnce;
  application.installEventFilter(&pressAtOnce);
  FitScreen fitScreen;
  application.installEventFilter(&fitScreen);
  TypedKeys typedKeys;
  application.installEventFilter(&typedKeys);
  if (windowless) platform ? qputenv("QT_QPA_PLATFORM", *platform) : qunsetenv("QT_QPA_PLATFORM");
  AddFormatVerbs();
  text::setRecoveryFolder(fromQString(RecoverySession::usualFolder()));
  if (arguments.batch) return runBatch(words);
  if (arguments.printPdf) return runPrintPdf(words);

  StandardInput input;   // keeps its lock until the end
  if (arguments.standardInput) {
    input = spoolStandardInput();
    if (input.path.isEmpty()) return complain(QStringLiteral("standard input: ") + input.error, 2);
  }

  RecoverySession recovery;   // outlives the documents
  frmMain main;
  if (arguments.diff) {
    loadSettings(main);
    return runDiff(main, diff);
  }
  Instance instance(main);
  QObject::connect(&main, &frmMain::ended, &main, [&] {
    writeSettings();
    instance.resign();
    QCoreApplication::exit(0);
  });
  const QList<HandOff> lines = commandLinesOf(arguments, input.path);
  const Instance::Role role = instance.CheckPrevInst(lines, arguments.newInstance, arguments.wait, arguments.session);
  if (role != Instance::Role::first) {
    readWhatTheEndWrites();
    main.MDIForm_Unload();
    if (role == Instance::Role::failed && !input.path.isEmpty())
      complain(QCoreApplication::translate("mGlobals", "the text from standard input was kept in %1").arg(input.path), 1);
    return role == Instance::Role::handedOver ? 0 : 1;
  }
  loadSettings(main);
  main.SetupToolStatus();
  main.SetupMenus();
  main.menus().setCaption(QStringLiteral("mHelpAbout"), -1,
                          QCoreApplication::translate("mGlobals", "About %1 ...").arg(QString::fromLatin1(kApplicationTitle)),
                          true);
  main.restoreLog();
  main.folders().restore();
  Session& session = Session::of(main);
  if (!arguments.session.isEmpty()) session.begin(arguments.session);
  else if ((lines.isEmpty() || !Session::isKept()) && !arguments.noSession) session.beginLast();
  main.show();
  QTimer::singleShot(0, &main, [] { QApplication::setWindowIcon(icons::application()); });   // drawn after the text is visible
  SessionEnd sessionEnd(main);
  QObject::connect(&main, &frmMain::documentClosed, &main, [&](frmDocument* document) { instance.documentClosed(document); });
  FindFrame::of(main);       // sees lists of results that are opened
  FolderCompare::of(main);   // and those of pairs of files
  session.show();
  for (const HandOff& line : lines) {
    frmDocument* document = line.untitled ? main.takeIn(line.text) : main.openAt(line.text, line.line, line.column);
    if (document && line.readOnly) document->cmx->setReadOnly(true);
  }
  if (const QString& why = instance.aloneBecause(); !why.isEmpty()) {
    main.log()->AppendLog(why + QLatin1String("\r\n"));
    QTimer::singleShot(kFocusMs, &main, [why] { SetStatusText(why); });
  }
  recovery.onFailure([&main](const QString& reason) { main.showJournalWarning(reason); });
  LeftoverLook leftovers(main);
  new OncePainted(main, [&] {
    leftovers.begin();
    takeInLeftInput(main);
    FindFrame::of(main).tellInterrupted();
    session.restoreTexts();                                           // and offers what belongs to no session
    text::lookForLeftovers(fromQString(userConfigFolder()), false);   // for settings and definitions
  });
  const int status = application.exec();
  recovery.onFailure({});
  return status;
} catch (const std::bad_alloc&) { return complain(QStringLiteral("out of memory"), 2); }
