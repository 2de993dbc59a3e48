#include "text/diff/ChangedLines.h"

#include <algorithm>

#include "text/line/LineReader.h"
#include "text/store/CommonEnds.h"

namespace text {
namespace {

using Part = ChangedLines::Part;

Part partOf(std::int64_t beforeBegin, std::int64_t beforeEnd, std::int64_t afterBegin, std::int64_t afterEnd) {
  return {{LineNo(beforeBegin), LineNo(beforeEnd), LineNo(afterBegin), LineNo(afterEnd)},
          beforeBegin == beforeEnd || afterBegin == afterEnd};
}

bool nothing(const Part& part) {
  return part.lines.beforeBegin == part.lines.beforeEnd && part.lines.afterBegin == part.lines.afterEnd;
}

// Lines that came with the part: how much further down the text is behind it.
std::int64_t grown(const LineHunk& h) { return (h.afterEnd - h.afterBegin) - (h.beforeEnd - h.beforeBegin); }
std::int64_t below(const LineHunk& h) { return h.afterEnd - h.beforeEnd; }

// The bytes of the lines, without the break behind them.
ByteRange bytesOfLines(const Snapshot& text, LineNo begin, LineNo end) { return {text.lineStart(begin), text.lineEnd(end - 1)}; }

}   // namespace

void ChangedLines::all(const Snapshot& before, const Snapshot& after) {
  parts_.assign(1, partOf(0, before.lineCount(), 0, after.lineCount()));
}

std::size_t ChangedLines::partFrom(LineNo after) const {
  const auto isBefore = [](const Part& part, LineNo line) {
    return part.lines.afterBegin == part.lines.afterEnd ? part.lines.afterBegin < line : part.lines.afterEnd <= line;
  };
  return static_cast<std::size_t>(std::lower_bound(parts_.begin(), parts_.end(), after, isBefore) - parts_.begin());
}

void ChangedLines::edit(const Change& change) {
  if (change.spans.empty()) return;
  if (change.spans.size() == 1) {
    const Change::Span& span = change.spans.front();
    const std::int64_t lo = span.oldLine.value, hi = span.oldLastLine().value + 1, by = span.linesGrown();
    const auto first = std::lower_bound(parts_.begin(), parts_.end(), lo,
                                        [](const Part& part, std::int64_t line) { return part.lines.afterEnd.value < line; });
    auto last = first;
    while (last != parts_.end() && last->lines.afterBegin.value <= hi) ++last;
    const std::int64_t above = first == parts_.begin() ? 0 : below((first - 1)->lines);
    const std::int64_t through = last == parts_.begin() ? 0 : below((last - 1)->lines);
    std::int64_t begin = lo, end = hi;
    if (first != last)
      begin = std::min(begin, first->lines.afterBegin.value), end = std::max(end, (last - 1)->lines.afterEnd.value);
    const Part merged = partOf(begin - above, end - through, begin, end + by);
    if (by != 0)
      for (auto part = last; part != parts_.end(); ++part)
        part->lines.afterBegin = part->lines.afterBegin + by, part->lines.afterEnd = part->lines.afterEnd + by;
    const auto at = static_cast<std::size_t>(first - parts_.begin());
    if (first == last) parts_.insert(first, merged);
    else *first = merged, parts_.erase(first + 1, last);
    if (nothing(parts_[at])) parts_.erase(parts_.begin() + static_cast<std::ptrdiff_t>(at));
    return thin();
  }
  // Both lists in lines of the text before the change.
  std::vector<Part> made;
  made.reserve(parts_.size() + change.spans.size());
  auto part = parts_.begin();
  auto span = change.spans.begin();
  std::int64_t ofParts = 0, ofSpans = 0;   // lines that came above
  while (part != parts_.end() || span != change.spans.end()) {
    const bool takePart = span == change.spans.end() || (part != parts_.end() && part->lines.afterBegin <= span->oldLine);
    const std::int64_t begin = takePart ? part->lines.afterBegin.value : span->oldLine.value;
    std::int64_t end = begin, partsHere = 0, spansHere = 0;
    bool touched = false;
    const Part* only = nullptr;
    for (;;) {
      if (part != parts_.end() && part->lines.afterBegin.value <= end) {
        end = std::max(end, part->lines.afterEnd.value);
        partsHere += grown(part->lines);
        only = &*part++;
      } else if (span != change.spans.end() && span->oldLine.value <= end) {
        end = std::max(end, span->oldLastLine().value + 1);
        spansHere += span->linesInserted - span->linesRemoved;
        touched = true;
        ++span;
      } else {
        break;
      }
    }
    Part merged = partOf(begin - ofParts, end - ofParts - partsHere, begin + ofSpans, end + ofSpans + spansHere);
    if (!touched) merged.exact = only->exact, merged.joined = only->joined;
    ofParts += partsHere;
    ofSpans += spansHere;
    if (!nothing(merged)) made.push_back(merged);
  }
  parts_ = std::move(made);
  thin();
}

void ChangedLines::thin() {
  for (std::int64_t gap = 2; parts_.size() > most_; gap *= 2) {
    std::size_t kept = 0;
    for (std::size_t i = 1; i < parts_.size(); ++i) {
      LineHunk& last = parts_[kept].lines;
      if (parts_[i].lines.afterBegin - last.afterEnd > gap) {
        parts_[++kept] = parts_[i];
        continue;
      }
      last.beforeEnd = parts_[i].lines.beforeEnd;
      last.afterEnd = parts_[i].lines.afterEnd;
      parts_[kept].exact = parts_[kept].joined = true;   // to compare it again would bring them back
    }
    parts_.resize(kept + 1);
  }
}

void ChangedLines::refine(const std::vector<Found>& found) {
  if (found.empty()) return;
  parts_ = refined(found);
  thin();
}

std::vector<Part> ChangedLines::refined(const std::vector<Found>& found) const {
  std::vector<Part> made;
  made.reserve(parts_.size() + found.size());
  auto next = found.begin();
  for (const Part& part : parts_) {
    while (next != found.end() && next->part.afterBegin < part.lines.afterBegin) ++next;
    if ((part.exact && !part.joined) || next == found.end() || !(next->part == part.lines)) {
      made.push_back(part);
      continue;
    }
    for (const LineHunk& hunk : next->hunks) made.push_back({hunk, true});
  }
  return made;
}

std::int64_t bytesOf(const Snapshot& before, const Snapshot& after, const LineHunk& part) {
  std::int64_t bytes = 0;
  if (part.beforeBegin < part.beforeEnd) bytes += bytesOfLines(before, part.beforeBegin, part.beforeEnd).length();
  if (part.afterBegin < part.afterEnd) bytes += bytesOfLines(after, part.afterBegin, part.afterEnd).length();
  return bytes;
}

std::vector<LineHunk> hunksIn(const Snapshot& before, const Snapshot& after, const LineHunk& part, std::int64_t most,
                              const std::atomic<bool>* cancel) {
  if (part.beforeBegin == part.beforeEnd || part.afterBegin == part.afterEnd) return {part};
  if (part.beforeBegin + 1 == part.beforeEnd && part.afterBegin + 1 == part.afterEnd) {   // of any length
    const bool same = sameBytes(before, bytesOfLines(before, part.beforeBegin, part.beforeEnd), after,
                                bytesOfLines(after, part.afterBegin, part.afterEnd), cancel);
    return same ? std::vector<LineHunk>() : std::vector<LineHunk>{part};
  }
  if (bytesOf(before, after, part) > most) {
    if (part.beforeEnd - LineNo() < before.lineCount() || part.afterEnd - LineNo() < after.lineCount()) return {part};
    const auto [head, tail] = commonEnds(before, after);   // all is unknown: most of it may be equal
    LineHunk inner = part;
    inner.beforeBegin = before.lineAt(ByteOffset(head));
    inner.afterBegin = after.lineAt(ByteOffset(head));
    inner.beforeEnd = before.lineAt(before.size() - tail) + 1;
    inner.afterEnd = after.lineAt(after.size() - tail) + 1;
    if (inner == part) return {part};
    return hunksIn(before, after, inner, most, cancel);
  }
  const Snapshot from(before.bytes(bytesOfLines(before, part.beforeBegin, part.beforeEnd)), before.lineMode()),
      to(after.bytes(bytesOfLines(after, part.afterBegin, part.afterEnd)), after.lineMode());
  std::vector<LineHunk> hunks = diffLines(from, to, {}, cancel);
  for (LineHunk& hunk : hunks) {
    hunk.beforeBegin = hunk.beforeBegin + part.beforeBegin.value;
    hunk.beforeEnd = hunk.beforeEnd + part.beforeBegin.value;
    hunk.afterBegin = hunk.afterBegin + part.afterBegin.value;
    hunk.afterEnd = hunk.afterEnd + part.afterBegin.value;
  }
  return hunks;
}

Edit revertHunk(const Snapshot& before, const Snapshot& after, const LineHunk& hunk, std::string_view newLine) {
  // A text is its lines with breaks between: at the end of the text the break before goes with the lines, else the one behind.
  const bool toEnd = hunk.afterEnd.value >= after.lineCount() && hunk.beforeEnd.value >= before.lineCount();
  const auto range = [toEnd](const Snapshot& text, LineNo begin, LineNo end) {
    const auto start = [&](LineNo line) { return line.value < text.lineCount() ? text.lineStart(line) : text.size(); };
    if (!toEnd) return ByteRange{start(begin), start(end)};
    return ByteRange{begin.value > 0 ? text.lineEnd(begin - 1) : ByteOffset(0), text.size()};
  };
  std::string bytes = before.bytes(range(before, hunk.beforeBegin, hunk.beforeEnd));
  if (before.lineMode() != after.lineMode()) {
    const Snapshot lines(std::move(bytes), before.lineMode());
    bytes.clear();
    LineReader reader(lines);
    for (std::string_view line; reader.next(&line);) {
      if (reader.line().value > 0) bytes += newLine;
      bytes += line;
    }
  }
  return {range(after, hunk.afterBegin, hunk.afterEnd), std::move(bytes)};
}

}   // namespace text
