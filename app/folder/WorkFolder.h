// The work folder of the frame: a folder that the user opened, or a file list instead of it, or the folder of the active document.
// The last one is the nearest folder above the document that holds .git or .hg, else the document's own folder. The class also
// lists the names of the files in the work folder and keeps the list up to date.
//
// All calls on the disk run on threads. While a folder hangs the old state stays.
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

  // Call this before the folder is shown or searched. Until then nothing is read from disk, and only a folder or list that the user
  // opened is known.
  void use();

  Kind kind() const { return kind_; }
  // Names are shown relative to this folder. For a file list it is the working folder. Empty: no folder is known.
  const QString& root() const { return root_; }
  const QString& list() const { return list_; }   // the file list; empty without one
  bool relativeToList() const { return relativeToList_; }
  bool showsAll() const { return showsAll_; }   // also ignored, hidden and binary files
  QString title() const;                        // "rtl", "all.f"; empty without a root

  void openFolder(const QString& path);
  // workingFolder: if it is empty, the likely one is looked for.
  void openList(const QString& path, bool relativeToList, const QString& workingFolder = {});
  void close();   // back to the folder of the active document
  void setShowsAll(bool on);
  const QStringList& recent() const { return recent_; }   // folders, latest first

  // The files. Never null; empty until they are known. Each change makes a new table.
  std::shared_ptr<const folder::NameTable> names() const { return names_; }
  std::shared_ptr<const folder::FileList> fileList() const { return fileList_; }   // null without a list
  bool isReading() const { return reading_; }
  QString trouble() const { return trouble_; }   // why names() is not complete; empty: it is
  void refresh();                                // reads the files again soon; several calls in a row count as one

  void restore();   // from the settings
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
