// T1, Q1: whatever the bytes of a file are, the way through the editor and back gives exactly these bytes.
#include "tests/fuzz/Fuzz.h"
#include "tests/support/files/CrashFileSystem.h"
#include "tests/support/files/FaultyFileSystem.h"
#include "text/file/EncodingStreams.h"
#include "text/file/FileIo.h"

using namespace text;
using fuzz::check;

// Parts of any length give the same.
static void inParts(const std::string& bytes, const std::string& decoded, const FileFormat& format, std::size_t step) {
  Encoder encoder(format);
  Decoder decoder(format.encoding);
  std::string there, back;
  EncodeError error;
  const std::string_view body = std::string_view(bytes).substr(format.bom ? byteOrderMark(format.encoding).size() : 0);
  for (std::size_t at = 0; at < body.size(); at += step) decoder.add(body.substr(at, step), &there);
  check(decoder.finish(&there) && there == decoded, "decoded in parts");
  for (std::size_t at = 0; at < decoded.size(); at += step)
    check(encoder.add(std::string_view(decoded).substr(at, step), &back, &error), "parts are taken");
  check(encoder.finish(&back, &error) && back == bytes, "encoded in parts");
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string bytes(reinterpret_cast<const char*>(data), size);
  const FileFormat detected = detectFormat(bytes);
  check(decodeText(bytes, detected).has_value(), "the detected format takes the bytes");
  FormatDetector detector;
  for (std::size_t at = 0; at < size; at += 3) detector.add(std::string_view(bytes).substr(at, 3));
  check(detector.result(Encoding::windows1252) == detected, "detected in parts");
  for (const Encoding encoding : encodings()) {
    for (const bool bom : {false, true}) {
      const FileFormat format{encoding, bom};
      const auto decoded = decodeText(bytes, format);
      if (!decoded) continue;
      EncodeError error;
      const auto encoded = encodeText(*decoded, format, &error);
      check(encoded && *encoded == bytes, "what a format takes it gives back");
      for (const std::size_t step : {1, 2, 3, 5}) inParts(bytes, *decoded, format, step);
    }
  }
  testing_files::CrashFileSystem disk(testing_files::DiskState{{"/d/file", bytes}});
  const testing_files::UseFileSystem use(disk);
  const LoadedFile file = loadFile("/d/file");
  check(file.error.empty(), "a file of any bytes loads");
  file.text.checkInvariants();
  check(saveFile("/d/copy", file.text, {file.format, {}}).ok(), "and saves");
  check(disk.now().at("/d/copy") == bytes, "byte for byte");
  return 0;
}
