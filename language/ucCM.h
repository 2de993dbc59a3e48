// The language manager: owns the languages and the current one, reads and writes the definition file, and answers what the
// rest of the editor asks about languages.
//
// Positions count from 1; 0 means no language, and a position outside the collection counts as 0. Every service works
// (and finds nothing) before Init. A definition file that could not be written whole is left as it was, and one that others have changed is replaced only after a question.
#pragma once

#include <QCoreApplication>
#include <QString>
#include <functional>
#include <memory>
#include <optional>

#include "language/clsLang.h"
#include "text/file/FileIo.h"

class ucCM {
  Q_DECLARE_TR_FUNCTIONS(ucCM)
 public:
  const QString& IniFile() const { return iniFile_; }   // full path of the definition file
  // A definition file is foreign when it lies neither beside the program nor in the person's own settings folder. Languages
  // read there are marked (clsLang::isForeign), and the mark goes along into a file of one's own (into a list of names beside it).
  bool isForeign() const { return isForeignPlace(iniFile_); }
  void setIniFile(const QString& path);
  std::function<void()> iniFileChanged;                     // called when it became another one
  const QString& ConfigDir() const { return configDir_; }   // kept for callers
  void setConfigDir(const QString& folder) { configDir_ = folder; }

  // Drops all languages and reads IniFile. When it cannot be read the person is asked whether to browse for another,
  // which becomes IniFile; the collection stays empty for this time.
  void Init();
  // The same without the question. Empty: read, else the reason for the user, and there are no languages.
  QString ReadIniFile();
  // Writes all languages to IniFile, the old content to IniFile + ".bak" first. False: not written (the person has been
  // told, or answered not to replace what another program wrote there since it was read). The file that came with the program is
  // never written: a new one in the person's own settings folder becomes IniFile. Such a one is offered where IniFile may not be
  // written, or was there and could not be read.
  bool SaveIniFile();
  // Asks for a definition file; true: IniFile is the chosen one.
  bool BrowseIniFile();

  const std::shared_ptr<colLangs>& Languages();   // never null
  void setLanguages(std::shared_ptr<colLangs> languages);
  int ListLanguage() const { return listLanguage_; }   // position of the current language
  void setListLanguage(int index);
  const std::shared_ptr<clsLang>& Language() const { return language_; }   // null: none

  int GetLangFromExt(const QString& ext);   // first language whose extensions hold ext, case folded
  // The language of a file: the first that lists its whole name, else the first of those with its extension that has a word of
  // its Contents in the text, outside comments and strings, else the first without Contents, else, where the name has no extension,
  // the first that lists the program of a line "#!..." on top. `beginning`: the text or the first of it. 0: none.
  int GetLangFromFile(const QString& title, const QString& beginning);
  int GetIndex(const QString& name);                           // first language of exactly that name
  QString GetComment(int index);                               // first line of its SingleComments
  QString GetHelp() const;                                     // help file of the current language
  static QString FirstLine(const QString& text);               // up to the first CR LF
  QString GetFilterList();                                     // "(*.*)|*.*|Verilog (*.v;*.vh)|*.v;*.vh|..."
  static QString GenerateFilterfromExt(const QString& list);   // "v;vh" -> "*.v;*.vh"
  QString SingleComments() const;                              // of the current language, as the next three
  QString Comment() const;                                     // first lines
  QString MultiCommentStart() const;
  QString MultiCommentEnd() const;
  bool isHotKey(int index, const QString& word);           // of a template; its description goes to the status bar
  QString GetUserString(int index, const QString& word);   // text of the first template of that hot key
  // Puts a block behind the definition file; nothing when it does not begin with "SetLanguage:". False: the file could not
  // be written (the person has been told).
  bool AddLangText(const QString& text);
  QString GetLangText(const QString& name);   // the block's lines as they are in the file; empty: not there

 private:
  static bool isForeignPlace(const QString& file);
  std::shared_ptr<clsLang> at(int index);
  // Writes the text; `foreign` names the languages in it that are to be marked where the file is one's own. expected: the file as it
  // was read; not set: it was not, and one that is there is left alone. Returns the stamp of the file as written; nothing when the person
  // was told of a failure or answered not to replace it.
  std::optional<text::FileStamp> writeFile(const QString& text, const QStringList& foreign, const text::FileFormat& format,
                                           const std::optional<text::FileStamp>& expected);
  // The same into a new file in the person's own settings folder, which becomes IniFile.
  std::optional<text::FileStamp> writeOwnFile(const QString& text, const QStringList& foreign, const text::FileFormat& format);

  QString iniFile_, configDir_;
  std::shared_ptr<colLangs> languages_;
  std::shared_ptr<clsLang> language_;
  int listLanguage_ = 0;
  text::FileFormat format_;                // of the file as it was read
  std::optional<text::FileStamp> stamp_;   // of the file as it was read or written
};
