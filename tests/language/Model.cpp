#include "tests/language/Language.h"

TEST(Model, CollectionsAreMadeOnceAndShared) {
  clsLang language;
  EXPECT_EQ(language.cWordList()->Count(), 0);
  EXPECT_EQ(language.cWordList(), language.cWordList());
  EXPECT_EQ(language.cMacros(), language.cMacros());
  const auto shared = std::make_shared<cTemplate>();
  language.setcTemplate(shared);
  shared->Add(q("t"));
  EXPECT_EQ(language.cTemplate()->Count(), 1);   // by reference, not copied
  language.setcTemplate(nullptr);
  EXPECT_EQ(language.cTemplate()->Count(), 0);
}

TEST(Model, PositionsCountFromOne) {
  cMacros macros;
  EXPECT_THROW(macros.Item(1), std::out_of_range);
  for (const char* name : {"a", "b", "c"}) macros.Add()->Name = q(name);
  EXPECT_EQ(s(macros.Item(1)->Name), "a");
  macros.Remove(2);
  EXPECT_EQ(s(macros.Item(2)->Name), "c");
  EXPECT_THROW(macros.Item(0), std::out_of_range);
  EXPECT_THROW(macros.Item(3), std::out_of_range);
  EXPECT_THROW(macros.Remove(3), std::out_of_range);
  const auto kept = macros.Item(1);
  macros.Remove(1);
  macros.Remove(1);
  EXPECT_EQ(macros.Count(), 0);
  EXPECT_THROW(macros.Item(1), std::out_of_range);
  EXPECT_THROW(macros.Insert(2, kept), std::out_of_range);
  macros.Insert(1, kept);
  EXPECT_EQ(macros.Item(1), kept);
  std::string names;
  for (const auto& macro : macros) names += s(macro->Name);
  EXPECT_EQ(names, "a");
}

TEST(Model, NewItemsHaveTheirNames) {
  cTemplate templates;
  EXPECT_EQ(s(templates.Add(q("alw"))->HotKey), "alw");
  cWordList lists;
  EXPECT_EQ(s(lists.Add()->Name), "");
  EXPECT_EQ(s(lists.Add(q("n"), q("w\r\n"))->WordList), "w\r\n");
  colLangs languages;
  EXPECT_FALSE(languages.Add(q("L"))->isCaseSensitive);
  languages.Add(q("L"))->Keywords = q("second");
  EXPECT_EQ(languages.Count(), 2);
  EXPECT_EQ(languages.IndexOf(&clsLang::Name, q("L")), 1);
  EXPECT_EQ(languages.IndexOf(&clsLang::Name, q("l")), 0);
}
