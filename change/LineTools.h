// Small services on whole lines and on columns of numbers. Each works on the selected lines (Editor::selectedLines), without a selection
// on all lines of the text where nothing else is said. Each is one undo step and returns the number of lines changed or removed. A
// read-only text stays as it is. The user can cancel a long run; then nothing is changed.
#pragma once

#include <QString>

#include "control/CodeMax.h"
#include "text/find/Finder.h"

LineRange selectedLinesOrAll(CodeMax& cmx);

struct SortOptions {
  bool descending = false;
  bool matchCase = false;   // of the order only
  bool numeric = false;     // by the first number of each line; those without one come first
  bool dropEqual = false;   // one of equal lines stays
};
qint64 SortLines(CodeMax& cmx, const SortOptions& options);
qint64 RemoveDuplicateLines(CodeMax& cmx);   // keeps the first of equal lines, wherever they stand
qint64 RemoveBlankLines(CodeMax& cmx);       // lines of white space only
qint64 TrimLineEnds(CodeMax& cmx);           // blanks and tabs at line ends
// Replaces what is found within a line, \1 to \9 standing for the groups of an expression, in the selected lines, else in the caret's.
// *error not empty: the search failed, and nothing is changed.
qint64 SubstituteInLines(CodeMax& cmx, const text::Finder& finder, const QString& replacement, QString* error);
qint64 JoinLines(CodeMax& cmx);   // to one line, one blank where lines met

struct NumberSeries {
  qint64 start = 0, step = 1;
  static constexpr int kMostRepeats = 1'000'000;
  int repeat = 1;           // each number this many times
  int base = 10;            // 2, 8, 10 or 16
  int width = 0;            // at least so many digits
  bool zeroFill = false;    // filled with zeros, else with blanks
  bool upperCase = false;   // of hexadecimal digits
  QString prefix;           // such as 8'h
  QString suffix;
};
QString seriesItem(const NumberSeries& series, qint64 index);   // index from 0; "?" for a number beyond 64 bits
// Puts the series into the selected lines: a column selection is replaced row by row; otherwise the numbers go in at the column of the
// selection's start, short lines being filled with blanks. Without a selection only the caret's line gets one.
// -1: a number would not fit into 64 bits; nothing is changed.
qint64 InsertSeries(CodeMax& cmx, const NumberSeries& series);
