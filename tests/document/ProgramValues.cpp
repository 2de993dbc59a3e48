// H2: what a variable holds is part of exactly one argument of a started program, whatever it is: no shell, no second argument,
// no program of its own. Random bytes for each variable that can hold them, against a program that prints its arguments, and a
// canary file that must never appear.
#include <gtest/gtest.h>

#include <QClipboard>
#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QTemporaryDir>
#include <random>

#include "base/Program.h"
#include "control/edit/TextModel.h"
#include "script/Statements.h"
#include "script/Variables.h"
#include "tests/document/RunFixture.h"

using namespace Qt::StringLiterals;
using statements::Value;

namespace {

class Values {
 public:
  explicit Values(const QString& canary) : canary_(canary) {}

  // Bytes without NUL, and `without`; every third holds what a shell or the command language would take for an order.
  std::string next(const char* without) {
    std::string bytes;
    for (int n = 1 + int(random_() % 60); n > 0; --n) bytes += char(1 + random_() % 255);
    if (random_() % 3 == 0) {
      const std::string touch = "touch " + canary_.toStdString();
      const std::string orders[] = {"; " + touch + ";",        "$(" + touch + ")",      "`" + touch + "`",
                                    "\" | " + touch + " #",    "' && " + touch + " '",  "\r\nSHELLW " + touch + "\r\n",
                                    "\\\" " + touch + " \\\"", "|sh -c '" + touch + "'"};
      bytes.insert(random_() % bytes.size(), orders[random_() % std::size(orders)]);
    }
    std::string kept;
    for (const char c : bytes)
      if (std::string_view(without).find(c) == std::string_view::npos) kept += c;
    return kept.empty() ? "x" : kept;
  }

 private:
  std::mt19937 random_{unsigned(qEnvironmentVariableIntValue("ZELKOR_SEED")) + 17};
  QString canary_;
};

}   // namespace

TEST(ProgramValues, H2_AreEachPartOfOneArgument) {
  QTemporaryDir folder;
  const QString canary = folder.filePath(u"canary"_s);
  Values values(canary);
  RunFrame frame;
  const QString applicationBefore = applicationFolder();
  const int rounds = qEnvironmentVariableIntValue("ZELKOR_FULL") ? 300 : 12;
  int started = 0;
  for (const statements::Variable& variable : statements::variables()) {
    for (int round = 0; round < rounds; ++round) {
      // A "$" would begin another variable; in file names "/" parts folders, and "." the stem.
      std::string value, name = "/d/t.v";
      QString input, text = QString::fromLatin1(variable.name);
      switch (variable.value) {
        case Value::name: value = name = "/" + values.next("$/"); break;
        case Value::title: value = values.next("$/"), name = "/d/" + value; break;
        case Value::stem: value = values.next("$/."), name = "/d/" + value + ".v"; break;
        case Value::path: value = "/" + values.next("$/"), name = value + "/t.v"; break;
        case Value::zelkor:
          value = "/" + values.next("$");
          setApplicationFolder(toQString(value));
          break;
        case Value::clip: {
          value = values.next("$");
          QGuiApplication::clipboard()->setText(toQString(value));
          break;
        }
        case Value::word:
          value = values.next("$\r\n");
          frame.cmx().setText(toQString(value));
          break;
        case Value::output: value = values.next("$"), text = u"$Output0"_s; break;
        case Value::date:
        case Value::result:
        case Value::user: continue;   // hold nothing that others choose
      }
      frame.document->setFile(toQString(name));
      if (variable.value == Value::word) {
        frame.cmx().SetSel({0, 0, 0, frame.cmx().GetLineLength(0), false});
        value = fromQString(frame.cmx().SelText());
        EXPECT_FALSE(value.empty());
      }
      frame.logWindow->Clear();
      ScriptedDialogs boxes;
      if (variable.value == Value::output) boxes.answerInput(toQString(value));
      // An answer is the user's own part of the line; between quotes it is one argument, like a value.
      const QString quote = variable.value == Value::output ? u"\""_s : QString();
      const auto outcome =
          frame.run(u"SHELLW %1 args before %3-x=%2,%2%3 \"%2\" after"_s.arg(startee(), text, quote)
                        .prepend(variable.value == Value::output ? u"ECHO $Input(?);\r\nLOGCLEAR\r\n"_s : QString()));
      EXPECT_EQ(outcome.ending, mCMXParser::Ending::done);
      const QByteArray hex = QByteArray::fromStdString(value).toHex();
      const QString expected =
          QString::fromLatin1(QByteArray("before").toHex() + "\r\n" + QByteArray("-x=").toHex() + hex + "2c" + hex + "\r\n" + hex +
                              "\r\n" + QByteArray("after").toHex() + "\r\n[startee: exit code 0]\r\n");
      ASSERT_EQ(frame.logWindow->Text().toStdString(), expected.toStdString()) << variable.name << " with " << hex.constData();
      ASSERT_FALSE(QFile::exists(canary)) << variable.name << " with " << hex.constData();
      ++started;
    }
  }
  setApplicationFolder(applicationBefore);
  std::printf("%d programs started with values of %zu variables\n", started, statements::variables().size() - 3);
}
