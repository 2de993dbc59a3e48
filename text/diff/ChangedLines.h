// Which lines of a text may differ from those of a file: the lines that changes have touched, moved by every later change. What is
// outside is equal line by line, so only the inside has to be compared.
//
// Parts ascend, and at least one line lies between two of them. `before` is the file, `after` the text (LineHunk). A part is exact if
// its lines are known to differ as they stand there; else it may hold equal lines too. Line ends never count.
#pragma once

#include <atomic>
#include <cstddef>
#include <vector>

#include "text/diff/LineDiff.h"
#include "text/store/Document.h"

namespace text {

class ChangedLines {
 public:
  // Above so many parts, those that are near each other become one.
  explicit ChangedLines(std::size_t most = 50'000) : most_(most) {}

  struct Part {
    LineHunk lines;
    bool exact = false;
    bool joined = false;   // of several that were exact: between them lines may be equal
  };
  const std::vector<Part>& parts() const { return parts_; }

  void clear() { parts_.clear(); }                           // both are equal
  void all(const Snapshot& before, const Snapshot& after);   // nothing is known
  // After a change that is no reset. One span: O(log parts) and the parts behind it, if their lines move; else O(parts + spans).
  void edit(const Change& change);
  // Puts what differs inside of a part in its place.
  struct Found {
    LineHunk part;
    std::vector<LineHunk> hunks;
  };
  // For parts that are not exact or joined, ascending; those that have changed since are left alone.
  void refine(const std::vector<Found>& found);
  std::vector<Part> refined(const std::vector<Found>& found) const;   // those, however many

  // The first part that ends behind the line, or is empty in `after` and stands at or behind it.
  std::size_t partFrom(LineNo after) const;

 private:
  void thin();

  std::size_t most_;
  std::vector<Part> parts_;
};

// The hunks inside of a part, in lines of the whole texts. More than `most` bytes are not compared: then the part as it is.
std::vector<LineHunk> hunksIn(const Snapshot& before, const Snapshot& after, const LineHunk& part, std::int64_t most,
                              const std::atomic<bool>* cancel = nullptr);
std::int64_t bytesOf(const Snapshot& before, const Snapshot& after, const LineHunk& part);

// The edit that gives the lines of a hunk in `after` the text of those in `before`, byte by byte. If the lines of both texts end in
// other ways (LineMode), line breaks become those of `after`.
Edit revertHunk(const Snapshot& before, const Snapshot& after, const LineHunk& hunk, std::string_view newLine);

}   // namespace text
