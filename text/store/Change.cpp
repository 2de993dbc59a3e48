#include "text/store/Change.h"

#include <algorithm>

namespace text {

ByteOffset Change::map(ByteOffset old, Bias bias) const noexcept {
  if (reset) return ByteOffset(0);
  const bool right = bias == Bias::right || bias == Bias::alongRight;
  auto span = std::partition_point(spans.begin(), spans.end(), [old](const Span& s) { return s.oldBegin <= old; });
  if (span == spans.begin()) return old;
  --span;
  if (old == span->oldBegin) {
    if (span->removed == 0 && right) return span->end();
    // Before all text inserted here, but behind the replacement of a range that ends here.
    while (!right && span != spans.begin() && std::prev(span)->oldBegin == old) --span;
    return span->begin;
  }
  if (old >= span->oldEnd()) return span->end() + (old - span->oldEnd());
  switch (bias) {
    case Bias::left: return span->begin;
    case Bias::right: return span->end();
    default: return span->begin + std::min(old - span->oldBegin, span->inserted);
  }
}

const Change::Span* Change::touching(LineNo old) const noexcept {
  const auto span = std::partition_point(spans.begin(), spans.end(), [old](const Span& s) { return s.oldLastLine() < old; });
  return span != spans.end() && span->oldLine <= old ? &*span : nullptr;
}

std::int64_t Change::linesGrownAbove(LineNo old) const noexcept {
  const auto span = std::partition_point(spans.begin(), spans.end(), [old](const Span& s) { return s.oldLastLine() < old; });
  return span == spans.begin() ? 0 : std::prev(span)->linesGrown();
}

LineNo Change::mapLine(LineNo old, const Snapshot& now, Bias bias, bool* gone) const {
  if (gone) *gone = reset;
  if (reset) return LineNo(0);
  const Span* span = touching(old);
  if (!span) return old + linesGrownAbove(old);
  // If only the end of the line is left, or all of it, the line is the last inserted one; if only its start is left, the first one.
  const std::int64_t k = old - span->oldLine;
  const bool fromStart = now.lineStart(span->firstLine) == span->begin;
  if (k == span->linesRemoved && (k > 0 || (fromStart && bias == Bias::right))) return span->firstLine + span->linesInserted;
  if (gone)
    *gone = k == 0 ? fromStart && span->linesInserted == 0 && span->linesRemoved > 0
                   : k > span->linesInserted || span->linesInserted == 0;
  return span->firstLine + std::min(k, span->linesInserted);
}

}   // namespace text
