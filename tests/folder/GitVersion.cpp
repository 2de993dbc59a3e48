// Files as version control has them, against a repository that git makes; and the running of programs that gives them.
#include "folder/GitVersion.h"

#include <gtest/gtest.h>

#include <QScopeGuard>
#include <chrono>
#include <cstdlib>
#include <filesystem>

#include "process/Capture.h"
#include "tests/support/OwnFolder.h"

namespace fs = std::filesystem;
using process::Captured;

namespace {

class GitVersion : public ::testing::Test, protected OwnFolder {
 protected:
  void git(std::vector<std::string> arguments) {
    const std::vector<std::string> start{"git", "-C", top, "-c", "user.name=a", "-c", "user.email=b", "-c", "core.autocrlf=false"};
    arguments.insert(arguments.begin(), start.begin(), start.end());
    const Captured run = process::capture(arguments, {});
    EXPECT_EQ(run.exitCode, 0) << run.errors;
  }
  void put(const std::string& name, const QByteArray& bytes) {
    write(QString::fromUtf8("x"), bytes), fs::rename(path("x").toStdString(), top + "/" + name);
  }
  // The text, or "error: ...".
  std::string shown(const std::string& file, const std::string& version) {
    text::SearchControl control;
    const text::LoadedFile loaded = folder::gitVersion(file, version, {}, control);
    return loaded.error.empty() ? loaded.text.bytes() : "error: " + loaded.error;
  }
  ~GitVersion() override { fs::remove_all(top); }   // the library would not remove all names
  const std::string top = path("top").toStdString();
};

TEST_F(GitVersion, IsTheFileAsItWas) {
  fs::create_directories(top + "/sub");
  git({"init", "-q"});
  EXPECT_EQ(shown(top + "/a.v", "HEAD"), "error: Version control has no version \"HEAD\"");
  for (const char* name : {"sub/-a.v", "sub/n\nl:.v", "sub/bad\xff.v"}) put(name, "old\r\n\xff");
  put("wide.v", QByteArray("\xff\xfe"
                           "a\0\n\0",
                           6));
  put("odd.v", "odd\r\n");
  git({"add", "-A"});
  git({"commit", "-q", "-m", "one"});
  text::SearchControl control;
  const text::LoadOptions wide{.format = text::FileFormat{text::Encoding::utf16le, false}};
  EXPECT_EQ(folder::gitVersion(top + "/odd.v", "HEAD", wide, control).text.bytes(), "odd\r\n") << "no UTF-16 in this version";
  for (const char* name : {"sub/-a.v", "sub/n\nl:.v", "sub/bad\xff.v"}) {
    put(name, "new\n");
    EXPECT_EQ(shown(top + "/" + name, "HEAD"), "old\r\n\xc3\xbf") << name;
    EXPECT_EQ(shown(top + "/" + name, ""), "old\r\n\xc3\xbf") << name;
  }
  EXPECT_EQ(shown(top + "/wide.v", "HEAD~0"), "a\n");
  put("empty.v", "");
  git({"add", "empty.v", "sub/-a.v"});
  EXPECT_EQ(shown(top + "/sub/-a.v", ""), "new\n");
  EXPECT_EQ(shown(top + "/empty.v", ""), "");
  fs::create_symlink("top/sub/-a.v", path("link").toStdString());
  EXPECT_EQ(shown(path("link").toStdString(), "HEAD"), "old\r\n\xc3\xbf");

  put("new.v", "new\n");
  EXPECT_EQ(shown(top + "/empty.v", "HEAD"), "error: The version \"HEAD\" does not hold this file");
  EXPECT_EQ(shown(top + "/sub", "HEAD"), "error: The version \"HEAD\" does not hold this file");
  EXPECT_EQ(shown(top + "/new.v", ""), "error: Version control does not track this file");
  EXPECT_EQ(shown(top + "/new.v", "nowhere"), "error: Version control has no version \"nowhere\"");
  EXPECT_EQ(shown(top + "/new.v", "--help"), "error: \"--help\" cannot be the name of a version");
  EXPECT_EQ(shown(path("x").toStdString(), "HEAD"), "error: The file is in no working copy of version control (git)");

  git({"checkout", "-q", "-b", "other"});
  put("wide.v", "theirs");
  git({"commit", "-q", "-a", "-m", "two"});
  git({"checkout", "-q", "-"});
  put("wide.v", "ours");
  git({"commit", "-q", "-a", "-m", "three"});
  const std::string merge = "git -C " + top + " -c user.name=a -c user.email=b merge -q other";
  EXPECT_EQ(process::capture({"sh", "-c", merge}, {}).exitCode, 1);
  EXPECT_EQ(shown(top + "/wide.v", ""), "error: The file has a conflict that is not resolved: no version of it is staged");
  git({"reset", "-q", "--hard", "HEAD~1"});

  // Started by git itself, the editor inherits what names another working copy.
  ::setenv("GIT_DIR", "/nowhere", 1);
  EXPECT_EQ(shown(top + "/wide.v", "HEAD"), "a\n");
  ::unsetenv("GIT_DIR");
  const QByteArray search = qgetenv("PATH");
  const auto back = qScopeGuard([&] { ::setenv("PATH", search.constData(), 1); });
  ::setenv("PATH", "/nowhere", 1);
  EXPECT_EQ(shown(top + "/wide.v", "HEAD"), "error: The program git is not installed, or not in the search path");
}

TEST_F(GitVersion, ProgramsAreHeardApartAndEnd) {
  const auto run = [](const std::string& script, const process::CaptureRules& rules = {}) {
    return process::capture({"sh", "-c", script}, rules);
  };
  const Captured both = run("printf 'a\\0b'; echo err >&2; exit 3");
  EXPECT_EQ(both.output, std::string("a\0b", 3));
  EXPECT_EQ(both.errors, "err\n");
  EXPECT_EQ(both.exitCode, 3);
  EXPECT_EQ(run("kill -9 $$").exitCode, 128 + 9);
  EXPECT_EQ(run("head -c 3000000 /dev/zero; head -c 3000000 /dev/zero >&2").output.size(), 3000000u);   // neither channel fills up
  EXPECT_EQ(run("echo $ONE $TWO", {.set = {"ONE=1", "TWO=2"}, .without = {"TWO"}}).output, "1 2\n");
  EXPECT_EQ(process::capture({"zelkor-no-such-program"}, {}).end, Captured::notStarted);

  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(run("yes", {.most = 1000}).end, Captured::tooMuch);
  const std::atomic<bool> cancel{true};
  EXPECT_EQ(run("sleep 100", {.cancel = &cancel}).end, Captured::cancelled);
  EXPECT_EQ(run("yes >&2", {.timeLimit = std::chrono::milliseconds(100)}).end, Captured::timedOut);
  const Captured left = run("sleep 100 & echo $!");   // what it left running is not waited for
  EXPECT_EQ(run("kill " + left.output).exitCode, 0);
  const Captured group = run("sleep 100 & echo $!; wait", {.timeLimit = std::chrono::seconds(2)});
  EXPECT_EQ(group.end, Captured::timedOut);
  ASSERT_NE(group.output.find('\n'), std::string::npos);
  const std::string status = "/proc/" + group.output.substr(0, group.output.find('\n')) + "/status";
  EXPECT_EQ(run("for i in $(seq 100); do grep -q '^State:.[^Z]' " + status + " || exit 9; sleep 0.1; done").exitCode, 9)
      << "children of a killed program end too";
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(50));
}

}   // namespace
