// The file that keeps bookmarks over sessions: of each file the lines, and how their texts begin, as others may change the file
// meanwhile. It lies in the state folder, is bounded, and is written whole through the safe save. What it lost costs bookmarks only.
#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "text/file/FileIo.h"
#include "text/store/Snapshot.h"

struct KeptMark {
  std::int64_t line = 0;   // from 0
  std::string text;        // the first bytes of the line
  bool operator==(const KeptMark&) const = default;
};
using KeptMarks = std::vector<KeptMark>;   // of one file, ascending

inline constexpr std::size_t kMostKeptMarks = 5000;   // of one file; the first ones

KeptMarks keptMarks(const text::Snapshot& text, std::span<const text::LineNo> lines);
struct FoundMarks {
  std::vector<text::LineNo> lines;   // ascending
  KeptMarks missing;                 // those without a place
};
// The lines that these marks have in the text now: the same line if its text is the same, else the nearest line with that text (each for
// one mark), else the line of that number. Without a place: those behind the end of the text; in an empty text those of lines that
// had text. Reads the whole text unless all marks are where they were; may be called on any thread.
FoundMarks findMarks(const text::Snapshot& text, const KeptMarks& marks, const std::atomic<bool>* cancel = nullptr);
bool standAsKept(const text::Snapshot& text, const KeptMarks& marks);
// Both, ascending; of two marks of one line the first.
KeptMarks mergedMarks(KeptMarks marks, const KeptMarks& others);

class BookmarkFile {
 public:
  struct Entry {
    std::string path;
    KeptMarks marks;
  };
  explicit BookmarkFile(std::string path) : path_(std::move(path)) {}

  // As the file is on the disk now, with what was set and is not written yet. What is damaged is left out.
  std::vector<Entry> read() const;
  bool isChanged();   // since the last call: by this copy of the program or another; at first true
  void set(const std::string& path, KeptMarks marks);   // to be written; none: the file is forgotten
  // Writes what was set into the file as it is on the disk now, so that copies of the program keep each other's. On any thread.
  // Empty: done; else why not, and the next call tries again.
  std::string write();

  static std::vector<Entry> parse(std::string_view bytes, bool* isForeign);   // *isForeign: of a later version
  static std::string format(const std::vector<Entry>& entries);

 private:
  const std::string path_;
  std::optional<text::FileStamp> stamp_;
  mutable std::mutex mutex_;
  std::mutex writing_;
  std::map<std::string, KeptMarks> changed_, inWork_;   // not written yet; being written
};
