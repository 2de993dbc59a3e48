// Word lists and templates at the caret of an edit control: the functions of F5, F6, SHIFT-F1 and of two dots behind a hot key.
//
// Each operation that changes the text is one undo step. In a read-only text it does nothing. Positions of languages count from 1;
// 0 is none, as in the language manager.
#pragma once

#include <QString>
#include <functional>
#include <optional>

#include "text/store/Units.h"

class CodeMax;
class clsLang;
class ucCM;

// Replaces prompts and variables of the command language in a text.
using ExpandText = std::function<void(QString& text)>;

// True when the caret touches a word of one of the language's word lists (a line ended by CR LF), in any letter case. A listed word
// may hold letters, signs and blanks ("1'b0", "-setup"); the longest one is taken.
bool isInWordList(CodeMax& cmx, const clsLang* language);

// Replaces that word by its neighbour in its word list, cyclically. The list used last is tried first: WordListIndex (from 1) is
// its position and kept by the caller. Does nothing when no list holds the word.
void ProcessWordList(CodeMax& cmx, const clsLang* language, int& WordListIndex, bool previous);

// True when the word at the caret is a hot key of a template. afterTyping: a hot key with ".." typed directly behind it is
// expanded, and a blank typed after the dots is kept; the result is then false.
bool isTemplate(CodeMax& cmx, ucCM& manager, int languageIndex, bool afterTyping, const ExpandText& expand);

// Replaces the hot key at the caret by its template and selects its first field "$$", or puts the caret behind the text. False:
// there is no hot key at the caret.
bool ExpandTemplate(CodeMax& cmx, ucCM& manager, int languageIndex, const ExpandText& expand);

// The same with the template of that hot key, in place of the selection or at the caret.
bool InsertTemplate(CodeMax& cmx, ucCM& manager, int languageIndex, const QString& hotKey, const ExpandText& expand);

// Inserts `indentation` blanks before every line except the first. A line break at the very start belongs to the first line.
void UserStringToCode(QString& text, qint64 indentation);

// Selects the next "$$" between the end of the selection and `limit`. False: there is none, and nothing changes. The text to find
// is not changed.
bool NextField(CodeMax& cmx, std::optional<text::ByteOffset> limit = {});
