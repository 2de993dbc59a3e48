// Letter case of words: keywords, or words that are not. Comments, strings, numbers (based ones too) and escaped identifiers (a
// backslash up to the next blank or backslash) stay as they are.
#pragma once

#include <QString>

#include "text/color/Highlight.h"

enum class CaseMode { none = 0, upper = 1, lower = 2, capitalize = 3 };
enum class CaseTarget { mainText, keywords };

// One line; *state is the highlighter's state at its start and is moved to its end.
QString filterCase(const QString& line, CaseTarget target, CaseMode mode, const text::Highlighter& highlighter,
                   text::LineState* state);
// Upper, lower, or first letter upper and the rest lower.
QString applyCase(const QString& word, CaseMode mode);

// True when both are the same but for white space and letter case.
bool sameInk(QStringView a, QStringView b);
