// Finding in many files: against grep on random trees, in every encoding, with limits, and over what is no file to read.
#include "folder/FindInFiles.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <set>

#include "folder/Walk.h"
#include "text/file/Encoding.h"

namespace {

namespace fs = std::filesystem;
using namespace folder;

class FindInFiles : public testing::Test {
 protected:
  void SetUp() override {
    std::string name = (fs::temp_directory_path() / "find-XXXXXX").string();
    ASSERT_NE(mkdtemp(name.data()), nullptr);
    root_ = name;
  }
  void TearDown() override { fs::remove_all(root_); }

  void write(const std::string& name, const std::string& bytes) {
    fs::create_directories(fs::path(root_ + "/" + name).parent_path());
    std::ofstream(root_ + "/" + name, std::ios::binary) << bytes;
  }

  struct Found {
    FindSummary summary;
    std::string rows;
    std::vector<std::string> order;
  };
  Found find(const std::string& what, const text::SearchOptions& options, FindRules rules = {}) const {
    Found found;
    text::SearchControl control;
    const FindText text(what, options);
    rules.threads = 3;
    found.summary = findInFiles(
        text, rules,
        [&](const auto& give) {
          WalkOptions all;
          all.ignored = all.hidden = true;
          walk(root_, all, [&](const std::string& path) { return give({path, {}}); });
        },
        [&](const FileFinds& file) {
          found.order.push_back(file.path);
          appendRows(file, &found.rows);
        },
        control);
    return found;
  }
  // "path:line: text" of each line of a row, sorted as text.
  std::set<std::string> linesOf(const std::string& rows, const std::string& root) const {
    std::set<std::string> lines;
    for (std::size_t at = 0; at < rows.size();) {
      const auto end = rows.find('\n', at);
      std::string line = rows.substr(at + root.size(), end - at - root.size());
      const auto text = line.find(": "), colon = line.rfind(':', text - 1);
      if (line.substr(0, colon).find(':') != std::string::npos) line.erase(colon, text - colon);   // the column
      lines.insert(line);
      at = end + 1;
    }
    return lines;
  }

  std::string root_;
};

std::string output(const std::string& command) {
  std::string out;
  FILE* pipe = popen(command.c_str(), "r");
  char buffer[4096];
  while (const auto n = fread(buffer, 1, sizeof buffer, pipe)) out.append(buffer, n);
  pclose(pipe);
  return out;
}

}   // namespace

TEST_F(FindInFiles, RandomTreesAgreeWithGrepInEveryEncoding) {
  std::mt19937 random(std::getenv("ZELKOR_SEED") ? std::atoi(std::getenv("ZELKOR_SEED")) : 11);
  const auto pick = [&](auto... of) {
    const std::vector<std::string> all{of...};
    return all[random() % all.size()];
  };
  struct As {
    const char* folder;
    text::FileFormat format;
    const char* lineEnd;
  };
  const As kinds[] = {{"/utf8/", {}, "\n"},
                      {"/bom/", {text::Encoding::utf8, true}, "\r\n"},
                      {"/wide/", {text::Encoding::utf16le, false}, "\n"},
                      {"/big/", {text::Encoding::utf16be, true}, "\r\n"},
                      {"/8bit/", {text::Encoding::windows1252, false}, "\n"}};
  for (int i = 0; i < 60; ++i) {
    const std::string name = pick("a", "b b", "-c", "d'", "\xc3\xa9", "x\xff") + "/" + pick("", "s/", ".h/") + std::to_string(i);
    std::string text =
        "h\xc3\xa9"
        "ad of a file that says what it is: \xc3\xa9\xc3\xa8\xc3\xa4\n";
    for (int n = int(random() % 40); n > 0; --n)
      text += pick("reg", "assign", "foo", "Foo", "fo", "o", " ", " ", "_", "(", "1", "\xc3\xa9t\xc3\xa9", "\t", "kK", "\n", "\n");
    if (!text.ends_with('\n')) text += '\n';
    for (const As& as : kinds) {
      std::string bytes;
      for (const char c : text) bytes += c == '\n' ? as.lineEnd : std::string(1, c);
      write(as.folder + name, *text::encodeText(bytes, as.format, nullptr));
    }
  }
  struct Case {
    const char *what, *flags;
    text::SearchOptions options;
  };
  for (const Case& c :
       {Case{"foo", "-F", {.matchCase = true}}, Case{"FOO", "-Fi", {}}, Case{"fo", "-Fw", {.matchCase = true, .wholeWord = true}},
        Case{"\xc3\xa9t\xc3\xa9", "-F", {.matchCase = true}}, Case{"o\xc3\xa9", "-Fi", {}},
        Case{"reg|assi(gn)?|1+_", "-P", {.matchCase = true, .regex = true}}, Case{"fo{2}[ \\t]*\\(", "-Pi", {.regex = true}},
        Case{"^[ \\t]*[a-f]o?", "-P", {.matchCase = true, .regex = true}}, Case{"(k|s)s?ign", "-Pi", {.regex = true}},
        Case{"nowhere", "-F", {.matchCase = true}}}) {
    SCOPED_TRACE(c.what);
    const Found found = find(c.what, c.options);
    EXPECT_TRUE(std::is_sorted(found.order.begin(), found.order.end()));
    EXPECT_EQ(found.summary.files, 300);
    EXPECT_EQ(skippedText(found.summary), "");
    const std::string grep = output("cd '" + root_ + "' && LC_ALL=C.UTF-8 grep -rna " + c.flags + " -e '" + c.what + "' utf8");
    std::set<std::string> expected, got;
    for (std::size_t at = 0; at < grep.size();) {   // "path:line:text"
      const auto end = grep.find('\n', at);
      std::string line = grep.substr(at, end - at);
      line.insert(line.find(':', line.find(':') + 1) + 1, " ");
      expected.insert("/" + line);
      at = end + 1;
    }
    const std::set<std::string> lines = linesOf(found.rows, root_);
    std::size_t count = 0;
    for (const As& as : kinds) {
      got.clear();
      for (const auto& line : lines)
        if (line.starts_with(as.folder)) got.insert("/utf8/" + line.substr(std::string(as.folder).size()));
      EXPECT_EQ(got, expected) << as.folder;
      count += got.size();
    }
    EXPECT_EQ(count, lines.size());
  }
}

TEST_F(FindInFiles, RowsHoldWholeMatchesAndTheLimitIsExact) {
  write("a.v", "one x x\ntwo\r\n\xc3\xa9 x begin\n  end x\nlast");
  write("b.v", "x\n");
  EXPECT_EQ(find("begin\\s+end x\\nla", {.regex = true}).rows,
            root_ + "/a.v:3:5: \xc3\xa9 x begin\n" + root_ + "/a.v:4:   end x\n" + root_ + "/a.v:5: last\n");
  EXPECT_EQ(find("TWO\n\xc3\xa9 x", {}).rows, root_ + "/a.v:2:1: two\n" + root_ + "/a.v:3: \xc3\xa9 x begin\n");   // CR LF among LF
  EXPECT_EQ(find("x\n", {}).rows,
            root_ + "/a.v:1:7: one x x\n" + root_ + "/a.v:4:7:   end x\n" + root_ + "/b.v:1:1: x\n");   // not the line behind
  const Found all = find("x", {});
  EXPECT_EQ(all.rows, root_ + "/a.v:1:5: one x x\n" + root_ + "/a.v:3:3: \xc3\xa9 x begin\n" + root_ + "/a.v:4:7:   end x\n" +
                          root_ + "/b.v:1:1: x\n");
  EXPECT_EQ(all.summary.hits, 5);
  FindRules rules;
  for (rules.mostHits = 1; rules.mostHits <= 6; ++rules.mostHits) {
    const FindSummary summary = find("x", {}, rules).summary;
    EXPECT_EQ(summary.cut, rules.mostHits < 5) << rules.mostHits;
    EXPECT_EQ(summary.hits, std::min<std::int64_t>(rules.mostHits, 5));
  }
  EXPECT_EQ(find("$", {.regex = true}).summary.hits, 6);   // what is behind the last line end is no line
}

TEST_F(FindInFiles, WhatIsNoFileToReadIsSkippedAndCounted) {
  write("text.v", "needle\n");
  write("binary", std::string("needle\0needle", 13));
  write("line\nbreak", "needle\n");
  fs::create_symlink("loop", root_ + "/loop");
  mkfifo((root_ + "/pipe").c_str(), 0600);
  const int fd = socket(AF_UNIX, SOCK_STREAM, 0);
  sockaddr_un address{AF_UNIX, {}};
  (root_ + "/socket").copy(address.sun_path, sizeof address.sun_path - 1);
  ASSERT_EQ(bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  fs::resize_file((write("huge", ""), root_ + "/huge"), std::uintmax_t(10) << 30);
  FindRules rules;
  text::SearchControl control;
  std::string rows;
  const FindSummary summary = findInFiles(
      FindText("needle", {}), rules,
      [&](const auto& give) {
        for (const char* name : {"binary", "gone", "huge", "line\nbreak", "loop", "pipe", "socket", "text.v"})
          give({root_ + "/" + name, {}});
        give({"/dev/zero", {}});
        give({root_, {}});
        give({"untitled", text::Snapshot("a needle")});
      },
      [&](const FileFinds& file) { appendRows(file, &rows); }, control);
  close(fd);
  EXPECT_EQ(rows, root_ + "/line\\x0abreak:1:1: needle\n" + root_ + "/text.v:1:1: needle\nuntitled:1:3: a needle\n");
  EXPECT_EQ(skippedText(summary), "8 files skipped: 1 binary, 1 too large, 1 gone meanwhile, 4 no regular file, 1 link loop");
  for (const std::string path : {"a\nb\x7f\\x41", "a:1:2: b", ":\\:5", "x\\x3a1:"}) {
    const std::string line = shownPath(path) + ":12:3: text: 1:2: x";
    const auto row = rowOf(line);
    ASSERT_TRUE(row) << path;
    EXPECT_EQ(pathOfShown(row->path), path);
    EXPECT_TRUE(row->line == 12 && row->column == 3 && row->text == "text: 1:2: x") << path;
  }
  EXPECT_EQ(rowOf("a:4: x")->column, 0);
  EXPECT_FALSE(rowOf("a:4 x: 1:"));
}

// The cheap look at a file's bytes may never pass over a file that holds a match.
TEST_F(FindInFiles, NeedlesStandInEveryMatch) {
  std::mt19937 random(5);
  const auto pick = [&](const std::vector<std::string>& of) { return of[random() % of.size()]; };
  const std::function<std::string(int)> expression = [&](int depth) {
    std::string out;
    for (int n = 1 + int(random() % 4); n > 0; --n) {
      out += depth > 0 && random() % 4 == 0
                 ? pick({"(", "(?:"}) + expression(depth - 1) + ")"
                 : pick({"a", "b", "ab", "k", "S", ".", "[ab]", "[]a]", "\\d", "\\.", "\\t", "^", "{", "\xc3\xa9"});
      out += pick({"", "", "", "?", "*", "+", "{2}", "{0,1}", "{1,}?", "{,2}", "|"});
    }
    return out;
  };
  int matched = 0, known = 0;
  for (int i = 0; i < 4000; ++i) {
    const std::string pattern = expression(2);
    const text::SearchOptions options{.matchCase = random() % 2 == 0, .regex = true};
    const text::Finder finder(pattern, options);
    if (!finder.error().empty()) continue;
    const text::Needles needles(pattern, options);
    known += needles.known();
    for (int j = 0; j < 20; ++j) {
      std::string bytes;
      for (int n = int(random() % 12); n > 0; --n)
        bytes += pick({"a", "b", "A", "k", "\xe2\x84\xaa", "\xc5\xbf", "s", "1", ".", "\t", "\n", "{", "]", "\xc3\xa9"});
      const bool found = finder.forward(text::Snapshot(bytes), text::ByteOffset(0), {text::ByteOffset(0), text::ByteOffset(100)})
                             .match.has_value();
      matched += found;
      if (found) { ASSERT_TRUE(needles.mayMatch(bytes)) << pattern << " in " << bytes; }
    }
  }
  EXPECT_GT(matched, 1000);
  EXPECT_GT(known, 500);
  using Texts = std::vector<std::string>;
  EXPECT_EQ(text::neededTexts("(foo|bar)x*baz+", {.matchCase = true, .regex = true}), Texts{"baz"});
  EXPECT_EQ(text::neededTexts("u_\\w+\\.retry|reset_n", {.matchCase = true, .regex = true}), (Texts{".retry", "reset_n"}));
  EXPECT_EQ(text::neededTexts("(?i)foo", {.matchCase = true, .regex = true}), Texts{});
}
