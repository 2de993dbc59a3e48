#include "change/compare/Hunks.h"

#include <algorithm>
#include <cmath>

#include "text/line/LineReader.h"

namespace compare {

using text::ByteOffset;
using text::LineHunk;
using text::LineNo;

Lines linesOf(const LineHunk& hunk, Side side) {
  return side == kLeft ? Lines{hunk.beforeBegin.value, hunk.beforeEnd.value} : Lines{hunk.afterBegin.value, hunk.afterEnd.value};
}

void setLines(LineHunk& hunk, Side side, Lines lines) {
  (side == kLeft ? hunk.beforeBegin : hunk.afterBegin) = LineNo(lines.begin);
  (side == kLeft ? hunk.beforeEnd : hunk.afterEnd) = LineNo(lines.end);
}

std::size_t hunkFrom(const Hunks& hunks, Side side, std::int64_t line) {
  const auto before = [side](const LineHunk& hunk, std::int64_t at) {
    const Lines lines = linesOf(hunk, side);
    return lines.empty() ? lines.begin < at : lines.end <= at;
  };
  return static_cast<std::size_t>(std::lower_bound(hunks.begin(), hunks.end(), line, before) - hunks.begin());
}

double placeBeside(const Hunks& hunks, Side of, double line) {
  const auto behind = std::upper_bound(hunks.begin(), hunks.end(), line, [of](double at, const LineHunk& hunk) {
    return at < static_cast<double>(linesOf(hunk, of).begin);
  });
  if (behind == hunks.begin()) return line;
  const Lines here = linesOf(*(behind - 1), of), there = linesOf(*(behind - 1), other(of));
  const double into = line - static_cast<double>(here.begin);
  if (line >= static_cast<double>(here.end)) return static_cast<double>(there.end) + line - static_cast<double>(here.end);
  return static_cast<double>(there.begin) + into * static_cast<double>(there.count()) / static_cast<double>(here.count());
}

std::int64_t topBeside(const Hunks& hunks, Side of, const ScrollState& here, const ScrollState& there) {
  const std::int64_t visible = std::max(1, here.height / here.lineHeight);
  const double top = static_cast<double>(here.top), height = here.height,
               most = static_cast<double>(std::max<std::int64_t>(0, here.lines - visible) * here.lineHeight);
  double down = 0;   // pixels from the upper edge to the place that decides
  if (most > 0) down = most <= height ? height * top / most : std::max(std::min(height / 2, top), height - (most - top));
  const double place = placeBeside(hunks, of, (top + down) / here.lineHeight);
  const double scale = height > 0 ? there.height / height : 1;
  return static_cast<std::int64_t>(std::llround(place * there.lineHeight - down * scale));
}

namespace {

// The part of the other side that stands beside a part of a hunk.
Lines partBeside(const Lines& part, const Lines& whole, const Lines& beside) {
  Lines found;
  found.begin = part.begin == whole.begin ? beside.begin : std::min(beside.end, beside.begin + (part.begin - whole.begin));
  found.end = part.end == whole.end ? beside.end : std::min(beside.end, beside.begin + (part.end - whole.begin));
  return found;
}

}   // namespace

text::Edit exchangeLines(const text::Snapshot& to, const Lines& old, const text::Snapshot& from, const Lines& fresh,
                         const text::NewLines& newLines) {
  const std::int64_t count = to.lineCount();
  const std::string lineBreak(newLines.at(to, LineNo(std::min(old.begin, count - 1))));
  const bool toEnd = old.end >= count;
  std::string bytes;
  std::optional<text::LineReader> reader;
  if (!fresh.empty()) reader.emplace(from, LineNo(fresh.begin));
  std::string_view bare;
  for (std::int64_t line = fresh.begin; line < fresh.end && reader->next(&bare); ++line) {
    if (toEnd && (line > fresh.begin || old.begin >= count)) bytes += lineBreak;
    bytes += bare;
    if (!toEnd) bytes += lineBreak;
  }
  // A text is its lines with breaks between: at the end of the text the break before goes with a line, else the one behind.
  const auto startOf = [&](std::int64_t line) { return line < count ? to.lineStart(LineNo(line)) : to.size(); };
  ByteOffset begin = startOf(old.begin);
  if (toEnd && fresh.empty() && old.begin > 0 && !old.empty()) begin = to.lineEnd(LineNo(old.begin - 1));
  return {{begin, toEnd ? to.size() : startOf(old.end)}, std::move(bytes)};
}

std::vector<text::Edit> takeOver(const Hunks& hunks, const std::array<text::Snapshot, 2>& texts, const text::NewLines& newLines,
                                 const TakeOver& what) {
  const Side to = other(what.from);
  std::vector<text::Edit> edits;
  std::int64_t end = what.chosen ? what.chosen->end : 0;
  if (what.chosen && end >= texts[what.chosenOn].lineCount()) end = texts[what.chosenOn].lineCount() + 1;   // what is missing there
  const std::size_t first = what.only ? *what.only : what.chosen ? hunkFrom(hunks, what.chosenOn, what.chosen->begin) : 0;
  for (std::size_t i = first; i < hunks.size() && (!what.only || i == *what.only); ++i) {
    if (hunks[i].nothing && !what.only) continue;
    Lines old = linesOf(hunks[i], to), fresh = linesOf(hunks[i], what.from);
    if (what.chosen) {
      const Lines whole = linesOf(hunks[i], what.chosenOn);
      if (whole.begin >= end) break;
      const Lines part{std::max(whole.begin, what.chosen->begin), std::min(whole.end, end)};
      if (what.chosenOn == to) fresh = partBeside(part, whole, fresh), old = part;
      else old = partBeside(part, whole, old), fresh = part;
    }
    if (!old.empty() || !fresh.empty()) edits.push_back(exchangeLines(texts[to], old, texts[what.from], fresh, newLines));
  }
  return edits;
}

void moveHunks(Hunks& hunks, Side side, const text::Change& change, const text::Snapshot& now, std::int64_t before) {
  if (change.reset) return hunks.clear();
  const auto breaks = [](const text::Change::Span& span) { return span.linesRemoved + span.linesInserted > 0; };
  if (std::none_of(change.spans.begin(), change.spans.end(), breaks)) return;
  const auto moved = [&](std::int64_t line, text::Bias bias) {
    if (line >= before) return now.lineCount();
    if (!change.touching(LineNo(line))) return line + change.linesGrownAbove(LineNo(line));
    return change.mapLine(LineNo(line), now, bias).value;
  };
  std::int64_t last = 0;
  for (LineHunk& hunk : hunks) {
    Lines lines = linesOf(hunk, side);
    lines.begin = std::max(last, moved(lines.begin, text::Bias::left));
    last = lines.end = std::max(lines.begin, moved(lines.end, text::Bias::right));
    setLines(hunk, side, lines);
  }
  std::erase_if(hunks, [](const LineHunk& hunk) { return linesOf(hunk, kLeft).empty() && linesOf(hunk, kRight).empty(); });
}

}   // namespace compare
