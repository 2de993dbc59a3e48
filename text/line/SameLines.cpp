#include "text/line/SameLines.h"

#include "text/line/LineReader.h"

namespace text {

bool sameLines(const Snapshot& a, LineNo aBegin, LineNo aEnd, const Snapshot& b, LineNo bBegin, LineNo bEnd,
               const std::atomic<bool>* cancel) {
  if (aEnd - aBegin != bEnd - bBegin) return false;
  if (aBegin == aEnd) return true;
  LineReader readA(a, aBegin), readB(b, bBegin);
  std::string_view lineA, lineB;
  for (; aBegin < aEnd && !(cancel && *cancel); ++aBegin)
    if (!readA.next(&lineA) || !readB.next(&lineB) || lineA != lineB) return false;
  return true;
}

}   // namespace text
