// What the command language consists of: the tables of its own verbs, of the variables and of the options of USAGE. The interpreter,
// the command dialog's completion and docs/command-language.md read them; nothing repeats them. The edit commands stand in
// control/edit/CommandTable.h.
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
  const char* argument;   // what the argument is, empty: none
  const char* help;       // one line
};

enum class Value { name, date, word, title, stem, user, clip, zelkor, path, result, output };

struct Variable {
  Value value;
  const char* name;   // with its "$"
  const char* help;
  bool isForeign = false;   // others may have chosen what it holds
};

enum class Option { caseSensitive, skipComments, wholeWords, verbose, bookmark, countOnly };

struct UsageOption {
  Option option;
  const char* text;   // with the blank before it
  const char* help;
};

std::span<const Verb> verbs();   // those that upper floors added stand behind

// A verb that an upper floor gives to the language. It works on the text that edit commands work on, as one undo step with the
// rest of the run. False: the argument means nothing, the line is invalid.
using AddedRun = bool (*)(CodeMax& cmx, const QString& argument);
void addVerb(const char* name, const char* argument, const char* help, AddedRun run);   // texts are not copied
AddedRun addedRun(QStringView verb);                                                    // null for other verbs

std::span<const Variable> variables();         // in the order in which they are replaced
std::span<const UsageOption> usageOptions();   // in the order in which they are looked for

// Any verb, in upper case: a row of the table, invalid for "LOG" with other letters, else an edit command.
Code codeOf(QStringView verb);
bool takesArgument(QStringView verb);   // what is no verb of the table is the edit control's, which reads what it needs

// The letters before a statement's first blank, in upper case, and what stands behind it.
struct Split {
  QString verb, argument;
};
Split split(const QString& line);

// An edit command as scripts write it; the interpreter drops three letters whatever they are.
inline constexpr char kEditPrefix[] = "cmd";
struct SelectionStatement {
  const char* name;
  const char* help;
};
std::span<const SelectionStatement> selectionStatements();   // SELGET, SELSET, SELECTAREA: edit commands of the interpreter's own

}   // namespace statements
