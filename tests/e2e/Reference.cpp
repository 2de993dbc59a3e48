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
  QString out =
      uR"(# The command language

<!-- Made by the test e2e.Reference from the interpreter's tables and the cases in tests/e2e; do not edit. -->

A command string is a small program: one statement a line. Macros of a language (Custom menu), the command dialog and
`zelkor --batch` run it on the active document. A statement is a verb and, behind the first blank, its argument. Verbs ignore
letter case. Empty lines are skipped; a line that begins with a blank has no verb.

A run is one undo step in each text that it changes. An undo inside the run undoes the run's own last change first, then older
changes. Esc stops the run. An invalid line stops it with "Invalid Command"; the lines before it have taken effect. Only one run
can be in progress. Runs and the find bar have separate search settings: each run begins without a find text and with all
switches off.

## Statements

)"_s;
  out += row({u"statement"_s, u"argument"_s, u"what it does"_s}) + row({u"---"_s, u"---"_s, u"---"_s});
  for (const statements::Verb& verb : statements::verbs())
    out += row({code(verb.name), QString::fromLatin1(verb.argument), QString::fromLatin1(verb.help)});
  const QString prefix = QString::fromLatin1(statements::kEditPrefix);
  for (const statements::SelectionStatement& selection : statements::selectionStatements())
    out += row({u'`' + prefix + QString::fromLatin1(selection.name) + u'`', {}, QString::fromLatin1(selection.help)});
  out +=
      uR"(
A statement whose argument is empty in the table takes none; with one it is invalid. Options are words separated by blanks, in any
order and letter case. An option in brackets without `=` is a switch: it is on if it stands alone or with `=yes`, and off with
`=no`; of two the later one applies. An option with a value may be given once. Any other word, and a value out of bounds, makes
the line invalid.

Every other statement is an edit command: its first three letters are dropped, whatever they are, and the rest is a name of
[the edit commands](commands.md). `cmdUNDO` and `xyzUndo` are the same. A verb that begins with LOG and is none of the above is
invalid. If an edit command takes a number, it is the number at the beginning of the argument, or 0 if there is none. A command
that finds nothing to do has not failed.

## Variables

Before a line runs, its variables are replaced in this order, ignoring letter case. If a value contains the name of a later
variable, that is replaced too.

)"_s;
  out += row({u"variable"_s, u"its value"_s}) + row({u"---"_s, u"---"_s});
  for (const statements::Variable& variable : statements::variables())
    out += row({code(variable.name), QString::fromLatin1(variable.help)});
  out +=
      uR"(
`$Input(question)` asks for a text and is replaced by the answer. The answers of a run have the names `$Output0` to `$Output19`;
the 21st replaces the first. Cancel is an empty answer. The number has one or two digits and no leading 0; a further digit, and a
digit behind `$Input(...)`, is text.

## Options of USAGE

They stand at the end, behind the text, each behind a blank.

)"_s;
  out += row({u"option"_s, u"what it does"_s}) + row({u"---"_s, u"---"_s});
  for (const statements::UsageOption& option : statements::usageOptions())
    out += row({code(option.text), QString::fromLatin1(option.help)});
  out +=
      uR"(
## Programs

`SHELL` and `SHELLW` start a program directly, without a shell. The line is split into words at blanks; words in "..." or '...'
stay together, and `\"` is a quotation mark. Variables are replaced after that, so that a value is never more than a part of one
argument. Only the answer to `$Input(...)` is part of the line and may be several arguments; in quotes it is one. If the value of
`$Name`, `$Path`, `$Title`, `$Stem`, `$Word` or `$Clip` is the name of the program, or a statement that starts programs or writes
files, the user is asked once. For pipes and the like start a shell, and pass values as arguments:

```
SHELLW sh -c 'sort "$1" | uniq -c' sh $Name
```

A program is looked up in the absolute folders of the search path; a name with a separator is used as it is. Its output goes into
the log, with the exit code at the end. `SHELL` closes the program's window when its title begins with FINISHED. A program that
cannot be started is reported as "Command Failure". `ONERROR` decides whether the run continues after a program that failed: one
that was not started, was killed, or returned another exit code than 0.

Before a macro of a foreign language starts a program or writes a file, the user is asked once.

Before a macro starts a program, it saves its document and every other modified one that has a file name, unless *Save Before
Programs Run* in the Tools menu is off. In batch mode only `SAVE` and `SAVEALL` save before the end; with `--output` they write
to that folder.

## Examples

)"_s;
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
