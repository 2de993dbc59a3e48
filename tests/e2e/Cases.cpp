#include "tests/e2e/Cases.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <algorithm>

#include "change/Verbs.h"
#include "script/Statements.h"

using namespace Qt::StringLiterals;

namespace {

std::optional<QByteArray> content(const QDir& folder, const QString& name) {
  QFile file(folder.filePath(name));
  if (!file.open(QFile::ReadOnly)) return std::nullopt;
  return file.readAll();
}

}   // namespace

QString sourceFolder() { return QDir().absoluteFilePath(qEnvironmentVariable("ZELKOR_SOURCE", u"."_s)); }
QString binFolder() { return QDir().absoluteFilePath(qEnvironmentVariable("ZELKOR_BIN", u"build/dev/bin"_s)); }

std::vector<Case> readCases() {
  AddFormatVerbs();
  std::vector<Case> cases;
  const QDir root(sourceFolder() + u"/tests/e2e"_s);
  for (const QString& name : root.entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name)) {
    const QDir folder(root.filePath(name));
    const QStringList inputs = folder.entryList({u"input.*"_s}, QDir::Files);
    if (inputs.isEmpty()) continue;
    Case one;
    one.name = name;
    one.extension = inputs.first().section(u'.', 1);
    one.input = content(folder, inputs.first()).value_or(QByteArray());
    one.commands = content(folder, u"commands"_s).value_or(QByteArray());
    one.expected = content(folder, u"expected"_s).value_or(one.input);
    one.log = content(folder, u"log"_s).value_or(QByteArray());
    one.messages = content(folder, u"messages"_s).value_or(QByteArray());
    one.standardInput = content(folder, u"stdin"_s).value_or(QByteArray());
    one.clipboard = content(folder, u"clipboard"_s).value_or(QByteArray());
    one.options = QString::fromUtf8(content(folder, u"options"_s).value_or(QByteArray())).split(u'\n', Qt::SkipEmptyParts);
    one.title = QString::fromUtf8(content(folder, u"title"_s).value_or(QByteArray())).trimmed();
    one.status = content(folder, u"status"_s).value_or("0").trimmed().toInt();
    cases.push_back(std::move(one));
  }
  return cases;
}

QByteArray difference(const QByteArray& expected, const QByteArray& found) {
  if (expected == found) return {};
  const QList<QByteArray> a = expected.split('\n'), b = found.split('\n');
  // Lengths of the longest common part of what is left of both.
  std::vector<std::vector<int>> common(std::size_t(a.size()) + 1, std::vector<int>(std::size_t(b.size()) + 1));
  for (qsizetype i = a.size() - 1; i >= 0; --i)
    for (qsizetype k = b.size() - 1; k >= 0; --k) {
      const auto x = std::size_t(i), y = std::size_t(k);
      common[x][y] = a[i] == b[k] ? common[x + 1][y + 1] + 1 : std::max(common[x + 1][y], common[x][y + 1]);
    }
  QByteArray out;
  qsizetype i = 0, k = 0;
  while (i < a.size() || k < b.size()) {
    if (i < a.size() && k < b.size() && a[i] == b[k]) {
      out += "  " + a[i++] + '\n';
      ++k;
    } else if (k == b.size() ||
               (i < a.size() && common[std::size_t(i) + 1][std::size_t(k)] >= common[std::size_t(i)][std::size_t(k) + 1])) {
      out += "- " + a[i++] + '\n';
    } else {
      out += "+ " + b[k++] + '\n';
    }
  }
  return out.replace('\r', "<CR>");
}

TEST(Cases, CoverEveryVerbVariableAndOption) {
  QStringList lines;
  for (const Case& one : readCases()) lines += QString::fromUtf8(one.commands).split(u'\n');
  const auto any = [&](auto holds) { return std::any_of(lines.begin(), lines.end(), holds); };
  for (const statements::Verb& verb : statements::verbs())
    EXPECT_TRUE(any([&](const QString& line) { return statements::split(line).verb == QLatin1String(verb.name); })) << verb.name;
  for (const statements::SelectionStatement& row : statements::selectionStatements())
    EXPECT_TRUE(any([&](const QString& line) { return statements::split(line).verb == u"CMD"_s + QLatin1String(row.name); }))
        << row.name;
  for (const statements::Variable& variable : statements::variables())
    EXPECT_TRUE(any([&](const QString& line) { return line.contains(QLatin1String(variable.name)); })) << variable.name;
  for (const statements::UsageOption& option : statements::usageOptions())
    EXPECT_TRUE(any([&](const QString& line) {
      return line.startsWith(u"USAGE "_s) && (line + u' ').contains(QLatin1String(option.text) + u' ');
    })) << option.text;
}
