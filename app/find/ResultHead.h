// The head of a list of results: what was searched for, in which folder and files, and what came of it.
#pragma once

#include <QString>

#include "script/FindTask.h"

inline constexpr char kHeadFolder[] = "Folder: ";   // its second line begins with that

// " (match case, no limit)"; empty without any.
QString optionsOf(const folder::FindText& what, bool limited = true);
// "Files: all of the folder; masks *.v; without hidden ones".
QString filesOf(const FindTask& task);
QString headOf(const QString& first, const QString& about, const std::string& root, const QString& result);
