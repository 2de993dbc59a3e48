#include "text/diff/Merge.h"

#include <algorithm>

#include "text/line/LineReader.h"
#include "text/line/SameLines.h"

namespace text {
namespace {

// Reads the lines of one text in order, with their ends; what stands between is passed over.
class Lines {
 public:
  explicit Lines(const Snapshot& text) : text_(text), reader_(text) {}
  void to(LineNo line) {   // the line, which is not above the last one
    if (line - at_ > 100) reader_ = LineReader(text_, line), at_ = line;
    while (at_ <= line) reader_.next(&line_), ++at_;
  }
  std::string_view line() const { return line_; }
  LineBreak lineBreak() const {
    const ByteOffset end = reader_.start() + static_cast<std::int64_t>(line_.size());
    if (end == text_.size()) return LineBreak::none;
    if (text_.lineMode() == LineMode::cr) return LineBreak::cr;
    return text_.at(end) == '\r' ? LineBreak::crlf : LineBreak::lf;
  }

 private:
  const Snapshot& text_;
  LineReader reader_;
  std::string_view line_;
  LineNo at_;   // the next one
};

class Writer {
 public:
  Writer(LineMode mode, LineBreak usual) : mode_(mode), end_(usual) {}

  void add(std::string_view line, LineBreak end) {
    if (lines_ > 0) bytes_ += breakBytes(end_);
    bytes_ += line;
    if (end != LineBreak::none && (end == LineBreak::cr) == (mode_ == LineMode::cr)) end_ = end;
    ++lines_;
  }
  void addMark(std::string_view mark, const std::string& name) {
    add(std::string(mark) + (name.empty() ? "" : " ") + name, LineBreak::none);
  }
  LineNo lines() const { return LineNo(lines_); }
  Snapshot take() { return Snapshot(std::move(bytes_), mode_); }

 private:
  LineMode mode_;
  LineBreak end_;   // of the last line
  std::string bytes_;
  std::int64_t lines_ = 0;
};

}   // namespace

std::vector<MergeRegion> merge3(const Snapshot& base, const Snapshot& left, const Snapshot& right,
                                const std::atomic<bool>* cancel) {
  const std::vector<LineHunk> inLeft = diffLines(base, left, {}, cancel), inRight = diffLines(base, right, {}, cancel);
  if (cancel && *cancel) return {};
  std::vector<MergeRegion> regions;
  std::size_t l = 0, r = 0;
  MergeRegion done;   // its ends: what the regions cover
  const auto add = [&](MergeRegion region) {
    region.baseBegin = done.baseEnd, region.leftBegin = done.leftEnd, region.rightBegin = done.rightEnd;
    if (region.baseEnd == region.baseBegin && region.leftEnd == region.leftBegin && region.rightEnd == region.rightBegin) return;
    if (region.kind == MergeRegion::conflict &&
        sameLines(left, region.leftBegin, region.leftEnd, right, region.rightBegin, region.rightEnd))
      region.kind = MergeRegion::both;
    regions.push_back(done = region);
  };
  const auto addSame = [&](LineNo upTo) {
    const std::int64_t lines = upTo - done.baseEnd;
    add({MergeRegion::same, {}, upTo, {}, done.leftEnd + lines, {}, done.rightEnd + lines});
  };
  while (l < inLeft.size() || r < inRight.size()) {
    const LineNo never(base.lineCount() + 1);
    const LineNo nextLeft = l < inLeft.size() ? inLeft[l].beforeBegin : never;
    const LineNo nextRight = r < inRight.size() ? inRight[r].beforeBegin : never;
    addSame(std::min(nextLeft, nextRight));
    LineNo end = done.baseEnd;
    const std::size_t firstLeft = l, firstRight = r;
    for (bool grows = true; grows;) {
      grows = false;
      if (l < inLeft.size() && inLeft[l].beforeBegin <= end) end = std::max(end, inLeft[l++].beforeEnd), grows = true;
      if (r < inRight.size() && inRight[r].beforeBegin <= end) end = std::max(end, inRight[r++].beforeEnd), grows = true;
    }
    // Behind the last hunk of a side its lines are equal to those of the base.
    MergeRegion region{
        MergeRegion::conflict, {}, end, {}, done.leftEnd + (end - done.baseEnd), {}, done.rightEnd + (end - done.baseEnd)};
    if (l > firstLeft) region.leftEnd = inLeft[l - 1].afterEnd + (end - inLeft[l - 1].beforeEnd);
    else region.kind = MergeRegion::right;
    if (r > firstRight) region.rightEnd = inRight[r - 1].afterEnd + (end - inRight[r - 1].beforeEnd);
    else region.kind = MergeRegion::left;
    add(region);
  }
  addSame(LineNo(base.lineCount()));
  return regions;
}

MergedText mergedText(const Snapshot& base, const Snapshot& left, const Snapshot& right, const std::vector<MergeRegion>& regions,
                      const MergeNames& names) {
  MergedText merged;
  const LineBreak first = left.lineBreak(LineNo(0));
  Writer out(left.lineMode(), left.lineMode() == LineMode::cr ? LineBreak::cr : first == LineBreak::none ? LineBreak::lf : first);
  Lines inBase(base), inLeft(left), inRight(right);
  const auto copy = [&](Lines& from, LineNo begin, LineNo end) {
    for (LineNo line = begin; line < end; ++line) {
      from.to(line);
      out.add(from.line(), from.lineBreak());
    }
  };
  for (const MergeRegion& region : regions) {
    merged.starts.push_back(out.lines());
    switch (region.kind) {
      case MergeRegion::same:
        for (std::int64_t i = 0; i < region.baseEnd - region.baseBegin; ++i) {
          inBase.to(region.baseBegin + i), inLeft.to(region.leftBegin + i), inRight.to(region.rightBegin + i);
          const LineBreak was = inBase.lineBreak(), l = inLeft.lineBreak(), r = inRight.lineBreak();
          const bool ends = was != LineBreak::none && l != LineBreak::none && r != LineBreak::none;
          if (ends && l != r && l != was && r != was) ++merged.lineEndConflicts;
          out.add(inLeft.line(), l == was ? r : l);
        }
        break;
      case MergeRegion::left:
      case MergeRegion::both: copy(inLeft, region.leftBegin, region.leftEnd); break;
      case MergeRegion::right: copy(inRight, region.rightBegin, region.rightEnd); break;
      case MergeRegion::conflict:
        ++merged.conflicts;
        out.addMark("<<<<<<<", names.left);
        copy(inLeft, region.leftBegin, region.leftEnd);
        out.addMark("|||||||", names.base);
        copy(inBase, region.baseBegin, region.baseEnd);
        out.addMark("=======", {});
        copy(inRight, region.rightBegin, region.rightEnd);
        out.addMark(">>>>>>>", names.right);
    }
  }
  merged.text = out.take();
  return merged;
}

}   // namespace text
