// A text with its recovery journal, whose writer works when the test lets time pass.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <deque>

#include "text/journal/Journal.h"
#include "text/journal/JournalRead.h"

namespace journal_desk {

using namespace text;

inline bool full() { return std::getenv("ZELKOR_FULL") != nullptr; }   // else some of many like cases

inline std::string bytesOf(const Snapshot& text) { return text.bytes({ByteOffset(0), text.size()}); }

inline Edit at(std::int64_t begin, std::int64_t end, std::string text) {
  return {{ByteOffset(begin), ByteOffset(end)}, std::move(text)};
}

inline void type(Document& document, std::string text) {
  const std::int64_t end = document.snapshot().size().value;
  document.apply(at(end, end, std::move(text)), {}, Join::typing);
}

// A folder, a writer whose clock stands still unless told, and a document with its journal. Each piece of the writer's slow work
// takes so many milliseconds.
struct Desk {
  explicit Desk(std::string folder, std::string base = {}, JournalAbout about = {}, std::int64_t slowMs = 0)
      : slowMs(slowMs),
        writer(
            folder, [this] { return now; }, [this](std::function<void()> work) { later(std::move(work)); }) {
    document.reset(Snapshot(std::move(base)));
    journal.emplace(writer, document);
    journal->saved(about);
  }
  ~Desk() {
    slowMs = 0;
    while (!slow.empty()) takeSlow();
  }
  void pass(std::int64_t ms) {   // time, with the writer at work whenever something is due
    for (const std::int64_t end = now + ms;; now += 10) {
      while (!slow.empty() && slow.front().first <= now) takeSlow();
      std::int64_t next = writer.work();
      if (!slow.empty()) next = next < 0 ? slow.front().first : std::min(next, slow.front().first);
      if (next < 0 || next > end || now > end) {
        now = end;
        break;
      }
      now = std::max(now, next - 10);
    }
    writer.work();
  }
  void later(std::function<void()> work) {
    if (slowMs == 0) return work();
    slow.emplace_back(std::max(now, slow.empty() ? 0 : slow.back().first) + slowMs, std::move(work));
  }
  void takeSlow() {
    const auto work = std::move(slow.front().second);
    slow.pop_front();
    work();
  }
  std::int64_t now = 1000, slowMs;
  std::deque<std::pair<std::int64_t, std::function<void()>>> slow;   // and when it will be done
  JournalWriter writer;
  Document document;
  std::optional<Journal> journal;
};

inline RecoveredText onlyOne(const std::string& folder) {
  const auto left = leftJournals(folder);
  if (left.size() != 1) {
    RecoveredText none;
    none.error = std::to_string(left.size()) + " journals";
    return none;
  }
  return left[0].recover();
}

}   // namespace journal_desk
