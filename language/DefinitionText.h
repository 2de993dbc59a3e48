// The syntax of the definition file: text to model and back. No file access here.
//
// The syntax is a sequence of lines without escapes: a body line that looks like a header, a description or the start of a language
// is one (see linesTakenForHeaders). Reading never fails; unknown parts are dropped.
#pragma once

#include <QList>
#include <QString>

#include "language/clsLang.h"

namespace definition {

inline constexpr char kLanguageMark[] = "SetLanguage:";
inline constexpr char kDescriptionMark[] = "$Desc:";

// The kind of a line, without its break.
enum class LineKind { body, language, description, property, macro, templateText, wordList };
LineKind kindOf(QStringView line);
// The name in a line: of the language, description or section. The closing characters are removed unchecked.
QStringView nameIn(QStringView line, LineKind kind);

// Lines may end in CR LF, LF or CR. Null when the text holds no language.
std::shared_ptr<colLangs> read(const QString& text);

// Lines end in CR LF. With marks (as on the clipboard) a foreign language gets the header "[Foreign]", so that it is read as
// foreign again. For a file the mark is stored elsewhere (ucCM).
QString write(const colLangs& languages, bool withMarks = true);
QString writeLanguage(const clsLang& language, bool withMark = true);   // one block of the same
QStringList namesIn(const QString& text);                               // of its languages

// The block of the first language of that name with its first line, each line with CR LF; empty if there is none.
QString blockOf(const QString& text, const QString& name);

// Line numbers, from 0, of a body that would not be read as body lines. Empty lines, which only templates keep, are not reported.
QList<int> linesTakenForHeaders(const QString& body);

// The text without line breaks, for a single-line property.
QString oneLine(QString text);

}   // namespace definition
