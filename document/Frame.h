// What documents and commands ask of the main frame. frmMain implements it; tests and batch mode have their own.
#pragma once

#include <QList>
#include <QString>

class frmDocument;
class frmLog;
class QPoint;

class Frame {
 public:
  virtual ~Frame() = default;
  virtual frmDocument* activeDocument() = 0;                          // null: none
  virtual QList<frmDocument*> documents() = 0;                        // in the order of creation
  virtual void activate(frmDocument* document) = 0;                   // bring forward; a minimised one becomes normal
  virtual void setPanel(int panel, const QString& text) = 0;          // 1 text, 2 row and column
  virtual void setUnixPanel(bool unixFile, bool mixed = false) = 0;   // "Unix" or "Win"; a text that has both: "Mixed"
  virtual void setTemplatePanel(bool on) = 0;                         // picture "Expand" on the panel "Template"
  virtual void refreshToolbar() = 0;                                  // enabled states of menus and toolbar
  virtual void refreshWindowMenu() = 0;
  virtual void setUndoRedo(bool canUndo, bool canRedo) = 0;
  virtual bool isMinimised() = 0;
  virtual bool saveActive() = 0;                             // the save command; false: failed or cancelled
  virtual void documentClosing(frmDocument* document) = 0;   // mainFileClose
  virtual void rememberDocumentState(int windowState) = 0;   // 0 normal, 1 minimised, 2 maximised: for the next document
  virtual bool isTemplateAtCaret(bool afterTyping) = 0;      // afterTyping: with the rule of the two dots
  virtual void showEditPopup(const QPoint& globalPosition) = 0;
  virtual frmLog* log() = 0;   // never null in a running program
  virtual void showLog() = 0;
  // mainOpenFile with the recently-used list. The document that was opened or brought forward; null: neither.
  virtual frmDocument* openFile(const QString& path) = 0;
  // The file of a text that is open or worked on, also by a link to it: nothing but that text is written there.
  virtual bool isInUse(const QString& path);
  virtual void showMacro(int language, int macro, const QString& report) = 0;   // definitions editor at a macro (1-based)
  virtual QString reportsAbout() { return {}; }   // begins the lines of reports: the file's name in a run over several
};

// The open text of this file, also by a link to it; null: none.
frmDocument* documentOn(Frame& frame, const QString& path);

// The one frame of the process; null before it exists.
Frame* frame();
void setFrame(Frame* frame);
