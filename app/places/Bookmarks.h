// The bookmarks of all documents: kept over sessions for files, given back when a file opens, and shown as a list. Files are known by
// their whole names.
#pragma once

#include <QObject>
#include <QTimer>
#include <atomic>
#include <map>
#include <memory>
#include <set>

#include "app/places/BookmarkFile.h"

class TextModel;
class frmDocument;
class frmMain;

class Bookmarks : public QObject {
  Q_OBJECT
 public:
  static Bookmarks& of(frmMain& frame);   // its child; the frame makes it at its start
  ~Bookmarks() override;                  // writes what is not written yet

  void list();   // of all documents and files, in a window of its own

 private:
  explicit Bookmarks(frmMain& frame);
  void read();
  void opened(frmDocument* document);
  void keep(const frmDocument& document);
  void write();

  frmMain& frame_;
  std::shared_ptr<BookmarkFile> file_;
  std::map<std::string, KeptMarks> known_;   // what the file holds, or will
  std::set<const TextModel*> searching_;     // texts whose marks are looked for
  bool isRead_ = false, writing_ = false, again_ = false;
  QTimer soon_;
  std::shared_ptr<std::atomic<bool>> ended_;
};
