// The old bytes of files that were replaced in: what "undo last replace in files" brings back, also after a restart, and what tells
// which files are old and which new when the program was killed in the middle.
//
// A record is a folder below "replaced" in the state folder: a file "about", locked while it is written; one file for each changed
// file, synced before that file is changed, with its name, the hashes of its old and new bytes, and the old bytes themselves; and
// "done" once all were changed. A text that was changed in a window has one too, because its window may save it. The newest record
// is kept until the next replacing, at most 30 days.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "text/file/FileCalls.h"
#include "text/file/FileIo.h"

namespace folder {

inline constexpr int kRecordDays = 30;

// What a file holds. size -1: nothing that can be; as a state of the disk, that there is no file.
struct FileContent {
  std::int64_t size = -1;
  std::uint64_t hash = 0;
  static FileContent of(std::string_view bytes);
  static FileContent of(const text::FileStamp& stamp);   // with its content
  bool operator==(const FileContent&) const = default;
};

class ReplaceRecord {
 public:
  // A new record in this folder ("replaced" in the state folder; made when it is not there). about: one line for the user.
  static std::unique_ptr<ReplaceRecord> begin(const std::string& records, const std::string& about, std::string* error);
  ~ReplaceRecord();

  // Before a file is changed. Error text, empty when the old bytes are on the disk.
  std::string keep(const std::string& path, std::string_view oldBytes, const FileContent& made);
  // For a file whose text was changed in a window: a save may change the file at any time from now on. oldBytes: what a save would
  // have written before; onDisk: what the file holds while it has not been saved.
  std::string keepOfWindow(const std::string& path, std::string_view oldBytes, const FileContent& made, const FileContent& onDisk);
  void drop();   // what was kept last: that file was not changed
  // All files have been changed that are to be. A record without any goes again. Error text.
  std::string finish();
  std::string folder() const { return kept_ > 0 ? folder_ : std::string(); }   // empty: nothing is kept

 private:
  ReplaceRecord() = default;
  std::string write(std::string head, std::string_view oldBytes);
  std::string folder_;
  text::files::Descriptor lock_;
  int kept_ = 0;
  bool finished_ = false;
};

// What a file holds now. old: also what it held before, when only its window was changed and did not save.
enum class Side { old, new_, other, gone };

struct ReplacedFile {
  std::string path, entry;             // entry: the file with the old bytes
  FileContent before, made, unsaved;   // unsaved: see keepOfWindow; else the same as before
  Side side = Side::other;
  std::uint64_t device = 0, inode = 0;   // 0: there is no file
  std::string trouble;   // for the user; not empty: the entry could not be read, and the path may be the entry's own
};

struct LastReplace {
  std::string folder, about;
  bool interrupted = false;   // it was not finished, and nobody is at it
  std::vector<ReplacedFile> files;
  std::int64_t bytes = 0;   // that the old texts take
};
// The newest record that nobody is writing; each file is looked at. Removes those that are too old, or not the newest, and nothing
// of which it cannot tell what it holds.
std::optional<LastReplace> lastReplace(const std::string& records);
// The same where it was interrupted, else none; old texts of one that came to its end are not read.
std::optional<LastReplace> interruptedReplace(const std::string& records);
// It has been told that this one was interrupted.
void markTold(const LastReplace& last);

struct UndoneFile {
  std::string path;
  std::string trouble;    // for the user; not empty: it is as it was
  bool changed = false;   // it was written
};
// Gives the files their old bytes where they are as the replacing left them. What was brought back leaves the record.
std::vector<UndoneFile> undoReplace(const LastReplace& last);

}   // namespace folder
