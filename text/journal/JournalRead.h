// What was left behind: journals whose owner is gone, copies of saves that were killed (Leftovers.h), and the texts in them. Nothing
// here removes one unless it is told to; whatever a journal holds, reading it ends well and uses no more memory than the
// text that comes out.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "text/file/FileCalls.h"
#include "text/journal/JournalFormat.h"

namespace text {

// How a journal was read.
struct RecoveredText {
  std::string error;    // for the user; not empty: nothing came back
  JournalAbout about;   // the last one before the reading ended
  Snapshot text;
  bool whole = false;                // read to its very end
  bool baseWhole = false;            // false: the beginning of a text that was still being written down; never to replace a file
  std::int64_t caret = -1;           // behind the last change, or where it stood when the journal was told later; -1: not known
  std::int64_t changes = 0;          // made to the text since the journal began, as far as they came back
  std::int64_t read = 0, size = 0;   // bytes of the journal that were good, and all
};

// Reads the journal behind a descriptor, from its beginning.
RecoveredText readJournal(int fd);

// One journal or copy that nobody owns. While this lives it is owned by us: no other copy of the program offers it.
class LeftText {
 public:
  // nullopt: owned by a living program, gone, or an empty journal.
  static std::optional<LeftText> claim(const std::string& folder, const std::string& name);
  // The same for a copy of the file at `path`, which may be a name only. Copies that neither we nor the file's owner made are not ours
  // to believe in.
  static std::optional<LeftText> claimCopy(const std::string& folder, const std::string& name, const std::string& path);
  const std::string& name() const { return name_; }
  bool isCopy() const { return copyOf_.has_value(); }
  std::int64_t changedNs() const { return changedNs_; }   // last write, since the epoch
  RecoveredText recover() const;
  int remove();   // 0 or -errno; durable

 private:
  static std::optional<LeftText> own(const std::string& folder, const std::string& name, unsigned flags);
  std::string folder_, name_;
  files::Descriptor file_;
  std::int64_t changedNs_ = 0;
  std::optional<std::string> copyOf_;
};

// All of them, newest first. Also takes away what a program that was ended left of a journal written anew, of which the
// journal itself still stands. A folder that does not exist holds none.
std::vector<LeftText> leftJournals(const std::string& folder);

// Copies beside these files, each folder being looked at once. Takes unfinished files away, as lookForLeftovers() does.
std::vector<LeftText> leftCopies(const std::vector<std::string>& paths);
// Copies of any file, in the folder for those that could not be put beside it. The same.
std::vector<LeftText> leftCopiesElsewhere(const std::string& folder);

}   // namespace text
