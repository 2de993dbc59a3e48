// The language model: the content of the definition file as plain properties, without checks. DefinitionText.h and the definitions
// editor know formats and defaults; LanguageProperties.h lists the properties.
//
// Multi-line properties hold one entry a line; every line ends with CR LF, the last one too. Single-line properties hold no line
// break. The collections are shared by reference.
#pragma once

#include <QString>

#include "language/ItemList.h"

// An entry of the language's "Custom" menu.
struct clsMacro {
  QString Desc;
  QString Name;            // the menu caption
  QString CommandString;   // command language, multi-line
};

// A text that is inserted for its hot key.
struct clsTemplate {
  QString Desc;
  QString UserString;   // lines separated by CR LF, without one at the end
  QString HotKey;       // the word that inserts it. The file keeps only HotKey, not Name
  QString Name;
};

// A set of words that F5 and F6 cycle through.
struct clsWordList {
  QString Desc;
  QString WordList;   // one word a line, multi-line
  QString Name;
};

class cMacros : public ItemList<clsMacro> {
 public:
  Pointer Add() { return append(std::make_shared<clsMacro>()); }
};

class cTemplate : public ItemList<clsTemplate> {
 public:
  Pointer Add(const QString& Name);   // its hot key is its name
};

class cWordList : public ItemList<clsWordList> {
 public:
  Pointer Add(const QString& Name = {}, const QString& WordList = {});
};

class clsLang {
 public:
  QString BlockMid;      // words that both close and open an indent level; multi-line
  QString Description;   // multi-line
  QString HelpFile;      // single-line
  bool isCaseSensitive = false;
  bool isForeign = false;    // read from a foreign definition file; copies keep it
  QString Extension;         // single-line: extensions without dot, separated by ";"
  QString FileNames;         // single-line: whole file names, and "#!bash" for the interpreter of a script; separated by ";"
  QString Contents;          // words that select this language among several with the same extension; multi-line
  QString Name;              // shown in lists; identifies the language in the file
  QString BlockEnd;          // words that close an indent level; multi-line
  QString BlockStart;        // words that open one; multi-line
  QString MultiCommentEnd;   // paired by position with MultiCommentStart; multi-line
  QString MultiCommentStart;
  QString EscapeChar;       // inside strings; not stored in the file
  QString SingleComments;   // this and the following properties are multi-line
  QString
      SignPlaces;   // "command #": where a comment introducer, an opener or a string delimiter counts (word, command, line), and
                    // whether a delimiter's strings have escape characters (plain, escape)
  QString Formatting;   // rules for code that changes texts of the language: see FormatRules.h
  QString StringDelims;
  QString Folding;       // rules for blocks that can be folded: see text/fold/FoldRules.h
  QString QuotedNames;   // "\" or "\ \": what an escaped name begins and ends with; if only the first is given, a blank ends it
  QString Operators;
  QString Keywords;       // the language's own words; formatting may change their letter case
  QString LibraryWords;   // coloured like keywords; their letter case is never changed

  std::shared_ptr<clsLang> copy() const;   // deep copy: copies all items too

  // Never null: created on first access.
  const std::shared_ptr<::cMacros>& cMacros() const { return made(macros_); }
  const std::shared_ptr<::cTemplate>& cTemplate() const { return made(templates_); }
  const std::shared_ptr<::cWordList>& cWordList() const { return made(wordLists_); }
  void setcMacros(std::shared_ptr<::cMacros> macros) { macros_ = std::move(macros); }
  void setcTemplate(std::shared_ptr<::cTemplate> templates) { templates_ = std::move(templates); }
  void setcWordList(std::shared_ptr<::cWordList> wordLists) { wordLists_ = std::move(wordLists); }

 private:
  template <class T>
  static const std::shared_ptr<T>& made(std::shared_ptr<T>& held) {
    if (!held) held = std::make_shared<T>();
    return held;
  }
  mutable std::shared_ptr<::cMacros> macros_;
  mutable std::shared_ptr<::cTemplate> templates_;
  mutable std::shared_ptr<::cWordList> wordLists_;
};

class colLangs : public ItemList<clsLang> {
 public:
  Pointer Add(const QString& Name);   // equal names are allowed; a look-up by name finds the first
};
