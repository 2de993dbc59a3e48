// Where the copies of the program meet: a folder that only this user can enter, a lock that says who is first, and the path
// of the first one's socket. One meeting place for each user and display.
//
// Always: the folder is a real folder of ours that nobody else may enter, or there is no meeting place at all. A lock dies
// with its process, so a copy that crashed is never taken for a running one.
#pragma once

#include <QString>

class Rendezvous {
 public:
  // display: tells sessions apart ("xcb:0"); anything but letters and digits counts as "_".
  explicit Rendezvous(const QString& display);
  ~Rendezvous();   // gives the lock up
  Rendezvous(const Rendezvous&) = delete;
  Rendezvous& operator=(const Rendezvous&) = delete;

  // False: this copy can only stand alone, as there is no place or nothing can be made there. failure() says why.
  bool usable() const { return failure_.isEmpty(); }
  const QString& failure() const { return failure_; }
  bool becomeFirst();   // true: this process is the first, now or already
  bool isFirst() const { return lock_ >= 0; }
  void resign();   // somebody else may be first from now on
  QString socketPath() const;
  QString folder() const { return folder_; }

 private:
  bool take(const QString& folder);   // as the meeting place
  QString folder_, name_, failure_;
  int lock_ = -1;
};
