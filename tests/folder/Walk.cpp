// The walk and its rules against version control itself, and on folders full of trouble.
#include "folder/Walk.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <random>
#include <set>

#include "tests/support/files/Child.h"
#include "tests/support/files/TempFolder.h"

namespace fs = std::filesystem;
using testing_files::readRaw;
using testing_files::TempFolder;
using testing_files::writeRaw;
using Paths = std::set<std::string>;

namespace {

Paths walked(const std::string& root, const folder::WalkOptions& options, folder::WalkReport* report = nullptr) {
  Paths paths;
  std::string last;
  const auto result = folder::walk(root, options, [&](const std::string& path) {
    const std::string below(folder::belowRoot(root, path));
    EXPECT_TRUE(last.empty() || last < below) << last << " then " << below;
    last = below;
    paths.insert(below);
    return true;
  });
  if (report) *report = result;
  return paths;
}

// What git prints, in pieces that end with a NUL. input: for its standard input.
Paths git(const std::string& top, const std::string& arguments, const std::string& input = {}) {
  const TempFolder files;
  writeRaw(files / "in", input);
  const std::string command =
      "cd '" + top + "' && git " + arguments + " <" + files / "in" + " >" + files / "out" + " 2>" + files / "err";
  const int status = std::system(command.c_str());
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) <= 1) << command << ": " << readRaw(files / "err");
  Paths out;
  const std::string bytes = readRaw(files / "out");
  for (std::size_t at = 0; at < bytes.size();) {
    const std::size_t end = std::min(bytes.find('\0', at), bytes.size());
    out.insert(bytes.substr(at, end - at));
    at = end + 1;
  }
  return out;
}

class Tree {
 public:
  explicit Tree(unsigned seed) : random_(seed) {}

  std::string name() {
    static const std::vector<std::string> names{"a",     "b",      "ab",   "foo",  "bar", "build", "x.o",   "y.sv",
                                                "y.o.d", "sp ace", "end ", "#h",   "!n",  "[a]",   "a*b",   "Foo",
                                                "n\nl",  "\xff",   "ä",    "c\\d", ".x",  "a-c",   "foobar"};
    return names[pick(names.size())];
  }

  std::string rule() {
    static const std::vector<std::string> parts{"*",   "**", "?",      "[a-f]", "[!b]*", "[[:alpha:]]", "\\", "foo",
                                                "bar", "a",  "b",      "*.o",   "\\ ",   " ",           "]",  "[",
                                                "x.?", "ab", "c\\\\d", "build", "a-",    "[^\\]a]"};
    std::string rule = pick(4) == 0 ? "!" : "";
    if (pick(4) == 0) rule += '/';
    for (std::size_t n = 1 + pick(3); n > 0; --n) {
      rule += pick(3) == 0 ? name() : parts[pick(parts.size())];
      if (n > 1 && pick(2) == 0) rule += '/';
    }
    if (pick(4) == 0) rule += '/';
    return rule + (pick(8) == 0 ? "  \n" : pick(8) == 0 ? "\r\n" : "\n");
  }

  std::string rules() {
    std::string all = pick(6) == 0 ? "\xEF\xBB\xBF# first\n\n" : "";
    for (std::size_t n = pick(7); n > 0; --n) all += rule();
    if (!all.empty() && pick(5) == 0) all.pop_back();   // the last line is not ended
    return all;
  }

  void grow(const std::string& folder, int depth) {
    for (std::size_t n = 2 + pick(5); n > 0; --n) {
      const std::string path = folder + '/' + name();
      if (fs::exists(fs::symlink_status(path))) continue;
      if (depth > 0 && pick(2) == 0) {
        fs::create_directory(path);
        grow(path, depth - 1);
      } else {
        writeRaw(path, "");
      }
    }
    if (pick(3) == 0) writeRaw(folder + "/.gitignore", rules());
  }

  std::size_t pick(std::size_t below) { return below == 0 ? 0 : random_() % below; }

 private:
  std::mt19937 random_;
};

}   // namespace

TEST(Walk, IgnoresWhatVersionControlIgnores) {
  const char* given = std::getenv("ZELKOR_SEED");
  const unsigned first = given ? static_cast<unsigned>(std::strtoul(given, nullptr, 10)) : 1;
  const fs::path users = fs::path(std::getenv("XDG_CONFIG_HOME")) / "git";
  fs::create_directories(users);
  std::size_t ignored = 0, kept = 0, forced = 0;
  for (unsigned seed = first; seed < first + 12 && !HasFailure(); ++seed) {
    Tree tree(seed);
    const TempFolder top;
    git(top.path(), "init -q");
    tree.grow(top.path(), 3);
    writeRaw(top / ".gitignore", tree.rules());
    writeRaw(top / ".git/info/exclude", tree.rules());
    writeRaw((users / "ignore").string(), tree.rules());
    std::string all;   // NUL after each
    for (auto at = fs::recursive_directory_iterator(top.path()); at != fs::recursive_directory_iterator(); ++at) {
      if (at->path().filename() == ".git") at.disable_recursion_pending();
      else all += at->path().lexically_relative(top.path()).string() + '\0';
    }
    std::string some;   // tracked whatever the rules say
    for (const std::string& path : git(top.path(), "ls-files -z -o"))
      if (tree.pick(4) == 0) some += path + '\0';
    git(top.path(), "--literal-pathspecs update-index -z --add --stdin", some);
    if (seed % 3 == 0) git(top.path(), "update-index --index-version 4");
    if (seed % 5 == 0) git(top.path(), "update-index --split-index");

    // Each path by its own rules, beneath folders that are not ignored themselves.
    const Paths byRules = git(top.path(), "check-ignore -z --no-index --stdin", all), tracked = git(top.path(), "ls-files -z");
    folder::WalkOptions options;
    options.hidden = true;
    const Paths ours = walked(top.path(), options);
    EXPECT_EQ(ours, git(top.path(), "ls-files -z -c -o --exclude-standard")) << "seed " << seed;
    options.ignored = true;
    for (const std::string& path : walked(top.path(), options)) {
      if (path.starts_with(".git/")) continue;
      EXPECT_EQ(ours.count(path) == 0, byRules.count(path) && !tracked.count(path)) << path << ", seed " << seed;
      (ours.count(path) ? kept : ignored) += 1;
    }
    options.ignored = false;
    for (const auto& entry : fs::directory_iterator(top.path())) {   // a folder inside follows the rules above it
      if (!entry.is_directory() || entry.path().filename() == ".git" || byRules.count(entry.path().filename().string())) continue;
      for (const std::string& path : walked(entry.path().string(), options))
        forced += ours.count(entry.path().filename().string() + '/' + path) == 0;
    }
  }
  EXPECT_EQ(forced, 0u);
  EXPECT_GT(ignored, 100u);
  EXPECT_GT(kept, 100u);
}

TEST(Walk, StandsFoldersFullOfTrouble) {
  const TempFolder top;
  for (const char* folder : {"/d", "/d/deep", "/locked", "/sub", "/.git", "/sub/.git"}) fs::create_directory(top.path() + folder);
  for (const char* file :
       {"/d.v", "/d/deep/x.SV", "/d/tb.sv", "/n\nl.v", "/bad\xff.v", "/.dot.v", "/locked/in.v", "/sub/o.tmp", "/.git/c"})
    writeRaw(top.path() + file, "text");
  writeRaw(top / ".gitignore", "*.tmp\n");
  writeRaw(top / ".git/HEAD", "ref: x\n");
  writeRaw(top / "sub/.git/HEAD", "ref: x\n");   // a repository inside has rules of its own
  writeRaw(top / "nul.v", std::string("a\0b", 3));
  writeRaw(top / "wide.v", std::string("m\0o\0d\0u\0l\0e\0 \0a\0;\0\n\0", 20));
  fs::create_symlink("..", top / "d/loop");
  fs::create_symlink("d.v", top / "link.v");
  fs::create_symlink("nowhere", top / "broken");
  ASSERT_EQ(::mkfifo((top / "fifo.v").c_str(), 0600), 0);
  const int fd = ::socket(AF_UNIX, SOCK_STREAM, 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::snprintf(address.sun_path, sizeof address.sun_path, "%s/s", top.path().c_str());
  ASSERT_EQ(::bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  ::close(fd);
  ::chmod((top / "locked").c_str(), 0);

  folder::WalkOptions options;
  folder::WalkReport report;
  options.textOnly = true;
  const auto body = [&] {
    if (::geteuid() == 0 && (::chmod(top.path().c_str(), 0755) != 0 || ::setuid(65534) != 0))
      testing_files::skipChild("cannot change user");
    EXPECT_EQ(walked(top.path(), options, &report),
              (Paths{"bad\xff.v", "d.v", "d/deep/x.SV", "d/tb.sv", "n\nl.v", "sub/o.tmp", "wide.v"}));
    EXPECT_EQ(report.unreadable, 1);
    ASSERT_EQ(report.troubles.size(), 1u);
    EXPECT_EQ(report.troubles[0].path, top / "locked");
    EXPECT_EQ(report.links, 3);
    EXPECT_EQ(report.special, 2);
    EXPECT_EQ(report.binary, 1);
    options.links = true;   // each file once, and no end without one
    options.masks = folder::Masks("!tb*, *.sv *.V");
    EXPECT_EQ(walked(top.path(), options, &report), (Paths{"bad\xff.v", "d.v", "d/deep/x.SV", "n\nl.v", "wide.v"}));
    options.masks = folder::Masks("d/");
    options.hidden = options.ignored = true;
    EXPECT_EQ(walked(top.path(), options), (Paths{"d/deep/x.SV", "d/tb.sv"}));
    options.masks = folder::Masks("deep/,/tb/");   // at any depth, and at the top
    EXPECT_EQ(walked(top.path(), options), (Paths{"d/deep/x.SV"}));
    options.masks = folder::Masks("/.git/*");
    EXPECT_EQ(walked(top.path(), options), (Paths{".git/HEAD", ".git/c"}));
    EXPECT_FALSE(folder::walk(top / "nothing", {}, [](const std::string&) { return true; }).error.empty());
    EXPECT_FALSE(folder::walk(top / "d.v", {}, [](const std::string&) { return true; }).error.empty());
    int given = 0;
    EXPECT_TRUE(folder::walk(top.path(), {}, [&](const std::string&) { return ++given < 2; }).stopped);
    EXPECT_EQ(given, 2);
  };
  const int result = testing_files::inChild(body);
  ::chmod((top / "locked").c_str(), 0755);
  if (result == testing_files::kSkipped) GTEST_SKIP();
  EXPECT_EQ(result, 0);
}
