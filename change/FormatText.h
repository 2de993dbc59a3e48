// The steps of formatting a text: tabs, letter case of words and keywords, indentation, line ends. One run is one undo step and one
// repaint. After it the text equals the old one except for white space and letter case; otherwise the run is undone.
#pragma once

#include <QString>

#include "change/indent/Reindent.h"
#include "control/CodeMax.h"

class clsLang;

// Indices of the entries in the dialog's lists; 0 is always "<Ignore>".
struct FormatChoices {
  int tabs = 0;              // n >= 1: each tab becomes n - 1 blanks at any column, but at least one between two words or two signs
  int mainCase = 0;          // 1 "UpperCase", 2 "LowerCase", 3 "Capitalize": words that are not keywords
  int keywordCase = 0;       // the same for keywords
  int indent = 0;            // n >= 1: re-indent by units of n - 1 blanks
  int lineEnds = 0;          // 1 Unix (LF), 2 Windows (CR LF): for new lines and for every line of the text
  bool wholeLine = false;    // indentation reads whole lines (see Reindent.h)
  bool indentTabs = false;   // indentation by one tab for each level, whatever `indent` says
  bool selectionOnly = false;      // only the selected lines (Editor::selectedLines)
  bool changeCaseAnyway = false;   // changes letter case even if the language is case-sensitive
};

struct FormatResult {
  QString error;   // not empty: nothing was changed
  qint64 linesChanged = 0;
  QStringList notes;   // skipped steps, because the language gives a meaning to what they change
};

BlockWords blockWordsOf(const clsLang& language, bool caseSensitive = false);

// True: a chosen step would change letter case that has a meaning in the language. Ask the user first.
bool caseMatters(const FormatChoices& choices, const clsLang* language);

// How the text is indented now.
IndentStyle indentStyleOf(const CodeMax& cmx);

// `language` may be null: steps that need one are skipped. Indentation is also skipped for a language without block words. Sets
// Modified when the step for line ends runs.
FormatResult FormatIt(CodeMax& cmx, const clsLang* language, const FormatChoices& choices);
