// Q1: The definition file: reading takes anything, and what was read once is written and read again without loss.
#include "control/TextModel.h"
#include "language/DefinitionText.h"
#include "tests/fuzz/Fuzz.h"

using fuzz::check;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const QString text = toQString({reinterpret_cast<const char*>(data), size});
  const auto languages = definition::read(text);
  if (!languages) return 0;
  const QString once = definition::write(*languages);
  const auto again = definition::read(once);
  check(again != nullptr, "what was written is read");
  check(definition::write(*again) == once, "writing what was read changes nothing");
  for (int i = 1; i <= languages->Count(); ++i) definition::blockOf(text, languages->Item(i)->Name);
  definition::linesTakenForHeaders(text);
  return 0;
}
