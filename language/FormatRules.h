// What a language's definition says to those who change its texts ("Formatting"): one rule a line.
//
//   case names   the letter case of names has a meaning although that of keywords has none
//   case all     ... of names and keywords
//   tabs         a tab is not the same as blanks
//   lines "      a string with this delimiter goes on over the ends of lines
//   raw R"       begins a raw string: R"word( up to )word"
//   here <<      begins a here-document: <<word up to a line that is the word
//   rest __END__ behind a line that is this word stands no code
#pragma once

#include <QStringList>

#include "language/clsLang.h"

struct FormatRules {
  bool caseOfNames = false, caseOfAll = false, tabs = false;
  QStringList lines, raw, here, rest;
  QStringList plain;    // delimiters without an escape character (Sign Places)
  QStringList atLine;   // signs that count at the start of a line only (Sign Places)
};

// Ignores unknown rules.
FormatRules formatRules(const clsLang& language);
