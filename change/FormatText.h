// The steps of formatting a text: tabs, letter case of the text and of keywords, indentation, line ends. One run is one undo step and
// one repaint; with white space removed and letter case folded the text after it equals the text before, or the run is undone.
#pragma once

#include <QString>

#include "change/indent/Reindent.h"
#include "control/CodeMax.h"

class clsLang;

// Indices as chosen in the dialog's lists; 0 is "<Ignore>" everywhere.
struct FormatChoices {
  int tabs = 0;          // n >= 1: every tab becomes n - 1 blanks, whatever its column; one stays between two words, or two signs
  int mainCase = 0;      // 1 "UpperCase", 2 "LowerCase", 3 "Capitalize": words that are not keywords
  int keywordCase = 0;   // the same for keywords
  int indent = 0;        // n >= 1: re-indent by units of n - 1 blanks
  int lineEnds = 0;      // 1 Unix (LF), 2 Windows (CR LF): of new lines, and every line of the text
  bool wholeLine = false;          // indentation reads whole lines (see Reindent.h)
  bool indentTabs = false;         // ... and is by one tab a level, whatever `indent` says
  bool selectionOnly = false;      // only the selected lines (LineTools.h)
  bool changeCaseAnyway = false;   // letter case also where the language tells upper from lower
};

struct FormatResult {
  QString error;   // not empty: nothing was changed
  qint64 linesChanged = 0;
  QStringList notes;   // steps that were left out, since the language has a meaning for what they change
};

BlockWords blockWordsOf(const clsLang& language, bool caseSensitive = false);

// True when a chosen case filter would change letter case that has a meaning in the language: to be asked first.
bool caseMatters(const FormatChoices& choices, const clsLang* language);

// How the text is indented now.
IndentStyle indentStyleOf(const CodeMax& cmx);

// `language` may be null: the steps that need one are then left out. So is the indentation of a language without block words. Sets Modified when the line-end step runs.
FormatResult FormatIt(CodeMax& cmx, const clsLang* language, const FormatChoices& choices);
