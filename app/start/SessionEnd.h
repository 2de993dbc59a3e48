// The end of the program from outside. SIGTERM, SIGHUP and SIGINT end it without a question, if the journals hold all unsaved
// texts: maybe no user is there to answer, and the next start offers the texts. At the end of the desktop's session the program
// asks what closing the frame asks. If the session cannot be delayed, or a dialog is open, it acts as for a signal.
#pragma once

#include <QObject>
#include <QTimer>

class QSocketNotifier;
class frmMain;

class SessionEnd : public QObject {
  Q_OBJECT
 public:
  explicit SessionEnd(frmMain& frame);   // one in a process
  ~SessionEnd() override;

  void endWanted();   // what a signal does; repeated while the user answers a question
  // The session is about to end. False: the user wants to stay.
  bool sessionEnds(bool mayAsk);

 protected:
  bool eventFilter(QObject* object, QEvent* event) override;

 private:
  void tryToEnd(int patienceMs);
  frmMain& frame_;
  QTimer again_;
  QSocketNotifier* notifier_ = nullptr;
  bool unasked_ = false;   // the session ends without a question
};
