#include "app/start/SessionEnd.h"

#include <QApplication>
#include <QEvent>
#include <QSessionManager>
#include <QSocketNotifier>
#include <QTimer>

#include "app/frame/frmMain.h"
#include "base/dialog/Dialogs.h"
#include "bridge/LongWork.h"
#include "document/Recovery.h"
#include "document/frmDocument.h"
#include "script/mCMXParser.h"

#ifdef Q_OS_UNIX
#include <fcntl.h>
#include <signal.h>
#include <unistd.h>
#endif

namespace {

constexpr int kPatienceMs = 10'000, kRetryMs = 500, kRetryPatienceMs = 100;   // a disk that hangs must not delay the answer
constexpr int kAnswerMs = 60'000;   // a session that has not ended by then continues, and questions are asked again

#ifdef Q_OS_UNIX
int pipeEnds[2] = {-1, -1};
void onSignal(int) {
  const int kept = errno;
  const char byte = 1;
  [[maybe_unused]] const ssize_t written = ::write(pipeEnds[1], &byte, 1);   // the only thing allowed in a signal handler
  errno = kept;
}
constexpr int kSignals[] = {SIGTERM, SIGHUP, SIGINT};
#endif

}   // namespace

SessionEnd::SessionEnd(frmMain& frame) : frame_(frame) {
  connect(
      qGuiApp, &QGuiApplication::commitDataRequest, this,
      [this](QSessionManager& manager) {
        const bool mayAsk = manager.allowsInteraction();
        if (!sessionEnds(mayAsk)) manager.cancel();
        if (mayAsk) manager.release();
      },
      Qt::DirectConnection);
  qApp->installEventFilter(this);
  again_.setInterval(kRetryMs);
  connect(&again_, &QTimer::timeout, this, [this] { tryToEnd(isDialogUp() ? kRetryPatienceMs : kPatienceMs); });
#ifdef Q_OS_UNIX
  if (::pipe2(pipeEnds, O_CLOEXEC | O_NONBLOCK) != 0) return;
  notifier_ = new QSocketNotifier(pipeEnds[0], QSocketNotifier::Read, this);
  connect(notifier_, &QSocketNotifier::activated, this, [this] {
    char bytes[64];
    while (::read(pipeEnds[0], bytes, sizeof bytes) > 0) {}
    endWanted();
  });
  struct sigaction action {};
  action.sa_handler = onSignal;
  action.sa_flags = SA_RESTART;
  for (const int signal : kSignals) ::sigaction(signal, &action, nullptr);
#endif
}

SessionEnd::~SessionEnd() {
#ifdef Q_OS_UNIX
  for (const int signal : kSignals) ::signal(signal, SIG_DFL);
  for (int& end : pipeEnds) {
    if (end >= 0) ::close(end);
    end = -1;
  }
#endif
}

void SessionEnd::endWanted() {
  again_.start();
  tryToEnd(kPatienceMs);
}

// Also runs while an outer call asks its question: texts that could not be written then may be written now.
void SessionEnd::tryToEnd(int patienceMs) {
  // the command that waits for it must return before its text may be destroyed
  if (LongWork::cancelRunning()) return;
  if (mCMXParser::isRunning()) return mCMXParser::Stop();   // the same
  if (frame_.endFromOutside(patienceMs) || !isDialogUp()) again_.stop();
}

bool SessionEnd::sessionEnds(bool mayAsk) {
  // Even if the system kills the program when its patience ends, the texts are in their journals.
  if (RecoverySession* session = RecoverySession::current()) session->holdAll();
  unasked_ = !mayAsk || isDialogUp() || mCMXParser::isRunning();
  if (unasked_) return true;
  const bool agreed = frame_.agreeToEnd();
  QTimer::singleShot(kAnswerMs, &frame_, [frame = &frame_] {
    for (frmDocument* document : frame->documents()) document->withdrawClose();
  });
  return agreed;
}

// The session ends and cannot be delayed: there is no time for questions.
bool SessionEnd::eventFilter(QObject* object, QEvent* event) {
  if (event->type() != QEvent::Quit || object != qApp || !unasked_) return false;
  event->ignore();
  endWanted();
  return true;
}
