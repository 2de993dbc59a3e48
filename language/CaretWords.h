// Word lists and templates at the caret of an edit control: what F5, F6, SHIFT-F1 and the two dots behind a hot key do.
//
// Each operation that changes the text is one undo step, and does nothing in a read-only text. Positions of languages count
// from 1, 0 is none, as in the language manager.
#pragma once

#include <QString>
#include <functional>
#include <optional>

#include "text/store/Units.h"

class CodeMax;
class clsLang;
class ucCM;

// Puts prompts and variables of the command language into a text.
using ExpandText = std::function<void(QString& text)>;

// True when the caret touches a word that is a line, ended by CR LF, of one of the language's word lists, whatever its case. A
// listed word may hold letters, signs and blanks ("1'b0", "-setup"); the longest one counts.
bool isInWordList(CodeMax& cmx, const clsLang* language);

// Replaces that word by its neighbour in its word list, wrapping round; the list last used is tried first.
// WordListIndex (from 1) is that list's position and kept by the caller. Nothing when no list holds the word.
void ProcessWordList(CodeMax& cmx, const clsLang* language, int& WordListIndex, bool previous);

// True when the word at the caret is a hot key of a template. afterTyping: a hot key with ".." typed directly behind it is
// expanded, and a blank stays where the dots were; the answer is then false.
bool isTemplate(CodeMax& cmx, ucCM& manager, int languageIndex, bool afterTyping, const ExpandText& expand);

// Replaces the hot key at the caret by its template and selects the first field "$$" in it, or goes behind it. False: no
// hot key there.
bool ExpandTemplate(CodeMax& cmx, ucCM& manager, int languageIndex, const ExpandText& expand);

// The same with the template of that hot key at the caret, in place of what is selected.
bool InsertTemplate(CodeMax& cmx, ucCM& manager, int languageIndex, const QString& hotKey, const ExpandText& expand);

// Puts `indentation` blanks in front of every line but the first. A line break at the very start counts as part of the first
// line.
void UserStringToCode(QString& text, qint64 indentation);

// Selects the next "$$" behind the selection that ends at or before `limit`; false, and nothing changed, when there is none.
// The text to find stays.
bool NextField(CodeMax& cmx, std::optional<text::ByteOffset> limit = {});
