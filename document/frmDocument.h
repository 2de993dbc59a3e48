// The document window: one open text in its edit control, and what the control does not keep of it: path and title, whether
// it has a name on disk, the bound language with its comment delimiters, and the watch for changes made by others.
//
// Always: the file on disk changes only by SaveDocumment, and the text changes by the disk only after the question was
// answered, as one undo step. A load or save that fails changes nothing. Two windows may show one text (viewOf): they share
// all that is said above and differ in caret and scrolling only; closing asks only when the last of them goes.
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
  explicit frmDocument(QWidget* parent = nullptr);                        // Form_Load: without name, stored options applied
  explicit frmDocument(frmDocument& viewOf, QWidget* parent = nullptr);   // a further window on the same text
  ~frmDocument() override;

  CodeMax* const cmx;
  QTimer* const Timer1;   // 4000 ms; runs while cmx has the focus

  // The file. Title and folder of an untitled document are set, its name is empty.
  const QString& CurrentFileName() const;    // full path; empty without a name on disk
  const QString& CurrentFileTitle() const;   // in caption and messages; empty: closing asks nothing
  const QString& CurrentFileDir() const;
  bool DocumentHasName() const;    // was loaded from or saved to a file
  bool DocumentModified() const;   // last value passed to DocumentChanged
  void setUntitled(const QString& title, const QString& folder);
  void setFile(const QString& path);     // name, title, folder and caption from the path
  void beginFile(const QString& path);   // the same for a file that is not there; its first save makes it
  // Guards the text (cmx->ReadOnly) when its file has become write-protected, and takes that guard away when it may be
  // written again. Between two such changes the guard is the person's; a modified text is not guarded.
  void followRights();
  QString Caption() const;   // the title, with "*" behind it while modified
  int views() const;         // windows on this text, at least 1

  void DocumentChanged(bool modified);
  void RowAndCol();   // "line,column" of the caret into panel 2; lines from 1, columns from 0
  // A text that already came from this file is exchanged in one undo step, so that what was shown can come back.
  void LoadDocument(const QString& path, bool& loaded);
  // Reads the file again as of another encoding; one undo step. False: it cannot be read so, the person has been told.
  bool ReopenAs(const text::FileFormat& format);
  // False: not saved, the person has been told. Asks before it overwrites what others wrote meanwhile, or makes a folder. Names are the
  // caller's affair (frmMain::mainSaveDocument).
  bool SaveDocumment(const QString& path);
  // True: the caller must not go on (cancelled, or saving failed).
  bool CancelSaveFile();
  void inconsistentDate();   // asks about changes on disk; nothing without a name
  // False ("Unix") when the file's first line ends in a lone line feed, or it cannot be read; what has no line end yet gets those of
  // this platform.
  bool SetCRLF(const QString& path);

  // Each is one undo step over the selection's first to last line, the last one included even at column 0.
  void CommentBlock();
  void UnCommentBlock();

  QString GetCurrentWord() const;   // the selected text, else the word at the caret
  int GetCurrentWordLength() const;
  bool isSelection() const;
  CmPosition CurrentPosition() const;   // the caret, wherever the selection began

  int LanguageIndex() const;            // position in languages(), 0 none
  void SetLanguage(int index);          // out of range counts as 0
  void chooseLanguage(int index);       // the same by the user's own choice
  bool LanguageIsChosen() const;        // new definitions do not change it, as long as they have one of its name
  const QString& LineComment() const;   // delimiters of the language last bound; empty when none ever was
  const QString& BlockCommentStart() const;
  const QString& BlockCommentEnd() const;

  void focusWork();   // what the frame shows of the active document; also run when the focus comes
  // Writes the text into its recovery journal now, as it is nowhere else. False: there is no journal, or it cannot be written.
  bool holdInJournal();
  bool mayEnd() const;   // nothing is lost: not modified, agreed to, or the journal has the whole text
  // Where only the journal has the text: closing will neither ask nor let go of the journal, so that the next start offers it.
  void leaveInJournal();
  bool isLeftInJournal() const;
  // Asks what closing would ask; true: closing will not ask any more, unless the text changes. Closing several windows asks
  // for all of them first, so that a cancelled end leaves every window as it was (withdrawClose).
  bool agreeToClose();
  bool closingAsks() const;   // for this window's part; further windows on the text may spare the question
  void withdrawClose();
  void letGo();   // of its changes: agreed to without a question

 signals:
  void captionChanged();

 protected:
  void closeEvent(QCloseEvent* event) override;   // Form_Unload
  void resizeEvent(QResizeEvent* event) override;

 private:
  struct Shared;
  class OwnBox;
  void setUp();
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
  bool allAgreed(const frmDocument* but = nullptr) const;   // the windows on this text that are open
  void updateCaption();
  void showTemplateState(bool afterTyping);
  void showLineEnds();
  bool makeFolderOf(const QString& path);   // asks; false: there is none

  std::shared_ptr<Shared> shared_;
  int ownBoxes_ = 0;              // boxes of ours that are up
  bool focusComesBack_ = false;   // such a box took the focus; its return is no reason to look at the disk
  bool closeAsked_ = false, closed_ = false;
  std::uint64_t closeAskedAt_ = 0;   // revision of the text that the answer was about
};
