// What the frame works in: a folder that the user opened, a file list in its stead, or the folder that goes with the active document (the
// nearest one above it that version control begins at, else its own). And the names of the files in it, looked up on a
// thread and kept up to date.
//
// All that looks at the disk is done on threads: a folder that hangs leaves the old state standing.
#pragma once

#include <QObject>
#include <QStringList>
#include <QTimer>
#include <atomic>
#include <chrono>
#include <memory>

#include "folder/FileList.h"
#include "folder/Names.h"

class frmMain;

class WorkFolder : public QObject {
  Q_OBJECT
 public:
  enum class Kind { none, document, folder, list };
  explicit WorkFolder(frmMain& frame);
  ~WorkFolder() override;

  // Somebody shows or searches the folder. Before that the disk is not looked at, and only what the user opened is known.
  void use();

  Kind kind() const { return kind_; }
  // The folder below which names are shown: of a list its working folder. Empty: there is none.
  const QString& root() const { return root_; }
  const QString& list() const { return list_; }   // the file list; empty without one
  bool relativeToList() const { return relativeToList_; }
  bool showsAll() const { return showsAll_; }   // what is ignored, hidden or binary too
  QString title() const;                        // "rtl", "all.f"; empty without a root

  void openFolder(const QString& path);
  // workingFolder: empty to have the likely one found.
  void openList(const QString& path, bool relativeToList, const QString& workingFolder = {});
  void close();   // back to the folder of the active document
  void setShowsAll(bool on);
  const QStringList& recent() const { return recent_; }   // folders, latest first

  // The files: never null; empty until they are known. Another table each time that they change.
  std::shared_ptr<const folder::NameTable> names() const { return names_; }
  std::shared_ptr<const folder::FileList> fileList() const { return fileList_; }   // null without a list
  bool isReading() const { return reading_; }
  QString trouble() const { return trouble_; }   // why names() holds less than there is; empty: it does not
  void refresh();                                // soon; often asked is once done

  void restore();   // as the last run left it
  void save() const;

 signals:
  void changed();        // root or list
  void namesChanged();   // names() or trouble()

 private:
  struct Found;
  void followDocument();
  void set(Kind kind, const QString& root, const QString& list);
  void read();
  void take(const std::shared_ptr<Found>& found);
  void remember(const QString& folder);

  frmMain& frame_;
  Kind kind_ = Kind::none;
  QString root_, list_, trouble_;
  QString logged_;   // what the log was told of the list
  QStringList recent_;
  bool relativeToList_ = false, showsAll_ = false, reading_ = false, again_ = false;
  int generation_ = 0;   // of the root: what was read for an older one is dropped
  std::shared_ptr<std::atomic<bool>> cancel_;
  std::shared_ptr<const folder::NameTable> names_;
  std::shared_ptr<const folder::FileList> fileList_;
  bool inUse_ = false;
  QTimer soon_, follow_;
  std::chrono::milliseconds took_{0};
};
