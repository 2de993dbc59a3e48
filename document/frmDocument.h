// The document window: one open text in its edit control, and what the control does not keep: path and title, whether the text has
// a file, the language with its comment delimiters, and the watch for changes by other programs.
//
// Invariants: the file is only written by SaveDocumment. A change on disk changes the text only after the user agreed, as one undo
// step. A load or save that fails changes nothing. Two windows may show one text (viewOf): they share all of the above and differ
// only in caret and scroll position; only closing the last of them asks about changes.
//
// Lines and columns count from 0, as in CodeMax.
#pragma once

#include <QTimer>
#include <QWidget>
#include <memory>

#include "control/CodeMax.h"

class frmDocument : public QWidget {
  Q_OBJECT
 public:
  explicit frmDocument(QWidget* parent = nullptr);                        // Form_Load: without a file name, with the stored options
  explicit frmDocument(frmDocument& viewOf, QWidget* parent = nullptr);   // another window of the same text
  ~frmDocument() override;

  CodeMax* const cmx;
  QTimer* const Timer1;   // 4000 ms; runs while cmx has the focus

  // The file. An untitled document has a title and a folder but an empty name.
  const QString& CurrentFileName() const;    // full path; empty without a file
  const QString& CurrentFileTitle() const;   // used in caption and messages; when it is empty, closing does not ask
  const QString& CurrentFileDir() const;
  bool DocumentHasName() const;    // was loaded from or saved to a file
  bool DocumentModified() const;   // last value passed to DocumentChanged
  void setUntitled(const QString& title, const QString& folder);
  // While the program fills a text of its own there is no undo and no journal; behind it the text counts as not modified.
  void beginFill();
  void endFill();
  void setFile(const QString& path);     // name, title, folder and caption from the path
  void beginFile(const QString& path);   // the same for a file that does not exist; the first save creates it
  // Makes the text read-only (cmx->ReadOnly) when its file has become write-protected, and writable when the file may be written
  // again. Between these events the user may switch Read Only at will. A modified text is not made read-only.
  void followRights();
  bool isGuarded() const;    // read-only for that reason
  QString Caption() const;   // the title, with "*" behind it while modified
  int views() const;         // number of windows of this text, at least 1

  void DocumentChanged(bool modified);
  void RowAndCol();   // of the active document: shows "line,column" of the caret in panel 2; lines from 1, columns from 0
  // If the text already came from this file, it is replaced in one undo step, so that the old text can be restored.
  void LoadDocument(const QString& path, bool& loaded);
  void ReloadDocument();   // LoadDocument of its own file; the caret keeps its line and column
  // Reads the file again in another encoding, as one undo step. False: it cannot be read so, and the user has been told.
  bool ReopenAs(const text::FileFormat& format);
  bool EncodingIsChosen() const;   // by the user: loading the file may detect another one
  void keepEncoding();             // it was chosen earlier
  // False: not saved, and the user has been told. Asks before it overwrites changes of other programs and before it creates a
  // folder. The caller chooses the name (frmMain::mainSaveDocument).
  bool SaveDocumment(const QString& path);
  // True: the caller must not continue (cancelled, or saving failed).
  bool CancelSaveFile();
  void inconsistentDate();   // asks about changes on disk; does nothing without a file
  // False ("Unix"): the first line of the file ends in a lone line feed, or the file cannot be read. A text without line ends gets
  // those of the platform.
  bool SetCRLF(const QString& path);

  // One undo step over the selected lines. The line at whose start the selection ends is included.
  void CommentBlock();
  void UnCommentBlock();

  QString GetCurrentWord() const;   // the selected text, else the word at the caret
  int GetCurrentWordLength() const;
  bool isSelection() const;
  CmPosition CurrentPosition() const;   // the caret, at either end of the selection

  int LanguageIndex() const;            // position in languages(); 0: none
  void SetLanguage(int index);          // out of range counts as 0
  void chooseLanguage(int index);       // the same, chosen by the user
  bool LanguageIsChosen() const;        // new definitions keep it if they have a language of this name
  const QString& LineComment() const;   // delimiters of the last language; empty when there was none
  const QString& BlockCommentStart() const;
  const QString& BlockCommentEnd() const;

  void focusWork();   // updates what the frame shows of the active document; also called when the focus comes
  // Writes the text, which exists nowhere else, into its recovery journal now. False: there is no journal, or it cannot be written.
  bool holdInJournal();
  bool isHeldInJournal() const;   // the whole text, durably
  bool mayEnd() const;            // closing loses nothing: not modified, agreed to, or the journal holds the whole text
  // For a text that only the journal holds: closing does not ask and keeps the journal, so that the next start offers the text.
  void leaveInJournal();
  bool isLeftInJournal() const;
  QString journalName() const;   // file of its journal in the recovery folder; empty: none is written
  // Asks the questions of closing in advance. True: closing will not ask again unless the text changes. To close several windows,
  // ask all of them first: then Cancel leaves every window as it was (withdrawClose).
  bool agreeToClose();
  // Looks for the files of texts that are about to be closed, all at once. A text whose file was removed is modified from now on:
  // it exists nowhere else. Windows may go meanwhile; on a disk that hangs the user may cancel the look.
  static void noteLostFiles(const QList<frmDocument*>& going);
  bool closingAsks() const;   // for this window only; other windows of the text may make the question unnecessary
  void withdrawClose();
  void letGo();   // discards its changes without a question

 signals:
  void captionChanged();
  void beforeReload();   // the file has been read anew, and its text is about to replace this one
  void reloaded();       // has replaced it, or could not

 protected:
  void closeEvent(QCloseEvent* event) override;   // Form_Unload
  void resizeEvent(QResizeEvent* event) override;

 private:
  void noteLostFile();
  struct Shared;
  class OwnBox;
  void setUp();
  bool isActive() const;   // the frame's panels are about it
  void showFile(const QString& path);
  void cmx_GotFocus();
  void cmx_LostFocus();
  void cmx_ModifiedChange();
  void cmx_RClick(const QPoint& globalPosition, bool* handled);
  void cmx_Return();
  void cmx_Typed();
  void cmx_SelChange();
  void cmx_PropsChange();
  void Timer1_Timer();
  QString reload(const QString& path, const std::optional<text::FileFormat>& as = {});
  bool hasAgreedToClose() const;
  bool allAgreed(const frmDocument* but = nullptr) const;   // the open windows of this text
  void updateCaption();
  void showTemplateState(bool afterTyping);
  void showLineEnds();   // of the active document
  void beginJournal();
  bool makeFolderOf(const QString& path);   // asks; false: the folder does not exist

  std::shared_ptr<Shared> shared_;
  int ownBoxes_ = 0;              // number of open boxes of this document
  bool focusComesBack_ = false;   // such a box took the focus; its return does not trigger a check of the file
  bool closeAsked_ = false, closed_ = false;
  std::uint64_t closeAskedAt_ = 0;   // revision of the text to which the answer applies
};
