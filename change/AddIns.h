// Columnising: blanks in front of a delimiter bring it to the same character position in all selected lines.
#pragma once

#include <QString>
#include <QStringList>

#include "control/CodeMax.h"

struct ColumnizeOptions {
  bool groupsApart = false;   // lines between blank lines are aligned for themselves
  bool codeOnly = false;      // delimiters in strings and comments are left alone
  bool withinBlock = false;   // a column selection: only what lies in the block's columns counts
};

// Asks for the delimiter ("Please input the column delimiter") and aligns the selected lines. The answer; empty: nothing was done.
QString Columnize(CodeMax& cmx);
// Column after column: the delimiter's position, counted in characters, becomes the greatest one of all lines; the search goes on one
// character behind the aligned place. One undo step. Lines that change keep their bookmarks. Returns the number of lines changed.
qint64 Columnize(CodeMax& cmx, LineRange lines, const QString& delimiter, const ColumnizeOptions& options = {});
// The lines of the selection, the last one too when the selection ends at its start; without a selection the caret's line.
LineRange linesToColumnize(CodeMax& cmx);
