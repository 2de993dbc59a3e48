// Changes the letter case of keywords, or of all other words. Comments, strings, numbers (also based ones) and escaped identifiers
// (a backslash up to the next blank or backslash) are not changed.
#pragma once

#include <QString>

#include "text/color/Highlight.h"

enum class CaseMode { none = 0, upper = 1, lower = 2, capitalize = 3 };
enum class CaseTarget { mainText, keywords };

// One line; *state is the highlighter's state at the start of the line and becomes that at its end.
QString filterCase(const QString& line, CaseTarget target, CaseMode mode, const text::Highlighter& highlighter,
                   text::LineState* state);
// Upper, lower, or first letter upper and the rest lower.
QString applyCase(const QString& word, CaseMode mode);

// True when the texts differ in white space and letter case only.
bool sameInk(QStringView a, QStringView b);
