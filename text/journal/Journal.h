// The recovery journal: a file for each text that was changed and not saved yet. From it the text can be restored when the program
// or the machine stops without warning.
//
// Invariants: nothing is written before the first change. After that, each change is in the file within kJournalWriteMs or
// kJournalWriteEdits edits, and on disk within kJournalSyncMs. Only saved() and discard() remove the file. The living owner
// holds a lock on it. One writer serves all journals of the program: its thread writes the records in the order of the changes.
// Slow disk work (syncs, and whole texts that replace grown journals) runs on a second thread. If writing fails, the only effect
// is that failure() gives the reason; the whole journal is written again every kJournalRetryMs.
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
  // A text that came from a file and has more bytes than this is not copied: the journal refers to the file while it is unchanged.
  std::int64_t largeText = 64 << 20;
  // When the records have more bytes than this and than the text, they are replaced by the text.
  std::int64_t records = 4 << 20;
};

class JournalWriter {
 public:
  using Clock = std::function<std::int64_t()>;   // milliseconds, monotonic
  using Later = std::function<void(std::function<void()>)>;

  // The folder (mode 0700) is made with the first journal (mode 0600).
  explicit JournalWriter(std::string folder);
  // Without threads, for tests: work() does what is due by this clock; slow work is passed to `later` and must run before the
  // writer is destroyed.
  JournalWriter(
      std::string folder, Clock clock, Later later = [](const std::function<void()>& work) { work(); });
  ~JournalWriter();   // writes everything that is pending; journals stay where they are
  JournalWriter(const JournalWriter&) = delete;
  JournalWriter& operator=(const JournalWriter&) = delete;

  const std::string& folder() const;
  // Writes everything now, durably. False: it failed, or took longer than `patienceMs`.
  bool flush(std::int64_t patienceMs = 10000);
  // Does what is due. Returns the time of the next task, or -1.
  std::int64_t work();

  void setLimits(const JournalLimits& limits);

 private:
  friend class Journal;
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

// The journal of one document; created and used on the document's thread. The writer must outlive it.
class Journal {
 public:
  // `failed` is called on the writer's thread whenever failure() has changed.
  Journal(JournalWriter& writer, Document& document, std::function<void()> failed = {});
  ~Journal();   // leaves the file with all changes
  Journal(const Journal&) = delete;
  Journal& operator=(const Journal&) = delete;

  void setAbout(const JournalAbout& about);
  // The current text is durably in the file of `about` (loaded, saved): removes the journal.
  void saved(const JournalAbout& about);
  // The user discards the changes: removes the journal. The next change starts a new one.
  void discard();
  // Starts now, without a change, because the text exists nowhere else.
  void begin();
  // Prepares for the end of the program: the journal will hold the whole text, also if it referred to the file.
  void standAlone();
  bool active() const;            // there is, or will be, a journal file
  bool durable() const;           // all changes are on disk and none is pending
  std::string failure() const;    // why writing fails; empty: it works
  std::string fileName() const;   // within the folder; empty: nothing is written yet

 private:
  struct State;
  friend class JournalWriter;
  void changed(const Change& change);
  JournalWriter& writer_;
  Document& document_;
  std::shared_ptr<State> state_;
  std::shared_ptr<void> subscription_;
  Snapshot base_;             // the text before the next change, while not active
  std::uint64_t known_ = 0;   // revision of a text that was written whole; notifications of changes up to it are ignored
};

}   // namespace text
