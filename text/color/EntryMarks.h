// Marks in front of the entries of a language's tables: what a sign or word is beyond the list in which it stands.
//
// A mark is one control character. Lists without marks are read as ever.
#pragma once

#include <string>
#include <string_view>

#include "text/color/Highlight.h"

namespace text {

enum class EntryMark : char {
  none = 0,
  // Of comment introducers and string delimiters: where they count.
  atWord = 1,      // at a line's start, behind a blank or one of ;&|()<> ("$#" and "${#a}" begin no comments)
  atCommand = 2,   // the first word of a line, unless the line in front ends with a backslash; behind ';' or behind '{' and a blank
  atLine = 3,      // the first character of a line; a string that begins so is the whole line
  // Among the string delimiters: the opener of a name of any signs, and behind a blank its closer. Without one a blank ends the name.
  name = 4,
  // Of keywords: a word of a library, coloured as the language's own words are.
  library = 5,
  // Of string delimiters: whether the escape character is the language's, or none or the backslash whatever that is.
  plain = 6,
  escape = 7,
};

inline std::string marked(EntryMark mark, std::string_view entry) { return static_cast<char>(mark) + std::string(entry); }

// Takes the mark from an entry.
inline EntryMark takeMark(std::string& entry) {
  if (entry.empty() || entry[0] < static_cast<char>(EntryMark::atWord) || entry[0] > static_cast<char>(EntryMark::escape))
    return EntryMark::none;
  const auto mark = static_cast<EntryMark>(entry[0]);
  entry.erase(0, 1);
  return mark;
}

// A keyword that is not the language's own.
inline bool isLibraryWord(const Highlighter& highlighter, std::string_view word) {
  return highlighter.isKeyword(marked(EntryMark::library, word));
}

}   // namespace text
