#include "text/diff/EditsBetween.h"

#include <algorithm>

#include "text/diff/LineDiff.h"
#include "text/store/CommonEnds.h"

namespace text {
namespace {

constexpr std::int64_t kComparedByLines = 16 << 20;

// The start of line `line`; that behind the last line is the end of the text.
std::int64_t startOf(const Snapshot& text, LineNo line) {
  return (line.value < text.lineCount() ? text.lineStart(line) : text.size()).value;
}

// The edits, with those that touch as one.
class Edits {
 public:
  Edits(std::string_view before, std::string_view after, std::int64_t offset) : before_(before), after_(after), offset_(offset) {}
  void replace(std::int64_t begin, std::int64_t end, std::int64_t from, std::int64_t to) {   // in `before`, by that part of `after`
    const auto part = after_.substr(std::size_t(from), std::size_t(to - from));
    if (before_.substr(std::size_t(begin), std::size_t(end - begin)) == part) return;
    const ByteRange range{ByteOffset(offset_ + begin), ByteOffset(offset_ + end)};
    if (!all.empty() && all.back().range.end == range.begin) {
      all.back().range.end = range.end;
      all.back().text += part;
    } else {
      all.push_back({range, std::string(part)});
    }
  }
  std::vector<Edit> all;

 private:
  const std::string_view before_, after_;
  const std::int64_t offset_;
};

}   // namespace

std::vector<Edit> editsBetween(const Snapshot& before, const Snapshot& after, const std::atomic<bool>* cancel) {
  const auto [head, tail] = commonEnds(before, after);
  const ByteRange old{ByteOffset(head), before.size() - tail}, now{ByteOffset(head), after.size() - tail};
  if (old.begin == old.end && now.begin == now.end) return {};
  if (std::max(old.end - old.begin, now.end - now.begin) > kComparedByLines || before.lineMode() != after.lineMode())
    return {{old, after.bytes(now)}};

  // The part that differs, as whole lines.
  const std::int64_t begin = before.lineStart(before.lineAt(old.begin)).value;
  const auto end = [](const Snapshot& text, ByteOffset at) { return text.lineEndWithBreak(text.lineAt(at)); };
  const std::int64_t more = std::max(end(before, old.end) - old.end, end(after, now.end) - now.end);
  const std::string a = before.bytes({ByteOffset(begin), std::min(old.end + more, before.size())}),
                    b = after.bytes({ByteOffset(begin), std::min(now.end + more, after.size())});
  const Snapshot from(std::string(a), before.lineMode()), to(std::string(b), after.lineMode());
  Edits edits(a, b, begin);
  LineNo line, other;
  const auto unchangedUpTo = [&](LineNo upTo) {   // line by line, as the breaks may differ
    const std::int64_t first = startOf(from, line), last = startOf(from, upTo), otherFirst = startOf(to, other);
    const std::int64_t otherLast = startOf(to, LineNo(other.value + (upTo - line)));
    if (a.compare(std::size_t(first), std::size_t(last - first), b, std::size_t(otherFirst), std::size_t(otherLast - otherFirst)) ==
        0)
      return;
    for (; line < upTo; ++line.value, ++other.value) {
      const std::int64_t lineEnd = from.lineEnd(line).value, otherEnd = to.lineEnd(other).value;
      edits.replace(startOf(from, line), lineEnd, startOf(to, other), otherEnd);
      edits.replace(lineEnd, from.lineEndWithBreak(line).value, otherEnd, to.lineEndWithBreak(other).value);
    }
  };
  const std::vector<LineHunk> hunks = diffLines(from, to, {}, cancel);
  if (cancel && *cancel) return {};   // then they do not tell which lines are the same
  for (const LineHunk& hunk : hunks) {
    unchangedUpTo(hunk.beforeBegin);
    edits.replace(startOf(from, hunk.beforeBegin), startOf(from, hunk.beforeEnd), startOf(to, hunk.afterBegin),
                  startOf(to, hunk.afterEnd));
    line = hunk.beforeEnd;
    other = hunk.afterEnd;
  }
  unchangedUpTo(LineNo(from.lineCount()));
  return std::move(edits.all);
}

}   // namespace text
