// What crashed programs left: journals without an owner, copies of killed saves (Leftovers.h), and the texts in them. Nothing is
// removed unless the caller asks for it. Reading any file ends normally and uses no more memory than the restored text and the
// one it began with.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "text/file/FileCalls.h"
#include "text/journal/JournalFormat.h"

namespace text {

// The result of reading a journal.
struct RecoveredText {
  std::string error;    // for the user; not empty: nothing was restored
  JournalAbout about;   // the last one that was read
  Snapshot text;
  std::vector<Snapshot> began;       // the text before and after its first change
  bool whole = false;                // read to its very end
  bool baseWhole = false;            // false: only the beginning of a text that was being written; must never replace a file
  std::int64_t caret = -1;           // behind the last change, or as reported later; -1: unknown
  std::int64_t changes = 0;          // number of restored changes since the journal began
  std::int64_t read = 0, size = 0;   // bytes of good records, and of the whole journal
};

// Whether a file that a journal builds on may be read: its disk may hang.
using MayRead = std::function<bool(const std::string& path)>;

// Reads the journal of a descriptor from its start.
RecoveredText readJournal(int fd, const MayRead& mayRead = {});

// The file of a text that was read whole durably holds this text: nothing needs recovery. Reads the file.
bool fileHolds(const JournalAbout& about, const Snapshot& text);

// One journal or copy without an owner. While this object lives, it owns the file: no other copy of the program offers it.
class LeftText {
 public:
  // nullopt: owned by a living program, removed, or an empty journal.
  static std::optional<LeftText> claim(const std::string& folder, const std::string& name);
  // The same for a copy of the file at `path`, which may be a mere name. Copies made by another user than this one and the owner of
  // the file are not trusted.
  static std::optional<LeftText> claimCopy(const std::string& folder, const std::string& name, const std::string& path);
  const std::string& name() const { return name_; }
  bool isCopy() const { return copyOf_.has_value(); }
  std::int64_t changedNs() const { return changedNs_; }   // time of the last write, since the epoch
  RecoveredText recover(const MayRead& mayRead = {}) const;
  int remove();   // 0 or -errno; durable

 private:
  static std::optional<LeftText> own(const std::string& folder, const std::string& name, unsigned flags);
  std::string folder_, name_;
  files::Descriptor file_;
  std::int64_t changedNs_ = 0;
  std::optional<std::string> copyOf_;
};

// All of them, newest first. Also removes unfinished new versions of journals whose current version still exists. A folder that
// does not exist holds none.
std::vector<LeftText> leftJournals(const std::string& folder);

// Copies beside these files; each folder is read once. Removes unfinished files, like lookForLeftovers().
std::vector<LeftText> leftCopies(const std::vector<std::string>& paths);
// Copies of any file, in the folder for those that could not be stored beside their file. Also removes unfinished files.
std::vector<LeftText> leftCopiesElsewhere(const std::string& folder);

}   // namespace text
