#include "text/line/Words.h"

#include <algorithm>
#include <array>
#include <memory>
#include <string>

#include "text/line/CharTables.h"
#include "text/line/Cursor.h"
#include "text/line/Segments.h"
#include "text/line/Utf8.h"

namespace text {

CharClass classOf(char32_t code) {
  if (code < 0x80) {
    if ((code >= 'a' && code <= 'z') || (code >= 'A' && code <= 'Z') || (code >= '0' && code <= '9') || code == '_')
      return CharClass::word;
    return code == ' ' || (code >= '\t' && code <= '\r') ? CharClass::blank : CharClass::punctuation;
  }
  if (isWordChar(code)) return CharClass::word;
  return isBlankChar(code) ? CharClass::blank : CharClass::punctuation;
}

namespace {

CharClass classOf(const Char& c) { return c.bad ? CharClass::punctuation : text::classOf(c.code); }

// Combining marks and joiners belong to the run of the previous character.
bool follows(const Char& c) { return !c.bad && isExtending(c.code); }

// Moves back over one character with its marks and returns its class. Precondition: not at the start.
CharClass stepBack(Cursor& cursor) {
  Char c = cursor.previous();
  while (follows(c) && !cursor.atStart()) c = cursor.previous();
  return classOf(c);
}

CharClass classBefore(const Cursor& cursor) {
  Cursor probe = cursor;
  return stepBack(probe);
}

CharClass classAt(Cursor& cursor) {
  const Char c = cursor.peek();
  return follows(c) && !cursor.atStart() ? classBefore(cursor) : classOf(c);
}

// The class of a letter below U+10000 with a bit for what belongs to the letter before it, from a table.
constexpr unsigned char kFollows = 0x80;
using QuickClasses = std::array<unsigned char, 0x10000>;
const QuickClasses& quickClasses() {
  static const auto table = [] {
    auto all = std::make_unique<QuickClasses>();
    for (char32_t c = 0; c < 0x10000; ++c)
      (*all)[c] = static_cast<unsigned char>(static_cast<unsigned char>(text::classOf(c)) | (isExtending(c) ? kFollows : 0));
    return all;
  }();
  return *table;
}

// Number of bytes at the start of a block that certainly belong to a run of the class.
std::size_t quickRun(std::string_view view, CharClass cls) {
  const QuickClasses& classes = quickClasses();
  const auto wanted = static_cast<unsigned char>(cls);
  std::size_t done = 0;
  while (done < view.size()) {
    if (const auto byte = static_cast<unsigned char>(view[done]); byte < 0x80) {
      if (classes[byte] != wanted) break;
      ++done;
      continue;
    }
    int length = 0;
    const char32_t code = utf8Quick(view.data() + done, view.size() - done, &length);
    if (code == 0) break;
    if (classes[code] != wanted && (classes[code] & kFollows) == 0) break;
    done += static_cast<std::size_t>(length);
  }
  return done;
}

// The same for its end.
std::size_t quickRunBack(std::string_view view, CharClass cls) {
  const QuickClasses& classes = quickClasses();
  const auto wanted = static_cast<unsigned char>(cls);
  std::size_t done = 0, marks = 0;   // marks: behind a letter that was not examined yet
  while (done + marks < view.size()) {
    const std::size_t end = view.size() - done - marks;
    if (const auto byte = static_cast<unsigned char>(view[end - 1]); byte < 0x80) {
      if (classes[byte] != wanted) break;
      done += marks + 1;
      marks = 0;
      continue;
    }
    std::size_t at = end - 1;
    while (at > 0 && end - at < 3 && (view[at] & 0xC0) == 0x80) --at;
    int length = 0;
    const char32_t code = utf8Quick(view.data() + at, end - at, &length);
    if (code == 0 || static_cast<std::size_t>(length) != end - at) break;
    if ((classes[code] & kFollows) != 0) {
      marks += end - at;
      continue;
    }
    if (classes[code] != wanted) break;
    done += marks + (end - at);
    marks = 0;
  }
  return done;
}

void skipForward(Cursor& cursor, CharClass cls) {
  while (!cursor.atEnd()) {
    if (const std::size_t quick = quickRun(cursor.ahead(), cls); quick > 0) {
      cursor.set(cursor.at() + static_cast<std::int64_t>(quick));
      continue;
    }
    const Char c = cursor.peek();
    if (!follows(c) && classOf(c) != cls) return;
    cursor.next();
  }
}

void skipBack(Cursor& cursor, CharClass cls) {
  while (!cursor.atStart()) {
    if (const std::size_t quick = quickRunBack(cursor.behind(), cls); quick > 0) {
      cursor.set(cursor.at() - static_cast<std::int64_t>(quick));
      continue;
    }
    Cursor probe = cursor;
    if (stepBack(probe) != cls) return;
    cursor.set(probe.at());
  }
}

ByteRange runAround(Cursor cursor, CharClass cls) {
  Cursor end = cursor;
  skipBack(cursor, cls);
  skipForward(end, cls);
  return {cursor.at(), end.at()};
}

}   // namespace

ByteRange wordAt(const Snapshot& text, ByteOffset offset) {
  Cursor cursor(text, offset);
  const CharClass right = cursor.atEnd() ? CharClass::blank : classAt(cursor);
  const CharClass left = cursor.atStart() ? CharClass::blank : classBefore(cursor);
  for (const CharClass wanted : {CharClass::word, CharClass::punctuation})
    if (right == wanted || left == wanted) {
      // A run on the right only begins here; the left one ends here.
      if (right == wanted && left == wanted) return runAround(cursor, wanted);
      Cursor other = cursor;
      if (right == wanted) {
        skipForward(other, wanted);
        return {cursor.at(), other.at()};
      }
      skipBack(other, wanted);
      return {other.at(), cursor.at()};
    }
  return {cursor.at(), cursor.at()};
}

ByteOffset wordStartBefore(const Snapshot& text, ByteOffset offset) {
  Cursor cursor(text, offset);
  skipBack(cursor, CharClass::blank);
  if (!cursor.atStart()) skipBack(cursor, classBefore(cursor));
  return cursor.at();
}

ByteOffset wordStartAfter(const Snapshot& text, ByteOffset offset) {
  Cursor cursor(text, offset);
  if (cursor.atEnd()) return cursor.at();
  if (const CharClass cls = classAt(cursor); cls != CharClass::blank) skipForward(cursor, cls);
  skipForward(cursor, CharClass::blank);
  return cursor.at();
}

ByteOffset wordEndAfter(const Snapshot& text, ByteOffset offset) {
  Cursor cursor(text, offset);
  skipForward(cursor, CharClass::blank);
  if (!cursor.atEnd()) skipForward(cursor, classAt(cursor));
  return cursor.at();
}

ByteOffset wordEndBefore(const Snapshot& text, ByteOffset offset) {
  Cursor cursor(text, offset);
  if (cursor.atStart()) return cursor.at();
  if (const CharClass cls = classBefore(cursor); cls != CharClass::blank) skipBack(cursor, cls);
  skipBack(cursor, CharClass::blank);
  return cursor.at();
}

// Sentences -----------------------------------------------------------------------------------------------------------

namespace {

bool endsSentence(const Char& c) { return !c.bad && (c.code == '.' || c.code == '!' || c.code == '?' || c.code == 0x2026); }
bool closes(const Char& c) {
  return !c.bad && (c.code == ')' || c.code == ']' || c.code == '}' || c.code == '"' || c.code == '\'' || c.code == 0x201D ||
                    c.code == 0x2019);
}
bool breaksLine(const Snapshot& text, const Char& c) { return c.code == (text.lineMode() == LineMode::lf ? U'\n' : U'\r'); }

// Whether a sentence starts at the cursor, which is before a character that is not blank: at the start of a paragraph, or behind
// blanks that follow a full stop (and closing quotes or brackets).
bool sentenceStartsHere(const Snapshot& text, Cursor cursor) {
  int breaks = 0;
  bool blanks = false;
  while (!cursor.atStart() && classOf(cursor.peekBefore()) == CharClass::blank) {
    breaks += breaksLine(text, cursor.previous());
    blanks = true;
    if (breaks > 1) return true;
  }
  if (cursor.atStart()) return true;
  if (!blanks) return false;
  while (!cursor.atStart() && closes(cursor.peekBefore())) cursor.previous();
  return !cursor.atStart() && endsSentence(cursor.peekBefore());
}

}   // namespace

ByteOffset sentenceStartBefore(const Snapshot& text, ByteOffset offset) {
  Cursor cursor(text, offset);
  skipBack(cursor, CharClass::blank);
  while (!cursor.atStart()) {
    cursor.previous();
    if (cursor.atStart() || classOf(cursor.peekBefore()) == CharClass::blank)
      if (classOf(cursor.peek()) != CharClass::blank && sentenceStartsHere(text, cursor)) return cursor.at();
  }
  return cursor.at();
}

ByteOffset sentenceStartAfter(const Snapshot& text, ByteOffset offset) {
  Cursor cursor(text, offset);
  bool stopped = false;   // behind a full stop and closing characters
  int breaks = 0;
  bool blanks = false;
  // The caret may stand between the full stop and the next sentence.
  if (!cursor.atEnd() && classOf(cursor.peek()) == CharClass::blank) {
    Cursor ahead = cursor;
    skipForward(ahead, CharClass::blank);
    if (ahead.atEnd() || sentenceStartsHere(text, ahead)) return ahead.at();
    cursor.set(ahead.at());
  }
  while (!cursor.atEnd()) {
    const Char c = cursor.peek();
    if (classOf(c) == CharClass::blank) {
      breaks += breaksLine(text, c);
      blanks = true;
    } else {
      if (blanks && (stopped || breaks > 1)) return cursor.at();
      stopped = endsSentence(c) || (stopped && !blanks && closes(c));
      blanks = false;
      breaks = 0;
    }
    cursor.next();
  }
  return cursor.at();
}

// Paragraphs ----------------------------------------------------------------------------------------------------------

namespace {

// Moves by lines; always at the start of a line.
class LineWalk {
 public:
  LineWalk(const Snapshot& text, ByteOffset offset)
      : breaker_(text.lineMode() == LineMode::lf ? '\n' : '\r'), cursor_(text, text.lineStart(text.lineAt(offset))) {}

  ByteOffset start() const { return cursor_.at(); }
  bool first() const { return cursor_.atStart(); }
  bool blank() const {
    Cursor probe = cursor_;
    while (!probe.atEnd()) {
      const Char c = probe.next();
      if (c.code == static_cast<char32_t>(breaker_) && !c.bad) return true;
      if (classOf(c) != CharClass::blank) return false;
    }
    return true;
  }
  bool down() {   // false on the last line: then at the end of the text
    if (!cursor_.toByte(breaker_)) return false;
    cursor_.set(cursor_.at() + 1);
    return true;
  }
  void up() {   // precondition: not on the first line
    cursor_.set(cursor_.at() - 1);
    cursor_.backToByte(breaker_);
  }

 private:
  char breaker_;
  Cursor cursor_;
};

}   // namespace

ByteOffset paragraphStartBefore(const Snapshot& text, ByteOffset offset) {
  LineWalk walk(text, offset);
  if (walk.start() == offset && !walk.first()) walk.up();
  while (walk.blank() && !walk.first()) walk.up();
  while (!walk.first()) {
    LineWalk above = walk;
    above.up();
    if (above.blank()) break;
    walk = above;
  }
  return walk.start();
}

ByteOffset paragraphStartAfter(const Snapshot& text, ByteOffset offset) {
  LineWalk walk(text, offset);
  while (!walk.blank())
    if (!walk.down()) return text.size();
  while (walk.blank())
    if (!walk.down()) return text.size();
  return walk.start();
}

ByteRange paragraphAt(const Snapshot& text, ByteOffset offset) {
  LineWalk walk(text, offset);
  if (walk.blank()) return {walk.start(), walk.start()};
  LineWalk end = walk;
  while (!walk.first()) {
    LineWalk above = walk;
    above.up();
    if (above.blank()) break;
    walk = above;
  }
  ByteOffset last = end.start();
  do last = end.start();
  while (end.down() && !end.blank());
  return {walk.start(), text.lineEnd(text.lineAt(last))};
}

// Characters ----------------------------------------------------------------------------------------------------------

ByteOffset nextChar(const Snapshot& text, ByteOffset offset) {
  Cursor cursor(text, offset);
  if (cursor.atEnd()) return cursor.at();
  const auto view = cursor.ahead();
  // A complete cluster within the block, with one more byte that shows where it ends.
  if (const int length = clusterLength(view.substr(0, maxClusterBytes + 4));
      static_cast<std::size_t>(length) < std::min<std::size_t>(view.size(), maxClusterBytes))
    if (view.size() - static_cast<std::size_t>(length) >= 4) return cursor.at() + length;
  const auto bytes = text.bytes({cursor.at(), cursor.at() + maxClusterBytes + 4});
  return cursor.at() + clusterLength(bytes);
}

ByteOffset previousChar(const Snapshot& text, ByteOffset offset) {
  Cursor cursor(text, offset);
  if (cursor.atStart()) return cursor.at();
  const auto view = cursor.behind();
  constexpr std::size_t enough = 4 * maxClusterBytes + 4;
  if (view.size() >= enough) return cursor.at() - clusterLengthBefore(view.substr(view.size() - enough));
  const auto bytes = text.bytes({cursor.at() - static_cast<std::int64_t>(enough), cursor.at()});
  return cursor.at() - clusterLengthBefore(bytes);
}

}   // namespace text
