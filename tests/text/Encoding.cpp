// T1: the way back is exact for any bytes, in every encoding that takes them.
#include "text/file/Encoding.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <random>
#include <set>

#include "tests/support/files/CrashFileSystem.h"
#include "tests/support/files/FaultyFileSystem.h"
#include "text/file/EncodingStreams.h"
#include "text/file/FileIo.h"

using text::Encoding;
using text::FileFormat;

namespace {

std::string hex(const std::string& bytes) {
  std::string out;
  for (const unsigned char c : bytes) out += "0123456789abcdef"[c >> 4], out += "0123456789abcdef"[c & 15], out += ' ';
  return out;
}

// The detected format takes the bytes; every format that takes them gives them back; parts of any length give the same.
void checkExact(const std::string& bytes, std::mt19937_64* random = nullptr) {
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
      if (!random) continue;
      text::Encoder encoder(format);
      text::Decoder decoder(encoding);
      std::string encodedInParts, decodedInParts;
      const std::string body = bytes.substr(bom ? text::byteOrderMark(encoding).size() : 0);
      for (std::size_t at = 0, n; at < body.size(); at += n) {
        n = 1 + (*random)() % 5;
        decoder.add(std::string_view(body).substr(at, n), &decodedInParts);
      }
      ASSERT_TRUE(decoder.finish(&decodedInParts));
      for (std::size_t at = 0, n; at < decoded->size(); at += n) {
        n = 1 + (*random)() % 5;
        ASSERT_TRUE(encoder.add(std::string_view(*decoded).substr(at, n), &encodedInParts, &error));
      }
      ASSERT_TRUE(encoder.finish(&encodedInParts, &error));
      ASSERT_TRUE(decodedInParts == *decoded) << hex(bytes) << text::name(encoding);
      ASSERT_TRUE(encodedInParts == bytes) << hex(bytes) << text::name(encoding);
    }
  }
  if (!random) return;
  text::FormatDetector detector;
  for (std::size_t at = 0, n; at < bytes.size(); at += n) {
    n = 1 + (*random)() % 5;
    detector.add(std::string_view(bytes).substr(at, n));
  }
  ASSERT_TRUE(detector.result(Encoding::windows1252) == detected) << hex(bytes);
}

TEST(Encoding, T1_AllShortInputs) {
  checkExact("");
  for (int a = 0; a < 256; ++a) {
    checkExact(std::string(1, static_cast<char>(a)));
    for (int b = 0; b < 256; ++b) checkExact({static_cast<char>(a), static_cast<char>(b)});
    if (HasFatalFailure()) return;
  }
}

TEST(Encoding, T1_CutsOfValidTexts) {
  std::mt19937_64 random(1);
  using namespace std::string_literals;
  const std::string texts[] = {
      "a\xc3\xa4\xe2\x82\xac\xf0\x9f\x98\x80\r\nz\n",
      "\xef\xbb\xbf"
      "a\xef\xbb\xbf\xc3\xa4",
      "\xff\xfe"
      "a\0\xe4\0\x3d\xd8\0\xde\0\xde\x3d\xd8\x0a\0"s,
      "\xfe\xff\0a\0\xe4\xd8\x3d\xde\0\xde\0\xd8\x3d\0\x0a"s,
      "\xff\xfe\xff\xfe\0\0"s,
      "\xc0\x80\xe0\x80\xaf\xed\xa0\x80\xed\xb0\x80\xf4\x90\x80\x80\xf8\x88\x80\x80\x80\xfe"s,   // overlong, surrogates
  };
  for (const auto& text : texts)
    for (std::size_t n = 0; n <= text.size(); ++n)
      for (std::size_t from = 0; from <= n; ++from) checkExact(text.substr(from, n - from), &random);
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

TEST(Encoding, T1_RandomBytes) {
  const char* given = std::getenv("ZELKOR_SEED");
  const std::uint64_t seed = given ? std::strtoull(given, nullptr, 10) : 20240229;
  std::printf("ZELKOR_SEED=%llu\n", static_cast<unsigned long long>(seed));
  std::mt19937_64 random(seed);
  // clang-format off
  const std::vector<std::string> alphabet = {
      "\n", "\r", "\r\n", "\t", std::string(1, '\0'), "a", " ", "\xc3\xa4", "\xe2\x82\xac", "\xf0\x9f\x98\x80", "\xcc\x81",
      "\xff", "\xfe", "\xff\xfe", "\xfe\xff", "\xef\xbb\xbf", "\x80", "\xc3", "\xe2\x82", "\xed\xa0\x80", "\xd8\x3d",
      "\x3d\xd8", std::string("a\0", 2), std::string("\0a", 2), std::string("\n\0", 2)};
  for (int round = 0; round < 4'000 && !HasFatalFailure(); ++round) {
    std::string bytes;
    const auto parts = random() % 40;
    const auto kinds = 1 + random() % alphabet.size();
    for (std::uint64_t i = 0; i < parts; ++i) bytes += alphabet[(random() % kinds * 7) % alphabet.size()];
    checkExact(bytes, &random);
  }
  // clang-format on
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
