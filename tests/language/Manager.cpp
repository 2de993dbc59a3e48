#include <QDir>
#include <QFile>

#include "base/Program.h"
#include "base/Strings.h"
#include "bridge/FileNames.h"
#include "language/ucCM.h"
#include "tests/language/Language.h"
#include "tests/support/OwnFolder.h"
#include "tests/support/ScriptedDialogs.h"

namespace {

const char kTwo[] =
    "SetLanguage:Verilog\r\n[Keywords]\r\nmodule\r\n[SingleComments]\r\n//\r\n--\r\n[MultiCommentStart]\r\n/*\r\n"
    "[MultiCommentEnd]\r\n*/\r\n[Extensions]\r\nv;vh\r\n[HelpFile]\r\n$Zelkor/help/v.html\r\n[#alw#]\r\nalways\r\n$Desc:a "
    "process\r\n"
    "[#alw#]\r\nsecond\r\nSetLanguage:VHDL\r\n[Extensions]\r\nvhd;V\r\n[Keywords]\r\nentity\r\n";

class Manager : public testing::Test, protected OwnFolder {
 protected:
  Manager() {
    manager.setIniFile(path("Zelkor.ini"));
    setApplicationFolder(dir.path());
  }
  ~Manager() override { setApplicationFolder({}); }

  QByteArray bytesOf(const char* name) const { return read(path(name)); }
  void init(const QByteArray& bytes) {
    write("Zelkor.ini", bytes);
    manager.Init();
  }

  ScriptedDialogs dialogs;
  ucCM manager;
};

}   // namespace

TEST_F(Manager, LooksUpByExtensionAndName) {
  init(kTwo);
  struct Case {
    const char* ext;
    int index;
  };
  for (const Case& c : {Case{"v", 1}, Case{"V", 1}, Case{"VH", 1}, Case{"vhd", 2}, Case{"VHD", 2}, Case{"vh;v", 0}, Case{"hd", 0},
                        Case{"v;vh", 1}, Case{"", 0}})
    EXPECT_EQ(manager.GetLangFromExt(q(c.ext)), c.index) << c.ext;
  manager.Languages()->Item(2)->Extension = q("vhd;");
  EXPECT_EQ(manager.GetLangFromExt(q("")), 2);   // an empty entry takes files without an extension
  manager.Languages()->Item(2)->Extension = q("");
  EXPECT_EQ(manager.GetLangFromExt(q("")), 2);
  EXPECT_EQ(manager.GetIndex(q("VHDL")), 2);
  EXPECT_EQ(manager.GetIndex(q("vhdl")), 0);
  EXPECT_EQ(s(manager.GetComment(1)), "//");
  EXPECT_EQ(s(manager.GetComment(2)), "");
  EXPECT_EQ(s(manager.GetComment(3)), "");
}

TEST_F(Manager, FilterList) {
  init(kTwo);
  manager.Languages()->Item(2)->Extension = q("vhd");
  manager.Languages()->Add(q("Plain"));
  EXPECT_EQ(s(manager.GetFilterList()), "(*.*)|*.*|Verilog (*.v;*.vh)|*.v;*.vh|VHDL (*.vhd)|*.vhd|Plain ()||");
}

TEST_F(Manager, AsksWhenTheFileCannotBeOpened) {
  init(kTwo);
  manager.setListLanguage(1);
  const QString missing = path("none.ini");
  manager.setIniFile(missing);
  dialogs.answer(Answer::no);
  manager.Init();
  EXPECT_TRUE(dialogs.last().text.contains(missing));
  EXPECT_EQ(manager.Languages()->Count(), 0);
  EXPECT_EQ(manager.Language(), nullptr);
  EXPECT_EQ(s(manager.IniFile()), s(missing));

  dialogs.answer(Answer::yes).answerOpen({path("Zelkor.ini")});
  manager.Init();
  EXPECT_EQ(s(manager.IniFile()), s(path("Zelkor.ini")));
  EXPECT_EQ(manager.Languages()->Count(), 0);   // for this time
  manager.Init();
  EXPECT_EQ(manager.Languages()->Count(), 2);

  manager.setIniFile(dir.path());   // a folder
  dialogs.answer(Answer::yes).answerOpen({});
  manager.Init();
  EXPECT_EQ(s(manager.IniFile()), s(dir.path()));

  QFile huge(path("huge.ini"));
  ASSERT_TRUE(huge.open(QIODevice::WriteOnly) && huge.resize(65 << 20));
  manager.setIniFile(huge.fileName());
  dialogs.answer(Answer::no);
  manager.Init();
  EXPECT_EQ(manager.Languages()->Count(), 0);
}

TEST_F(Manager, SavingKeepsTheOldFileBeside) {
  init(kTwo);
  const std::string before = dump(*manager.Languages());
  write("Zelkor.ini.bak", "older");
  ASSERT_TRUE(manager.SaveIniFile());
  EXPECT_EQ(bytesOf("Zelkor.ini.bak"), QByteArray(kTwo));
  manager.Init();
  EXPECT_EQ(dump(*manager.Languages()), before);
  manager.Languages()->Remove(1);
  ASSERT_TRUE(manager.SaveIniFile());   // its own writing is no change by others
  EXPECT_TRUE(bytesOf("Zelkor.ini").startsWith("SetLanguage:VHDL\r\n"));

  QFile::remove(path("Zelkor.ini.bak"));
  ASSERT_TRUE(QDir().mkdir(path("Zelkor.ini.bak")));   // a copy that fails is passed over
  manager.Languages()->Item(1)->Name = q("New");
  ASSERT_TRUE(manager.SaveIniFile());
  EXPECT_TRUE(bytesOf("Zelkor.ini").startsWith("SetLanguage:New\r\n"));
}

TEST_F(Manager, ChangesByOthersAreNotOverwrittenSilently) {   // S12
  init(kTwo);
  write("Zelkor.ini", "SetLanguage:Other\r\n");
  dialogs.answer(Answer::no);
  EXPECT_FALSE(manager.SaveIniFile());
  EXPECT_EQ(bytesOf("Zelkor.ini"), "SetLanguage:Other\r\n");
  EXPECT_EQ(manager.Languages()->Count(), 2);
  dialogs.answer(Answer::yes);
  EXPECT_TRUE(manager.SaveIniFile());
  EXPECT_TRUE(bytesOf("Zelkor.ini").startsWith("SetLanguage:Verilog"));
  EXPECT_TRUE(manager.SaveIniFile());
}

TEST_F(Manager, AFileThatCannotBeWrittenLeadsToOnesOwn) {
  manager.Languages()->Add(q("L"));
  const QString foreign = path("no/such/folder.ini"), own = userConfigFolder() + q("/Zelkor.ini");
  QFile::remove(own);
  manager.setIniFile(foreign);
  dialogs.answer(Answer::no);
  EXPECT_FALSE(manager.SaveIniFile());
  EXPECT_TRUE(dialogs.last().text.startsWith(q("Cannot write the definition file ") + foreign)) << s(dialogs.last().text);
  EXPECT_TRUE(dialogs.last().text.contains(own));
  EXPECT_EQ(s(manager.IniFile()), s(foreign));
  EXPECT_FALSE(QFile::exists(own));

  dialogs.answer(Answer::yes);
  EXPECT_TRUE(manager.SaveIniFile());
  EXPECT_EQ(s(manager.IniFile()), s(own));
  EXPECT_TRUE(QFile::exists(own));
  EXPECT_TRUE(manager.SaveIniFile());

  manager.setIniFile(foreign);   // again, with a file of one's own there: it is left alone
  dialogs.answer(Answer::yes);
  EXPECT_TRUE(manager.SaveIniFile());
  const QString second = userConfigFolder() + q("/Zelkor-2.ini");
  EXPECT_EQ(s(manager.IniFile()), s(second));
  for (const QString& made : {own, second, own + q(".bak")}) QFile::remove(made);
}

TEST_F(Manager, AFileThatWasNotReadIsNotReplaced) {
  const QString file = path("Zelkor.ini"), own = userConfigFolder() + q("/Zelkor.ini");
  dialogs.answer(Answer::no);
  manager.Init();   // it is not there, and comes back later
  write("Zelkor.ini", kTwo);
  write("Zelkor.ini.bak", "older");
  manager.Languages()->Add(q("Mine"));
  for (int i = 0; i < 2; ++i) {
    dialogs.answer(Answer::no);
    EXPECT_FALSE(manager.SaveIniFile());
    EXPECT_TRUE(dialogs.last().text.startsWith(q("The definition file ") + file + q(" is not replaced"))) << s(dialogs.last().text);
  }
  dialogs.answer(Answer::yes);
  EXPECT_TRUE(manager.SaveIniFile());
  EXPECT_EQ(s(manager.IniFile()), s(own));
  EXPECT_EQ(bytesOf("Zelkor.ini"), QByteArray(kTwo));
  EXPECT_EQ(bytesOf("Zelkor.ini.bak"), "older");
  QFile::remove(own);
}

TEST_F(Manager, TheShippedFileIsLeftAloneAndARemovedOneIsWrittenAnew) {
  QDir().mkpath(path("config"));
  write("config/Zelkor.ini", kTwo);
  manager.setIniFile(path("config/Zelkor.ini"));
  manager.Init();
  manager.Languages()->Item(1)->Name = q("Mine");
  ASSERT_TRUE(manager.SaveIniFile());
  const QString own = manager.IniFile();
  EXPECT_EQ(s(own), s(userConfigFolder() + q("/Zelkor.ini")));
  EXPECT_EQ(bytesOf("config/Zelkor.ini"), QByteArray(kTwo));
  QFile::remove(own);
  EXPECT_TRUE(manager.SaveIniFile()) << "there is nothing to replace, and nothing to ask";
  EXPECT_TRUE(QFile::exists(own));
  QFile::remove(own);
}

TEST_F(Manager, EncodingsComeBack) {
  struct Case {
    QByteArray name;   // "L" and a letter beyond ASCII, in the file's encoding
    const char* shown;
  };
  for (const Case& c : {Case{"L\xC3\xA4", "L\xC3\xA4"}, Case{"L\xE4 x", "L\xC3\xA4 x"}}) {
    const QByteArray file = "SetLanguage:" + c.name + "\r\n[Keywords]\r\n\r\n";
    init(file);
    ASSERT_EQ(manager.Languages()->Count(), 1);
    EXPECT_EQ(s(manager.Languages()->Item(1)->Name), c.shown);
    ASSERT_TRUE(manager.SaveIniFile());
    EXPECT_EQ(bytesOf("Zelkor.ini"), file);
  }
  // A character that has no place in the 8-bit encoding turns the file to UTF-8 and is not lost.
  manager.Languages()->Item(1)->Keywords = q("\xE2\x89\xA0\r\n");
  ASSERT_TRUE(manager.SaveIniFile());
  manager.Init();
  EXPECT_EQ(s(manager.Languages()->Item(1)->Keywords), "\xE2\x89\xA0\r\n");
  EXPECT_EQ(s(manager.Languages()->Item(1)->Name), "L\xC3\xA4 x");
}

TEST_F(Manager, AnAppendedBlockIsNotLostToALaterSave) {
  init(kTwo);
  ASSERT_TRUE(manager.AddLangText(q("SetLanguage:C\r\n")));
  dialogs.answer(Answer::no);   // the languages in memory do not hold it
  EXPECT_FALSE(manager.SaveIniFile());
  EXPECT_TRUE(bytesOf("Zelkor.ini").endsWith("SetLanguage:C\r\n"));
}
