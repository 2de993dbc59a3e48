// docs/command-language.md is made of the interpreter's own tables and of cases of this folder, so it cannot say what is not
// so. With ZELKOR_WRITE_DOCS=1 in the environment this test writes it.
#include <gtest/gtest.h>

#include <QFile>

#include "change/Verbs.h"
#include "control/edit/CommandTable.h"
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

QString reference() {
  AddFormatVerbs();
  QString out = QStringLiteral(
      "# The command language\n\n"
      "<!-- Made by the test e2e.Reference from the interpreter's tables and the cases in tests/e2e; do not edit. -->\n\n"
      "A command string is a small program: one statement a line. Macros of a language (Custom menu), the command dialog and\n"
      "`zelkor --batch` run it on the active document. A statement is a verb and, behind the first blank, its argument. Verbs may "
      "be\n"
      "written in any mixture of capital and small letters. Empty lines are skipped; a line that begins with a blank has no "
      "verb.\n\n"
      "A run is one undo step in each text that it touches. An undo inside it takes back the run's own last change first, then "
      "what was\n"
      "before the run; the step holds what is left of it. Esc stops it. A line that means nothing stops the run with \"Invalid\n"
      "Command\"; the lines before it have taken effect. Only one run is on its way at a time. What the find bar\n"
      "holds changes no run, and no run changes that: each begins without a find text and with all switches off.\n\n"
      "## Statements\n\n");
  out += row({u"statement"_s, u"argument"_s, u"what it does"_s}) + row({u"---"_s, u"---"_s, u"---"_s});
  for (const statements::Verb& verb : statements::verbs())
    out += row({code(verb.name), QString::fromLatin1(verb.argument), QString::fromLatin1(verb.help)});
  const QString prefix = QString::fromLatin1(statements::kEditPrefix);
  for (const statements::SelectionStatement& selection : statements::selectionStatements())
    out += row({u'`' + prefix + QString::fromLatin1(selection.name) + u'`', {}, QString::fromLatin1(selection.help)});
  out += QStringLiteral(
      "\nA statement whose argument is empty in the table takes none: with one it is invalid. Options are words parted by blanks, "
      "in "
      "any order\n"
      "and any case. One in brackets without `=` is a switch: it is on where it stands, or as `=yes` or `=no` behind it says, and "
      "of "
      "two the\n"
      "later one holds. An option with a value is given once. Any other word, and a value out of its bounds, makes the line "
      "invalid.\n"
      "\nEvery other statement is an edit command: its first three letters are dropped, whatever they are, and the rest is a name "
      "of\n"
      "[the edit commands](commands.md). `cmdUNDO` and `xyzUndo` are the same. A verb that begins with LOG and is none of those "
      "above is\n"
      "invalid. A number that an edit command takes is what stands at the beginning of its argument, 0 when that is none. A "
      "command that\n"
      "exists and finds nothing to do is no failure.\n\n"
      "## Variables\n\n"
      "Before a line runs, its variables are replaced, in this order and in any spelling of their letters. A value that holds the "
      "name of a\n"
      "later variable is replaced again.\n\n");
  out += row({u"variable"_s, u"its value"_s}) + row({u"---"_s, u"---"_s});
  for (const statements::Variable& variable : statements::variables())
    out += row({code(variable.name), QString::fromLatin1(variable.help)});
  out += QStringLiteral(
      "\n`$Input(question)` asks for a text, and is replaced by the answer. The answers of a run have the names `$Output0` to "
      "`$Output19`; the\n"
      "21st takes the first one's place. Cancelling is an empty answer. The number has at most two digits and no 0 in front; a "
      "digit\n"
      "behind that, and one behind `$Input(...)`, is text.\n\n"
      "## Options of USAGE\n\n"
      "They stand at the end, behind the text, each behind a blank.\n\n");
  out += row({u"option"_s, u"what it does"_s}) + row({u"---"_s, u"---"_s});
  for (const statements::UsageOption& option : statements::usageOptions())
    out += row({code(option.text), QString::fromLatin1(option.help)});
  out += QStringLiteral(
      "\n## Programs\n\n"
      "`SHELL` and `SHELLW` start a program directly, without a shell: the line is cut into words at blanks, words in \"...\" or "
      "'...' stay\n"
      "together, and `\\\"` is a quotation mark. Only then are variables replaced, so that a value is never more than part of one "
      "argument,\n"
      "whatever it holds. What the user types for `$Input(...)` is part of the line and may be several arguments; in quotes it is "
      "one.\n"
      "Before the value of `$Name`, `$Path`, `$Title`, `$Stem`, `$Word` or `$Clip` names the program itself, or is the statement "
      "that starts one or\n"
      "writes a file, the user is asked once. For pipes and the like name a shell, and hand it values as arguments:\n\n"
      "```\nSHELLW sh -c 'sort \"$1\" | uniq -c' sh $Name\n```\n\n"
      "A program is looked up in the absolute folders of the search path; one with a separator in its name is taken as it is. What "
      "it\n"
      "prints goes into the log, with its exit code at the end. `SHELL` closes the program's window when the window's title begins "
      "with\n"
      "FINISHED. A program that cannot be started is reported as \"Command Failure\". Whether the run goes on behind a program "
      "that failed -\n"
      "was not started, was ended, or gave another exit code than 0 - says `ONERROR`.\n\n"
      "A macro of a language from elsewhere asks once before it starts a program or writes a file.\n\n"
      "A macro saves its document and every other modified one that has a file name before it starts a program, unless *Save "
      "Before Programs Run* in the Tools menu is off. In\n"
      "batch mode only `SAVE` and `SAVEALL` save before the end; with `--output` they write there.\n\n"
      "## Examples\n\n");
  for (const Case& one : readCases()) {
    if (one.title.isEmpty()) continue;
    out += u"### "_s + one.title + u"\n\n"_s + block("Commands:", one.commands) + block("The text before:", one.input) +
           (one.expected == one.input ? QString() : block("The text behind it:", one.expected)) +
           block("Answers:", one.standardInput) + block("The log:", one.log);
  }
  return out.trimmed() + u'\n';
}

}   // namespace

TEST(Reference, IsUpToDate) {
  const QString path = sourceFolder() + u"/docs/command-language.md"_s;
  QFile file(path);
  if (qEnvironmentVariableIsSet("ZELKOR_WRITE_DOCS")) {
    ASSERT_TRUE(file.open(QFile::WriteOnly));
    file.write(reference().toUtf8());
    file.close();
  }
  ASSERT_TRUE(file.open(QFile::ReadOnly));
  const QByteArray wrong = difference(reference().toUtf8(), file.readAll());
  EXPECT_TRUE(wrong.isEmpty()) << "write it again with ZELKOR_WRITE_DOCS=1\n" << wrong.constData();
}
