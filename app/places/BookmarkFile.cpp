#include "app/places/BookmarkFile.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <iterator>
#include <optional>
#include <thread>
#include <unordered_map>

#include "text/file/FileCalls.h"
#include "text/file/FileIo.h"
#include "text/line/LineReader.h"

using text::LineNo;

namespace {

constexpr std::string_view kHeader = "bookmarks ", kVersion = "1\n";
constexpr std::size_t kMostText = 200, kMostBytes = 4 << 20;   // of a line; of the file
constexpr std::size_t kMostAlike = 100'000;                    // lines of one text that are looked at
constexpr int kLockPatienceMs = 2000;

std::string keptBegin(const text::Snapshot& text, LineNo line) { return text::beginOfLine(text, line, kMostText); }

// On one line: control characters and "%" as "%0a".
void appendCoded(std::string_view bytes, std::string* out) {
  constexpr char kDigits[] = "0123456789abcdef";
  for (const char c : bytes) {
    const auto code = static_cast<unsigned char>(c);
    if (code >= 0x20 && code != 0x7f && c != '%') out->push_back(c);
    else out->append(1, '%').append(1, kDigits[code >> 4]).append(1, kDigits[code & 15]);
  }
}

std::optional<std::string> decoded(std::string_view coded) {
  std::string bytes;
  for (std::size_t i = 0; i < coded.size(); ++i) {
    if (coded[i] != '%') {
      bytes += coded[i];
      continue;
    }
    unsigned code = 0;
    const std::string_view digits = coded.substr(i + 1, 2);
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), code, 16);
    if (digits.size() < 2 || error != std::errc() || end != digits.data() + 2) return std::nullopt;
    bytes += static_cast<char>(code);
    i += 2;
  }
  return bytes;
}

}   // namespace

KeptMarks keptMarks(const text::Snapshot& text, std::span<const LineNo> lines) {
  KeptMarks marks;
  for (const LineNo line : lines.first(std::min(lines.size(), kMostKeptMarks)))
    marks.push_back({line.value, keptBegin(text, line)});
  return marks;
}

bool standAsKept(const text::Snapshot& text, const KeptMarks& marks) {
  return std::ranges::all_of(
      marks, [&](const KeptMark& mark) { return mark.line < text.lineCount() && keptBegin(text, LineNo(mark.line)) == mark.text; });
}

std::vector<LineNo> findMarks(const text::Snapshot& text, const KeptMarks& marks, const std::atomic<bool>* cancel) {
  std::unordered_map<std::string_view, std::vector<std::int64_t>> alike;   // the lines of a text, ascending
  for (const KeptMark& mark : marks) alike.try_emplace(mark.text);
  std::vector<LineNo> found;
  if (!standAsKept(text, marks)) {
    text::LineReader reader(text);
    for (std::string_view line; reader.next(&line);) {
      if (cancel && *cancel) return {};
      const auto known = alike.find(line.substr(0, kMostText));
      if (known != alike.end() && known->second.size() < kMostAlike) known->second.push_back(reader.line().value);
    }
  }
  for (const KeptMark& mark : marks) {
    std::vector<std::int64_t>& lines = alike[mark.text];
    std::int64_t line = mark.line;
    if (!lines.empty()) {
      auto nearest = std::ranges::lower_bound(lines, line);
      if (nearest == lines.end() || (nearest != lines.begin() && line - *(nearest - 1) < *nearest - line)) --nearest;
      line = *nearest;
      lines.erase(nearest);   // for one mark: as many as there were stay
    }
    if (line < text.lineCount()) found.emplace_back(line);
  }
  std::ranges::sort(found);
  found.erase(std::unique(found.begin(), found.end()), found.end());
  return found;
}

std::vector<BookmarkFile::Entry> BookmarkFile::parse(std::string_view bytes, bool* isForeign) {
  *isForeign = bytes.starts_with(kHeader) && !bytes.substr(kHeader.size()).starts_with(kVersion);
  std::vector<Entry> entries;
  if (!bytes.starts_with(kHeader) || *isForeign) return entries;
  bytes.remove_prefix(kHeader.size() + kVersion.size());
  bool known = false;   // whose marks these are
  for (std::size_t end; (end = bytes.find('\n')) != std::string_view::npos; bytes.remove_prefix(end + 1)) {   // whole lines only
    const std::string_view line = bytes.substr(0, end);
    if (line.starts_with("file ")) {
      auto path = decoded(line.substr(5));
      known = path && !path->empty();
      if (known) entries.push_back({std::move(*path), {}});
    } else if (known) {
      KeptMark mark;
      const auto [rest, error] = std::from_chars(line.data(), line.data() + line.size(), mark.line);
      if (error != std::errc() || mark.line < 0 || rest == line.data() + line.size() || *rest != ' ') continue;
      auto text = decoded(line.substr(std::size_t(rest - line.data()) + 1));
      KeptMarks& marks = entries.back().marks;
      if (!text || marks.size() >= kMostKeptMarks || (!marks.empty() && marks.back().line >= mark.line)) continue;
      mark.text = std::move(*text);
      marks.push_back(std::move(mark));
    }
  }
  std::erase_if(entries, [](const Entry& entry) { return entry.marks.empty(); });
  return entries;
}

std::string BookmarkFile::format(const std::vector<Entry>& entries) {
  std::string bytes = std::string(kHeader) + std::string(kVersion);
  for (const Entry& entry : entries) {
    std::string one = "file ";
    appendCoded(entry.path, &one);
    one += '\n';
    for (const KeptMark& mark : entry.marks) {
      one += std::to_string(mark.line) + ' ';
      appendCoded(mark.text, &one);
      one += '\n';
    }
    if (bytes.size() + one.size() <= kMostBytes) bytes += one;
  }
  return bytes;
}

std::vector<BookmarkFile::Entry> BookmarkFile::read() const {
  std::string error;
  bool isForeign = false;
  return parse(text::readBytes(path_, &error, kMostBytes), &isForeign);
}

void BookmarkFile::set(const std::string& path, KeptMarks marks) {
  const std::lock_guard lock(mutex_);
  changed_.insert_or_assign(path, std::move(marks));
}

std::string BookmarkFile::write() {
  const std::lock_guard writing(writing_);
  std::map<std::string, KeptMarks> changed;
  {
    const std::lock_guard lock(mutex_);
    changed.swap(changed_);
  }
  if (changed.empty()) return {};
  const std::string failed = [&]() -> std::string {
    text::FileSystem& files = text::fileSystem();
    // The lock file is never removed: else two copies could each hold "the" lock. Without one the file is still whole.
    const auto guard = text::files::open(text::FileSystem::kCwd, path_ + ".lock", text::kRead | text::kWrite | text::kCreate, 0600);
    for (int waited = 0; guard.ok() && waited < kLockPatienceMs && files.lock(guard.get(), true, false) == -EWOULDBLOCK;
         waited += 10)
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    std::string error;
    const std::string bytes = text::fileExists(path_) ? text::readBytes(path_, &error, kMostBytes) : std::string();
    if (!error.empty()) return error;   // what is in it must not be lost
    bool isForeign = false;
    std::vector<Entry> entries = parse(bytes, &isForeign);
    if (isForeign) return {};   // a later version knows more: it stays
    std::erase_if(entries, [&](const Entry& entry) { return changed.contains(entry.path); });
    std::vector<Entry> all;
    for (const auto& [path, marks] : changed)
      if (!marks.empty()) all.push_back({path, marks});
    std::ranges::move(entries, std::back_inserter(all));
    return text::saveBytes(path_, format(all), 0600).error;
  }();
  if (!failed.empty()) {
    const std::lock_guard lock(mutex_);
    changed_.merge(changed);   // what was set meanwhile is newer
  }
  return failed;
}
