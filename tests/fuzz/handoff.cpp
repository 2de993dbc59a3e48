// Q1: Messages from another copy: any bytes on the socket are acted on only as far as they are messages of the agreed form.
#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QTemporaryDir>

#include "control/edit/TextModel.h"
#include "handoff/Msghook.h"
#include "tests/fuzz/Fuzz.h"

using fuzz::check;

namespace {
QString place;
int acted = 0;
constexpr int kPatience = 60'000;   // milliseconds; bounds a hang on a busy machine
Msghook* hook = nullptr;
}   // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  static int argc = 1;
  static char name[] = "fuzz";
  static char* argv[] = {name, nullptr};
  new QCoreApplication(argc, argv);
  static QTemporaryDir folder;
  place = folder.filePath(QStringLiteral("s"));
  hook = new Msghook([](quint64, const HandOff& got) {
    HandOff again;
    check(HandOff::fromFields(got.toFields(), &again), "an accepted message has the form");
    ++acted;
    return HandOffReply{};
  });
  hook->setDeadline(kPatience);
  check(hook->listen(place), "a place to listen");
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input in(data, size);
  const int how = in.byte();
  const bool framed = how % 2 == 1, overTheSocket = how % 16 < 2;   // which takes a thousand times as long
  const QString fields = toQString(in.rest());
  HandOff parsed, again;
  const bool good = HandOff::fromFields(fields, &parsed);
  if (good) {
    check(HandOff::fromFields(parsed.toFields(), &again), "what was read is written and read");
    check(again.text == parsed.text && again.activation == parsed.activation && again.readOnly == parsed.readOnly &&
              again.wait == parsed.wait && again.untitled == parsed.untitled,
          "without loss");
  }
  // What is told from within is told without loss whatever it is: only the parting character cannot be in a text.
  const HandOff sent{QString(fields).remove(QChar(0)), QStringLiteral("t"), how % 3 == 0, how % 5 == 0, how % 7 == 0};
  check(HandOff::fromFields(sent.toFields(), &again) && again.text == sent.text && again.activation == sent.activation &&
            again.readOnly == sent.readOnly && again.wait == sent.wait && again.untitled == sent.untitled,
        "what is sent is what comes");
  if (!overTheSocket) return 0;
  QByteArray bytes(in.rest().data(), qsizetype(in.rest().size()));
  if (framed) {
    bytes.clear();
    const quint32 length = quint32(fields.size()) * 2;
    for (int i = 0; i < 4; ++i) bytes += char(length >> 8 * i & 255);
    for (const QChar c : fields) bytes += char(c.unicode() & 255), bytes += char(c.unicode() >> 8);
  }
  acted = 0;
  QLocalSocket socket;
  socket.connectToServer(place);
  check(socket.waitForConnected(kPatience), "it goes on listening");
  const qsizetype half = how % 32 < 16 ? bytes.size() / 2 : 0;   // a message may come in pieces
  socket.write(bytes.left(half));
  socket.flush();
  if (half > 0) QCoreApplication::processEvents();
  socket.write(bytes.mid(half));
  const auto answered = [&] { return socket.bytesAvailable() > 0 || socket.state() != QLocalSocket::ConnectedState; };
  if (framed && fields.size() > 0) {
    const QDeadlineTimer end(kPatience);
    while (!answered() && !end.hasExpired()) QCoreApplication::processEvents(QEventLoop::AllEvents, 2);
    check(acted == (good ? 1 : 0), "acted on if and only if it has the form");
  } else {   // it may be waiting for more
    for (int i = 0; i < 5 && !answered(); ++i) QCoreApplication::processEvents(QEventLoop::AllEvents, 2);
  }
  socket.abort();
  QCoreApplication::processEvents();
  return 0;
}
