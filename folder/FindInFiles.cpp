#include "folder/FindInFiles.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <condition_variable>
#include <map>
#include <mutex>
#include <thread>

#include "text/line/Chars.h"

namespace folder {

using text::ByteOffset;
using text::LineNo;
using text::Snapshot;

namespace {

constexpr std::size_t kBatch = 16;    // names handed to a worker at once
constexpr std::size_t kWindow = 64;   // batches that may be under way or wait for an older one
constexpr std::size_t kNames = 20;    // of skipped files

// A text with line breaks as the expression that finds it with line breaks of every kind, also mixed.
bool overLines(std::string_view what, const text::SearchOptions& options) {
  return !options.regex && what.find('\n') != std::string_view::npos;
}
std::string expressionOf(std::string_view what) {
  std::string out;
  for (std::size_t i = 0; i < what.size(); ++i) {
    if (what.substr(i, 2) == "\r\n") ++i;
    const char c = what[i];
    if (c == '\n') out += "\\n";
    else if (c == '\r') out += "\\x0d";
    else if (c == '\0') out += "\\x00";
    else if (c > ' ' && c < 127 && !std::isalnum(static_cast<unsigned char>(c)) && c != '_') out.append(1, '\\').append(1, c);
    else out += c;
  }
  return out;
}

// The lines of a text from its beginning on. A text in one piece is read straight ahead: a tree search for each line costs more than all
// else that is done for a hit.
class Lines {
 public:
  explicit Lines(const Snapshot& text) : text_(text), size_(text.size().value) {
    if (text.lineMode() != text::LineMode::lf) return;
    const std::string_view first = text.chunkAt(ByteOffset(0));
    if (static_cast<std::int64_t>(first.size()) == size_) whole_ = first;
  }
  std::int64_t line = 0;   // from 0
  std::int64_t begin = 0, end = 0,
               next = -1;   // end: before the break; next: behind it, and behind the text's end in the last line

  void moveTo(std::int64_t offset) {   // not before the line that it is in
    if (next >= 0 && offset < next) return;
    if (whole_.empty()) {
      const LineNo at = text_.lineAt(ByteOffset(offset));
      line = at.value;
      begin = text_.lineStart(at).value;
      end = text_.lineEnd(at).value;
      next = text_.lineEndWithBreak(at).value + (line + 1 == text_.lineCount() ? 1 : 0);
      return;
    }
    if (next < 0) set(0);
    while (offset >= next) {
      ++line;
      set(next);
    }
  }
  std::string bytes(std::int64_t from, std::int64_t to) const {
    return whole_.empty() ? text_.bytes({ByteOffset(from), ByteOffset(to)})
                          : std::string(whole_.substr(static_cast<std::size_t>(from), static_cast<std::size_t>(to - from)));
  }
  std::int64_t charactersBefore(std::int64_t offset) const {
    if (whole_.empty()) return characters(text_.bytes({ByteOffset(begin), ByteOffset(offset)}));
    return characters(whole_.substr(static_cast<std::size_t>(begin), static_cast<std::size_t>(offset - begin)));
  }
  // As a row keeps it: all of it, or what is around `hit`.
  std::string shown(std::int64_t hit, std::int64_t longest, bool* cut) const {
    if (longest <= 0 || end - begin <= longest) return bytes(begin, end);
    *cut = true;
    std::int64_t from = begin, to = end;
    if (hit - from > longest / 2) from = std::min(hit - longest / 4, end - longest);
    to = std::min(end, from + longest);
    std::string part = bytes(from, to);
    // No half characters.
    std::size_t front = 0, back = part.size();
    while (from > begin && front < back && (static_cast<unsigned char>(part[front]) & 0xC0) == 0x80) ++front;
    while (to < end && back > front && (static_cast<unsigned char>(part[back - 1]) & 0xC0) == 0x80) --back;
    if (to < end && back > front && static_cast<unsigned char>(part[back - 1]) >= 0xC0) --back;
    return (from > begin ? "..." : "") + part.substr(front, back - front) + (to < end ? "..." : "");
  }

 private:
  void set(std::int64_t from) {
    begin = from;
    const auto found = whole_.find('\n', static_cast<std::size_t>(from));
    end = found == std::string_view::npos ? size_ : static_cast<std::int64_t>(found);
    next = end + 1;
    if (end < size_ && end > begin && whole_[static_cast<std::size_t>(end) - 1] == '\r') --end;
  }
  const Snapshot& text_;
  std::int64_t size_;
  std::string_view whole_;
};

}   // namespace

std::int64_t characters(std::string_view bytes) {
  std::int64_t count = 0;
  for (; !bytes.empty(); ++count) bytes.remove_prefix(static_cast<std::size_t>(text::decode(bytes).bytes));
  return count;
}

// What is searched for ------------------------------------------------------------------------------------------------

FindText::FindText(std::string what, const text::SearchOptions& options)
    : what_(std::move(what)),
      options_(options),
      needles_(what_, options),
      finder_(overLines(what_, options) ? text::Finder(expressionOf(what_), {options.matchCase, options.wholeWord, true})
                                        : text::Finder(what_, options)) {
  if (overLines(what_, options)) literal_.emplace(what_, options);
}

text::SearchEnd FindText::each(const Snapshot& text, const std::function<bool(const text::Match&)>& take,
                               text::SearchControl* control) const {
  const bool endIsNoLine = text.size() > ByteOffset(0) && text.lineStart(LineNo(text.lineCount() - 1)) == text.size();
  return finder_.each(
      text, {ByteOffset(0), text.size()},
      [&](const text::Match& match) { return (endIsNoLine && match.range.begin == text.size()) || take(match); }, control);
}

// One text ------------------------------------------------------------------------------------------------------------

TextFinds findRows(const Snapshot& text, const FindText& what, const FindRules& rules, text::SearchControl* control) {
  TextFinds result;
  Lines lines(text);
  std::int64_t lastLine = -1;   // of the newest row
  const auto take = [&](const text::Match& match) {
    if (rules.mostHits > 0 && result.hits >= rules.mostHits) {
      result.cut = true;
      return false;
    }
    ++result.hits;
    const std::int64_t begin = match.range.begin.value, end = match.range.end.value;
    lines.moveTo(begin);
    if (lines.line != lastLine) {
      FoundRow& row = result.rows.emplace_back();
      row.line = lines.line + 1;
      row.column = lines.charactersBefore(begin) + 1;
      row.lines = lines.shown(begin, rules.longestLine, &row.cut);
    }
    FoundRow& row = result.rows.back();
    ++row.hits;
    // The line break that ends a match does not bring the next line in.
    while (end > lines.next) {
      lines.moveTo(lines.next);
      if (rules.mostLines > 0 && row.more + 1 >= rules.mostLines) {
        row.cut = true;
        lines.moveTo(end - 1);
        break;
      }
      ++row.more;
      row.lines.append(1, '\n').append(lines.shown(lines.begin, rules.longestLine, &row.cut));
    }
    lastLine = lines.line;
    return true;
  };
  const text::SearchEnd end = what.each(text, take, control);
  result.error = end.error;
  return result;
}

// Many files ----------------------------------------------------------------------------------------------------------

namespace {

class Run {
 public:
  Run(const FindText& what, const FindRules& rules, const FindTake& take, text::SearchControl& control, FindProgress* progress)
      : what_(what), rules_(rules), take_(take), control_(control), progress_(progress) {}

  FindSummary run(const FindSource& source) {
    unsigned count = rules_.threads > 0 ? rules_.threads : std::max(1u, std::thread::hardware_concurrency());
    std::vector<std::thread> workers;
    workers.reserve(count);
    try {
      for (unsigned i = 0; i < count; ++i) workers.emplace_back([this] { work(); });
    } catch (const std::exception&) {   // no thread is to be had, or no memory for it: those there are do it
      if (workers.empty()) {
        summary_.error = "No thread could be started.";
        return std::move(summary_);
      }
    }
    try {
      source([this](FindItem item) { return give(std::move(item)); });
      if (!pending_.empty()) push();
    } catch (...) {
      finish(workers, true);
      throw;
    }
    finish(workers, false);
    summary_.cancelled = control_.cancel && !summary_.cut;
    if (failure_) std::rethrow_exception(failure_);
    return std::move(summary_);
  }

 private:
  struct Batch {
    std::size_t number = 0;
    std::vector<FindItem> items;
  };

  bool over() const { return ended_.load(std::memory_order_relaxed) || control_.cancel.load(std::memory_order_relaxed); }

  bool give(FindItem item) {
    if (over()) return false;
    pending_.push_back(std::move(item));
    // Small ones first: the user waits for the first results.
    if (pending_.size() >= std::min(kBatch, 1 + given_ / 2)) push();
    return !over();
  }

  void push() {
    std::unique_lock lock(mutex_);
    room_.wait(lock, [this] { return given_ - delivered_ < kWindow || over(); });
    waiting_.push_back({given_++, std::move(pending_)});
    pending_.clear();
    lock.unlock();
    filled_.notify_one();
  }

  void finish(std::vector<std::thread>& workers, bool stop) {
    {
      const std::lock_guard lock(mutex_);
      closed_ = true;
      if (stop) ended_ = true;
    }
    filled_.notify_all();
    for (auto& worker : workers) worker.join();
  }

  void work() {
    FileLook look(rules_.read);
    for (;;) {
      Batch batch;
      {
        std::unique_lock lock(mutex_);
        filled_.wait(lock, [this] { return !waiting_.empty() || closed_; });
        if (waiting_.empty()) return;
        batch = std::move(waiting_.front());
        waiting_.erase(waiting_.begin());
      }
      std::vector<FileFinds> finds;
      try {
        for (auto& item : batch.items) {
          if (over()) break;
          finds.push_back(one(look, std::move(item)));
        }
      } catch (...) { fail(); }
      deliver(batch.number, std::move(finds));
    }
  }

  FileFinds one(FileLook& look, FindItem item) {
    FileFinds file;
    file.path = std::move(item.path);
    FileLook::Text read;
    if (item.text) {
      read.bytes = item.text->size().value;
      read.text = std::move(item.text);
    } else {
      read = look.read(file.path, what_.needles());
    }
    file.bytes = read.bytes;
    file.skipped = read.skipped;
    file.why = std::move(read.why);
    if (read.text) try {
        TextFinds found = findRows(*read.text, what_, rules_, &control_);
        file.hits = found.hits;
        file.cut = found.cut;
        file.rows = std::move(found.rows);
        if (!found.error.empty()) {
          file.skipped = Skipped::gaveUp;
          file.why = std::move(found.error);
        }
      } catch (const std::bad_alloc&) {
        file.rows.clear();
        file.hits = 0;
        file.skipped = Skipped::tooLarge;
        file.why = "Out of memory";
      }
    return file;
  }

  void fail() {
    const std::lock_guard lock(mutex_);
    if (!failure_) failure_ = std::current_exception();
    ended_ = true;
  }

  // In order: who brings the one that all wait for hands out what waits behind it, too.
  void deliver(std::size_t number, std::vector<FileFinds> finds) {
    std::unique_lock lock(mutex_);
    done_.emplace(number, std::move(finds));
    if (delivering_) return;
    delivering_ = true;
    for (auto next = done_.begin(); next != done_.end() && next->first == delivered_; next = done_.begin()) {
      std::vector<FileFinds> mine = std::move(next->second);
      done_.erase(next);
      lock.unlock();
      try {
        for (auto& file : mine) count(std::move(file));
      } catch (...) { fail(); }
      lock.lock();
      ++delivered_;
      room_.notify_one();
    }
    delivering_ = false;
  }

  void count(FileFinds file) {
    if (summary_.cut) return;
    if (file.skipped == Skipped::none) ++summary_.files;
    summary_.bytes += file.bytes;
    if (progress_) progress_->files.store(summary_.files, std::memory_order_relaxed);
    if (file.skipped != Skipped::none) {
      ++summary_.skipped[static_cast<std::size_t>(file.skipped)];
      if (file.skipped != Skipped::binary && summary_.skippedNames.size() < kNames)
        summary_.skippedNames.emplace_back(file.path, file.why.empty() ? reason(file.skipped) : file.why);
    }
    if (file.rows.empty() && file.skipped == Skipped::none) return;
    if (rules_.mostHits > 0 && (file.cut || summary_.hits + file.hits > rules_.mostHits)) {
      // Rows stay whole.
      std::size_t kept = 0;
      file.hits = 0;
      while (kept < file.rows.size() && summary_.hits + file.hits + file.rows[kept].hits <= rules_.mostHits)
        file.hits += file.rows[kept++].hits;
      file.rows.resize(kept);
      file.cut = summary_.cut = true;
      ended_ = true;
    }
    summary_.hits += file.hits;
    if (progress_) progress_->hits.store(summary_.hits, std::memory_order_relaxed);
    summary_.filesWithHits += file.hits > 0;
    take_(std::move(file));
  }

  const FindText& what_;
  const FindRules& rules_;
  const FindTake& take_;
  text::SearchControl& control_;
  FindProgress* progress_;
  FindSummary summary_;
  std::vector<FindItem> pending_;

  std::mutex mutex_;
  std::condition_variable filled_, room_;
  std::vector<Batch> waiting_;
  std::map<std::size_t, std::vector<FileFinds>> done_;
  std::size_t given_ = 0, delivered_ = 0;
  bool closed_ = false, delivering_ = false;
  std::atomic<bool> ended_{false};
  std::exception_ptr failure_;
};

}   // namespace

FindSummary findInFiles(const FindText& what, const FindRules& rules, const FindSource& source, const FindTake& take,
                        text::SearchControl& control, FindProgress* progress) {
  if (!what.error().empty()) {
    FindSummary summary;
    summary.error = what.error();
    return summary;
  }
  return Run(what, rules, take, control, progress).run(source);
}

// Words ---------------------------------------------------------------------------------------------------------------

std::int64_t FindSummary::skippedInAll() const {
  std::int64_t all = 0;
  for (const auto count : skipped) all += count;
  return all;
}

std::string skippedText(const FindSummary& summary) {
  const std::int64_t all = summary.skippedInAll();
  if (all == 0) return {};
  std::string out = std::to_string(all) + (all == 1 ? " file skipped: " : " files skipped: ");
  bool first = true;
  for (std::size_t kind = 0; kind < summary.skipped.size(); ++kind) {
    if (summary.skipped[kind] == 0) continue;
    if (!first) out += ", ";
    out += std::to_string(summary.skipped[kind]) + " " + reason(static_cast<Skipped>(kind));
    first = false;
  }
  return out;
}

std::string shownPath(std::string_view path) {
  constexpr char kHex[] = "0123456789abcdef";
  std::string out;
  for (std::size_t i = 0; i < path.size(); ++i) {
    const auto b = static_cast<unsigned char>(path[i]);
    const unsigned char next = i + 1 < path.size() ? static_cast<unsigned char>(path[i + 1]) : 0;
    const bool odd = b < 0x20 || b == 0x7F || (b == ':' && next >= '0' && next <= '9') || (b == '\\' && next == 'x');
    if (!odd) out += path[i];
    else out.append("\\x").append(1, kHex[b >> 4]).append(1, kHex[b & 15]);
  }
  return out;
}

std::string pathOfShown(std::string_view shown) {
  std::string out;
  const auto digit = [](char c) { return c >= '0' && c <= '9' ? c - '0' : c >= 'a' && c <= 'f' ? c - 'a' + 10 : -1; };
  for (std::size_t i = 0; i < shown.size(); ++i) {
    const bool code = shown.substr(i, 2) == "\\x" && i + 3 < shown.size() && digit(shown[i + 2]) >= 0 && digit(shown[i + 3]) >= 0;
    out += code ? static_cast<char>(digit(shown[i + 2]) * 16 + digit(shown[i + 3])) : shown[i];
    if (code) i += 3;
  }
  return out;
}

std::optional<ShownRow> rowOf(std::string_view line) {
  const auto number = [&](std::size_t at, std::size_t* end) {   // 0: none stands there
    std::int64_t value = 0;
    for (*end = at; *end < line.size() && line[*end] >= '0' && line[*end] <= '9' && *end - at < 18; ++*end)
      value = value * 10 + (line[*end] - '0');
    return value;
  };
  for (auto colon = line.find(':', 1); colon != std::string_view::npos; colon = line.find(':', colon + 1)) {
    ShownRow row;
    std::size_t end = 0;
    row.line = number(colon + 1, &end);
    if (row.line == 0 || line.substr(end, 1) != ":") continue;
    std::size_t behind = 0;
    row.column = number(end + 1, &behind);
    if (row.column > 0 && line.substr(behind, 1) == ":") end = behind;
    else row.column = 0;
    if (line.substr(end, 2) != ": ") return std::nullopt;   // no name that is shown goes on here
    row.path = line.substr(0, colon);
    row.text = line.substr(end + 2);
    return row;
  }
  return std::nullopt;
}

void appendRows(const FileFinds& file, std::string* out) {
  const std::string path = shownPath(file.path);
  char number[24];
  const auto put = [&](std::int64_t value) {
    out->append(1, ':').append(number, std::to_chars(number, number + sizeof number, value).ptr);
  };
  for (const auto& row : file.rows) {
    std::string_view rest = row.lines;
    for (std::int64_t i = 0; i <= row.more; ++i) {
      const std::string_view line = rest.substr(0, i == row.more ? std::string_view::npos : rest.find('\n'));
      rest.remove_prefix(std::min(line.size() + 1, rest.size()));
      out->append(path);
      put(row.line + i);
      if (i == 0) put(row.column);
      out->append(": ").append(line).append(1, '\n');
    }
  }
}

}   // namespace folder
