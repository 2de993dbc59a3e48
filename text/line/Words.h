// Words, sentences and paragraphs. Runs of [A-Za-z0-9_] (and non-ASCII letters and digits) are words; runs of other characters that
// are not blank are words too; blanks, tabs and line breaks separate them. Offsets are those of the whole text and on character
// boundaries. Each function costs only the distance that it moves.
#pragma once

#include "text/store/Snapshot.h"

namespace text {

enum class CharClass : unsigned char { blank, word, punctuation };
CharClass classOf(char32_t code);   // line breaks are blank

// The word at a caret: the word run that touches it on the right, else on the left, else the punctuation run on the right, else on
// the left, else empty (at offset). So "alw|.." is "alw" and "alw..|" is "..".
ByteRange wordAt(const Snapshot& text, ByteOffset offset);

ByteOffset wordStartBefore(const Snapshot& text, ByteOffset offset);   // start of the run before the caret
ByteOffset wordStartAfter(const Snapshot& text, ByteOffset offset);    // start of the next run
ByteOffset wordEndAfter(const Snapshot& text, ByteOffset offset);      // end of the run at or behind the caret
ByteOffset wordEndBefore(const Snapshot& text, ByteOffset offset);     // end of the run before the caret's own

ByteOffset sentenceStartBefore(const Snapshot& text, ByteOffset offset);
ByteOffset sentenceStartAfter(const Snapshot& text, ByteOffset offset);
// A paragraph is a run of lines that are not blank.
ByteOffset paragraphStartBefore(const Snapshot& text, ByteOffset offset);
ByteOffset paragraphStartAfter(const Snapshot& text, ByteOffset offset);
ByteRange paragraphAt(const Snapshot& text, ByteOffset offset);

// One character (user-perceived; CR LF is one) to the right or left; stays at the ends of the text.
ByteOffset nextChar(const Snapshot& text, ByteOffset offset);
ByteOffset previousChar(const Snapshot& text, ByteOffset offset);

}   // namespace text
