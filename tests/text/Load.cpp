// Loading: what a file's bytes become, and every kind of file that cannot be loaded.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>

#include "tests/support/files/FaultyFileSystem.h"
#include "tests/support/files/TempFolder.h"
#include "text/file/FileIo.h"

using namespace testing_files;
using text::Encoding;
using text::FileFormat;
using text::LineMode;

namespace {

TEST(Load, DecidesEncodingAndLineEnds) {
  struct Case {
    const char* about;
    std::string bytes, text;
    FileFormat format;
    LineMode mode;
    bool firstLineCrlf;
  };
  using namespace std::string_literals;
  const Case cases[] = {
      {"empty", "", "", {}, LineMode::lf, true},
      {"no line feed", "abc", "abc", {}, LineMode::lf, true},
      {"line feeds", "a\nb\r\n", "a\nb\r\n", {}, LineMode::lf, false},
      {"CR LF first", "a\r\nb\n", "a\r\nb\n", {}, LineMode::lf, true},
      {"CR alone", "a\rb\r", "a\rb\r", {}, LineMode::cr, true},
      {"CR and LF apart", "a\rb\n", "a\rb\n", {}, LineMode::lf, true},
      {"NUL", "a\0b\n\0"s, "a\0b\n\0"s, {}, LineMode::lf, false},
      {"UTF-8", "\xc3\xa4\n", "\xc3\xa4\n", {}, LineMode::lf, false},
      {"UTF-8 mark", "\xef\xbb\xbfx\n", "x\n", {Encoding::utf8, true}, LineMode::lf, false},
      {"UTF-8 mark alone", "\xef\xbb\xbf", "", {Encoding::utf8, true}, LineMode::lf, true},
      {"UTF-8 with bad bytes", "\xc3\xa4\xc3\xb6\xff\n", "\xc3\xa4\xc3\xb6\xff\n", {}, LineMode::lf, false},
      {"UTF-8 cut at its end", "\xc3\xa4\xe2\x82", "\xc3\xa4\xe2\x82", {}, LineMode::lf, true},
      {"8-bit", "f\xfcr \x80\n", "f\xc3\xbcr \xe2\x82\xac\n", {Encoding::windows1252, false}, LineMode::lf, false},
      {"8-bit, CR alone", "f\xfcr\r", "f\xc3\xbcr\r", {Encoding::windows1252, false}, LineMode::cr, true},
      {"UTF-16LE mark", "\xff\xfe\x41\0\x0d\0\x0a\0"s, "A\r\n", {Encoding::utf16le, true}, LineMode::lf, true},
      {"UTF-16BE mark", "\xfe\xff\0\x41\0\x0a"s, "A\n", {Encoding::utf16be, true}, LineMode::lf, false},
      {"UTF-16LE without mark", "m\0o\0d\0 \0\x0a\0"s, "mod \n", {Encoding::utf16le, false}, LineMode::lf, false},
      {"UTF-16BE without mark", "\0m\0o\0d\0\x0d\0\x0a"s, "mod\r\n", {Encoding::utf16be, false}, LineMode::lf, true},
      {"half a unit behind a mark",
       "\xff\xfe\x41"s,
       "\xc3\xbf\xc3\xbe"
       "A",
       {Encoding::windows1252, false},
       LineMode::lf,
       true},
      {"pair of surrogates", "\xff\xfe\x3d\xd8\0\xde"s, "\xf0\x9f\x98\x80", {Encoding::utf16le, true}, LineMode::lf, true},
      {"unpaired surrogate",
       "\xff\xfe\x3d\xd8\x41\0"s,
       "\xed\xa0\xbd"
       "A",
       {Encoding::utf16le, true},
       LineMode::lf,
       true},
  };
  TempFolder folder;
  const auto path = folder / "file";
  for (const auto& c : cases) {
    SCOPED_TRACE(c.about);
    writeRaw(path, c.bytes);
    const auto file = text::loadFile(path);
    EXPECT_EQ(file.error, "");
    EXPECT_EQ(file.text.bytes(), c.text);
    EXPECT_EQ(std::string(text::name(file.format.encoding)), text::name(c.format.encoding));
    EXPECT_EQ(file.format.bom, c.format.bom);
    EXPECT_EQ(file.text.lineMode(), c.mode);
    EXPECT_EQ(file.firstLineCrlf, c.firstLineCrlf);
    EXPECT_EQ(file.stamp, text::stampOf(path, true));
    EXPECT_EQ(text::detectFormat(c.bytes), file.format);
    EXPECT_EQ(text::decodeText(c.bytes, file.format), c.text);
    text::EncodeError error;
    EXPECT_EQ(text::encodeText(c.text, file.format, &error), c.bytes) << "the way back is exact";
    // T1: saved as loaded.
    EXPECT_EQ(text::saveFile(path, file.text, {file.format, file.stamp}).error, "");
    EXPECT_EQ(readRaw(path), c.bytes);
  }
}

TEST(Load, RefusesWhatIsNoReadableFile) {
  TempFolder folder;
  std::filesystem::create_directory(folder / "folder");
  ::mkfifo((folder / "fifo").c_str(), 0600);
  std::filesystem::create_symlink("loop", folder / "loop");
  const std::pair<std::string, std::string> cases[] = {
      {folder / "missing", "No such file or directory"},
      {folder / "folder", "Is a folder, not a file"},
      {folder / "fifo", "Is a FIFO, not a regular file"},
      {"/dev/null", "Is a device, not a regular file"},
      {folder / "loop", "Too many levels of symbolic links"},
      {folder / "missing/file", "No such file or directory"},
      {"", "No such file or directory"},
  };
  for (const auto& [path, message] : cases) {
    EXPECT_EQ(text::loadFile(path).error, message) << path;
    std::string error;
    EXPECT_EQ(text::readBytes(path, &error), "");
    EXPECT_EQ(error, message) << path;
  }
}

TEST(Load, ReportsEveryFailingCall) {
  TempFolder folder;
  const auto path = folder / "file";
  writeRaw(path, std::string(3'000'000, 'x'));
  FaultyFileSystem faulty;
  const UseFileSystem use(faulty);
  ASSERT_EQ(text::loadFile(path).error, "");
  const auto calls = faulty.log();
  for (const auto& call : calls) {
    faulty.clear();
    faulty.failCall(call.number, EIO);
    const auto file = text::loadFile(path);
    if (call.name == "close" || call.name == "accessAt") {
      EXPECT_EQ(file.error, "");
      EXPECT_EQ(file.readOnly, call.name == "accessAt");
    } else {
      EXPECT_EQ(file.error, "Input/output error") << call.number << " " << call.name;
      EXPECT_EQ(file.text.size().value, 0);
    }
    EXPECT_EQ(faulty.openDescriptors(), 0);
  }
}

TEST(Load, ReadsAFileThatGrowsShrinksOrVanishesMeanwhile) {
  TempFolder folder;
  const auto path = folder / "file";
  const std::string large(2'500'000, 'x');
  struct Case {
    std::string bytes, expected;
    std::function<void()> change;
  };
  const Case cases[] = {
      {large, large + "more", [&] { writeRaw(path, large + "more"); }},
      {large, "short", [&] { writeRaw(path, "short"); }},
      {large, large, [&] { std::filesystem::remove(path); }},
      {"x", "y", [&] { writeRaw(path, "\xef\xbb\xbfy"); }},   // a mark longer than the file was
      {"xy", "", [&] { writeRaw(path, "\xef\xbb\xbf"); }},
      {"x", "A",
       [&] {
         writeRaw(path, std::string("\xff\xfe"
                                    "A\0",
                                    4));
       }},
  };
  for (const auto& c : cases) {
    const std::string& bytes = c.bytes;
    writeRaw(path, bytes);
    FaultyFileSystem faulty;
    const UseFileSystem use(faulty);
    bool done = false;
    faulty.before([&](const Call& call) {
      if (call.name == "read" && !std::exchange(done, true)) c.change();
    });
    const auto file = text::loadFile(path);
    EXPECT_EQ(file.error, "");
    EXPECT_TRUE(file.text.bytes() == c.expected);
    EXPECT_FALSE(file.stamp == text::stampOf(path, true) && c.expected != bytes) << "the change must be noticed later";
  }
}

TEST(Load, TellsProgressAndCanBeCancelled) {
  TempFolder folder;
  const auto path = folder / "file";
  writeRaw(path, std::string(5'000'000, 'x'));
  text::SearchControl control;
  EXPECT_EQ(text::loadFile(path, {}, &control).error, "");
  EXPECT_EQ(control.bytesDone.load(), 5'000'000);
  control.cancel = true;
  const auto file = text::loadFile(path, {}, &control);
  EXPECT_EQ(file.error, "Cancelled");
  EXPECT_EQ(file.text.size().value, 0);
}

TEST(Load, TakesAForcedEncodingOnlyWhenExact) {
  TempFolder folder;
  const auto path = folder / "file";
  writeRaw(path, "a\xe4\n");
  text::LoadOptions options;
  options.format = FileFormat{Encoding::latin1, false};
  EXPECT_EQ(text::loadFile(path, options).text.bytes(), "a\xc3\xa4\n");
  options.format = FileFormat{Encoding::utf8, false};
  EXPECT_EQ(text::loadFile(path, options).text.bytes(), "a\xe4\n");
  options.format = FileFormat{Encoding::utf16le, false};
  EXPECT_EQ(text::loadFile(path, options).error, "The file cannot be read as UTF-16LE");
}

TEST(Load, BlocksOfOtherEncodingsAreJoinedWhole) {
  TempFolder folder;
  for (const FileFormat format : {FileFormat{Encoding::utf16le, true}, {Encoding::utf16be, true}, {Encoding::windows1252, false}}) {
    std::string line = "\xc3\xa4\n", whole;
    for (int i = 0; i < 6 && format.bom; ++i) line.insert(0, "\xf0\x9f\x98\x80");   // pairs in UTF-16: a block ends within one
    for (int i = 100'000; i < 300'000; ++i) whole += std::to_string(i) + line;
    text::EncodeError error;
    const std::string bytes = *text::encodeText(whole, format, &error);
    writeRaw(folder / "file", bytes);
    const text::LoadedFile loaded = text::loadFile(folder / "file");
    EXPECT_TRUE(loaded.text.bytes() == whole) << text::name(format.encoding);
    EXPECT_TRUE(text::saveFile(folder / "file", loaded.text, {loaded.format, loaded.stamp}).ok());
    EXPECT_TRUE(readRaw(folder / "file") == bytes) << text::name(format.encoding);
  }
}

}   // namespace

TEST(Load, ReadsBytesUpToALimit) {
  TempFolder folder;
  const auto path = folder / "file";
  std::string error;
  for (const std::size_t size : {0, 1, 4095, 4096, 4097, 100'000}) {
    const std::string bytes(size, 'x');
    writeRaw(path, bytes);
    EXPECT_EQ(text::readBytes(path, &error), bytes);
    EXPECT_EQ(error, "");
    EXPECT_EQ(text::readBytes(path, &error, size), bytes);
    if (size > 1) {
      EXPECT_EQ(text::readBytes(path, &error, size - 1), "");
      EXPECT_EQ(error, "The file is too large");
    }
  }
  EXPECT_NE(text::readBytes("/proc/self/stat", &error), "") << "regular, but without a size";
}
