// The form of the definition file: text to model and back. No file is touched here.
//
// The form is a sequence of lines and has no escape: a body line that looks like a header, a description or the start of
// a language is one (see linesTakenForHeaders). Reading never fails: what has no place is dropped.
#pragma once

#include <QList>
#include <QString>

#include "language/clsLang.h"

namespace definition {

inline constexpr char kLanguageMark[] = "SetLanguage:";
inline constexpr char kDescriptionMark[] = "$Desc:";

// What a line (without its break) is.
enum class LineKind { body, language, description, property, macro, templateText, wordList };
LineKind kindOf(QStringView line);
// What the line names: the language, the description, the section. Closing characters are dropped unseen.
QStringView nameIn(QStringView line, LineKind kind);

// Lines may end in CR LF, LF or CR. Null when the text holds no language.
std::shared_ptr<colLangs> read(const QString& text);

// Lines end in CR LF. With marks, as on the clipboard, a foreign language carries the header "[Foreign]", by which it is one again
// when it is read; in a file the mark stands elsewhere (ucCM).
QString write(const colLangs& languages, bool withMarks = true);
QString writeLanguage(const clsLang& language, bool withMark = true);   // one block of the same
QStringList namesIn(const QString& text);                               // of its languages

// The block of the first language of that name, its mark line included, each line with CR LF; empty if there is none.
QString blockOf(const QString& text, const QString& name);

// Lines from 0 of a body that would not come back as body lines. Empty lines, which only templates keep, do not count.
QList<int> linesTakenForHeaders(const QString& body);

// Text fit for a single-line property: line breaks go.
QString oneLine(QString text);

}   // namespace definition
