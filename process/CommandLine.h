// Command lines of started programs. No shell is involved: the line is split into words, and the words are the arguments.
#pragma once

#include <QString>
#include <QStringList>
#include <functional>
#include <string>
#include <vector>

// What the user typed for the variable at the start of `rest`, and the length of its name. Null: no such variable.
using ValueAt = std::function<const QString*(QStringView rest, qsizetype* length)>;

// Splits a line into words at blanks and tabs. "..." and '...' protect blanks and may stand inside a word. \" is a quotation mark;
// backslashes in front of one count in pairs; any other backslash is an ordinary character. An open quotation ends with the line.
// "" is an empty word.
//
// Each word is passed to `substitute`, which inserts the values of variables. A value always stays inside its word. Only text that
// the user typed (typedAt) is split like the line, unless its variable is in quotes.
QStringList programArguments(const QString& line, const std::function<void(QString&)>& substitute = {},
                             const ValueAt& typedAt = {});

// The file of a program. A name with a separator is used as it is. Any other name is looked up in the absolute entries of
// `searchPath` (in the form of $PATH), never in the current folder. Returns 0 and the file, or an errno value (ENOENT, EACCES).
int findProgram(const std::string& name, const std::string& searchPath, std::string* file);
