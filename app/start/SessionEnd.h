// The end from outside. SIGTERM, SIGHUP and SIGINT end the program without a question as far as the journals have what is not
// saved: nobody may be there to answer, and the next start offers it. The end of the desktop's session asks what closing
// the frame asks, unless the session may not be held up or a dialog is up: then it is the same as a signal.
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

  void endWanted();   // what a signal does; while somebody answers something it is tried again and again
  // The session is about to end. False: the person wants to stay.
  bool sessionEnds(bool mayAsk);

 protected:
  bool eventFilter(QObject* object, QEvent* event) override;

 private:
  void tryToEnd(int patienceMs);
  frmMain& frame_;
  QTimer again_;
  QSocketNotifier* notifier_ = nullptr;
  bool unasked_ = false;   // the session is ending, and nobody was asked
};
