// The bookmarks of all documents: kept over sessions for files, given back when a file opens, and shown as a list. Files are known by
// their whole names. What is kept is about the text of the file: changes that the user discards move no kept bookmark.
#pragma once

#include <QObject>
#include <QTimer>
#include <atomic>
#include <map>
#include <memory>

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
  struct Text {             // of an open document
    text::Snapshot saved;   // as the file has it
    KeptMarks marks;        // of that
    KeptMarks missing;      // those that have no place in the text; they stay until the user takes all marks off
    KeptMarks sought;       // those that are looked for; until they are found the text has not got them
    bool isSearching = false, hadMarks = false;
    int search = 0;   // the last one
  };
  explicit Bookmarks(frmMain& frame);
  void read();
  void opened(frmDocument* document);
  void closed(frmDocument* document);
  void renamed(const QString& from, const QString& to);   // a file, or a folder with all that is in it
  void beforeReload(TextModel& model);
  void give(const std::shared_ptr<TextModel>& model, KeptMarks marks);
  void settle(TextModel& model, FoundMarks found);
  void keep(TextModel& model);
  void set(const std::string& path, KeptMarks marks);
  KeptMarks marksOfFile(const Text& text, const TextModel& model) const;   // when what was typed since is discarded
  void write();

  frmMain& frame_;
  std::shared_ptr<BookmarkFile> file_;
  std::map<std::string, KeptMarks> known_;   // what the file holds, or will
  std::map<const TextModel*, Text> texts_;
  bool writing_ = false, again_ = false;
  QTimer soon_;
  std::shared_ptr<std::atomic<bool>> ended_;
};
