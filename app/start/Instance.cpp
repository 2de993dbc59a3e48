#include "app/start/Instance.h"

#include <QApplication>
#include <QCryptographicHash>
#include <QFileInfo>
#include <QMessageBox>
#include <QProcess>
#include <QScreen>
#include <QStyle>
#include <QThread>
#include <algorithm>
#include <cstdio>

#include "app/frame/frmMain.h"
#include "app/look/Look.h"
#include "app/start/mGlobals.h"
#include "base/Program.h"
#include "base/Strings.h"
#include "base/dialog/Dialogs.h"
#include "document/frmDocument.h"
#include "handoff/Rendezvous.h"
#include "script/mCMXParser.h"
#include "text/file/FileIo.h"

#ifdef Q_OS_UNIX
#include <unistd.h>
#endif

namespace {

constexpr int kStartWaitMs = 600;        // for a first copy that holds the lock but does not listen yet
constexpr int kBusyWaitMs = 600;         // for a first copy that cannot act now
constexpr int kProgramStartMs = 15000;   // for a first copy started by this one
constexpr int kRetryMs = 20;
constexpr int kAnswerWaitMs = 10000;   // until the message is taken; then asks the user whether to keep waiting

// Sessions of one user on different displays do not share a frame.
QString displayName() {
  const QString display =
      qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY") ? qEnvironmentVariable("DISPLAY") : qEnvironmentVariable("WAYLAND_DISPLAY");
  return QGuiApplication::platformName() + u'_' + display;
}

QString tr(const char* text) { return QCoreApplication::translate("Instance", text); }

bool windowsAreSeen() {
  const QString platform = QGuiApplication::platformName();
  return platform != QLatin1String("offscreen") && platform != QLatin1String("minimal");
}

// While it lives, boxes of this program are shown in the lower right corner of the screen. The dialog of the other copy, which the
// user must answer first, is in the middle of its window.
class BoxInCorner : public QObject {
 public:
  BoxInCorner() { qApp->installEventFilter(this); }
  bool eventFilter(QObject* object, QEvent* event) override {
    auto* box = event->type() == QEvent::Show ? qobject_cast<QMessageBox*>(object) : nullptr;
    if (!box) return false;
    const QRect room = box->screen()->availableGeometry();
    const int border = box->style()->pixelMetric(QStyle::PM_TitleBarHeight);   // drawn by the window manager
    box->move(room.bottomRight() - QPoint(box->width() + border, box->height() + 2 * border));
    return false;
  }
};

// A user who typed the command reads the text in the terminal; one who started it from the desktop sees a box.
void tell(const QString& text, const QList<HandOff>& notOpened) {
  constexpr qsizetype kNamed = 5;
  std::fprintf(stderr, "zelkor: %s\n", qPrintable(text));
  QStringList names;
  for (const HandOff& one : notOpened)
    if (!one.text.isEmpty()) names << plainForDisplay(one.text);
  for (const QString& name : names) std::fprintf(stderr, "zelkor: %s\n", qPrintable(tr("not opened: %1").arg(name)));
  if (!windowsAreSeen()) return;
  QString shown = text;
  if (!names.isEmpty())
    shown += QLatin1String("\r\n\r\n") + tr("Not opened:") + QLatin1String("\r\n") +
             names.first(std::min(kNamed, names.size())).join(QLatin1String("\r\n"));
  if (names.size() > kNamed) shown += QLatin1String("\r\n") + tr("and %1 more").arg(names.size() - kNamed);
  showStoredLook();
  const BoxInCorner corner;
  MsgBox(shown, QString::fromLatin1(kApplicationTitle), Icon::exclamation);
}

// Starts the first copy in its own session, so that it outlives this one and Ctrl+C here does not end it.
class StartedCopy : public QProcess {
 public:
  explicit StartedCopy(const QString& session) {
#ifdef Q_OS_UNIX
    setChildProcessModifier([] { ::setsid(); });
#endif
    setProcessChannelMode(ForwardedChannels);
    setStandardInputFile(nullDevice());
    const QStringList arguments =
        session.isEmpty() ? QStringList{QStringLiteral("--no-session")} : QStringList{QStringLiteral("--session"), session};
    start(QCoreApplication::applicationFilePath(), arguments);
  }
  ~StartedCopy() override { setProcessState(NotRunning); }   // a running process is released, not ended
  bool hasEnded(int waitMs) { return state() == NotRunning || waitForFinished(waitMs); }
};

bool goOnWaiting() {
  std::fprintf(stderr, "zelkor: %s\n", qPrintable(tr("the running editor does not answer yet")));
  return !windowsAreSeen() || MsgBox(tr("The running editor does not answer. Do you want to keep waiting?"),
                                     QString::fromLatin1(kApplicationTitle), Icon::question, Buttons::yesNo) == Answer::yes;
}

}   // namespace

Instance::Instance(frmMain& frame)
    : frame_(frame),
      Msghook1([this](quint64 connection, const HandOff& handOff) { return Msghook1_Message(connection, handOff); }) {
  Msghook1.actOnlyWhen([] { return !mCMXParser::isBetweenStatements(); });
}

Instance::~Instance() { resign(); }

void Instance::resign() {
#ifdef Q_OS_WIN
  copydata::receive({});
#endif
  Msghook1.stop();   // before the lock is released: senders that are disconnected now look for the next first copy
  if (place_) place_->resign();
}

bool Instance::HookCopyData() {
#ifdef Q_OS_WIN
  copydata::receive([this](const QString& text) { OpenCommandLine(frame_, text); });   // from programs that do not know the socket
#endif
  return Msghook1.listen(place_->socketPath());
}

Instance::Role Instance::CheckPrevInst(const QList<HandOff>& commandLines, bool standAlone, bool waits, const QString& session) {
  const QByteArray ofSession = QCryptographicHash::hash(session.toUtf8(), QCryptographicHash::Sha256).toHex().left(12);
  place_ = std::make_unique<Rendezvous>(session.isEmpty() ? displayName() : displayName() + u'_' + QString::fromLatin1(ofSession));
  frame_.setWindowTitle(QString::fromLatin1(kApplicationTitle));
  qsizetype next = 0;
  std::unique_ptr<StartedCopy> started;
  for (int waited = 0; place_->usable(); waited += kRetryMs) {
    if (!started && place_->becomeFirst()) {
      if (!waits || standAlone) break;
      place_->resign();
      started = std::make_unique<StartedCopy>(session);
      continue;
    }
    if (standAlone) return Role::first;
    switch (HandOffCommandLine(place_->socketPath(), commandLines, &next)) {
      case HandOffAnswer::acted: return Role::handedOver;
      case HandOffAnswer::ended:   // the sender is a program, and a box should not stop it
        std::fprintf(stderr, "zelkor: %s\n", qPrintable(tr("the editor ended before the files were closed")));
        return Role::failed;
      case HandOffAnswer::gone:
        if (waited < (started ? kProgramStartMs : kStartWaitMs)) {
          if (!started) {
            QThread::msleep(kRetryMs);
          } else if (started->hasEnded(kRetryMs)) {
            std::fprintf(stderr, "zelkor: %s\n",
                         qPrintable(tr("the editor that was started for the files has ended; this one replaces it")));
            started.reset();
            waits = false;
          }
          continue;
        }
        aloneBecause_ = tr("This editor runs on its own: another one is running but cannot be reached");
        return Role::first;
      case HandOffAnswer::busy:
        if (waited < kBusyWaitMs) {   // a file that loads holds the other copy for a moment only
          QThread::msleep(kRetryMs);
          continue;
        }
        tell(tr("The target editor is currently occupied. Please close any dialogs to continue"), commandLines.mid(next));
        return Role::failed;
      case HandOffAnswer::refused:
        tell(tr("The running editor could not open the files"), commandLines.mid(next));
        return Role::failed;
      case HandOffAnswer::silent:
        tell(tr("The running editor did not answer. It may still open the files"), commandLines.mid(next));
        return Role::failed;
    }
  }
  const bool listens = place_->isFirst() && HookCopyData();
  if (!listens && !standAlone)
    aloneBecause_ = tr("This editor stands alone: %1").arg(place_->usable() ? Msghook1.errorString() : place_->failure());
  return Role::first;
}

QString Instance::socketPath() const { return place_ ? place_->socketPath() : QString(); }

HandOffAnswer Instance::HandOffCommandLine(const QString& socket, const QList<HandOff>& commandLines, qsizetype* next) {
  MsgSender sender;
  sender.setPatience(kAnswerWaitMs, goOnWaiting);
  if (!sender.connectTo(socket)) return HandOffAnswer::gone;
  QList<HandOff> all = commandLines;
  if (all.isEmpty()) all.append(HandOff{{}, qEnvironmentVariable("XDG_ACTIVATION_TOKEN"), false, false, false});
  int waitedFor = 0;
  for (; *next < all.size(); ++*next) {
    const HandOffAnswer answer = sender.send(all[*next]);
    if (answer != HandOffAnswer::acted) return answer;
    waitedFor += all[*next].wait;
  }
  while (waitedFor-- > 0)
    if (!sender.waitForClosed()) return HandOffAnswer::ended;
  return HandOffAnswer::acted;
}

HandOffReply Instance::Msghook1_Message(quint64 connection, const HandOff& handOff) {
  if (isDialogUp() || QGuiApplication::modalWindow()) return {HandOffAnswer::busy, false};
  if (!handOff.activation.isEmpty()) qputenv("XDG_ACTIVATION_TOKEN", handOff.activation.toUtf8());
  if (frame_.isMinimized()) frame_.setWindowState(frame_.windowState() & ~Qt::WindowMinimized);
  frame_.show();
  frame_.raise();
  frame_.activateWindow();
  QPointer<frmDocument> document;
  if (handOff.untitled) document = frame_.takeIn(handOff.text);
  else if (!handOff.text.isEmpty()) document = frame_.openAt(handOff.text, handOff.line, handOff.column);
  if (!document) return {HandOffAnswer::acted, false};   // the user at this copy has been told
  if (handOff.readOnly) document->cmx->setReadOnly(true);
  if (!handOff.wait) return {HandOffAnswer::acted, false};
  waiting_.insert(document->cmx->model().get(), connection);
  return {HandOffAnswer::acted, true};
}

void Instance::documentClosed(frmDocument* document) {
  if (document->isLeftInJournal()) return;   // the program ends, and the sender is told so
  const TextModel* text = document->cmx->model().get();
  for (const frmDocument* other : frame_.documents())
    if (other != document && other->cmx->model().get() == text) return;   // a further window on it
  for (const quint64 connection : waiting_.values(text)) Msghook1.tellClosed(connection);
  waiting_.remove(text);
}
