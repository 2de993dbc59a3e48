// T1: the way back is exact for any bytes, in every encoding that takes them.
#include "text/file/Encoding.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

#include "tests/support/files/CrashFileSystem.h"
#include "tests/support/files/FaultyFileSystem.h"
#include "text/file/FileIo.h"

using text::Encoding;
using text::FileFormat;

namespace {

std::string hex(const std::string& bytes) {
  std::string out;
  for (const unsigned char c : bytes) out += "0123456789abcdef"[c >> 4], out += "0123456789abcdef"[c & 15], out += ' ';
  return out;
}

// The detected format takes the bytes; every format that takes them gives them back.
void checkExact(const std::string& bytes) {
  const FileFormat detected = text::detectFormat(bytes);
  ASSERT_TRUE(text::decodeText(bytes, detected)) << hex(bytes) << text::name(detected.encoding);
  for (const Encoding encoding : text::encodings()) {
    for (const bool bom : {false, true}) {
      const FileFormat format{encoding, bom};
      const auto decoded = text::decodeText(bytes, format);
      if (!decoded) {
        ASSERT_TRUE(bom || bytes.size() % 2 == 1) << hex(bytes) << text::name(encoding);
        continue;
      }
      text::EncodeError error;
      const auto encoded = text::encodeText(*decoded, format, &error);
      ASSERT_TRUE(encoded) << hex(bytes) << text::name(encoding) << " at " << error.offset;
      ASSERT_TRUE(*encoded == bytes) << hex(bytes) << text::name(encoding) << " gives " << hex(*encoded);
    }
  }
}

TEST(Encoding, T1_AllShortInputs) {
  checkExact("");
  for (int a = 0; a < 256; ++a) {
    checkExact(std::string(1, static_cast<char>(a)));
    for (int b = 0; b < 256; ++b) checkExact({static_cast<char>(a), static_cast<char>(b)});
    if (HasFatalFailure()) return;
  }
}

// The same through load and save: every one-byte file and every kind of two-byte file (ZELKOR_FULL=1: every one), in every
// encoding, marked or not.
TEST(Encoding, T1_ShortFilesInEveryEncoding) {
  testing_files::CrashFileSystem disk(testing_files::DiskState{{"/d/file", ""}});
  const testing_files::UseFileSystem use(disk);
  const auto put = [&](const std::string& bytes) {
    const int fd = disk.openAt(text::FileSystem::kCwd, "/d/file", text::kWrite, 0);
    disk.truncate(fd, 0);
    if (!bytes.empty()) disk.write(fd, bytes.data(), bytes.size());
    disk.sync(fd);
    disk.close(fd);
  };
  int files = 0;
  const auto check = [&](const std::string& bytes) {
    put(bytes);
    for (const Encoding encoding : text::encodings()) {
      for (const bool bom : {false, true}) {
        text::LoadOptions options;
        options.format = FileFormat{encoding, bom};
        const auto loaded = text::loadFile("/d/file", options);
        if (!loaded.error.empty()) continue;   // the format does not take these bytes; checkExact says which may refuse
        ASSERT_TRUE(text::saveFile("/d/file", loaded.text, {loaded.format, loaded.stamp}).ok())
            << hex(bytes) << text::name(encoding);
        ASSERT_TRUE(disk.now().at("/d/file") == bytes) << hex(bytes) << text::name(encoding);
        ++files;
      }
    }
    const auto loaded = text::loadFile("/d/file");
    ASSERT_EQ(loaded.error, "");
    ASSERT_TRUE(text::saveFile("/d/file", loaded.text, {loaded.format, loaded.stamp}).ok());
    ASSERT_TRUE(disk.now().at("/d/file") == bytes) << hex(bytes);
    ++files;
  };
  using namespace std::string_literals;
  for (const std::string& mark : {""s, "\xef\xbb\xbf"s, "\xff\xfe"s, "\xfe\xff"s}) check(mark);
  std::string second = "\0\x09\n\rA\x7f\x80\x81\x9f\xa0\xbb\xbf\xc2\xd8\xdc\xdf\xed\xf4\xfe\xff"s;
  if (std::getenv("ZELKOR_FULL")) {
    second.clear();
    for (int b = 0; b < 256; ++b) second += static_cast<char>(b);
  }
  for (int a = 0; a < 256 && !HasFatalFailure(); ++a) {
    check(std::string(1, static_cast<char>(a)));
    for (const char b : second) check({static_cast<char>(a), b});
  }
  std::printf("%d loads and saves\n", files);
  EXPECT_GT(files, 20'000);
}

TEST(Encoding, KnownCharacters) {
  struct Case {
    const char* encoding;
    unsigned char byte;
    const char* text;
  };
  const Case cases[] = {{"Windows-1252", 0x80, "€"}, {"Windows-1252", 0xfc, "ü"}, {"ISO-8859-15", 0xa4, "€"},
                        {"ISO-8859-1", 0xa4, "¤"},   {"Windows-1250", 0xb3, "ł"}, {"ISO-8859-2", 0xb1, "ą"},
                        {"Windows-1251", 0xc6, "Ж"}, {"KOI8-R", 0xf6, "Ж"},       {"CP437", 0xc9, "╔"}};
  for (const auto& c : cases) {
    const auto all = text::encodings();
    const auto encoding = std::ranges::find(all, std::string(c.encoding), &text::name);
    ASSERT_NE(encoding, all.end()) << c.encoding;
    EXPECT_EQ(text::decodeText(std::string(1, static_cast<char>(c.byte)), {*encoding, false}), c.text);
  }
}

}   // namespace
