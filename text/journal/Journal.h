// The recovery journal: beside each text that was changed and not yet saved, a file from which it can be put together when the
// program, or the machine, ends without warning.
//
// Always holds: nothing is written before the first change; then what was typed is in the file within kWriteMs or kWriteEdits
// edits, and on the platter within kSyncMs. The file goes only after saved() or discard(). The living owner holds a lock on
// it. One writer serves all journals of the program: their records are written on its thread, in the order of the changes.
// What a disk may take long for, syncs and whole texts in place of grown journals, is done on a second one meanwhile.
// When writing fails nothing else happens than that failure() says why; it is tried again, whole, each kRetryMs.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "text/journal/JournalFormat.h"

namespace text {

inline constexpr std::int64_t kJournalWriteMs = 50, kJournalSyncMs = 3000, kJournalRetryMs = 5000;
inline constexpr std::size_t kJournalWriteEdits = 25;

class Journal;

struct JournalLimits {
  // Texts that came from a file and are larger than this are not copied: the journal refers to the file while it is
  // unchanged on disk. In bytes.
  std::int64_t largeText = 64 << 20;
  // Records of more bytes than this, and than the text, are replaced by the text.
  std::int64_t records = 4 << 20;
};

class JournalWriter {
 public:
  using Clock = std::function<std::int64_t()>;   // milliseconds, never going back
  using Later = std::function<void(std::function<void()>)>;

  // The folder is made when the first journal is; 0700, the files 0600.
  explicit JournalWriter(std::string folder);
  // Without threads: work() does what is due by this clock, and slow work is given to `later`, to be run before the writer goes.
  JournalWriter(
      std::string folder, Clock clock, Later later = [](const std::function<void()>& work) { work(); });
  ~JournalWriter();   // writes what was not written yet; journals stay where they are
  JournalWriter(const JournalWriter&) = delete;
  JournalWriter& operator=(const JournalWriter&) = delete;

  const std::string& folder() const;
  // Writes everything now, durably. False: it could not, or took longer than `patienceMs`.
  bool flush(std::int64_t patienceMs = 10000);
  // Does what is due. Returns the time at which something more will be, or -1.
  std::int64_t work();

  void setLimits(const JournalLimits& limits);

 private:
  friend class Journal;
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

// The journal of one document; made and used on the document's thread. The writer must outlive it.
class Journal {
 public:
  // `failed` is called on the writer's thread whenever failure() has changed.
  Journal(JournalWriter& writer, Document& document, std::function<void()> failed = {});
  ~Journal();   // leaves the file, with all changes in it
  Journal(const Journal&) = delete;
  Journal& operator=(const Journal&) = delete;

  void setAbout(const JournalAbout& about);
  // The text as it is now is what the file of `about` holds, durably (loaded, saved): the journal goes.
  void saved(const JournalAbout& about);
  // The person does not want what was changed: the journal goes. The next change starts one anew.
  void discard();
  // Starts now, without a change: the text is nowhere else.
  void begin();
  // Nobody may be there to go on: whatever follows, the journal holds the whole text, also where it referred to the file.
  void standAlone();
  bool active() const;            // there is, or will be, a file
  bool durable() const;           // all that was changed is on the platter, and no change is waiting
  std::string failure() const;    // why it is not being written; empty: all is well
  std::string fileName() const;   // within the folder; empty: none is written yet

 private:
  struct State;
  friend class JournalWriter;
  void changed(const Change& change);
  JournalWriter& writer_;
  Document& document_;
  std::shared_ptr<State> state_;
  std::shared_ptr<void> subscription_;
  Snapshot base_;             // the text before the next change, while not active
  std::uint64_t known_ = 0;   // revision of a text that was taken whole: its change may be told of only afterwards
};

}   // namespace text
