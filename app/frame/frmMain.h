// The main frame: document windows, menus, tool bar, status bar, and the commands on files. It is thin: the commands are in the
// table (FrameCommand.h), the text belongs to the edit control, and the file to the document.
//
// documents() is in the order of creation and holds shown windows only. A window that is still loading is in no list, and neither is
// a document that is opened when its tab is first shown (LateDocument.h).
#pragma once

#include <QMainWindow>
#include <QPointer>
#include <memory>

#include "control/edit/Cmd.h"
#include "document/Frame.h"
#include "document/frmRegistry.h"

class CodeMax;
class DocumentTabs;
class FolderParts;
class FrameMenus;
class LateDocument;
class LineDialogs;
class Places;
class QDockWidget;
class QMdiArea;
class QMdiSubWindow;
class StatusPanels;
class frmCommand;
class frmDefinitions;
enum class Panel;
namespace text {
struct RecoveredText;
}

class frmMain : public QMainWindow, public Frame, public ProfiledFrame {
  Q_OBJECT
 public:
  frmMain();   // MDIForm_Load
  ~frmMain() override;

  int DocCount = 0;        // number of open document windows, as documents(); used to number new ones
  int WordListIndex = 1;   // word list used last, 1-based

  // Files.
  frmDocument* LoadNewDoc();
  // Both return the document that was opened or activated; null: none. ok: it was opened.
  frmDocument* mainOpenFile(const QString& name, bool& ok);
  frmDocument* CheckFileStatus(const QString& name, bool& proceed);
  void mainFileSave(frmDocument& document, bool& ok);
  bool mainSaveDocument(frmDocument& document, const QString& name);
  void mainFileClose();
  void mnuFileNew_Click() { LoadNewDoc(); }
  void mnuFileOpen_Click();
  void mnuFileSave_Click();
  void mnuFileSaveAs_Click();
  void mnuFileSaveAll_Click();
  static bool isUnsaved(const frmDocument& document);   // a save would write something
  void mnuFileReload_Click();
  void mnuFileClose_Click();
  void mnuFileCloseAll_Click();
  void mnuFileMRU_Click(int index);
  void mnuFileExit_Click() { close(); }
  // Opens dropped files in order; a folder becomes the work folder. A failure of the frame itself ends the loop.
  void MDIForm_OLEDragDrop(const QStringList& files);
  // Opens a file and shows that place in the middle with the caret on it. line and column count from 1; 0 leaves the caret at the
  // start. If the file does not exist, offers to create it. A folder becomes the work folder. Null: no file was opened.
  frmDocument* openAt(const QString& name, qint64 line, qint64 column);
  void goTo(frmDocument* document, qint64 line, qint64 column);   // line counts from 1
  // Opens a file that the user chose from a list of what there is. One that is open is shown without a question, modified or not.
  frmDocument* goToFile(const QString& path, qint64 line = 0, qint64 column = 0);
  // Opens piped-in text (StandardInput.h) as a new document without a name; its file is removed once the journal has the text.
  // Null: it could not be read.
  frmDocument* takeIn(const QString& path);
  // Opens a recovered text as a modified document with the name of its file. An unmodified document of that file gets the text as
  // one undo step. Null: the user has been told.
  frmDocument* restore(const text::RecoveredText& found);
  void showJournalWarning(const QString& reason);   // why texts are not protected; empty: they are
  // Asks for every modified document. True: all may close, and none asks again.
  // With keepsUnsaved, a text that its journal holds is not asked about and stays there.
  bool agreeToEnd();
  bool keepsUnsaved = false;   // the next start brings unsaved texts back without a question
  void keepTexts();            // with it: into their journals; closing them does not ask and keeps the journals
  // Ends without a question as far as journals hold the unsaved texts: the journals stay, and the next start offers them. For other
  // texts it asks as closing does. False: the user wants to stay, or is just answering a question.
  bool endFromOutside(int patienceMs = 10000);

  // Documents that are opened when they are first shown.
  void addLate(const QList<LateDocument*>& late);   // behind the other tabs; the frame owns them
  frmDocument* openLate(LateDocument& late);        // null: it stays as it is
  bool showEntry(QObject* entry);                   // of the tabs: a frmDocument or a LateDocument
  void closeEntry(QObject* entry);                  // the same
  DocumentTabs& tabs() { return *tabs_; }

  // Windows and views.
  void newWindow();                                         // another window of the active document
  void showBeside(frmDocument* left, frmDocument* right);   // side by side, each in half of the room
  void cascade();
  void tile(Qt::Orientation rows);   // Qt::Vertical: one above the other
  void chooseWindow();               // asks which of all
  void nextWindow(int step);
  void closeOthers(frmDocument* keep);
  void fillWindowList(QMenu& menu);
  void fillLanguages(QMenu& menu);
  void fillEncodings(QMenu& menu);
  void fillLineEnds(QMenu& menu);
  void fillKeyMacros(QMenu& menu);
  void goToLine();
  void editorOptions();
  void playKeystrokesTimes();   // asks how often
  void SetupToolStatus();       // applies the check marks of the View menu to tool bar, status bar and tabs
  void SetupMenus();            // after documents were opened or closed
  void UpdateEditMenu() { refreshToolbar(); }

  bool runEditCommand(CommandNumber id, const QVariant& argument = {});   // for the active document; false without one
  FrameMenus& menus() { return *menus_; }
  StatusPanels& panels() { return *panels_; }
  LineDialogs& lineDialogs() { return *lineDialogs_; }
  FolderParts& folders() { return *folders_; }   // work folder, its dock, Go to File
  Places& places() { return *places_; }          // back and forward
  QMdiArea& mdi() { return *mdi_; }
  QMdiSubWindow* windowOf(const frmDocument* document) const;
  // How far the area of the windows is scrolled. Added to the place of a window: its place in the whole area.
  QPoint scrolledBy() const;
  void MDIForm_Unload();   // the frame closes for good: emits ended() once

  // Word lists and templates at the caret, macros, definitions, log.
  void isInWordList(bool& found);
  void ProcessWordList(bool previous);
  void mHelpWordListNext_Click() { ProcessWordList(false); }
  void mHelpWordListPrevious_Click() { ProcessWordList(true); }
  void isTemplate(bool& found, bool afterTyping);
  void mHelpExpandTemplate_Click();
  void mHelpNextField_Click();
  void offerWords(frmDocument* document);   // while the user types in its text
  void mCustom_Click(int index);            // runs a macro of the current language, from 0
  void mCustomEdit_Click();                 // opens the definitions editor at the current language's macros
  void mToolsDefinitions_Click();
  void mToolsCommand_Click();
  void toggleLog();
  void restoreLog();   // shows the log if it was visible at the end of the last run
  bool logIsShown() const;

  // Frame
  frmDocument* activeDocument() override;
  QList<frmDocument*> documents() override;
  void activate(frmDocument* document) override;
  void setPanel(int panel, const QString& text) override;
  void setUnixPanel(bool unixFile, bool mixed) override;
  void setTemplatePanel(bool on) override;
  void refreshToolbar() override;
  void refreshWindowMenu() override;
  void setUndoRedo(bool canUndo, bool canRedo) override;
  bool isMinimised() override;
  bool saveActive() override;
  void documentClosing(frmDocument* document) override;
  void rememberDocumentState(int windowState) override;
  bool isTemplateAtCaret(bool afterTyping) override;
  void showEditPopup(const QPoint& globalPosition) override;
  frmLog* log() override;
  void showLog() override;
  frmDocument* openFile(const QString& path) override;
  void showMacro(int language, int macro, const QString& report) override;

  // ProfiledFrame
  QWidget* profileWindow() override { return this; }
  bool isChecked(const QString& menuName) override;
  void setChecked(const QString& menuName, bool on) override;
  int cmxWindowState() override { return documentState_; }
  void setCmxWindowState(int state) override { documentState_ = state; }
  void setMenu(const QString& menuName, int index, const QString& caption, bool visible) override;
  void setMenuEnabled(const QString& menuName, bool on) override;
  void setModifiedFacts(bool active, bool any) override;

 signals:
  void documentOpened(frmDocument* document);
  void fileNamed(const QString& path);                        // opened, or first saved under this name
  void fileRenamed(const QString& from, const QString& to);   // a file or folder, by the user in this program
  void documentClosed(frmDocument* document);                 // its window is about to close
  void activeChanged();                                       // another document is active
  void tabsChanged();                                         // a LateDocument came, went or was renamed
  void closing(bool ends);                                    // all documents have agreed and close next; ends: with the program
  void ended();                                               // the frame has been unloaded

 protected:
  void changeEvent(QEvent* event) override;
  void closeEvent(QCloseEvent* event) override;   // MDIForm_QueryUnload, MDIForm_Unload
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dropEvent(QDropEvent* event) override;

 private:
  void adopt(frmDocument* document);   // puts it into a sub-window, lists it and shows it
  QRect normalPlace(qsizetype index) const;
  QSize windowRoom() const;
  QSize leastTile() const;   // precondition: there is a document
  void keepInside(QMdiSubWindow& window);
  void scrollTo(const QMdiSubWindow& window);   // when the windows need more room than there is
  QList<QMdiSubWindow*> normalWindows();
  // updates everything that depends on the active document: panels, menus, current folder
  void workOn(frmDocument* document);
  frmDocument* documentOn(const QString& name);   // of this file, also by a link to it; null: none
  QString nextTitle() const;                      // for a document without a name
  frmDocument* beginFile(const QString& name);    // null: the user does not want to
  bool saveAs(frmDocument& document);
  void unload();   // every document has agreed
  // Asks about the modified ones among documents that will be closed, about several in one dialog. False: all stay.
  bool agreeToClose(const QList<frmDocument*>& going);
  bool askAboutSeveral(const QList<frmDocument*>& going);
  void closeAgreed(QList<QPointer<frmDocument>> going);
  void mdiActivated(QMdiSubWindow* window);
  void panelClicked(Panel panel);
  void optionsChanged(const CodeMax& of);   // saves the options of this text for all documents
  void showTabMenu(QObject* entry, const QPoint& globalPosition);
  void showTabFrom(int tab);   // or one behind it, or one before it
  void dropLate();
  void followRenamed(const QString& from, const QString& to);
  void lookAtClipboard();
  unsigned presentFacts();
  frmDefinitions& definitions();
  void saveLogProfile();
  bool closeDefinitions();   // false: the user wants to stay

  QMdiArea* mdi_ = nullptr;
  DocumentTabs* tabs_ = nullptr;
  StatusPanels* panels_ = nullptr;
  FrameMenus* menus_ = nullptr;
  FolderParts* folders_ = nullptr;
  QList<frmDocument*> documents_;
  QPointer<frmDocument> active_;
  QPointer<LateDocument> opening_;
  std::unique_ptr<Places> places_;
  QPointer<frmDefinitions> definitions_;
  const std::unique_ptr<LineDialogs> lineDialogs_;
  frmCommand* command_ = nullptr;
  QDockWidget* logDock_ = nullptr;
  frmLog* log_ = nullptr;
  int documentState_ = windowstate::kMaximised;   // of document windows; never minimised
  bool clipboardHasText_ = false, anyModified_ = false, unloaded_ = false;
};
