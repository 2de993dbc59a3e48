#include "text/line/LineReader.h"

#include <algorithm>

namespace text {

std::string beginOfLine(const Snapshot& text, LineNo line, std::int64_t most) {
  const ByteOffset start = text.lineStart(line);
  return text.bytes({start, std::min(text.lineEnd(line), start + most)});
}

LineReader::LineReader(Snapshot text, LineNo first)
    : text_(std::move(text)),
      next_(first.value),
      count_(text_.lineCount()),
      start_(text_.lineStart(first)),
      at_(start_),
      break_(text_.lineMode() == LineMode::cr ? '\r' : '\n') {}

bool LineReader::next(std::string_view* line) {
  if (next_ >= count_) return false;
  ++next_;
  start_ = at_;
  joined_.clear();
  bool joins = false;
  for (;;) {
    if (chunk_.empty()) chunk_ = text_.chunkAt(at_);
    const auto end = chunk_.find(break_);
    const auto part = chunk_.substr(0, end);   // all of it without a break, then the text or the chunk ends
    if (joins) joined_ += part;
    if (end != std::string_view::npos || chunk_.empty()) {
      *line = joins ? std::string_view(joined_) : part;
      const auto used = std::min(chunk_.size(), part.size() + 1);
      chunk_.remove_prefix(used);
      at_ += static_cast<std::int64_t>(used);
      if (end != std::string_view::npos && break_ == '\n' && line->ends_with('\r')) line->remove_suffix(1);
      return true;
    }
    if (!joins) joined_ = part;
    joins = true;
    at_ += static_cast<std::int64_t>(chunk_.size());
    chunk_ = {};
  }
}

}   // namespace text
