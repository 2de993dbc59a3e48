// The tables and examples in docs/command-language.md are those of the interpreter and of this folder, so it cannot say what is not
// so. With ZELKOR_WRITE_DOCS=1 in the environment this test writes them.
#include <gtest/gtest.h>

#include <QFile>
#include <map>

#include "change/Verbs.h"
#include "script/Statements.h"
#include "tests/e2e/Cases.h"

using namespace Qt::StringLiterals;

namespace {

QString row(const QStringList& cells) {
  QStringList safe;
  for (QString cell : cells) safe << cell.replace(u'|', u"\\|"_s);
  return u"| "_s + safe.join(u" | "_s) + u" |\n"_s;
}

QString code(const char* text) { return u'`' + QString::fromLatin1(text).trimmed() + u'`'; }

QString block(const char* what, const QByteArray& text) {
  return text.isEmpty() ? QString()
                        : QString::fromLatin1(what) + u"\n\n```\n"_s + QString::fromUtf8(text).remove(u'\r') +
                              (text.endsWith('\n') ? u"```\n\n"_s : u"\n```\n\n"_s);
}

// The parts that are made, by the name in their first line.
std::map<QString, QString> madeParts() {
  AddFormatVerbs();
  const QString rule = u"---"_s, prefix = QString::fromLatin1(statements::kEditPrefix);
  std::map<QString, QString> parts;
  QString& verbs = parts[u"statements"_s] = row({u"statement"_s, u"argument"_s, u"what it does"_s}) + row({rule, rule, rule});
  for (const statements::Verb& verb : statements::verbs())
    verbs += row({code(verb.name), QString::fromLatin1(verb.argument), QString::fromLatin1(verb.help)});
  for (const statements::SelectionStatement& selection : statements::selectionStatements())
    verbs += row({u'`' + prefix + QString::fromLatin1(selection.name) + u'`', {}, QString::fromLatin1(selection.help)});
  QString& variables = parts[u"variables"_s] = row({u"variable"_s, u"its value"_s}) + row({rule, rule});
  for (const statements::Variable& variable : statements::variables())
    variables += row({code(variable.name), QString::fromLatin1(variable.help)});
  QString& options = parts[u"options"_s] = row({u"option"_s, u"what it does"_s}) + row({rule, rule});
  for (const statements::UsageOption& option : statements::usageOptions())
    options += row({code(option.text), QString::fromLatin1(option.help)});
  QString& examples = parts[u"examples"_s];
  for (const Case& one : readCases()) {
    if (one.title.isEmpty()) continue;
    examples += u"### "_s + one.title + u"\n\n"_s + block("Commands:", one.commands) + block("The text before:", one.input) +
                (one.expected == one.input ? QString() : block("The text behind it:", one.expected)) +
                block("Answers:", one.standardInput) + block("The log:", one.log);
  }
  return parts;
}

}   // namespace

TEST(Reference, IsUpToDate) {
  QFile file(sourceFolder() + u"/docs/command-language.md"_s);
  ASSERT_TRUE(file.open(QFile::ReadOnly));
  const QString is = QString::fromUtf8(file.readAll());
  file.close();
  QString shouldBe = is;
  for (const auto& [name, text] : madeParts()) {
    const QString first = u"<!-- made: %1 -->\n\n"_s.arg(name);
    const qsizetype begin = shouldBe.indexOf(first) + first.size(), end = shouldBe.indexOf(u"\n\n<!-- end -->"_s, begin);
    ASSERT_TRUE(shouldBe.contains(first) && end > begin) << name.toStdString();
    shouldBe.replace(begin, end - begin, text.trimmed());
  }
  if (qEnvironmentVariableIsSet("ZELKOR_WRITE_DOCS") && file.open(QFile::WriteOnly)) file.write(shouldBe.toUtf8());
  const QByteArray wrong = difference(shouldBe.toUtf8(), is.toUtf8());
  EXPECT_TRUE(wrong.isEmpty()) << "write it again with ZELKOR_WRITE_DOCS=1\n" << wrong.constData();
}
