// A document that is opened when its tab is first shown. Until then it is a tab with a name: nothing is read, and nothing is asked
// of the disk. It is in no list of documents.
#pragma once

#include <QObject>
#include <QRect>
#include <QString>

class frmDocument;
class frmMain;

class LateDocument : public QObject {
  Q_OBJECT
 public:
  LateDocument(QString path, QString title) : path(std::move(path)), title(std::move(title)) {}

  QString path;          // whole; empty: no file
  QString title;         // in the tab
  QRect place;           // of its window when it is neither maximised nor minimised; empty: not known
  bool isGone = false;   // its file was not there when it was to be opened last
  virtual bool isModified() const { return false; }
  // Opens it in the frame, which gives the document the place of this tab. Null: it could not be opened, and the user has been told.
  virtual frmDocument* open(frmMain& frame) = 0;
};
