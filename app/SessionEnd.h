// The end from outside: the desktop's session, and SIGTERM, SIGHUP and SIGINT. Each asks what closing the frame asks, so nothing
// that was typed goes without an answer; a session that may not be held up is told so only after the journal has the text.
#pragma once

#include <QObject>

class QSessionManager;
class QSocketNotifier;
class frmMain;

class SessionEnd : public QObject {
  Q_OBJECT
 public:
  explicit SessionEnd(frmMain& frame);   // one in a process
  ~SessionEnd() override;

 private:
  void commitData(QSessionManager& manager);
  void endWanted();
  static void hold();

  frmMain& frame_;
  QSocketNotifier* notifier_ = nullptr;
};
