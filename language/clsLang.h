// The language model: what the definition file says, held as plain properties. Nothing here checks anything: formats and
// defaults are the affair of the definition file and of the definitions editor.
//
// Multi-line properties hold one entry a line, each followed by CR LF, the last one too. Single-line properties hold no
// line break. The collections are shared by reference.
#pragma once

#include <QString>

#include "language/ItemList.h"

// An entry of the language's "Custom" menu.
struct clsMacro {
  QString Desc;
  QString Name;            // the menu caption
  QString CommandString;   // command language, multi-line
};

// A piece of text that is put in for its hot key.
struct clsTemplate {
  QString Desc;
  QString UserString;   // lines joined by CR LF, none behind the last
  QString HotKey;       // the word that calls it up; all that the file keeps of HotKey and Name
  QString Name;
};

// A set of words that F5 and F6 go through.
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
  bool isForeign = false;    // came from a definition file of others; goes with every copy
  QString Extension;         // single-line: extensions without dot, separated by ";"
  QString FileNames;         // single-line: whole names of files, and "#!bash" for the program of a first line; separated by ";"
  QString Contents;          // words that decide for this language where several have the extension; multi-line
  QString Name;              // shown in lists, the identity in the file
  QString BlockEnd;          // words that close an indent level; multi-line
  QString BlockStart;        // words that open one; multi-line
  QString MultiCommentEnd;   // pairs by position with MultiCommentStart; multi-line
  QString MultiCommentStart;
  QString EscapeChar;       // inside strings; not kept in the file
  QString SingleComments;   // multi-line, as the rest
  QString
      SignPlaces;   // "command #": where a comment introducer, an opener or a string delimiter counts (word, command, line), and
                    // whether a delimiter's strings have escape characters (plain, escape)
  QString Formatting;   // what those have to know who change texts of the language: see FormatRules.h
  QString StringDelims;
  QString QuotedNames;   // "\" or "\ \": what a name of any signs begins with and ends with; a blank when only the first stands
  QString Operators;
  QString Keywords;       // the language's own words, which formatting may write in another case
  QString LibraryWords;   // coloured as keywords are and left as they are written

  std::shared_ptr<clsLang> copy() const;   // with copies of all items, so that neither changes the other

  // Never null: made empty on first reading, and the same object from then on.
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
  Pointer Add(const QString& Name);   // equal names are kept: look-ups by name find the first
};
