// Reads successive lines in one pass over the bytes of a snapshot, for loops over very many lines: asking the snapshot for each
// line costs a search.
#pragma once

#include <string>
#include <string_view>

#include "text/store/Snapshot.h"

namespace text {

// The first bytes of a line that may be long: at most `most`, without its break.
std::string beginOfLine(const Snapshot& text, LineNo line, std::int64_t most);

class LineReader {
 public:
  explicit LineReader(Snapshot text, LineNo first = LineNo(0));   // precondition: 0 <= first < lineCount()

  // The next line without its break; false behind the last one. The view is valid until the next call.
  bool next(std::string_view* line);
  LineNo line() const { return LineNo(next_ - 1); }   // number and first byte of the line that next() gave
  ByteOffset start() const { return start_; }

 private:
  Snapshot text_;
  std::int64_t next_, count_;
  ByteOffset start_, at_;
  std::string_view chunk_;   // from at_ on
  std::string joined_;       // a line in several chunks
  char break_;
};

}   // namespace text
