// Q1: The definition file: reading takes anything, and what was read is the same in every part after it was written and read again.
#include "control/edit/TextModel.h"
#include "language/DefinitionText.h"
#include "tests/fuzz/Fuzz.h"
#include "tests/language/Dump.h"

using fuzz::check;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const QString text = toQString({reinterpret_cast<const char*>(data), size});
  const auto languages = definition::read(text);
  check(definition::namesIn(text).isEmpty() == !languages, "a language has a name line");
  if (!languages) return 0;
  const QString once = definition::write(*languages);
  const auto again = definition::read(once);
  check(again && dump(*again, true) == dump(*languages, true), "what was read is written");
  check(definition::write(*again) == once, "writing what was read changes nothing");
  for (int i = 1; i <= languages->Count(); ++i) {
    const clsLang& language = *languages->Item(i);
    const auto block = definition::read(definition::blockOf(text, language.Name));
    const int first = languages->IndexOf(&clsLang::Name, language.Name);
    check(block && block->Count() == 1 && dump(*block->Item(1), true) == dump(*languages->Item(first), true),
          "a block is its language");
  }
  definition::linesTakenForHeaders(text);
  return 0;
}
