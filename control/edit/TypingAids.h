// What a control does by itself while the user types, and what it shows beside the text: the options, and the one list of them that
// settings, properties dialog and tests read.
#pragma once

#include <QString>
#include <span>
#include <vector>

// When Tab and Return take a word of the list beside the caret. The numbers are stored in the settings.
enum class CompletionKeys {
  entered = 0,   // after the user entered the list by Up, Down or the command
  tab = 1,       // Tab at once, Return then
  both = 2       // both at once
};

// Programs and tests have none of the aids unless they ask; a control begins with usual().
struct TypingAids {
  bool completeTyped = false;   // the list of words appears while the user types
  int completionKeys = 0;       // CompletionKeys
  bool closeBrackets = false;   // a typed bracket or quotation mark gets its closer
  bool surround = false;        // ... and goes around a selection with it
  bool markWord = false;        // all places of the word at the caret are marked
  bool indentGuides = false;
  bool barMarks = false;         // the vertical scroll bar has marks
  bool trailingBlanks = false;   // blanks at the ends of lines are shown
  bool trimChanged = false;      // saving deletes them in lines that differ from the file
  bool changeMarks = false;      // lines that differ from the file are marked in the margin
  std::vector<int> rulers{};     // columns from 0, ascending: a line before each
  bool operator==(const TypingAids&) const = default;
  static TypingAids usual();
  // Columns as the user writes them: "80, 120". What is no column from 1 to 10000 is left out.
  QString rulersText() const;
  void setRulers(const QString& text);

  struct Switch {
    const char* setting;   // its name in the settings
    const char* field;     // its name in the properties dialog
    const char* label;     // context "TypingAids"
    bool TypingAids::*value;
    bool typing;   // it stands on the page of editing, else on that of the display
  };
  static std::span<const Switch> switches();
};
