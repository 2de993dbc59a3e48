// Marks before the entries of a language's tables. A mark gives an entry a meaning beyond that of its list.
//
// A mark is one control character. Entries without marks have their usual meaning. Marks exist in memory only and are never stored.
#pragma once

#include <string>
#include <string_view>

#include "text/color/Highlight.h"

namespace text {

enum class EntryMark : char {
  none = 0,
  // For comment introducers and string delimiters: where they count.
  atWord = 1,      // at the start of a line, behind a blank or one of ;&|()<> ("$#" and "${#a}" do not begin comments)
  atCommand = 2,   // the first word of a line, unless the previous line ends with a backslash; behind ';' or behind '{' and a blank
  atLine = 3,      // the first character of a line; such a string is the whole line
  // For string delimiters: the opener of an escaped name and, behind a blank, its closer. Without a closer a blank ends the name.
  name = 4,
  // For keywords: a word of a library, coloured like a keyword.
  library = 5,
  // For string delimiters: no escape character (plain), or the backslash (escape), whatever the language's escape character is.
  plain = 6,
  escape = 7,
};

inline std::string marked(EntryMark mark, std::string_view entry) { return static_cast<char>(mark) + std::string(entry); }

// Removes the mark from an entry and returns it.
inline EntryMark takeMark(std::string& entry) {
  if (entry.empty() || entry[0] < static_cast<char>(EntryMark::atWord) || entry[0] > static_cast<char>(EntryMark::escape))
    return EntryMark::none;
  const auto mark = static_cast<EntryMark>(entry[0]);
  entry.erase(0, 1);
  return mark;
}

// A keyword that is a word of a library.
inline bool isLibraryWord(const Highlighter& highlighter, std::string_view word) {
  return highlighter.isKeyword(marked(EntryMark::library, word));
}

}   // namespace text
