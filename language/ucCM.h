// The language manager: owns the languages and the current one, reads and writes the definition file, and answers questions about
// languages.
//
// Positions count from 1; 0 means no language, and an invalid position counts as 0. All services may be called before Init; they
// find nothing then. If the definition file cannot be written completely, it is not changed. If another program changed it, the
// user is asked before it is replaced.
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
  // A definition file is foreign unless it lies beside the program or in the user's own settings folder. Its languages are marked
  // (clsLang::isForeign). When they are saved into the user's own file, the mark is stored in a list of names beside that file.
  bool isForeign() const { return isForeignPlace(iniFile_); }
  void setIniFile(const QString& path);
  std::function<void()> iniFileChanged;                     // called when IniFile changes
  const QString& ConfigDir() const { return configDir_; }   // kept for callers
  void setConfigDir(const QString& folder) { configDir_ = folder; }

  // Drops all languages and reads IniFile. If it cannot be read, the user is asked whether to browse for another file, which
  // becomes IniFile; the collection stays empty this time.
  void Init();
  // The same without the question. Returns empty, or the reason for the user; then there are no languages.
  QString ReadIniFile();
  // Writes all languages to IniFile, after a copy of the old content to IniFile + ".bak". False: not written; the user has been
  // told, or refused to replace what another program has written since the last reading. The file that came with the program is
  // never written: a new one in the user's own settings folder becomes IniFile. That one is also offered when IniFile is not
  // writable or could not be read.
  bool SaveIniFile();
  // Asks for a definition file. True: it is now IniFile.
  bool BrowseIniFile();

  const std::shared_ptr<colLangs>& Languages();   // never null
  void setLanguages(std::shared_ptr<colLangs> languages);
  int ListLanguage() const { return listLanguage_; }   // position of the current language
  void setListLanguage(int index);
  const std::shared_ptr<clsLang>& Language() const { return language_; }   // null: none

  int GetLangFromExt(const QString& ext);   // first language with this extension, ignoring case; 0: none
  // The language of a file, by the first rule that finds one: 1. it lists the whole file name; 2. it has the extension, and a word
  // of its Contents is in the text outside comments and strings; 3. it has the extension and no Contents; 4. the name has no
  // extension, and it lists the interpreter of the line "#!..." at the top. `beginning`: the text or its beginning. 0: none.
  int GetLangFromFile(const QString& title, const QString& beginning);
  int GetIndex(const QString& name);                           // first language of exactly that name; 0: none
  QString GetComment(int index);                               // first line of its SingleComments
  QString GetHelp() const;                                     // help file of the current language
  static QString FirstLine(const QString& text);               // up to the first CR LF
  QString GetFilterList();                                     // "(*.*)|*.*|Verilog (*.v;*.vh)|*.v;*.vh|..."
  static QString GenerateFilterfromExt(const QString& list);   // "v;vh" -> "*.v;*.vh"
  QString SingleComments() const;                              // of the current language, as the next three
  QString Comment() const;                                     // first lines
  QString MultiCommentStart() const;
  QString MultiCommentEnd() const;
  bool isHotKey(int index, const QString& word);           // of a template; shows its description in the status bar
  QString GetUserString(int index, const QString& word);   // text of the first template with that hot key
  // Appends a block to the definition file, if it begins with "SetLanguage:". False: the file could not be written, and the user
  // has been told.
  bool AddLangText(const QString& text);
  QString GetLangText(const QString& name);   // the lines of the block as they are in the file; empty: there is none

 private:
  static bool isForeignPlace(const QString& file);
  std::shared_ptr<clsLang> at(int index);
  // Writes the text; `foreign` names its foreign languages, which are marked if the file is the user's own. expected: the file as
  // it was read. Without it, an existing file is not replaced. Returns the stamp of the written file, or nothing when the user was
  // told of a failure or refused to replace the file.
  std::optional<text::FileStamp> writeFile(const QString& text, const QStringList& foreign, const text::FileFormat& format,
                                           const std::optional<text::FileStamp>& expected);
  // The same for a new file in the user's own settings folder, which becomes IniFile.
  std::optional<text::FileStamp> writeOwnFile(const QString& text, const QStringList& foreign, const text::FileFormat& format);

  QString iniFile_, configDir_;
  std::shared_ptr<colLangs> languages_;
  std::shared_ptr<clsLang> language_;
  int listLanguage_ = 0;
  text::FileFormat format_;                // format of the file at the last reading
  std::optional<text::FileStamp> stamp_;   // stamp of the file at the last reading or writing
};
