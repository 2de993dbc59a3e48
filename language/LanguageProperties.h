// The one list of a language's text properties. The definition file, the check, the registration with the edit control, the
// definitions editor, the preview and the tests read this list. A new section of the definition file is a member of clsLang and a
// row here.
#pragma once

#include <span>

#include "control/code/LanguageTable.h"
#include "language/clsLang.h"
#include "text/color/EntryMarks.h"

struct LanguageProperty {
  enum Form {
    list,    // one entry a line; the last line ends with CR LF too
    prose,   // the same in the file; the field shows no line break at the end
    line     // a single line; the file's lines are joined with nothing between them
  };
  enum Box { languageBox, wordBox, signBox, commentBox, indentBox, helpBox };   // groups of fields in the definitions editor

  const char* section;   // header in the definition file, without brackets
  QString clsLang::*value;
  Form form;

  const char* field;     // object name in the definitions editor
  const char* caption;   // label of the field; context "frmDefinitions"
  const char* hint;      // tool tip of the field; may be empty
  Box box;
  int place;   // of the field in its box, from the top
  int lines;   // that the field shows at least

  QString CmLanguage::*registered = nullptr;      // the list of the edit control that its entries are added to
  text::EntryMark mark = text::EntryMark::none;   // set in front of each of those entries
  bool hasPlaces = false;                         // "Sign Places" may say where its entries count
};

// In the order in which the definition file is written.
std::span<const LanguageProperty> languageProperties();

// The caption without mnemonic, translated.
QString captionOf(const LanguageProperty& property);
