// Whole runs of command strings, as folders (Cases.h).
#include <gtest/gtest.h>
#include <cerrno>
#include <cstring>

#include <pwd.h>
#include <unistd.h>
#include <QClipboard>
#include <QDate>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QLocale>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryDir>

#include "base/Program.h"
#include "control/CodeMax.h"
#include "document/Languages.h"
#include "language/Registration.h"
#include "language/ucCM.h"
#include "script/Batch.h"
#include "tests/e2e/Cases.h"
#include "tests/support/EventLoop.h"
#include "tests/support/files/FaultyFileSystem.h"

using namespace Qt::StringLiterals;

namespace {

// Catches what goes through the standard channels.
class Channels : public testing_files::FaultyFileSystem {
 public:
  QByteArray input, output, errors;

  std::int64_t read(int fd, char* to, std::size_t length) override {
    if (fd != 0) return FaultyFileSystem::read(fd, to, length);
    const QByteArray part = input.left(qsizetype(length));
    std::copy(part.begin(), part.end(), to);
    input.remove(0, part.size());
    return part.size();
  }
  std::int64_t write(int fd, const char* from, std::size_t length) override {
    if (fd != 1 && fd != 2) return FaultyFileSystem::write(fd, from, length);
    (fd == 1 ? output : errors).append(from, qsizetype(length));
    return std::int64_t(length);
  }
};

void loadLanguages() {
  static const bool once = [] {
    languages().setIniFile(sourceFolder() + u"/config/Zelkor.ini"_s);
    languages().Init();
    AddLanguages(*languages().Languages());
    return true;
  }();
  EXPECT_TRUE(once && languages().Languages()->Count() > 0);
}

QByteArray placed(QByteArray text, const QString& folder) {
  const passwd* const user = ::getpwuid(::getuid());
  text.replace("{DIR}", folder.toUtf8()).replace("{BIN}", binFolder().toUtf8());
  text.replace("{DATE}", QLocale().toString(QDate::currentDate(), QLocale::ShortFormat).toUtf8());
  text.replace("{ZELKOR}", applicationFolder().toUtf8());
  return text.replace("{USER}", user ? user->pw_name : "");
}

void placeInput(const Case& one, const QString& path) {
  QFile file(path);
  EXPECT_TRUE(file.open(QFile::ReadWrite) && file.write(one.input) == one.input.size() && file.flush());
  file.setFileTime(QDateTime({2001, 2, 3}, {4, 5, 6}), QFile::FileModificationTime);
}

QByteArray read(const QString& path) {
  QFile file(path);
  return file.open(QFile::ReadOnly) ? file.readAll() : QByteArray("<no file>");
}

Result runHere(const Case& one, const QString& folder) {
  const QString path = folder + u"/input."_s + one.extension;
  placeInput(one, path);
  QGuiApplication::clipboard()->setText(QString::fromUtf8(placed(one.clipboard, folder)));
  BatchOptions options;
  options.commands = QString::fromUtf8(placed(one.commands, folder));
  options.files = QStringList{path};
  options.save = one.options.contains(u"save"_s);
  if (!options.save) options.outputFolder = folder + u"/out"_s;
  searchState() = {};
  Channels channels;
  channels.input = placed(one.standardInput, folder);
  Result result;
  const QString before = QDir::currentPath();
  QDir::setCurrent(folder);
  {
    const testing_files::UseFileSystem use(channels);
    result.status = batch::run(options);
  }
  QDir::setCurrent(before);
  const auto inEnglish = [](QByteArray text) { return text.replace(std::strerror(ENOENT), "No such file or directory"); };
  result.log = inEnglish(channels.output);
  result.messages = inEnglish(channels.errors);
  const QString saved = options.save ? path : folder + u"/out/input."_s + one.extension;
  if (QFile::exists(saved)) result.text = read(saved);
  return result;
}

// The same by the program itself.
Result runProgram(const Case& one, const QString& folder) {
  const QString name = u"input."_s + one.extension;
  placeInput(one, folder + u'/' + name);
  QProcess program;
  QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
  environment.insert(u"QT_QPA_PLATFORM"_s, u"offscreen"_s);
  environment.insert(u"LC_ALL"_s, u"en_GB.UTF-8"_s);
  program.setProcessEnvironment(environment);
  program.setWorkingDirectory(folder);
  program.start(binFolder() + u"/zelkor"_s,
                {u"--batch"_s, u"--command"_s, QString::fromUtf8(placed(one.commands, folder)), u"--definitions"_s,
                 sourceFolder() + u"/config/Zelkor.ini"_s, u"--output"_s, u"out"_s, u"--"_s, folder + u'/' + name});
  program.write(placed(one.standardInput, folder));
  program.closeWriteChannel();
  EXPECT_TRUE(program.waitForFinished(kPatience));
  return {read(folder + u"/out/"_s + name), program.readAllStandardOutput(), program.readAllStandardError(), program.exitCode()};
}

void compare(const Case& one, const QString& folder, const Result& result) {
  const auto same = [&](const char* what, const QByteArray& expected, const QByteArray& found) {
    const QByteArray wrong = difference(placed(expected, folder), found);
    EXPECT_TRUE(wrong.isEmpty()) << one.name.toStdString() << ": " << what << ("\n" + wrong).constData();
  };
  EXPECT_EQ(result.status, one.status);
  same("log", one.log, result.log);
  same("messages", one.messages, result.messages);
  if (one.status == 0) same("text", one.expected, result.text);
}

}   // namespace

TEST(EndToEnd, Cases) {
  QLocale::setDefault(QLocale(u"en_GB"_s));
  loadLanguages();
  const std::vector<Case> cases = readCases();
  ASSERT_GT(cases.size(), 30u);
  for (const Case& one : cases) {
    SCOPED_TRACE(one.name.toStdString());
    const QTemporaryDir folder;
    compare(one, folder.path(), runHere(one, folder.path()));
    EXPECT_FALSE(QFile::exists(folder.filePath(u"canary"_s))) << "a value was taken for a command";
  }
}

// The examples of the reference once more, by the program with its options, its channels and its exit status.
TEST(EndToEnd, ExamplesByTheProgramItself) {
  ASSERT_TRUE(QFile::exists(binFolder() + u"/zelkor"_s));
  int count = 0;
  for (const Case& one : readCases()) {
    const bool failure = one.name == u"invalid-unknown"_s || one.name == u"log-save-fails"_s;
    if ((one.title.isEmpty() && !failure) || one.commands.contains("FILEINFO")) continue;
    SCOPED_TRACE(one.name.toStdString());
    const QTemporaryDir folder;
    compare(one, folder.path(), runProgram(one, folder.path()));
    ++count;
  }
  EXPECT_GT(count, 8);
}

namespace {

// What a run of the macro on the text shows: its log, and the lines of the text that went (-) and came (+). "\u2038" is the caret.
QByteArray shown(const clsMacro& macro, QString text, const QString& extension) {
  Case one;
  const QStringList before = text.left(text.indexOf(u'\u2038')).split(u'\n');
  if (text.contains(u'\u2038'))
    one.commands =
        "cmdGOTOLINE " + QByteArray::number(before.size() - 1) + '\n' + QByteArray("cmdCHARRIGHT\n").repeated(before.last().size());
  one.input = text.remove(u'\u2038').toUtf8();
  one.extension = extension;
  one.commands += macro.CommandString.toUtf8();
  one.standardInput = "clock\nclock\n";
  const QTemporaryDir folder;
  const Result result = runHere(one, folder.path());
  QString all = QString::fromUtf8(result.log + result.messages);
  if (result.status != 0) all += u"status %1\n"_s.arg(result.status);
  for (const QByteArray& line : difference(one.input, result.text).split('\n'))
    if (line.startsWith('+') || line.startsWith('-')) all += QString::fromUtf8(line) + u'\n';
  all.replace(folder.path(), u"{DIR}"_s);
  all.replace(QRegularExpression(u"(Author|Date) +: .*"_s), u"\\1"_s);
  return all.toUtf8();
}

}   // namespace

// A test bench with delays, whose module and include file stand beside it.
TEST(EndToEnd, BenchesAreCheckedAndRunWithWhatStandsBesideThem) {
  for (const char* program : {"iverilog", "vvp", "verilator"})
    if (QStandardPaths::findExecutable(QString::fromLatin1(program)).isEmpty()) GTEST_SKIP() << "no " << program;
  loadLanguages();
  const QTemporaryDir folder;
  const auto put = [&](const QString& name, const char* text) {
    QFile file(folder.filePath(name));
    EXPECT_TRUE(file.open(QFile::WriteOnly) && file.write(text) > 0);
  };
  put(u"count.sv"_s,
      "module count(input clk, output logic [3:0] q);\n  initial q = 0;\n  always_ff @(posedge clk) q <= q + 1;\nendmodule\n");
  put(u"ticks.vh"_s, "`define TICKS 3\n");
  Case bench;
  bench.extension = u"v"_s;
  bench.options = QStringList{u"save"_s};
  bench.input =
      "/* verilator lint_off DECLFILENAME */\n`include \"ticks.vh\"\nmodule bench;\n  reg clk;\n  wire [3:0] q;\n  count "
      "u(.clk(clk), .q(q));\n"
      "  initial begin clk = 0; forever #5 clk = ~clk; end\n  initial begin\n    repeat (`TICKS) @(posedge clk);\n"
      "    wait (q == 4'd4);\n    #1 $display(\"reached %0d\", q);\n    $finish;\n  end\nendmodule\n";
  for (const auto& [macro, wanted] : std::initializer_list<std::pair<QString, QByteArray>>{
           {u"Compile"_s, "[iverilog: exit code 0]"}, {u"Lint"_s, "[verilator: exit code 0]"}, {u"Simulate"_s, "reached 4"}}) {
    const auto& macros = languages().Languages()->Item(languages().GetIndex(u"Verilog"_s))->cMacros();
    const int index = macros->IndexOf(&clsMacro::Name, macro);
    ASSERT_GT(index, 0);
    bench.commands = macros->Item(index)->CommandString.toUtf8();
    const Result result = runHere(bench, folder.path());
    EXPECT_TRUE(result.log.contains(wanted)) << macro.toStdString() << '\n'
                                             << result.log.constData() << result.messages.constData();
  }
}

// Every shipped macro on the three texts of its language. The programs that macros start are stand-ins that say how they were
// called. ZELKOR_WRITE_GOLDEN=1 writes what is expected.
TEST(EndToEnd, ShippedMacros) {
  QLocale::setDefault(QLocale(u"en_GB"_s));
  loadLanguages();
  readCases();   // the verbs of the upper floors
  const QTemporaryDir programs;
  for (const auto& language : *languages().Languages())
    for (const auto& macro : *language->cMacros())
      for (const QString& line : macro->CommandString.split(u"\r\n"_s))
        if (QFile program(programs.path() + u'/' + line.section(u' ', 1, 1));
            line.startsWith(u"SHELL"_s) && program.open(QFile::WriteOnly)) {
          program.write("#!/bin/sh\necho \"${0##*/} $*\"\n");
          program.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        }
  const QByteArray path = qgetenv("PATH");
  qputenv("PATH", programs.path().toUtf8() + ':' + path);
  QByteArray found;
  QStringList done;
  for (const QString& block : QString::fromUtf8(read(sourceFolder() + u"/tests/e2e/macros.txt"_s)).split(u"\n== "_s)) {
    const QString head = block.section(u'\n', 0, 0), name = head.section(u' ', 0, -2).remove(u"== "_s);
    const QStringList texts = (block.section(u'\n', 1) + u'\n').split(u"\n--\n"_s);
    const int index = languages().GetIndex(name);
    ASSERT_GT(index, 0) << name.toStdString();
    EXPECT_EQ(texts.size(), 3) << name.toStdString();
    done += name;
    for (const auto& macro : *languages().Languages()->Item(index)->cMacros())
      for (qsizetype i = 0; i < texts.size(); ++i)
        found += "== " + name.toUtf8() + ": " + macro->Name.toUtf8() + ' ' + QByteArray::number(i + 1) + '\n' +
                 shown(*macro, texts[i], head.section(u' ', -1));
  }
  qputenv("PATH", path);
  for (const auto& language : *languages().Languages()) EXPECT_TRUE(done.contains(language->Name)) << language->Name.toStdString();
  QFile golden(sourceFolder() + u"/tests/e2e/macros.golden"_s);
  if (qEnvironmentVariableIsSet("ZELKOR_WRITE_GOLDEN") && golden.open(QFile::WriteOnly)) golden.write(found);
  golden.close();
  const QByteArray wrong = difference(read(golden.fileName()), found);
  EXPECT_TRUE(wrong.isEmpty()) << wrong.constData();
}
