// Closers that the editor puts behind a typed bracket or quotation mark, and the two around a selection.
//
// Only what the user types closes: nothing that is pasted, recorded or played as a macro, or changed by a command. A closer that the
// editor put in is typed over as long as the caret stays between the two; Backspace directly between them removes both.
#pragma once

#include <vector>

#include "control/edit/Editor.h"

struct AutoPair {
  text::ByteOffset opener, closer;   // of the two characters
};

namespace autoClose {
// Types the text if it opens, closes or surrounds; false: it is to be typed as usual.
bool type(Editor& e, const QString& text);
bool breakPair(
    Editor& e);   // Return directly between the two of brackets: the closer gets a line of its own; false: it is elsewhere
bool deletePair(Editor& e);   // false: the caret is not directly between the two of a pair
// For each change of the text and each move of the caret.
void textChanged(Editor& e, const text::Change& change);
void caretMoved(Editor& e);
}   // namespace autoClose
