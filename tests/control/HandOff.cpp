// Where copies meet and what they tell each other: promises I1, I2 and H4, the rules of the hand-off socket.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QThread>

#include "handoff/Msghook.h"
#include "handoff/Rendezvous.h"
#include "tests/support/EventLoop.h"

namespace {

class HandOffTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(dir_.isValid());
    before_ = qgetenv("XDG_RUNTIME_DIR");
    stateBefore_ = qgetenv("XDG_STATE_HOME");
    qputenv("XDG_STATE_HOME", dir_.filePath(QStringLiteral("state")).toUtf8());
    runtime_ = dir_.filePath(QStringLiteral("run"));
    ASSERT_EQ(::mkdir(runtime_.toUtf8().constData(), 0700), 0);
    qputenv("XDG_RUNTIME_DIR", runtime_.toUtf8());
  }
  void TearDown() override {
    qputenv("XDG_RUNTIME_DIR", before_);
    qputenv("XDG_STATE_HOME", stateBefore_);
  }
  QString socketPath() const { return dir_.filePath(QStringLiteral("s")); }

  QTemporaryDir dir_;
  QString runtime_;
  QByteArray before_, stateBefore_;
};
using HandOffPlace = HandOffTest;
using HandOffMessages = HandOffTest;

// Runs `work` on another thread while this one serves the socket.
void meanwhile(const std::function<void()>& work) {
  std::unique_ptr<QThread> thread(QThread::create(work));
  thread->start();
  ASSERT_TRUE(spinUntil([&] { return thread->isFinished(); }));
}

// What a peer of its own is answered.
HandOffAnswer sendTo(const QString& path, const QString& text) {
  MsgSender sender;
  return sender.connectTo(path) ? sender.send({text, {}, false, false, false}) : HandOffAnswer::gone;
}

sockaddr_un addressOf(const QString& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  const QByteArray name = path.toUtf8();
  std::copy(name.begin(), name.end(), address.sun_path);
  return address;
}

// A peer that sends raw bytes and says whether it was hung up on; a time only says how long it looks for what must not happen.
bool isHungUpOn(const QString& path, const std::string& bytes, int withinMs = kPatience) {
  const int fd = ::socket(AF_UNIX, SOCK_STREAM, 0);
  const sockaddr_un address = addressOf(path);
  bool hungUp = false;
  if (::connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0) {
    const ssize_t sent = ::send(fd, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    (void)sent;
    for (int waited = 0; waited < withinMs && !hungUp; waited += 10) {
      spin(10);
      char byte;
      const ssize_t got = ::recv(fd, &byte, 1, MSG_DONTWAIT);
      hungUp = got == 0 || (got < 0 && errno == ECONNRESET);
    }
  }
  ::close(fd);
  return hungUp;
}

std::string lengthBytes(quint32 length) {
  std::string bytes;
  for (int i = 0; i < 4; ++i) bytes += char(length >> (8 * i));
  return bytes;
}

}   // namespace

TEST_F(HandOffPlace, FirstIsWhoHoldsTheLock) {
  Rendezvous first(QStringLiteral("xcb_:0")), second(QStringLiteral("xcb_:0")), elsewhere(QStringLiteral("xcb_:1"));
  EXPECT_TRUE(first.becomeFirst());
  EXPECT_TRUE(first.becomeFirst()) << "asking again changes nothing";
  EXPECT_FALSE(second.becomeFirst());
  EXPECT_TRUE(elsewhere.becomeFirst()) << "another display is another session";
  EXPECT_NE(first.socketPath(), elsewhere.socketPath());
  first.resign();
  EXPECT_TRUE(second.becomeFirst());
}

TEST_F(HandOffPlace, FolderMustBeOursAlone) {
  struct Case {
    const char* name;
    std::function<void(const QString&)> spoil;
    bool inRuntime;   // else in our own state folder
  };
  const auto path = [](const QString& p) { return p.toUtf8(); };
  for (const Case& c : {Case{"as it should be", [](const QString&) {}, true},
                        Case{"others may enter", [&](const QString& run) { ::chmod(path(run).constData(), 0755); }, false},
                        Case{"group may enter", [&](const QString& run) { ::chmod(path(run).constData(), 0750); }, false},
                        Case{"a link",
                             [&](const QString& run) {
                               QDir().rename(run, run + u'2');
                               ASSERT_EQ(::symlink(path(run + u'2').constData(), path(run).constData()), 0);
                             },
                             false},
                        Case{"a file",
                             [](const QString& run) {
                               QDir(run).removeRecursively();
                               QFile file(run);
                               ASSERT_TRUE(file.open(QIODevice::WriteOnly));
                             },
                             false},
                        Case{"not there", [](const QString& run) { QDir(run).removeRecursively(); }, false},
                        Case{"relative", [](const QString&) { qputenv("XDG_RUNTIME_DIR", "run"); }, false}}) {
    SCOPED_TRACE(c.name);
    QTemporaryDir own;
    const QString run = own.filePath(QStringLiteral("run"));
    ASSERT_EQ(::mkdir(path(run).constData(), 0700), 0);
    qputenv("XDG_RUNTIME_DIR", path(run));
    c.spoil(run);
    Rendezvous place(QStringLiteral("x"));
    ASSERT_TRUE(place.usable());
    EXPECT_EQ(place.folder().startsWith(run), c.inRuntime) << place.folder().toStdString();
    struct stat status {};
    ASSERT_EQ(::lstat(path(place.folder()).constData(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0700u);
    EXPECT_TRUE(place.becomeFirst());
  }
}

TEST_F(HandOffPlace, PlantedLockIsNotFollowed) {
  const QString folder = runtime_ + QStringLiteral("/zelkor-meet");
  ASSERT_EQ(::mkdir(folder.toUtf8().constData(), 0700), 0);
  const QString victim = dir_.filePath(QStringLiteral("victim"));
  ASSERT_EQ(::symlink(victim.toUtf8().constData(), (folder + QStringLiteral("/x.lock")).toUtf8().constData()), 0);
  Rendezvous place(QStringLiteral("x"));
  EXPECT_FALSE(place.becomeFirst());
  EXPECT_FALSE(QFile::exists(victim));
}

TEST_F(HandOffMessages, FieldsOfAnotherFormAreRefused) {
  HandOff got;
  const QString nul(QChar(0));
  const auto form = [&](const char* parts) { return QString::fromLatin1(parts).replace(u'|', nul); };
  ASSERT_TRUE(HandOff::fromFields(form("zelkor2||token|3|0|a"), &got));
  for (const char* parts : {"", "zelkor2", "other2|||0|0|a", "zelkor2|x||0|0|a", "zelkor2|||0|0|a|", "zelkor2|||0|a",
                            "zelkor2|||-1|0|a", "zelkor2|||x|0|a"}) {
    const QString bad = form(parts);
    EXPECT_FALSE(HandOff::fromFields(bad, &got)) << parts;
  }
}

TEST_F(HandOffMessages, WhileOneIsActedOnOthersHearThatItIsBusy) {
  // The first message opens a "dialog": an event loop inside the handler.
  bool up = false;
  HandOffAnswer second = HandOffAnswer::gone;
  Msghook hook([&](quint64, const HandOff& handOff) {
    if (up) return HandOffReply{HandOffAnswer::busy, false};
    if (handOff.text == QLatin1String("opens")) {
      up = true;
      meanwhile([&] { second = sendTo(socketPath(), QStringLiteral("b")); });
      up = false;
    }
    return HandOffReply{};
  });
  ASSERT_TRUE(hook.listen(socketPath()));
  HandOffAnswer first = HandOffAnswer::gone;
  meanwhile([&] { first = sendTo(socketPath(), QStringLiteral("opens")); });
  EXPECT_EQ(first, HandOffAnswer::acted);
  EXPECT_EQ(second, HandOffAnswer::busy);
}

// A question to the user at the receiver may take any time: only a message that is not taken makes the sender ask its own.
TEST_F(HandOffMessages, OneThatWasTakenIsNotAskedAbout) {
  Msghook hook([&](quint64, const HandOff&) {
    spin(300);
    return HandOffReply{};
  });
  ASSERT_TRUE(hook.listen(socketPath()));
  std::atomic<int> asked = 0;
  HandOffAnswer answer = HandOffAnswer::gone;
  meanwhile([&] {
    MsgSender sender;
    sender.setPatience(50, [&] { return ++asked > 0; });
    if (sender.connectTo(socketPath())) answer = sender.send({QStringLiteral("x"), {}, false, false, false});
  });
  EXPECT_EQ(answer, HandOffAnswer::acted);
  EXPECT_EQ(asked, 0);
}

TEST_F(HandOffMessages, ASilentReceiverIsWaitedForAsLongAsThePersonWishes) {
  Msghook hook([&](quint64, const HandOff&) { return HandOffReply{}; });
  ASSERT_TRUE(hook.listen(socketPath()));
  for (const bool patient : {true, false}) {
    HandOffAnswer answer = HandOffAnswer::gone;
    std::atomic<int> asked = 0;
    std::unique_ptr<QThread> sender(QThread::create([&] {
      MsgSender peer;
      peer.setPatience(50, [&] {
        ++asked;
        return patient;
      });
      if (peer.connectTo(socketPath())) answer = peer.send({QStringLiteral("x"), {}, false, false, false});
    }));
    sender->start();
    for (int i = 0; i < kPatience && asked < (patient ? 2 : 1); ++i) QThread::msleep(1);   // nothing is served meanwhile
    ASSERT_TRUE(spinUntil([&] { return sender->isFinished(); }));
    EXPECT_EQ(answer, patient ? HandOffAnswer::acted : HandOffAnswer::silent);
    EXPECT_GE(asked, patient ? 2 : 1);
  }
}

TEST_F(HandOffMessages, GarbageIsHungUpOnAndHurtsNobody) {
  int acted = 0;
  Msghook hook([&](quint64, const HandOff&) {
    ++acted;
    return HandOffReply{};
  });
  ASSERT_TRUE(hook.listen(socketPath()));
  const std::string noise(1000, '\xFF');
  // clang-format off
  const std::pair<const char*, std::string> cases[] = {
      {"beyond the largest", lengthBytes(Msghook::kLargest + 2)}, {"odd length", lengthBytes(3) + "abc"},
      {"largest number", lengthBytes(0xFFFFFFFFu)},               {"empty", lengthBytes(0)},
      {"not our fields", lengthBytes(4) + std::string("a\0b\0", 4)}, {"noise", noise}};
  for (const auto& [name, bytes] : cases) EXPECT_TRUE(isHungUpOn(socketPath(), bytes)) << name;
  EXPECT_EQ(acted, 0);
  HandOffAnswer answer = HandOffAnswer::gone;
  meanwhile([&] { answer = sendTo(socketPath(), QStringLiteral("x")); });
  EXPECT_EQ(answer, HandOffAnswer::acted);
}

// Another user's process that could reach the socket is hung up on, and none of its messages is acted on; nor does a sender tell
// anything to somebody else's copy. The kernel says who is there, so it takes a real process of another user.
TEST_F(HandOffMessages, H4_OtherUsersAreNotTalkedTo) {
  if (::geteuid() != 0) GTEST_SKIP() << "only root can become somebody else";
  const auto asNobody = [](const std::function<int()>& work) {
    const pid_t child = ::fork();
    if (child == 0) ::_exit(::setgid(65534) == 0 && ::setuid(65534) == 0 ? work() : 99);
    return child;
  };
  // clang-format on
  ::chmod(dir_.path().toUtf8().constData(), 0777);
  int acted = 0;
  Msghook hook([&](quint64, const HandOff&) {
    ++acted;
    return HandOffReply{};
  });
  ASSERT_TRUE(hook.listen(socketPath()));
  const sockaddr_un to = addressOf(socketPath());
  ::chmod(to.sun_path, 0777);
  const QString fields = HandOff{QStringLiteral("/etc/passwd"), {}, false, false, false}.toFields();
  std::string message = lengthBytes(quint32(fields.size()) * 2);
  for (const QChar c : fields) message += char(c.unicode() & 255), message += char(c.unicode() >> 8);
  const pid_t stranger = asNobody([&] {
    const int fd = ::socket(AF_UNIX, SOCK_STREAM, 0);
    if (::connect(fd, reinterpret_cast<const sockaddr*>(&to), sizeof to) != 0) return 1;
    (void)!::send(fd, message.data(), message.size(), MSG_NOSIGNAL);
    char byte;
    return ::recv(fd, &byte, 1, 0) <= 0 ? 0 : 2;   // hung up on, without an answer
  });
  int status = -1;
  const auto ended = [&status](pid_t child) { return ::waitpid(child, &status, WNOHANG) == child; };
  ASSERT_TRUE(spinUntil([&] { return ended(stranger); }));
  EXPECT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 0) << "1: could not connect, 2: was answered, 99: is not somebody else";
  spin(50);
  EXPECT_EQ(acted, 0);
  EXPECT_FALSE(isHungUpOn(socketPath(), message, 200)) << "the same from this user is";
  EXPECT_EQ(acted, 1);

  const QString trap = dir_.filePath(QStringLiteral("trap"));
  const sockaddr_un at = addressOf(trap);
  const pid_t impostor = asNobody([&] {
    const int fd = ::socket(AF_UNIX, SOCK_STREAM, 0);
    if (::bind(fd, reinterpret_cast<const sockaddr*>(&at), sizeof at) != 0 || ::listen(fd, 5) != 0) return 1;
    const int peer = ::accept(fd, nullptr, nullptr);
    char byte;
    return ::recv(peer, &byte, 1, 0) <= 0 ? 0 : 2;   // told nothing
  });
  MsgSender sender;
  bool told = false;   // it ends as soon as somebody has come
  EXPECT_TRUE(spinUntil([&] {
    if (ended(impostor)) return true;
    told = sender.connectTo(trap) || told;
    return false;
  }));
  EXPECT_FALSE(told);
  EXPECT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 0);
  ::kill(impostor, SIGKILL);
}

TEST_F(HandOffMessages, SlowAndSilentPeersAreHungUpOn) {
  Msghook hook([&](quint64, const HandOff&) { return HandOffReply{}; });
  hook.setDeadline(kPatience);
  ASSERT_TRUE(hook.listen(socketPath()));
  EXPECT_FALSE(isHungUpOn(socketPath(), lengthBytes(100) + "half", 100)) << "some time is given";
  hook.setDeadline(100);
  EXPECT_TRUE(isHungUpOn(socketPath(), lengthBytes(100) + "half"));
  EXPECT_TRUE(isHungUpOn(socketPath(), ""));
}

TEST_F(HandOffMessages, SocketOfADeadCopyIsReplacedAndAnEndIsNoticed) {
  {
    QFile stale(socketPath());
    ASSERT_TRUE(stale.open(QIODevice::WriteOnly));
  }
  MsgSender sender;
  EXPECT_FALSE(sender.connectTo(socketPath()));
  auto hook = std::make_unique<Msghook>([&](quint64, const HandOff&) { return HandOffReply{}; });
  ASSERT_TRUE(hook->listen(socketPath()));
  HandOffAnswer answer = HandOffAnswer::acted;
  meanwhile([&] {
    MsgSender peer;
    if (!peer.connectTo(socketPath())) return;
    QMetaObject::invokeMethod(
        qApp, [&] { hook.reset(); }, Qt::BlockingQueuedConnection);   // ends without having answered
    answer = peer.send({QStringLiteral("x"), {}, false, false, false});
  });
  EXPECT_EQ(answer, HandOffAnswer::gone);
}
