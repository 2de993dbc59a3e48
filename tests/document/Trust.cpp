// Foreign definition files: their macros start no program before the person allowed it, once for their content.
#include "document/Trust.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include "base/Program.h"
#include "document/Languages.h"
#include "document/modRegistry.h"
#include "language/ucCM.h"
#include "tests/document/RunFixture.h"
#include "tests/support/ScriptedDialogs.h"

using namespace Qt::StringLiterals;
using mCMXParser::Ending;

namespace {

QString startee() { return qEnvironmentVariable("ZELKOR_BIN", u"build/dev/bin"_s) + u"/startee"_s; }

TEST(Trust, ForeignMacrosAskOnceBeforeTheirFirstProgram) {
  RunFrame frame;
  ScriptedDialogs boxes;
  QTemporaryDir elsewhere;
  ucCM manager;
  ucCM* const before = setLanguages(&manager);
  modRegistry::NewKey(modRegistry::kGlobalKey);
  const auto language = manager.Languages()->Add(u"Test"_s);
  const auto macro = language->cMacros()->Add();
  macro->Name = u"Run"_s;
  const QString canary = elsewhere.filePath(u"canary"_s);
  macro->CommandString = u"SHELLW "_s + startee() + u" touch "_s + canary;
  const auto run = [&] { return mCMXParser::Run(1, 1, macro->CommandString).ending; };
  const auto started = [&] { return QFile::remove(canary); };

  manager.setIniFile(elsewhere.filePath(u"project.ini"_s));
  ASSERT_TRUE(trust::isForeign(manager));
  boxes.answer(Answer::no);
  EXPECT_EQ(run(), Ending::stopped);
  EXPECT_FALSE(started());
  boxes.answer(Answer::yes);
  EXPECT_EQ(run(), Ending::done);
  EXPECT_TRUE(started());
  EXPECT_EQ(run(), Ending::done);   // not asked again
  EXPECT_TRUE(started());
  EXPECT_TRUE(boxes.last().text.contains(canary)) << "the person sees what would be started";

  const QString copy = elsewhere.filePath(u"copy.ini"_s);
  manager.setIniFile(copy);         // the same content elsewhere
  EXPECT_EQ(run(), Ending::done);
  EXPECT_TRUE(started());
  macro->Name = u"Another"_s;       // other content
  boxes.answer(Answer::no);
  EXPECT_EQ(run(), Ending::stopped);
  EXPECT_FALSE(started());
  EXPECT_EQ(mCMXParser::Run(0, 0, macro->CommandString).ending, Ending::done) << "typed by the person";
  EXPECT_TRUE(started());

  for (const QString& own : {applicationFolder() + u"/config/Zelkor.ini"_s, userConfigFolder() + u"/mine.ini"_s}) {
    manager.setIniFile(own);
    if (!QFile::exists(QFileInfo(own).path())) continue;
    EXPECT_FALSE(trust::isForeign(manager)) << own.toStdString();
    EXPECT_EQ(run(), Ending::done);
    EXPECT_TRUE(started());
  }
  const QString link = userConfigFolder() + u"/link.ini"_s;
  QFile(copy).open(QIODevice::WriteOnly);
  ASSERT_TRUE(QFile::link(copy, link));
  manager.setIniFile(link);
  EXPECT_TRUE(trust::isForeign(manager)) << "a link is where it leads";
  QFile::remove(link);
  setLanguages(before);
}

}  // namespace
