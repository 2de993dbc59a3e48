// Messages between copies of the program.
//
// On Linux a message is one request on a local socket: four bytes of length (little endian), then that many bytes of UTF-16 text
// (little endian), at most 1 MiB. The text consists of fields separated by U+0000. Two answers of the same form follow: that the
// message was taken and, after it was acted on, the result. A connection of another user, one that sends nothing for too long and
// one that sends anything else is closed.
//
// On Windows the same text comes by WM_COPYDATA, and the answer is the result of the message.
#pragma once

#include <QLocalServer>
#include <QLocalSocket>
#include <QObject>
#include <QStringList>
#include <functional>

// The request: one file name as it is on the disk (see FileNames.h), possibly empty, and a place in the file.
struct HandOff {
  QString text;
  QString activation;   // the desktop's token that allows a window to be raised
  bool readOnly = false;
  bool wait = false;             // the sender wants to know when the document is closed
  bool untitled = false;         // text names a file to load as a new document and to remove
  qint64 line = 0, column = 0;   // from 1; 0: not said

  QString toFields() const;
  static bool fromFields(const QString& fields, HandOff* out);
};

// gone: no receiver, or it ended. silent: the receiver has not taken the message, and the user at the sender stopped waiting.
// ended: the receiver acted on the message, but ended before it reported that the document was closed.
enum class HandOffAnswer { acted, busy, refused, gone, silent, ended };
struct HandOffReply {
  HandOffAnswer answer = HandOffAnswer::acted;
  bool willTell = false;   // acted on a message with `wait`; Msghook::tellClosed will inform the sender
};

class Msghook : public QObject {
  Q_OBJECT
 public:
  static constexpr quint32 kLargest = 1u << 20;   // bytes of one message

  // Message(connection, request): called on the user-interface thread, one message at a time, in the order of arrival.
  using Handler = std::function<HandOffReply(quint64 connection, const HandOff&)>;
  explicit Msghook(Handler message, QObject* parent = nullptr);
  ~Msghook() override;

  bool listen(const QString& path);   // false: errorString() gives the reason. Removes the socket file of a dead copy.
  // While `mayAct` returns false, messages are taken but not acted on. It is called again and again.
  void actOnlyWhen(std::function<bool()> mayAct) { mayAct_ = std::move(mayAct); }
  void setDeadline(int ms) { deadlineMs_ = ms; }   // time for a message to be complete; default 5 s
  void stop();                                     // closes all connections; the senders then look for the next receiver
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
  // complete messages in the order of arrival; their senders know that they were taken
  QList<std::pair<quint64, HandOff>> waiting_;
  quint64 lastId_ = 0;
  int deadlineMs_ = 5000;
};

// The sender's side of one connection.
class MsgSender {
 public:
  bool connectTo(const QString& path);   // false: no receiver, or it belongs to another user
  // Calls `goOn` each time the message has not been taken for that long. After the message was taken, it waits without limit.
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
