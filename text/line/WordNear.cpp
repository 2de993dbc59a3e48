#include "text/line/WordNear.h"

#include <algorithm>

namespace text {

ByteRange wordNear(const Snapshot& text, ByteOffset offset) {
  offset = std::clamp(offset, ByteOffset(0), text.size());
  const ByteOffset begin = std::max(ByteOffset(0), offset - longestWord), end = std::min(text.size(), offset + longestWord);
  const Snapshot around(text.bytes({begin, end}), text.lineMode());
  const ByteRange word = wordAt(around, ByteOffset(offset - begin));
  const ByteRange found{begin + word.begin.value, begin + word.end.value};
  // At the edge of the examined range the word may continue, or a character was cut.
  const bool cut = (begin > ByteOffset(0) && found.begin < begin + 4) || (end < text.size() && found.end > end - 4);
  return cut && !found.empty() ? ByteRange{offset, offset} : found;
}

}   // namespace text
