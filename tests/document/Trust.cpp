// H3: Foreign definition files: their macros start no program and write no file before the user allowed it, once for their content,
// and wherever their languages are copied to.
#include "script/Trust.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include "base/Program.h"
#include "bridge/FileNames.h"
#include "document/Languages.h"
#include "language/DefinitionText.h"
#include "language/ucCM.h"
#include "script/Batch.h"
#include "settings/modRegistry.h"
#include "tests/document/RunFixture.h"
#include "tests/support/ScriptedDialogs.h"

using namespace Qt::StringLiterals;
using mCMXParser::Ending;
using testing_files::readRaw;
using testing_files::writeRaw;

namespace {

// A manager whose one macro leaves a canary behind when its program is started.
class Trust : public testing::Test {
 protected:
  void SetUp() override {
    setLanguages(&manager);
    modRegistry::NewKey(modRegistry::kGlobalKey);
    modRegistry::SetText(modRegistry::kGlobalKey, u"TRUSTEDINI"_s, {});
    oldConfig = qgetenv("XDG_CONFIG_HOME");
    qputenv("XDG_CONFIG_HOME", folder.filePath(u"config"_s).toUtf8());
  }
  void TearDown() override {
    setLanguages(before);
    qputenv("XDG_CONFIG_HOME", oldConfig);
  }
  QString path(const char* name) const { return folder.filePath(QString::fromLatin1(name)); }
  QString definitions() const {
    return u"SetLanguage:Test\r\n[Keywords]\r\n[{Run}]\r\nSHELLW "_s + startee() + u" touch "_s + canary + u"\r\n"_s;
  }
  QString ownFile() const { return userConfigFolder() + u"/mine.ini"_s; }
  void read(const QString& file) {
    manager.setIniFile(file);
    manager.Init();
  }
  clsMacro& macro(int language = 1) { return *manager.Languages()->Item(language)->cMacros()->Item(1); }
  Ending run(int language = 1) { return mCMXParser::Run(language, 1, macro(language).CommandString).ending; }
  bool started() { return QFile::remove(canary); }
  // Asks, and starts nothing when the answer is no.
  bool asks(int language = 1) {
    const auto boxesBefore = boxes.boxes.size();
    boxes.answer(Answer::no);
    const bool stopped = run(language) == Ending::stopped && !started();
    return stopped && boxes.boxes.size() == boxesBefore + 1;
  }
  bool startsUnasked(int language = 1) { return run(language) == Ending::done && started(); }

  RunFrame frame;
  ScriptedDialogs boxes;
  QTemporaryDir folder;
  const QString canary = path("canary");
  ucCM manager;
  ucCM* const before = &languages();
  QByteArray oldConfig;
};

}   // namespace

TEST_F(Trust, H3_ForeignMacrosAskOnceBeforeTheirFirstProgram) {
  const QString second = u"SetLanguage:Second\r\n[Keywords]\r\nword\r\n"_s;
  writeRaw(path("project.ini").toStdString(), (definitions() + second).toStdString());
  read(path("project.ini"));
  modRegistry::SetText(modRegistry::kGlobalKey, u"TRUSTEDINI"_s, QStringList(50, u"0"_s).join(u','));   // the oldest makes room
  EXPECT_TRUE(asks());
  boxes.answer(Answer::yes);
  EXPECT_TRUE(startsUnasked());
  EXPECT_TRUE(startsUnasked()) << "not asked again";
  EXPECT_TRUE(boxes.last().text.contains(canary)) << "the user sees what would be started";
  writeRaw(path("copy.ini").toStdString(), (definitions() + second).toStdString());
  read(path("copy.ini"));
  EXPECT_TRUE(startsUnasked()) << "the same content elsewhere";
  manager.Languages()->Item(2)->Keywords = u"other\r\n"_s;
  EXPECT_TRUE(asks()) << "other content of another of its languages";
  macro().Name = u"Another"_s;
  EXPECT_TRUE(asks()) << "other content";
  EXPECT_EQ(mCMXParser::Run(0, 0, macro().CommandString).ending, Ending::done) << "typed by the user";
  EXPECT_TRUE(started());
}

TEST_F(Trust, ThePlaceOfTheFileDecides) {
  const QString installed = path("installed");
  QDir().mkpath(installed + u"/config"_s);
  const QString applicationBefore = applicationFolder();
  setApplicationFolder(installed);
  for (const QString& own : {installed + u"/config/Zelkor.ini"_s, ownFile()}) {
    writeRaw(own.toStdString(), definitions().toStdString());
    read(own);
    EXPECT_FALSE(manager.isForeign()) << own.toStdString();
    EXPECT_TRUE(startsUnasked()) << own.toStdString();
  }
  writeRaw(path("project.ini").toStdString(), definitions().toStdString());
  const QString link = userConfigFolder() + u"/link.ini"_s;
  ASSERT_TRUE(QFile::link(path("project.ini"), link));
  for (const QString& foreign : {link, userConfigFolder() + u"/../../project.ini"_s, userConfigFolder() + u"2/x.ini"_s}) {
    manager.setIniFile(foreign);
    EXPECT_TRUE(manager.isForeign()) << foreign.toStdString();
    EXPECT_TRUE(asks()) << foreign.toStdString();
  }
  setApplicationFolder(applicationBefore);
}

TEST_F(Trust, H3_TheMarkTravelsIntoAFileOfOnesOwn) {
  const std::string foreign = path("project.ini").toStdString();
  writeRaw(foreign, definitions().toStdString());
  read(path("project.ini"));
  ASSERT_TRUE(manager.SaveIniFile());
  EXPECT_FALSE(QString::fromStdString(readRaw(foreign)).contains(u"[Foreign]"_s))
      << "a file of others is written as it is their custom";
  // It cannot be written any more, and the user takes a file of their own.
  QFile::remove(path("project.ini"));
  QDir().mkpath(path("project.ini"));
  boxes.answer(Answer::yes);
  ASSERT_TRUE(manager.SaveIniFile());
  ASSERT_FALSE(manager.isForeign());
  EXPECT_TRUE(asks()) << "before it is read again";
  const QString own = manager.IniFile();
  read(own);
  EXPECT_TRUE(asks()) << "and after";
  EXPECT_FALSE(QString::fromStdString(readRaw(own.toStdString())).contains(u"[Foreign]"_s))
      << "other programs know no such section";
  // Beside languages of one's own, which need not ask, through a save and a copy.
  const auto mine = manager.Languages()->Add(u"Mine"_s);
  mine->cMacros()->Add()->CommandString = macro().CommandString;
  manager.Languages()->Insert(3, manager.Languages()->Item(1)->copy());
  ASSERT_TRUE(manager.SaveIniFile());
  read(own);
  EXPECT_TRUE(asks(1));
  EXPECT_TRUE(startsUnasked(2));
  EXPECT_TRUE(asks(3));
  boxes.answer(Answer::yes);
  EXPECT_TRUE(startsUnasked(1));
  manager.Languages()->Item(2)->Keywords = u"edited\r\n"_s;
  EXPECT_TRUE(startsUnasked(3)) << "what the user allowed does not end with an edit of their own";
}

TEST_F(Trust, BlocksAddedToAFileOfOnesOwnAreForeign) {
  writeRaw(ownFile().toStdString(), "SetLanguage:First\r\n[Keywords]\r\n");
  read(ownFile());
  ASSERT_TRUE(manager.AddLangText(definitions()));
  read(ownFile());
  EXPECT_FALSE(manager.Languages()->Item(1)->isForeign);
  EXPECT_TRUE(asks(2));
}

TEST_F(Trust, ForeignMacrosAskBeforeTheyWriteFiles) {
  writeRaw(path("project.ini").toStdString(),
           "SetLanguage:Test\n[{Run}]\nECHO evil\nLOGSAVE " + path("victim").toStdString() + "\n");
  read(path("project.ini"));
  boxes.answer(Answer::no);
  EXPECT_EQ(run(), Ending::stopped);
  EXPECT_FALSE(QFile::exists(path("victim")));
  EXPECT_TRUE(boxes.last().text.contains(path("victim")));
  boxes.answer(Answer::yes);
  EXPECT_EQ(run(), Ending::done);
  EXPECT_TRUE(QFile::exists(path("victim")));
  // The text itself, which a program that was refused has not brought to the disk either.
  writeRaw(path("a.v").toStdString(), "text\n");
  frame.openFile(path("a.v"));
  for (const char* statement : {"SAVE", "SAVEALL", "SHELLW true"}) {
    frame.cmx().ReplaceSel(u"x"_s);
    macro().CommandString = QString::fromLatin1(statement);
    boxes.answer(Answer::no);
    EXPECT_EQ(run(), Ending::stopped) << statement;
    EXPECT_EQ(readRaw(path("a.v").toStdString()), "text\n") << statement;
  }
  boxes.answer(Answer::yes);
  EXPECT_EQ(run(), Ending::done);
  EXPECT_EQ(readRaw(path("a.v").toStdString()), "xxxtext\n");
}

TEST_F(Trust, BatchRunsStartNothingForForeignMacrosUnlessToldTo) {
  writeRaw(path("project.ini").toStdString(), definitions().toStdString());
  writeRaw(path("a.txt").toStdString(), "text\n");
  read(path("project.ini"));
  BatchOptions options;
  options.files = QStringList{path("a.txt")};
  QString error;
  batch::commandsOfMacro(u"Test/Run"_s, &options, &error);
  ASSERT_TRUE(error.isEmpty());
  EXPECT_EQ(batch::run(options), batch::kFailed);
  EXPECT_FALSE(started());
  options.allowPrograms = true;
  EXPECT_EQ(batch::run(options), batch::kDone);
  EXPECT_TRUE(started());
  EXPECT_TRUE(asks()) << "it was allowed for that run only";
}
