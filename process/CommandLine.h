// Command lines of started programs. No shell is involved: the line is cut into words here, and the words are the arguments.
#pragma once

#include <QString>
#include <QStringList>
#include <functional>
#include <string>
#include <vector>

// What the user typed for the variable that `rest` begins with, and the length of its name; null: no such variable.
using ValueAt = std::function<const QString*(QStringView rest, qsizetype* length)>;

// Cuts a line into words at blanks and tabs. "..." and '...' keep blanks together and may stand inside a word; \" is a quotation
// mark, and a run of backslashes before one counts by pairs; any other backslash is itself. A quotation that is left open ends with
// the line. "" is an empty word.
//
// Each word is then handed to `substitute`, which puts the values of variables in: whatever a value holds, it stays part of its one
// word. What the user typed himself (typedAt) is cut like the line, unless its variable stands in quotes.
QStringList programArguments(const QString& line, const std::function<void(QString&)>& substitute = {},
                             const ValueAt& typedAt = {});

// The file of a program: a name with a separator is taken as it is; any other is looked up in the absolute entries of
// `searchPath` ($PATH's form), never in the current folder. Returns 0 and the file, or an errno value (ENOENT, EACCES).
int findProgram(const std::string& name, const std::string& searchPath, std::string* file);
