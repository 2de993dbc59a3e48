// T1, Q1: whatever the bytes of a file are, the way through the editor and back gives exactly these bytes.
#include "tests/fuzz/Fuzz.h"
#include "tests/support/files/CrashFileSystem.h"
#include "tests/support/files/FaultyFileSystem.h"
#include "text/file/FileIo.h"

using namespace text;
using fuzz::check;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string bytes(reinterpret_cast<const char*>(data), size);
  const FileFormat detected = detectFormat(bytes);
  check(decodeText(bytes, detected).has_value(), "the detected format takes the bytes");
  for (const Encoding encoding : encodings()) {
    for (const bool bom : {false, true}) {
      const FileFormat format{encoding, bom};
      const auto decoded = decodeText(bytes, format);
      if (!decoded) continue;
      EncodeError error;
      const auto encoded = encodeText(*decoded, format, &error);
      check(encoded && *encoded == bytes, "what a format takes it gives back");
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
