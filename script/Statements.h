// The command language: the tables of its own verbs, of the variables and of the options of USAGE. The interpreter, the completion
// of the command dialog and docs/command-language.md read them. The edit commands are in control/commands/CommandTable.h.
#pragma once

#include <QString>
#include <QStringView>
#include <span>

class CodeMax;

namespace statements {

enum class Code {
  logColor = 1,
  logClear,
  logToText,
  logInsertFile,
  logEdit,
  logSave,
  editCommand,
  shell,
  normalEdit,
  echo,
  usage,
  fileInfo,
  invalid,
  shellW,
  save,
  saveAll,
  onError,
  added
};

struct Verb {
  Code code;
  const char* name;
  const char* argument;   // description of the argument; empty: none
  const char* help;       // one line
};

enum class Value { name, date, word, title, stem, user, clip, zelkor, path, result, output };

struct Variable {
  Value value;
  const char* name;   // with its "$"
  const char* help;
  bool isForeign = false;   // others may have chosen its value
};

enum class Option { caseSensitive, skipComments, wholeWords, verbose, bookmark, countOnly };

struct UsageOption {
  Option option;
  const char* text;   // with the blank before it
  const char* help;
};

std::span<const Verb> verbs();   // those added by upper floors are at the end

// Adds a verb of an upper floor to the language. It works on the same text as the edit commands and belongs to the undo step of the
// run. False: the argument is invalid, and so is the line.
using AddedRun = bool (*)(CodeMax& cmx, const QString& argument);
// Texts are not copied. writesFiles: a macro from elsewhere asks first.
void addVerb(const char* name, const char* argument, const char* help, AddedRun run, bool writesFiles = false);
AddedRun addedRun(QStringView verb);   // null for other verbs
bool addedWritesFiles(QStringView verb);

std::span<const Variable> variables();         // in the order of their replacement
std::span<const UsageOption> usageOptions();   // in the order in which they are searched

// Any verb, in upper case: a row of the table, "invalid" for "LOG" followed by other letters, else an edit command.
Code codeOf(QStringView verb);
bool takesArgument(QStringView verb);   // what is no verb of the table is the edit control's, which reads what it needs

// The text before the first blank of a statement, in upper case, and the text behind it.
struct Split {
  QString verb, argument;
};
Split split(const QString& line);

// An edit command as scripts write it; the interpreter removes any three letters.
inline constexpr char kEditPrefix[] = "cmd";
struct SelectionStatement {
  const char* name;
  const char* help;
};
std::span<const SelectionStatement> selectionStatements();   // SELGET, SELSET, SELECTAREA: edit commands of the interpreter

}   // namespace statements
