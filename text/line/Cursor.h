// Moves over the characters and bytes of a snapshot in both directions, across its blocks, without copying. Internal to the engine.
// Set on a character boundary, it stays on boundaries.
#pragma once

#include "text/line/Chars.h"
#include "text/store/Snapshot.h"

namespace text {

class Cursor {
 public:
  // `text` must outlive the cursor.
  explicit Cursor(const Snapshot& text, ByteOffset at = ByteOffset(0)) : text_(&text), size_(text.size().value) { set(at); }

  ByteOffset at() const { return ByteOffset(at_); }
  void set(ByteOffset at) { at_ = at.value < 0 ? 0 : at.value > size_ ? size_ : at.value; }
  bool atStart() const { return at_ == 0; }
  bool atEnd() const { return at_ >= size_; }

  Char peek();         // the character at the cursor; bytes == 0 at the end
  Char peekBefore();   // the one before it; bytes == 0 at the start
  Char next();         // peek() and step over it
  Char previous();

  // The block's bytes from the cursor on (empty only at the end), or before it.
  std::string_view ahead();
  std::string_view behind();

  // Moves forward to the next byte b (or the end), or backward until the previous byte is b (or the start). True if found.
  bool toByte(char b);
  bool backToByte(char b);

 private:
  const Snapshot* text_;
  std::int64_t size_, at_ = 0;
  std::string_view chunk_;        // the block last used
  std::int64_t chunkBegin_ = 0;   // its offset in the text
};

}   // namespace text
