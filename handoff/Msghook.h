// Messages from another copy of the program, and the sending of them.
//
// On Linux a message is one request on a local socket: four bytes of length (least first), then that many bytes of UTF-16
// text (least first), at most 1 MiB. The text is fields parted by U+0000. Two answers of the same form come: that the message was
// taken, and, after it was acted on, what came of it. Who is not of our user, says nothing for too long, or sends anything else is hung up on.
// On Windows the same text comes by WM_COPYDATA, and the answer is the message's result.
#pragma once

#include <QLocalServer>
#include <QLocalSocket>
#include <QObject>
#include <QStringList>
#include <functional>

// What is handed over: one file name as it is on the disk (see FileNames.h), possibly empty, and the place in it.
struct HandOff {
  QString text;
  QString activation;   // the desktop's token that allows a window to come forward
  bool readOnly = false;
  bool wait = false;             // the sender wants to know when the document is closed
  bool untitled = false;         // text names a file to take in as a new document and remove
  qint64 line = 0, column = 0;   // from 1; 0: not said

  QString toFields() const;
  static bool fromFields(const QString& fields, HandOff* out);
};

// gone: nobody is there, or the receiver ended; silent: it is there, but has not taken the message and the sender's person waits
// no longer; ended: it acted, but ended before it told that what is waited for was closed.
enum class HandOffAnswer { acted, busy, refused, gone, silent, ended };
struct HandOffReply {
  HandOffAnswer answer = HandOffAnswer::acted;
  bool willTell = false;   // acted with wait: the sender is told by Msghook::tellClosed
};

class Msghook : public QObject {
  Q_OBJECT
 public:
  static constexpr quint32 kLargest = 1u << 20;   // bytes of one message

  // Message(connection, what was handed over): called on the user-interface thread, one at a time in the order of arrival.
  using Handler = std::function<HandOffReply(quint64 connection, const HandOff&)>;
  explicit Msghook(Handler message, QObject* parent = nullptr);
  ~Msghook() override;

  bool listen(const QString& path);   // false: errorString() says why. A file left there by a dead copy is removed.
  // Messages are taken but not acted on while `mayAct` says no; it is asked again and again.
  void actOnlyWhen(std::function<bool()> mayAct) { mayAct_ = std::move(mayAct); }
  void setDeadline(int ms) { deadlineMs_ = ms; }   // for a message to be complete; 5 s at first
  void stop();                                     // hangs up on all; senders then look for who comes next
  QString errorString() const { return server_.errorString(); }
  void tellClosed(quint64 connection);

 private:
  struct Connection;
  void accept();
  void read(quint64 id);
  void drop(quint64 id);
  void answer(Connection& connection, const QString& fields);
  void actOnNext();

  Handler message_;
  std::function<bool()> mayAct_ = [] { return true; };
  QLocalServer server_;
  QHash<quint64, std::shared_ptr<Connection>> connections_;
  QList<std::pair<quint64, HandOff>> waiting_;   // complete messages in the order in which they came; their senders know
  quint64 lastId_ = 0;
  int deadlineMs_ = 5000;
};

// The sender's side of one connection.
class MsgSender {
 public:
  bool connectTo(const QString& path);   // false: nobody there, or not of our user
  // Asks `goOn` each time that a message was not taken for so long. One that was taken is waited for without limit.
  void setPatience(int ms, std::function<bool()> goOn);
  HandOffAnswer send(const HandOff& handOff);
  bool waitForClosed();   // after an acted message with `wait`; false: the receiver ended

 private:
  bool readAnswer(QString* fields, bool patient);
  QLocalSocket socket_;
  int patienceMs_ = -1;
  std::function<bool()> goOn_;
  bool gaveUp_ = false;
};
