#include "app/SessionEnd.h"

#include <QGuiApplication>
#include <QSessionManager>
#include <QSocketNotifier>
#include <QTimer>

#include "app/frmMain.h"
#include "base/Dialogs.h"
#include "document/Recovery.h"

#ifdef Q_OS_UNIX
#include <fcntl.h>
#include <signal.h>
#include <unistd.h>
#endif

namespace {

constexpr int kRetryMs = 500;

#ifdef Q_OS_UNIX
int pipeEnds[2] = {-1, -1};
void onSignal(int) {
  const int kept = errno;
  const char byte = 1;
  [[maybe_unused]] const ssize_t written = ::write(pipeEnds[1], &byte, 1);   // all that a handler may do
  errno = kept;
}
constexpr int kSignals[] = {SIGTERM, SIGHUP, SIGINT};
#endif

}  // namespace

SessionEnd::SessionEnd(frmMain& frame) : frame_(frame) {
  connect(qGuiApp, &QGuiApplication::commitDataRequest, this, &SessionEnd::commitData, Qt::DirectConnection);
#ifdef Q_OS_UNIX
  if (::pipe2(pipeEnds, O_CLOEXEC | O_NONBLOCK) != 0) return;
  notifier_ = new QSocketNotifier(pipeEnds[0], QSocketNotifier::Read, this);
  connect(notifier_, &QSocketNotifier::activated, this, [this] {
    char bytes[64];
    while (::read(pipeEnds[0], bytes, sizeof bytes) > 0) {
    }
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
  hold();
  if (isDialogUp()) {   // somebody is answering something; what they answer comes first
    QTimer::singleShot(kRetryMs, this, &SessionEnd::endWanted);
    return;
  }
  frame_.close();
}

// Whatever comes next, a kill after the patience of the system's too: the texts are in their journals.
void SessionEnd::hold() {
  if (RecoverySession* session = RecoverySession::current()) session->flush();
}

void SessionEnd::commitData(QSessionManager& manager) {
  hold();
  if (!manager.allowsInteraction()) return;
  if (!frame_.agreeToEnd()) manager.cancel();
  manager.release();
}
