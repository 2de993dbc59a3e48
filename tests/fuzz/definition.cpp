// Q1: The definition file: reading takes anything, and what was read is the same in every part after it was written and read again.
#include "control/TextModel.h"
#include "language/DefinitionText.h"
#include "tests/fuzz/Fuzz.h"

using fuzz::check;

namespace {

template <class List, class Same>
bool sameItems(const List& a, const List& b, Same same) {
  if (a.Count() != b.Count()) return false;
  for (int i = 1; i <= a.Count(); ++i)
    if (!same(*a.Item(i), *b.Item(i))) return false;
  return true;
}

bool same(const clsLang& a, const clsLang& b, bool withMark = true) {
  for (const auto property : {&clsLang::Name, &clsLang::Description, &clsLang::HelpFile, &clsLang::Extension, &clsLang::BlockMid, &clsLang::BlockEnd,
                              &clsLang::BlockStart, &clsLang::MultiCommentStart, &clsLang::MultiCommentEnd, &clsLang::SingleComments,
                              &clsLang::StringDelims, &clsLang::Operators, &clsLang::Keywords})
    if (a.*property != b.*property) return false;
  return a.isCaseSensitive == b.isCaseSensitive && (!withMark || a.isForeign == b.isForeign) &&
         sameItems(*a.cMacros(), *b.cMacros(),
                   [](const clsMacro& x, const clsMacro& y) { return x.Name == y.Name && x.Desc == y.Desc && x.CommandString == y.CommandString; }) &&
         sameItems(*a.cTemplate(), *b.cTemplate(),
                   [](const clsTemplate& x, const clsTemplate& y) { return x.HotKey == y.HotKey && x.Desc == y.Desc && x.UserString == y.UserString; }) &&
         sameItems(*a.cWordList(), *b.cWordList(),
                   [](const clsWordList& x, const clsWordList& y) { return x.Name == y.Name && x.Desc == y.Desc && x.WordList == y.WordList; });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const QString text = toQString({reinterpret_cast<const char*>(data), size});
  const auto languages = definition::read(text);
  const auto foreign = definition::read(definition::marked(text));
  check(!foreign == !languages, "marks make no language");
  if (!languages) return 0;
  const QString once = definition::write(*languages);
  const auto again = definition::read(once);
  check(again && sameItems(*languages, *again, [](const clsLang& a, const clsLang& b) { return same(a, b); }), "what was read is written");
  check(definition::write(*again) == once, "writing what was read changes nothing");
  check(sameItems(*languages, *foreign, [](const clsLang& a, const clsLang& b) { return b.isForeign && same(a, b, false); }),
        "marks change nothing else");
  for (int i = 1; i <= languages->Count(); ++i) {
    const clsLang& language = *languages->Item(i);
    const auto block = definition::read(definition::blockOf(text, language.Name));
    const int first = languages->IndexOf(&clsLang::Name, language.Name);
    check(block && block->Count() == 1 && same(*block->Item(1), *languages->Item(first)), "a block is its language");
  }
  definition::linesTakenForHeaders(text);
  return 0;
}
