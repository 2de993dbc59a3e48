#include "handoff/Msghook.h"

#include <QTimer>
#include <QtEndian>

#ifdef Q_OS_LINUX
#include <sys/socket.h>
#include <unistd.h>
#endif

namespace {

const QLatin1String kForm("zelkor2");
constexpr int kMostConnections = 1000;
constexpr int kConnectMs = 1000;
constexpr int kActAgainMs = 50;
const QString kTaken = QStringLiteral("taken"), kActed = QStringLiteral("acted"), kBusy = QStringLiteral("busy"),
              kRefused = QStringLiteral("refused"), kClosed = QStringLiteral("closed");

QByteArray framed(const QString& fields) {
  QByteArray bytes(4, Qt::Uninitialized);
  qToLittleEndian<quint32>(quint32(fields.size() * 2), bytes.data());
  for (const QChar c : fields) {
    char unit[2];
    qToLittleEndian<quint16>(c.unicode(), unit);
    bytes.append(unit, 2);
  }
  return bytes;
}

QString unframed(const QByteArray& bytes, qsizetype from, quint32 length) {
  QString fields(length / 2, Qt::Uninitialized);
  for (qsizetype i = 0; i < fields.size(); ++i) fields[i] = QChar(qFromLittleEndian<quint16>(bytes.constData() + from + i * 2));
  return fields;
}

// The user of the other end, as the kernel knows it.
bool isOurUser(const QLocalSocket& socket) {
#ifdef Q_OS_LINUX
  ucred peer{};
  socklen_t size = sizeof peer;
  return ::getsockopt(int(socket.socketDescriptor()), SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 && peer.uid == ::getuid();
#else
  return socket.isOpen();
#endif
}

}   // namespace

QString HandOff::toFields() const {
  QString flags;
  if (readOnly) flags += u'r';
  if (wait) flags += u'w';
  if (untitled) flags += u'u';
  const QString part(QChar(0));
  return kForm + part + flags + part + activation + part + QString::number(line) + part + QString::number(column) + part + text;
}

bool HandOff::fromFields(const QString& fields, HandOff* out) {
  const QStringList parts = fields.split(QChar(0));
  if (parts.size() != 6 || parts[0] != kForm) return false;
  for (const QChar flag : parts[1])
    if (flag != u'r' && flag != u'w' && flag != u'u') return false;
  bool lineGood = false, columnGood = false;
  const qint64 line = parts[3].toLongLong(&lineGood), column = parts[4].toLongLong(&columnGood);
  if (!lineGood || !columnGood || line < 0 || column < 0) return false;
  *out = {parts[5], parts[2], parts[1].contains(u'r'), parts[1].contains(u'w'), parts[1].contains(u'u'), line, column};
  return true;
}

struct Msghook::Connection {
  std::unique_ptr<QLocalSocket> socket;
  QTimer deadline;
  QByteArray bytes;
  bool spoke = false;   // has sent a whole message
};

Msghook::Msghook(Handler message, QObject* parent) : QObject(parent), message_(std::move(message)) {
  server_.setSocketOptions(QLocalServer::UserAccessOption);
  server_.setMaxPendingConnections(kMostConnections);
  server_.setListenBacklogSize(kMostConnections);
  connect(&server_, &QLocalServer::newConnection, this, &Msghook::accept);
}

Msghook::~Msghook() { stop(); }

bool Msghook::listen(const QString& path) {
  QLocalServer::removeServer(path);   // the caller of listen() holds the lock, so this socket belongs to a dead copy
  return server_.listen(path);
}

void Msghook::stop() {
  server_.close();
  waiting_.clear();
  for (const quint64 id : connections_.keys()) drop(id);
}

void Msghook::accept() {
  while (QLocalSocket* socket = server_.nextPendingConnection()) {
    std::unique_ptr<QLocalSocket> owned(socket);
    owned->setParent(nullptr);
    if (!isOurUser(*socket) || connections_.size() >= kMostConnections) continue;
    const quint64 id = ++lastId_;
    auto connection = std::make_shared<Connection>();
    connection->socket = std::move(owned);
    connection->deadline.setSingleShot(true);
    connections_.insert(id, connection);
    connect(&connection->deadline, &QTimer::timeout, this, [this, id] { drop(id); });
    connect(socket, &QLocalSocket::readyRead, this, [this, id] { read(id); });
    connect(socket, &QLocalSocket::disconnected, this, [this, id] { drop(id); });
    connection->deadline.start(deadlineMs_);
    read(id);
  }
}

void Msghook::drop(quint64 id) {
  const auto connection = connections_.take(id);
  if (!connection) return;
  connection->socket->disconnect(this);
  connection->deadline.stop();
  connection->socket->abort();
  connection->socket.release()->deleteLater();   // the socket itself may be the caller
}

void Msghook::read(quint64 id) {
  const auto connection = connections_.value(id);
  if (!connection) return;
  QByteArray& bytes = connection->bytes;
  bytes += connection->socket->readAll();
  while (bytes.size() >= 4) {
    const quint32 length = qFromLittleEndian<quint32>(bytes.constData());
    if (length > kLargest || length % 2 != 0) return drop(id);
    if (bytes.size() < qsizetype(length) + 4) break;
    HandOff handOff;
    if (!HandOff::fromFields(unframed(bytes, 4, length), &handOff)) return drop(id);
    bytes.remove(0, qsizetype(length) + 4);
    waiting_.append({id, handOff});
    connection->spoke = true;
    answer(*connection, kTaken);   // acting may have to wait or ask the user something, without limit
  }
  // The deadline for a connection that has sent nothing or only a part. A connection that waits for an answer has no deadline.
  if (bytes.isEmpty() && connection->spoke) connection->deadline.stop();
  else if (!connection->deadline.isActive()) connection->deadline.start(deadlineMs_);
  QMetaObject::invokeMethod(this, &Msghook::actOnNext, Qt::QueuedConnection);
}

void Msghook::actOnNext() {
  // Acting may open a box. The next message is then handled inside this call; the handler answers "busy".
  while (!waiting_.isEmpty()) {
    if (!mayAct_()) {
      QTimer::singleShot(kActAgainMs, this, &Msghook::actOnNext);
      return;
    }
    const auto [id, handOff] = waiting_.takeFirst();
    if (!connections_.contains(id)) continue;
    const HandOffReply reply = message_(id, handOff);
    const auto connection = connections_.value(id);
    if (!connection) continue;
    answer(*connection, reply.answer == HandOffAnswer::acted ? kActed : reply.answer == HandOffAnswer::busy ? kBusy : kRefused);
    if (handOff.wait && !reply.willTell) answer(*connection, kClosed);
  }
}

void Msghook::answer(Connection& connection, const QString& fields) {
  connection.socket->write(framed(fields));
  connection.socket->flush();
}

void Msghook::tellClosed(quint64 connection) {
  if (const auto there = connections_.value(connection)) answer(*there, kClosed);
}

// ---- sender

bool MsgSender::connectTo(const QString& path) {
  socket_.abort();
  socket_.connectToServer(path);
  if (!socket_.waitForConnected(kConnectMs)) return false;
  if (isOurUser(socket_)) return true;
  socket_.abort();
  return false;
}

void MsgSender::setPatience(int ms, std::function<bool()> goOn) {
  patienceMs_ = ms;
  goOn_ = std::move(goOn);
}

HandOffAnswer MsgSender::send(const HandOff& handOff) {
  const QByteArray message = framed(handOff.toFields());
  if (message.size() - 4 > qsizetype(Msghook::kLargest)) return HandOffAnswer::refused;
  socket_.write(message);
  while (socket_.bytesToWrite() > 0)
    if (!socket_.waitForBytesWritten(-1)) return HandOffAnswer::gone;
  QString fields;
  if (!readAnswer(&fields, false)) return gaveUp_ ? HandOffAnswer::silent : HandOffAnswer::gone;
  if (fields == kTaken && !readAnswer(&fields, true)) return HandOffAnswer::gone;
  if (fields == kActed) return HandOffAnswer::acted;
  return fields == kBusy ? HandOffAnswer::busy : HandOffAnswer::refused;
}

bool MsgSender::waitForClosed() {
  QString fields;
  return readAnswer(&fields, true) && fields == kClosed;
}

bool MsgSender::readAnswer(QString* fields, bool patient) {
  const auto have = [&](qint64 count) {
    while (socket_.bytesAvailable() < count) {
      if (socket_.waitForReadyRead(patient ? -1 : patienceMs_)) continue;
      if (socket_.state() != QLocalSocket::ConnectedState || socket_.error() != QLocalSocket::SocketTimeoutError) return false;
      gaveUp_ = !goOn_ || !goOn_();
      if (gaveUp_) return false;
    }
    return true;
  };
  if (!have(4)) return false;
  const quint32 length = qFromLittleEndian<quint32>(socket_.read(4).constData());
  if (length > Msghook::kLargest || !have(length)) return false;
  *fields = unframed(socket_.read(length), 0, length);
  return true;
}
