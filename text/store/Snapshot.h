// An immutable view of a whole text. Copying is O(1). It may be read on any thread and stays valid as long as it is held, whatever
// happens to the document.
//
// The text is bytes. In LineMode::lf (the usual mode) every '\n' ends a line, and a '\r' directly before it belongs to the break.
// In LineMode::cr (a file with '\r' and without '\n') every '\r' ends a line. A text always has breaks + 1 lines: the last one has
// no break and may be empty.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "text/store/Units.h"

namespace text {

enum class LineMode : unsigned char { lf = 0, cr = 1 };   // the numbers are stored in recovery journals
enum class LineBreak : unsigned char { none, lf, crlf, cr };

// The bytes of a break; empty for none.
std::string_view breakBytes(LineBreak lineBreak);

class Tree;         // the balanced tree of pieces
struct TreeShape;   // its sizes

class Snapshot {
 public:
  Snapshot();   // the empty text
  explicit Snapshot(std::string bytes, LineMode mode = LineMode::lf);

  ByteOffset size() const;
  LineMode lineMode() const;

  std::int64_t lineCount() const;                   // >= 1
  ByteOffset lineStart(LineNo line) const;          // precondition: 0 <= line < lineCount()
  ByteOffset lineEnd(LineNo line) const;            // before the line's break
  ByteOffset lineEndWithBreak(LineNo line) const;   // behind it: the start of the next line, or size()
  LineBreak lineBreak(LineNo line) const;
  LineNo lineAt(ByteOffset offset) const;   // the line that holds offset; size() is on the last line.
                                            // An offset inside CR LF belongs to the line that the pair ends.

  std::string bytes() const { return bytes({ByteOffset(0), size()}); }   // a copy of all
  std::string bytes(ByteRange range) const;                              // the range is clipped to the text
  std::string line(LineNo line) const;                                   // without its break
  char at(ByteOffset offset) const;                                      // precondition: offset < size()

  // A contiguous run of bytes that starts at offset (empty only at size()), and one that ends there (empty only at 0). It may end
  // inside a character or inside CR LF. Valid while this snapshot or a copy of it lives. Loops over a text use these.
  std::string_view chunkAt(ByteOffset offset) const;
  std::string_view chunkBefore(ByteOffset offset) const;

  // True when both are views of the same tree. Then the texts are equal; false tells nothing.
  bool sameAs(const Snapshot& other) const;

  void checkInvariants() const;   // aborts with a message on a breach

 private:
  friend class Document;
  friend class SnapshotBuilder;
  explicit Snapshot(std::shared_ptr<const Tree> tree);
  std::shared_ptr<const Tree> tree_;
};

// Builds a snapshot from blocks of bytes without copying them. Used for loading.
class SnapshotBuilder {
 public:
  explicit SnapshotBuilder(LineMode mode = LineMode::lf);
  SnapshotBuilder(LineMode mode, const TreeShape& shape);   // every document that takes the text keeps the shape
  ~SnapshotBuilder();
  // Appends the first length bytes of `bytes`. The tree keeps the memory.
  void append(std::shared_ptr<const char[]> bytes, std::size_t length);
  void append(std::string bytes);
  Snapshot finish();   // the builder is empty again

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}   // namespace text
