// What documents and commands need from the main frame. frmMain implements it; tests and batch mode have their own implementations.
#pragma once

#include <QList>
#include <QString>

class frmDocument;
class frmLog;
class QPoint;

// States of document windows. The numbers are stored in the settings: never renumber.
namespace windowstate {
inline constexpr int kNormal = 0, kMinimised = 1, kMaximised = 2;
}

class Frame {
 public:
  virtual ~Frame() = default;
  virtual frmDocument* activeDocument() = 0;                          // null: none
  virtual QList<frmDocument*> documents() = 0;                        // in the order of creation
  virtual void activate(frmDocument* document) = 0;                   // raises the window; a minimised one becomes normal
  virtual void setPanel(int panel, const QString& text) = 0;          // 1 text, 2 row and column
  virtual void setUnixPanel(bool unixFile, bool mixed = false) = 0;   // "Unix" or "Win"; "Mixed" for a text with both line ends
  virtual void setTemplatePanel(bool on) = 0;                         // picture "Expand" on the panel "Template"
  virtual void refreshToolbar() = 0;                                  // enabled states of menus and toolbar
  virtual void refreshWindowMenu() = 0;
  virtual void setUndoRedo(bool canUndo, bool canRedo) = 0;
  virtual bool isMinimised() = 0;
  virtual bool saveActive() = 0;                             // runs the save command; false: failed or cancelled
  virtual void documentClosing(frmDocument* document) = 0;   // mainFileClose
  virtual void rememberDocumentState(int windowState) = 0;   // see windowstate; for the next document
  virtual bool isTemplateAtCaret(bool afterTyping) = 0;      // afterTyping: applies the rule of the two dots
  virtual void showEditPopup(const QPoint& globalPosition) = 0;
  virtual frmLog* log() = 0;   // never null in the running program
  virtual void showLog() = 0;
  // mainOpenFile with the recently-used list. Returns the document that was opened or activated; null: none.
  virtual frmDocument* openFile(const QString& path) = 0;
  // True for the file of an open document, also through a link: only that document may write it.
  virtual bool isInUse(const QString& path);
  virtual void showMacro(int language, int macro, const QString& report) = 0;   // definitions editor at a macro (1-based)
  virtual QString reportsAbout() { return {}; }   // prefix of report lines: the file name in a run over several files
};

// The open document of this file, also through a link to it; null: none.
frmDocument* documentOn(Frame& frame, const QString& path);

// The one frame of the process; null before it exists.
Frame* frame();
void setFrame(Frame* frame);
