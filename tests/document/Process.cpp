// Started programs: how a command line becomes arguments, where programs are found, and how a run ends.
#include "process/Process.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <cerrno>

#include "process/CommandLine.h"
#include "tests/support/EventLoop.h"
#include "tests/support/OnceAProgramRuns.h"
#include "tests/support/Xvfb.h"
#include "tests/support/files/TempFolder.h"

using namespace Qt::StringLiterals;

namespace {

std::string startee() { return std::string(std::getenv("ZELKOR_BIN") ? std::getenv("ZELKOR_BIN") : "build/dev/bin") + "/startee"; }

struct Output {
  QByteArray out;
  process::Started collect() {
    return [this](process::Program& program) {
      QObject::connect(&program, &process::Program::output, &program, [this](const QByteArray& bytes) { out += bytes; });
    };
  }
};

}   // namespace

TEST(ProcessCommandLine, IsCutIntoWords) {
  // clang-format off
  const std::vector<std::pair<QString, QStringList>> cases{
      {u""_s, {}}, {u"  a \t b  "_s, {u"a"_s, u"b"_s}}, {u"a \"b c\" d"_s, {u"a"_s, u"b c"_s, u"d"_s}},
      {u"a 'b \"c' d"_s, {u"a"_s, u"b \"c"_s, u"d"_s}}, {u"x\"y z\"w"_s, {u"xy zw"_s}}, {u"\"\" ''"_s, {u""_s, u""_s}},
      {u"C:\\dir\\f.v \\\\host\\share"_s, {u"C:\\dir\\f.v"_s, u"\\\\host\\share"_s}},
      {u"\"C:\\my dir\\\\\" x"_s, {u"C:\\my dir\\"_s, u"x"_s}},
      {u"say \\\"hi\\\" \"a\\\"b\""_s, {u"say"_s, u"\"hi\""_s, u"a\"b"_s}},
      {u"open \"to the end"_s, {u"open"_s, u"to the end"_s}}, {u"a;b|c>d&e`f`$(g)*?"_s, {u"a;b|c>d&e`f`$(g)*?"_s}}};
  // clang-format on
  for (const auto& [line, words] : cases) EXPECT_EQ(programArguments(line), words) << qPrintable(line);
}

TEST(ProcessCommandLine, ValuesStayInOneWord) {
  const auto substitute = [](QString& word) { word.replace(u"$V"_s, u"a b\" 'c\\ $(x)"_s); };
  const QStringList expected{u"p"_s, u"-x=a b\" 'c\\ $(x)"_s, u"a b\" 'c\\ $(x)!"_s};
  EXPECT_EQ(programArguments(u"p -x=$V \"$V!\""_s, substitute), expected);
  // What the user typed is cut, and is no line of variables; a quotation that it leaves open ends with it.
  const QString typed = u"a 'b $V"_s;
  const ValueAt typedAt = [&](QStringView rest, qsizetype* length) {
    *length = 2;
    return rest.startsWith(u"$A") ? &typed : nullptr;
  };
  const auto plain = [](QString& word) { word.replace(u"$V"_s, u"v w"_s).replace(u"$A"_s, u"whole"_s); };
  EXPECT_EQ(programArguments(u"p -x$A $V \"$A\""_s, plain, typedAt),
            (QStringList{u"p"_s, u"-xa"_s, u"b $V"_s, u"v w"_s, u"whole"_s}));
}

TEST(ProcessLookUp, H2_UsesAbsoluteEntriesOnly) {
  QTemporaryDir folder;
  for (const char* name : {"tool", "plain"}) {
    QFile file(folder.filePath(QString::fromLatin1(name)));
    ASSERT_TRUE(file.open(QFile::WriteOnly));
    if (*name == 't') file.setPermissions(QFile::ReadOwner | QFile::ExeOwner);
  }
  const std::string dir = folder.path().toStdString();
  const QString before = QDir::currentPath();
  QDir::setCurrent(folder.path());
  struct Case {
    std::string name, path;
    int error;
  };
  const std::vector<Case> cases{{"tool", dir, 0},
                                {"tool", "", ENOENT},
                                {"tool", ".", ENOENT},
                                {"tool", "::.:./:" + dir, 0},
                                {"tool", ":" + dir + ":", 0},
                                {"plain", dir, EACCES},
                                {"missing", dir, ENOENT},
                                {"./tool", "", 0},
                                {dir + "/tool", "", 0},
                                {dir, dir, ENOENT},
                                {"", dir, ENOENT},
                                {"./plain", dir, EACCES}};
  for (const Case& c : cases) {
    std::string file;
    EXPECT_EQ(findProgram(c.name, c.path, &file), c.error) << c.name << " in " << c.path;
    if (c.error == 0 && c.name == "tool") { EXPECT_EQ(file, dir + "/tool"); }
  }
  QDir::setCurrent(before);
}

TEST(ProcessRun, EndsWithTheCodesOfEachKind) {
  struct Case {
    std::vector<std::string> arguments;
    quint32 watched, waited;
  };
  const std::vector<Case> cases{
      {{startee()}, 0, 0},
      {{startee(), "exit", "7"}, 7, 0},
      {{startee(), "sleep", "150", "exit", "3"}, 3, 0},
      {{"/bin/sh", "-c", "kill -9 $$"}, 137, 0},
      {{"no such program"}, 0x80040000 + ENOENT, 0x80040000 + ENOENT},
      {{"/etc/passwd"}, 0x80040000 + EACCES, 0x80040000 + EACCES},
      {{}, 0x80040000 + ENOENT, 0x80040000 + ENOENT},
      {{startee(), std::string("a\0b", 3)}, 0x80040000 + EINVAL, 0x80040000 + EINVAL},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(process::LaunchAndWatch(c.arguments, 1), c.watched) << (c.arguments.empty() ? "" : c.arguments.back());
    EXPECT_EQ(process::LaunchAndWait(c.arguments, 1), c.waited) << (c.arguments.empty() ? "" : c.arguments.back());
  }
}

TEST(ProcessRun, OutputComesInOrderAndWholeBeforeTheEnd) {
  const int leaky = ::open("/dev/null", O_RDONLY);   // as a careless library would
  Output output;
  EXPECT_EQ(process::LaunchAndWait({startee(), "err", "zero", "out", "one", "err", "two", "out", "three", "stdin", "fds"}, 1, {},
                                   output.collect()),
            0u);
  EXPECT_EQ(output.out, "zero\none\ntwo\nthree\n0\n0 1 2 \n");   // input is empty, and H2: nothing of ours is passed on
  ::close(leaky);
  Output flood;
  EXPECT_EQ(process::LaunchAndWait({startee(), "flood", "50000"}, 1, {}, flood.collect()), 0u);
  EXPECT_EQ(flood.out.size(), 5000000);
}

TEST(ProcessRun, TimeOutLeavesTheProgramRunning) {
  const testing_files::TempFolder folder;
  Output output;
  EXPECT_EQ(process::LaunchAndWait({startee(), "await", folder / "go", "out", "late"}, 1, 50, output.collect()),
            process::kTimedOut);
  ASSERT_EQ(process::Program::running().size(), 1);
  testing_files::writeRaw(folder / "go", {});
  EXPECT_TRUE(spinUntil([] { return process::Program::running().isEmpty(); }));
  EXPECT_EQ(output.out, "late\n");
}

TEST(ProcessRun, H2_StoppingEndsTheWholeGroup) {
  const testing_files::TempFolder folder;
  const std::string fifo = folder / "held";
  ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
  const int reader = ::open(fifo.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);   // reads an end when nobody holds it
  for (const bool deaf : {false, true}) {
    std::vector<std::string> arguments{startee()};
    if (deaf) arguments.push_back("ignore");
    arguments.insert(arguments.end(), {"child", "hold", fifo, "out", "ready", "await", folder / "never"});
    bool held = false;
    const auto stopWhenReady = [&](process::Program& program) {
      QObject::connect(&program, &process::Program::output, &program, [&] {
        char byte;
        held = ::read(reader, &byte, 1) < 0 && errno == EAGAIN;
        program.stop();
      });
    };
    EXPECT_EQ(process::LaunchAndWatch(arguments, 1, stopWhenReady), deaf ? 128u + 9 : 128u + 15);
    EXPECT_TRUE(held);
    EXPECT_TRUE(spinUntil([&] {
      char byte;
      return ::read(reader, &byte, 1) == 0;
    })) << "a child of the program outlived the stop";
  }
  ::close(reader);
}

TEST(ProcessRun, AChildThatKeepsTheChannelsDoesNotHoldUpTheEnd) {
  const testing_files::TempFolder folder;
  const QString file = QString::fromStdString(folder / "f");
  EXPECT_EQ(process::LaunchAndWait({startee(), "orphan", "await", folder / "go", "touch", folder / "f"}, 1), 0u);
  EXPECT_FALSE(QFile::exists(file)) << "the child was waited for";
  testing_files::writeRaw(folder / "go", {});
  EXPECT_TRUE(spinUntil([&] { return QFile::exists(file); })) << "it was not asked to end";
}

TEST(ProcessWindow, IsAskedToCloseWhenItsTitleSaysFinished) {
  const Xvfb server;
  if (!server.runs()) GTEST_SKIP() << "no Xvfb";
  const std::string titled = QString::fromStdString(startee()).replace(u"startee"_s, u"titled"_s).toStdString();
  EXPECT_EQ(process::LaunchAndWatch({titled, "working", "finished, all is well"}, 1), 5u);
  // The window may belong to a child of the program that was started.
  EXPECT_EQ(process::LaunchAndWatch({"/bin/sh", "-c", "\"$0\" working Finished; exit $?", titled}, 1), 5u);
  // Another title closes nothing.
  const OnceAProgramRuns meanwhile([] {
    spin(1000);
    for (auto* program : process::Program::running()) program->stop();
  });
  EXPECT_EQ(process::LaunchAndWatch({titled, "working", "almost FINISHED"}, 1), 128u + 15);
}
