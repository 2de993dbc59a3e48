// A case of a whole run as a folder: tests/e2e/NAME with these files, of which only the first two must be there.
//   input.EXT      the file that is worked on
//   commands       the command string
//   expected       the text after it; without this file it must be as it was
//   log, messages  what goes to standard output and to standard error; without them nothing may
//   status         the exit status; 0 without it
//   stdin, clipboard   what can be read there
//   options        words: "save" writes back; otherwise the text goes to a folder
//   title          a sentence; the case is then an example in docs/command-language.md
// In them {DIR} stands for the folder of the file, {BIN} for that of the test programs, {DATE} and {USER} for today and the user.
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <optional>

struct Case {
  QString name, title, extension;
  QByteArray input, commands, expected, log, messages, standardInput, clipboard;
  QStringList options;
  int status = 0;
};

QString sourceFolder();          // absolute, of the project
QString binFolder();             // absolute, of the built programs
std::vector<Case> readCases();   // sorted by name

struct Result {
  QByteArray text, log, messages;
  int status = 0;
};

// What differs, line by line: " " both, "-" expected, "+" found. Empty: nothing.
QByteArray difference(const QByteArray& expected, const QByteArray& found);
