#include "text/line/LineMap.h"

#include <algorithm>
#include <new>
#include <string>
#include <utility>

#include "text/line/Chars.h"
#include "text/store/Tree.h"

namespace text {

namespace {

constexpr std::int64_t kStep = 4 * 1024;        // bytes of a stretch
constexpr std::int64_t kReading = 256 * 1024;   // bytes counted at a time
constexpr std::size_t kEntries = 256;

std::size_t index(std::int64_t n) { return static_cast<std::size_t>(n); }

// A part of a text: in place where it lies together, else a copy.
class Part {
 public:
  Part(const Snapshot& text, ByteOffset from, ByteOffset to) : view_(text.chunkAt(from)) {
    const std::size_t length = index(to - from);
    if (view_.size() < length) view_ = copy_ = text.bytes({from, to});
    else view_ = view_.substr(0, length);
  }
  Part(const Part&) = delete;
  Part& operator=(const Part&) = delete;
  std::string_view view() const { return view_; }

 private:
  std::string copy_;
  std::string_view view_;
};

double stops(int tabSize, const Widths* widths) { return tabSize * (widths ? widths->tabUnit : 1); }

}   // namespace

void LineSurvey::run(const std::function<bool(std::int64_t)>& goesOn) {
  for (std::int64_t at = from; at < to;) {
    const std::int64_t stop = std::min(to, at + kReading);
    const ByteOffset seen = std::min(end, start + stop + segmentAhead);
    const Part part(text, start + at, seen);
    const auto along = [&](const LinePlace& place, std::int64_t byte, bool overTabs) {
      const auto rest = part.view().substr(index(place.byte - at));
      return walk(rest, seen == end, place, LinePlace::atByte(byte), tabSize, widths, overTabs);
    };
    std::int64_t here = at;
    while (here < stop) {
      const std::int64_t target = std::min(here + kStep, stop);
      LineStretch s;
      s.begin = here;
      LinePlace place = along({here, 0, 0}, target, false);
      s.lead = place.x;
      if (place.byte < target && part.view()[index(place.byte - at)] == '\t') {
        place = along({place.byte + 1, place.units + 1, 0}, target, true);
        s.rest = place.x;
      }
      if (place.byte == here) break;   // a segment goes on behind `to`
      s.bytes = static_cast<std::int32_t>(place.byte - here);
      s.units = static_cast<std::int32_t>(place.units);
      found.push_back(s);
      here = place.byte;
    }
    if (here == at || !goesOn(here - from)) return;
    at = here;
  }
}

void LineMaps::measureIn(const Widths* widths) {
  widths_ = widths;
  entries_.clear();
}

LineMaps::Entry& LineMaps::entryOf(LineNo line, ByteOffset start, int tabSize) {
  const auto it =
      std::find_if(entries_.begin(), entries_.end(), [&](const Entry& e) { return e.line == line && e.tabSize == tabSize; });
  if (it != entries_.end()) {
    std::rotate(it, it + 1, entries_.end());
  } else {
    if (entries_.size() >= kEntries) entries_.erase(entries_.begin());
    entries_.push_back({line, start, tabSize, {}, 0});
  }
  return entries_.back();
}

void LineMaps::onChange(const Change& change, const Snapshot& now) noexcept {
  try {
    if (change.reset) entries_.clear();
    else move(change, now);
  } catch (const std::bad_alloc&) { entries_.clear(); }
}

// An edit within one line, as typing makes. What settled before it stays so.
void LineMaps::moveWithin(Entry& e, const Change::Span& span, ByteOffset start) {
  const auto touched = std::partition_point(e.stretches.begin(), e.stretches.end(), [&](const LineStretch& s) {
    return e.start + (s.begin + s.bytes + segmentAhead) <= span.oldBegin;
  });
  const auto behind =
      std::partition_point(touched, e.stretches.end(), [&](const LineStretch& s) { return e.start + s.begin < span.oldEnd(); });
  const std::int64_t moved = (span.end() - span.oldEnd()) + (e.start - start);
  for (auto s = behind; s != e.stretches.end(); ++s) s->begin += moved;
  e.settled = std::min(e.settled, static_cast<std::size_t>(touched - e.stretches.begin()));
  e.stretches.erase(touched, behind);
  e.start = start;
}

void LineMaps::move(const Change& change, const Snapshot& now) {
  std::vector<Entry> old;
  const bool within = change.spans.size() == 1 && change.spans[0].linesRemoved == 0 && change.spans[0].linesInserted == 0;
  for (Entry& e : entries_) {
    if (!change.touching(e.line)) {
      e.line += change.linesGrownAbove(e.line);
      e.start = now.lineStart(e.line);
    } else if (within) {
      moveWithin(e, change.spans[0], now.lineStart(e.line));
    } else {
      old.push_back(std::exchange(e, Entry{}));
      e.tabSize = 0;
    }
  }
  std::erase_if(entries_, [](const Entry& e) { return e.tabSize == 0; });
  for (const Entry& e : old) {
    auto span = std::partition_point(change.spans.begin(), change.spans.end(),
                                     [&](const Change::Span& s) { return s.oldEnd() <= e.start; });
    Entry* to = nullptr;
    for (LineStretch s : e.stretches) {
      const ByteOffset begin = e.start + s.begin;
      while (span != change.spans.end() && span->oldEnd() <= begin) ++span;
      if (span != change.spans.end() && span->oldBegin < begin + s.bytes + segmentAhead) continue;
      const Change::Span* const above = span == change.spans.begin() ? nullptr : &*std::prev(span);
      const LineNo line = e.line + (above ? above->linesGrown() : 0);
      if (!to || to->line != line) {
        to = &entryOf(line, now.lineStart(line), e.tabSize);
        to->settled = 0;
      }
      s.begin = (above ? above->end() + (begin - above->oldEnd()) : begin) - to->start;
      to->stretches.push_back(s);
    }
  }
  for (Entry& e : entries_)   // those of two lines that were joined
    if (!std::is_sorted(e.stretches.begin(), e.stretches.end(), [](auto& a, auto& b) { return a.begin < b.begin; }))
      std::sort(e.stretches.begin(), e.stretches.end(), [](auto& a, auto& b) { return a.begin < b.begin; });
}

void LineMaps::checkInvariants(const Snapshot& now) const {
  for (const Entry& e : entries_) {
    engine::require(e.line.value < now.lineCount() && e.start == now.lineStart(e.line), "a known line begins where it is known to");
    engine::require(e.settled <= e.stretches.size(), "what settled is known");
    const std::int64_t length = now.lineEnd(e.line) - e.start;
    std::int64_t end = 0;
    for (std::size_t i = 0; i < e.stretches.size(); ++i) {
      const LineStretch& s = e.stretches[i];
      engine::require(s.bytes > 0 && s.begin + s.bytes <= length, "a stretch within its line");
      engine::require(i < e.settled ? s.begin == end : s.begin >= end, "stretches follow each other");
      end = s.begin + s.bytes;
    }
  }
}

LineMap::LineMap(LineMaps& maps, const Snapshot& text, LineNo line, int tabSize)
    : maps_(maps),
      text_(text),
      line_(line),
      tabSize_(std::max(tabSize, 1)),
      start_(text.lineStart(line)),
      length_(text.lineEnd(line) - start_) {}

LinePlace LineMap::endOf(const LineMaps::Entry& e) const {
  if (e.settled == 0) return {};
  const LineStretch& s = e.stretches[e.settled - 1];
  const double lead = s.xAt + s.lead;
  return {s.begin + s.bytes, s.unitsAt + s.units, s.rest < 0 ? lead : tabStop(lead, stops(tabSize_, maps_.widths_)) + s.rest};
}

void LineMap::settle(LineMaps::Entry& e) const {
  for (LinePlace end = endOf(e); e.settled < e.stretches.size() && e.stretches[e.settled].begin == end.byte; end = endOf(e)) {
    LineStretch& s = e.stretches[e.settled++];
    s.unitsAt = end.units;
    s.xAt = end.x;
  }
}

LinePlace LineMap::counted() {
  if (!isLong()) return {};
  settle(entry());
  return endOf(entry());
}

bool LineMap::reach(const LinePlace& most, std::int64_t budget) {
  if (!isLong()) return true;
  LineMaps::Entry& e = entry();
  settle(e);
  for (LinePlace end = endOf(e); end.byte < length_ && end.within(most); end = endOf(e)) {
    if (budget <= 0) return false;
    LineSurvey part = survey(std::min(end.byte + kReading, length_));
    part.run([](std::int64_t) { return true; });
    budget -= part.found.empty() ? kStep : part.found.back().begin + part.found.back().bytes - part.from;
    adopt(std::move(part));
  }
  return true;
}

LineSurvey LineMap::survey(std::int64_t byte) {
  LineMaps::Entry& e = entry();
  settle(e);
  LineSurvey all{text_, start_, start_ + length_, endOf(e).byte, std::min(byte, length_), tabSize_, maps_.widths_, {}};
  if (e.settled < e.stretches.size()) all.to = std::min(all.to, e.stretches[e.settled].begin);
  return all;
}

void LineMap::adopt(LineSurvey survey) {
  LineMaps::Entry& e = entry();
  if (!survey.text.sameAs(text_) || survey.widths != maps_.widths_ || survey.tabSize != tabSize_) return;
  const std::int64_t from = endOf(e).byte;
  if (survey.from != from) return;
  const std::int64_t to = survey.found.empty() ? from : survey.found.back().begin + survey.found.back().bytes;
  // What is known behind it goes on from there, unless its first segment has begun before.
  const auto hole = e.stretches.begin() + static_cast<std::ptrdiff_t>(e.settled);
  auto known = hole;
  while (known != e.stretches.end() && (known->begin < to || (to < survey.to && known->begin <= survey.to))) ++known;
  e.stretches.insert(e.stretches.erase(hole, known), survey.found.begin(), survey.found.end());
  settle(e);
}

LinePlace LineMap::before(const LinePlace& most) {
  reach(most, LinePlace::any);
  if (!isLong()) return {};
  const LineMaps::Entry& e = entry();
  const auto end = e.stretches.begin() + static_cast<std::ptrdiff_t>(e.settled);
  const auto beyond = std::partition_point(e.stretches.begin(), end, [&](const LineStretch& s) {
    return LinePlace{s.begin, s.unitsAt, s.xAt}.within(most);
  });
  if (beyond == e.stretches.begin()) return {};
  const LineStretch& s = *std::prev(beyond);
  return {s.begin, s.unitsAt, s.xAt};
}

LinePlace LineMap::at(const LinePlace& most) {
  const LinePlace from = before(most);
  const std::int64_t end = std::min(length_, isLong() ? std::min(from.byte + kStep, most.byte) + 2 * segmentAhead : length_);
  const Part part(text_, start_ + from.byte, start_ + std::max(end, from.byte));
  return walk(part.view(), end == length_, from, most, tabSize_, maps_.widths_);
}

LinePlace LineMap::behind(const LinePlace& place) {
  const std::int64_t end = std::min(length_, place.byte + 2 * segmentAhead);
  const Part part(text_, start_ + place.byte, start_ + end);
  const int length = segmentAt(part.view(), 0, 1).bytes;
  return walk(part.view(), end == length_, place, LinePlace::atByte(place.byte + length), tabSize_, maps_.widths_);
}

std::string LineMap::bytes(std::int64_t from, std::int64_t to) const {
  return text_.bytes({start_ + from, start_ + std::clamp(to, from, length_)});
}

CharColumn LineMap::columnOf(std::int64_t byte) {
  byte = std::clamp<std::int64_t>(byte, 0, length_);
  const LinePlace from = before(LinePlace::atByte(byte));
  const Part part(text_, start_ + from.byte, start_ + std::min(length_, byte + 3));
  return CharColumn(from.units) + text::columnOf(part.view(), byte - from.byte).value;
}

std::int64_t LineMap::byteOfColumn(CharColumn column) {
  const LinePlace from = before(LinePlace::atUnits(std::max<std::int64_t>(column.value, 0)));
  const std::int64_t end = isLong() ? std::min(length_, from.byte + kStep + segmentAhead) : length_;
  const Part part(text_, start_ + from.byte, start_ + end);
  return from.byte + text::byteOfColumn(part.view(), CharColumn(column.value - from.units));
}

}   // namespace text
