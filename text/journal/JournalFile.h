// One recovery journal on disk: a base (a text, or a reference to the file that holds it) and the records of all changes since. A
// new base is written to a second file, which replaces the first only when it is complete and on disk. Until then the first file is
// used, so that nobody waits for the disk.
//
// Not thread-safe. Slow disk work (syncs and new bases) is handed out as Slow work, which may run later on another thread; its
// result is passed to finished() on the writer's thread. Results are 0 or -errno; times are milliseconds of the writer's clock, -1:
// none.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "text/file/FileCalls.h"
#include "text/journal/JournalFormat.h"

namespace text {

// The folder of all journals: created when needed, opened again when it was replaced.
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
    bool refer = false;   // the base is the file of `about`, whose text is not copied
  };
  struct Record {
    std::vector<Change::Span> spans;
    Snapshot after;
  };
  struct Slow {
    std::function<int()> work;
    std::shared_ptr<const files::Descriptor> on;   // the file that the work is about
  };

  explicit JournalFile(JournalFolder& folder) : folder_(folder) {}

  const std::string& name() const { return name_; }   // in the folder; empty: there is no file
  bool isThere() const { return file_ != nullptr; }
  const Snapshot& latest() const { return latest_; }   // the text after the last record
  bool durable() const { return unsyncedSince_ < 0 && !syncing() && !ended_; }
  bool replacing() const { return replacement_ != nullptr; }
  bool busy() const { return syncing() || replacing(); }                                     // slow work is running
  std::int64_t unsyncedSince() const { return syncing() || ended_ ? -1 : unsyncedSince_; }   // what waits for a sync
  bool refers() const { return referred_.has_value(); }
  // Whether the referenced file has changed.
  bool referredChanged() const;
  // The records have more bytes than `most` and than the text.
  bool outgrown(std::int64_t most) const;
  // The file or the whole folder was removed or moved: records written now would never be found.
  bool wasCleared() const;

  int begin(const Base& base, std::int64_t now);   // creates the file under a new name; drops the previous state
  // Begins to replace the current file; ignores base.refer. `goesOn`: the base is latest(), and the current file takes further
  // records meanwhile; else the current file gets no more records.
  int replace(const Base& base, bool goesOn, std::int64_t now);
  int append(const JournalAbout* about, const std::vector<Record>& records, std::int64_t now);
  int remove();   // removes the file, whatever it holds

  // The slow work to start now; a sync only if `sync` is set.
  std::vector<Slow> slowWork(bool sync);
  // Takes the result of slow work; ignores work on a file that was abandoned meanwhile.
  int finished(const Slow& slow, int result);

 private:
  struct Replacement {
    std::shared_ptr<files::Descriptor> file;
    std::shared_ptr<journal::Encoder> encoder;
    Base base;
    std::int64_t begun = -1;
    std::optional<JournalAbout> about;   // changed while the base was written
    std::vector<Record> records;
    std::int64_t recordBytes = 0;
    bool wanted = true;   // the next step of slow work has not been handed out
    bool whole = false;   // the base is on disk
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
  // time of the oldest record that is not on disk; the same for records being synced
  std::int64_t unsyncedSince_ = -1, syncingSince_ = -1;
  bool folderUnsynced_ = false;
  bool ended_ = false;                  // no more records: one may be incomplete, or another text follows
  std::optional<FileStamp> referred_;   // the file that serves as base
  std::string referredPath_;
  std::unique_ptr<Replacement> replacement_;
};

}   // namespace text
