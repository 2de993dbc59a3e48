#include <algorithm>
#include <utility>

#include "text/fold/Blocks.h"

namespace text {

namespace {
constexpr std::int64_t kStretch = 32 << 10, kSmall = 8 << 10, kLargest = 8;   // bytes; kLargest: stretches in one
}   // namespace

void BlockIndex::setRules(std::shared_ptr<const FoldRules> rules) {
  rules_ = std::move(rules);
  entries_.clear();
}

void BlockIndex::edit(const Change& change) {
  if (change.reset) entries_.clear();
  if (entries_.empty() || change.spans.empty()) return;
  std::vector<Entry> edited;
  edited.reserve(entries_.size());
  std::size_t next = 0;
  std::int64_t line = 0;   // of the old text, behind the entries before `next`
  bool open = false;       // edited.back() holds an edit
  const auto take = [&](Entry& to) {
    to.bytes += entries_[next].bytes;
    to.lines += entries_[next].lines;
    line += entries_[next++].lines;
  };
  for (const Change::Span& span : change.spans) {
    if (!open || span.oldLine.value >= line) {
      for (; next < entries_.size() && line + entries_[next].lines <= span.oldLine.value; ++next) {
        line += entries_[next].lines;
        edited.push_back(std::move(entries_[next]));
      }
      edited.emplace_back();
      open = true;
    }
    while (next < entries_.size() && line <= span.oldLastLine().value) take(edited.back());
    edited.back().bytes += span.inserted - span.removed;
    edited.back().lines += span.linesInserted - span.linesRemoved;
  }
  for (; next < entries_.size(); ++next) edited.push_back(std::move(entries_[next]));
  entries_ = std::move(edited);
}

bool BlockIndex::update(const Snapshot& text, const std::atomic<bool>* cancel) {
  std::int64_t lines = 0;
  for (const Entry& entry : entries_) lines += entry.lines;
  if (lines != text.lineCount()) entries_ = {{nullptr, text.size().value, text.lineCount()}};
  std::vector<Entry> read;
  read.reserve(entries_.size());
  FoldState state;
  std::int64_t line = 0;
  for (std::size_t i = 0; i < entries_.size();) {
    if (cancel && *cancel) {
      for (; i < entries_.size(); ++i) read.push_back(std::move(entries_[i]));
      break;
    }
    if (entries_[i].stretch && entries_[i].stretch->in == state) {
      state = entries_[i].stretch->out;
      line += entries_[i].lines;
      read.push_back(std::move(entries_[i++]));
      continue;
    }
    std::int64_t bytes = entries_[i].bytes, end = line + entries_[i].lines;
    for (++i; i < entries_.size() && (bytes < kSmall || !entries_[i].stretch); ++i) {   // small ones are joined
      bytes += entries_[i].bytes;
      end += entries_[i].lines;
    }
    state = this->read(text, line, end, state, read, cancel);
    line = end;
  }
  entries_ = std::move(read);
  return !(cancel && *cancel);
}

FoldState BlockIndex::read(const Snapshot& text, std::int64_t line, std::int64_t end, FoldState state, std::vector<Entry>& to,
                           const std::atomic<bool>* cancel) {
  const char breaker = text.lineMode() == LineMode::lf ? '\n' : '\r';
  const auto startOf = [&](std::int64_t number) {
    return number < text.lineCount() ? text.lineStart(LineNo(number)) : text.size();
  };
  const ByteOffset stop = startOf(end);
  while (line < end) {
    const ByteOffset begin = startOf(line);
    if (cancel && *cancel) {
      to.push_back({nullptr, stop - begin, end - line});
      return state;
    }
    for (std::int64_t size = kStretch;; size *= 2) {
      std::int64_t last = begin + size >= stop ? end : std::max(line + 1, text.lineAt(begin + size).value);
      last = std::min({last, end, line + kMostStretchLines});
      const ByteOffset behind = startOf(last);
      FoldStretch stretch;
      bool whole = true;
      if (behind - begin > kLongest) {
        stretch.in = state;
        stretch.bytes = behind - begin;
        state = {};
      } else {
        stretch = scanStretch(*rules_, text.bytes({begin, behind}), breaker, state, &whole);
        if (!whole && last < end && size < kLargest * kStretch && last - line < kMostStretchLines) continue;
        state = stretch.out;
      }
      stretch.out = state;
      stretch.lines = last - line;
      to.push_back({std::make_shared<const FoldStretch>(std::move(stretch)), behind - begin, last - line});
      ++read_;
      line = last;
      break;
    }
  }
  return state;
}

std::shared_ptr<const Blocks> BlockIndex::blocks(const Snapshot& text) const {
  std::vector<Blocks::Part> parts;
  parts.reserve(entries_.size());
  std::int64_t byte = 0, line = 0, event = 0;
  for (const Entry& entry : entries_) {
    parts.push_back({entry.stretch, byte, line, event});
    byte += entry.bytes;
    line += entry.lines;
    event += static_cast<std::int64_t>(entry.stretch->events.size());
  }
  return std::make_shared<const Blocks>(text, rules_, std::move(parts));
}

}   // namespace text
