// Where the copies of the program meet: a folder that only this user can enter, a lock that decides which copy is first, and the
// path of the first copy's socket. There is one meeting place for each user and display.
//
// Invariants: either the folder is a real folder of this user that nobody else may enter, or there is no meeting place. The lock is
// released when its process dies, so a crashed copy is never taken for a running one.
#pragma once

#include <QString>

class Rendezvous {
 public:
  // display: distinguishes sessions ("xcb:0"). All characters but letters and digits are replaced by "_".
  explicit Rendezvous(const QString& display);
  ~Rendezvous();   // gives the lock up
  Rendezvous(const Rendezvous&) = delete;
  Rendezvous& operator=(const Rendezvous&) = delete;

  // False: this copy can only run alone, because there is no folder or nothing can be created in it. failure() gives the reason.
  bool usable() const { return failure_.isEmpty(); }
  const QString& failure() const { return failure_; }
  bool becomeFirst();   // true: this process is the first copy, now or since before
  bool isFirst() const { return lock_ >= 0; }
  void resign();   // lets another copy become the first
  QString socketPath() const;
  QString folder() const { return folder_; }

 private:
  bool take(const QString& folder);   // as the meeting place
  QString folder_, name_, failure_;
  int lock_ = -1;
};
