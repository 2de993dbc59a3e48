// One recovery journal on disk, as its writer keeps it: a base (a text, or the file that holds it) and behind it records of all
// changes since. A new base replaces the present ones by a second file, which takes the place of the first only when it is
// whole and on the platter; until then the first goes on, so that nobody waits for a disk.
//
// Nothing here is made safe for threads. What a disk may take long for, syncs and new bases, is handed out as Slow work; that
// may run on another thread, or late, and is to be brought back to finished() on the writer's own thread.
// Results are 0 or -errno; times are milliseconds of the writer's clock, -1: none.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "text/file/FileCalls.h"
#include "text/journal/JournalFormat.h"

namespace text {

// The folder of all journals: made when needed, and opened again when another one is in its place.
class JournalFolder {
 public:
  explicit JournalFolder(std::string path) : path_(std::move(path)) {}
  const std::string& path() const { return path_; }
  int open();
  void close() { handle_.reset(); }
  int fd() const { return handle_->get(); }
  std::shared_ptr<const files::Descriptor> handle() const { return handle_; }

 private:
  std::string path_;
  std::shared_ptr<const files::Descriptor> handle_;
};

class JournalFile {
 public:
  struct Base {
    JournalAbout about;
    Snapshot text;
    bool refer = false;   // the text is what the file of `about` holds, and stays there
  };
  struct Record {
    std::vector<Change::Span> spans;
    Snapshot after;
  };
  struct Slow {
    std::function<int()> work;
    std::shared_ptr<const files::Descriptor> on;   // the file that it is about
  };

  explicit JournalFile(JournalFolder& folder) : folder_(folder) {}

  const std::string& name() const { return name_; }   // in the folder; empty: there is no file
  bool isThere() const { return file_ != nullptr; }
  const Snapshot& latest() const { return latest_; }   // the text as of the last record
  bool durable() const { return unsyncedSince_ < 0 && !syncing() && !ended_; }
  bool replacing() const { return replacement_ != nullptr; }
  bool busy() const { return syncing() || replacing(); }                                     // slow work is not finished
  std::int64_t unsyncedSince() const { return syncing() || ended_ ? -1 : unsyncedSince_; }   // what waits for a sync
  bool refers() const { return referred_.has_value(); }
  // Whether the file that is referred to is no longer what it was.
  bool referredChanged() const;
  // More bytes of records than `most`, and than the text.
  bool outgrown(std::int64_t most) const;
  // Somebody removed or moved the file, or the whole folder: nobody would find what is written into it.
  bool wasCleared() const;

  int begin(const Base& base, std::int64_t now);   // makes the file, under a new name; what it held before is lost
  // Begins to replace the file that is there; base.refer is not looked at. `goesOn`: the base is latest(), and the present file
  // takes records meanwhile; else it ends as it is.
  int replace(const Base& base, bool goesOn, std::int64_t now);
  int append(const JournalAbout* about, const std::vector<Record>& records, std::int64_t now);
  int remove();   // the file, whatever it holds

  // Slow work that is to begin now; the sync only if `sync` says so.
  std::vector<Slow> slowWork(bool sync);
  // What slow work has come to; work on a file that was meanwhile given up is nothing.
  int finished(const Slow& slow, int result);

 private:
  struct Replacement {
    std::shared_ptr<files::Descriptor> file;
    std::shared_ptr<journal::Encoder> encoder;
    Base base;
    std::int64_t begun = -1;
    std::optional<JournalAbout> about;   // what was changed meanwhile
    std::vector<Record> records;
    std::int64_t recordBytes = 0;
    bool wanted = true;   // the next step of slow work is not handed out yet
    bool whole = false;   // the base is on the platter
  };
  bool syncing() const { return syncingSince_ >= 0; }
  int putInPlace();
  void takeOver(Replacement& made);
  void giveUpReplacement();
  std::string asideName() const { return name_ + std::string(journal::kAsideSuffix); }

  JournalFolder& folder_;
  std::string name_;
  std::shared_ptr<files::Descriptor> file_;
  journal::Encoder encoder_;
  Snapshot latest_;
  std::int64_t recordBytes_ = 0;
  std::int64_t unsyncedSince_ = -1, syncingSince_ = -1;   // the oldest of what is not on the platter; the second on its way there
  bool folderUnsynced_ = false;
  bool ended_ = false;                  // nothing more is written: a record may stand half in it, or another text is to follow
  std::optional<FileStamp> referred_;   // the file that is the base
  std::string referredPath_;
  std::unique_ptr<Replacement> replacement_;
};

}   // namespace text
