#include "app/places/BookmarkFile.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <functional>
#include <iterator>
#include <numeric>
#include <thread>
#include <unordered_map>

#include "text/file/FileCalls.h"
#include "text/line/LineReader.h"
#include "text/line/OneLine.h"

using text::LineNo;

namespace {

constexpr std::string_view kHeader = "bookmarks ", kVersion = "1\n";
constexpr std::size_t kMostText = 200, kMostBytes = 4 << 20;   // of a line; of the file
constexpr std::size_t kMostBetween = 1000;                     // lines of one text on each side between two of its marks
constexpr int kLockPatienceMs = 2000;

std::string keptBegin(const text::Snapshot& text, LineNo line) { return text::beginOfLine(text, line, kMostText); }

// The marks of one text that do not stand as kept, and the lines with that text around them.
struct Alike {
  std::vector<const KeptMark*> marks;   // ascending
  std::vector<std::int64_t> lines;      // ascending
  std::size_t passed = 0, begin = 0;    // marks above the line that is read; where the lines since the last of them begin

  void add(std::int64_t line) {
    for (; passed < marks.size() && marks[passed]->line < line; ++passed) begin = lines.size();
    lines.push_back(line);
    // More marks than there are can take no line: of those between two marks the first and the last ones do.
    const std::size_t side = std::min(marks.size(), kMostBetween);
    if (lines.size() - begin < 4 * side) return;
    const auto from = lines.begin() + std::ptrdiff_t(begin + side);
    lines.erase(from, lines.end() - std::ptrdiff_t(side));
  }

  // For each mark its line, or -1.
  void assign(const std::function<void(const KeptMark&, std::int64_t)>& place) const {
    const std::size_t count = lines.size();
    // The next free one from an index on, up and down; the ends stand for none. Steps shorten the way for later ones.
    std::vector<std::size_t> up(count + 2), down(count + 2);
    std::iota(up.begin(), up.end(), 0);
    std::iota(down.begin(), down.end(), 0);
    const auto free = [](std::vector<std::size_t>& way, std::size_t i) {
      while (way[i] != i) i = way[i] = way[way[i]];
      return i;
    };
    for (const KeptMark* mark : marks) {
      const std::size_t at = std::size_t(std::ranges::lower_bound(lines, mark->line) - lines.begin());
      const std::size_t above = free(down, at), below = free(up, at + 1);   // counted from 1
      std::size_t nearest = below;
      if (below > count || (above > 0 && mark->line - lines[above - 1] < lines[below - 1] - mark->line)) nearest = above;
      if (nearest == 0) {
        place(*mark, -1);
        continue;
      }
      place(*mark, lines[nearest - 1]);
      up[nearest] = nearest + 1;
      down[nearest] = nearest - 1;
    }
  }
};

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

FoundMarks findMarks(const text::Snapshot& text, const KeptMarks& marks, const std::atomic<bool>* cancel) {
  FoundMarks found;
  const bool isEmpty = text.size().value == 0;   // as while another program writes the file anew
  std::vector<std::int64_t> settled;             // ascending
  std::unordered_map<std::string_view, Alike> open;
  for (const KeptMark& mark : marks) {
    if (mark.line < text.lineCount() && keptBegin(text, LineNo(mark.line)) == mark.text) settled.push_back(mark.line);
    else open[mark.text].marks.push_back(&mark);
  }
  for (const std::int64_t line : settled) found.lines.emplace_back(line);
  if (open.empty()) return found;
  text::LineReader reader(text);
  auto taken = settled.begin();
  for (std::string_view line; reader.next(&line);) {
    if (cancel && *cancel) return {};
    const bool isTaken = taken != settled.end() && *taken == reader.line().value;
    if (isTaken) ++taken;
    else if (const auto known = open.find(line.substr(0, kMostText)); known != open.end()) known->second.add(reader.line().value);
  }
  for (const auto& [begin, alike] : open)
    alike.assign([&](const KeptMark& mark, std::int64_t line) {
      if (line < 0) line = mark.line;
      if (line < text.lineCount() && !isEmpty) found.lines.emplace_back(line);
      else found.missing.push_back(mark);
    });
  std::ranges::sort(found.lines);
  found.lines.erase(std::unique(found.lines.begin(), found.lines.end()), found.lines.end());
  std::ranges::sort(found.missing, {}, &KeptMark::line);
  return found;
}

KeptMarks mergedMarks(KeptMarks marks, const KeptMarks& others) {
  marks.insert(marks.end(), others.begin(), others.end());
  std::ranges::stable_sort(marks, {}, &KeptMark::line);
  const auto sameLine = [](const KeptMark& a, const KeptMark& b) { return a.line == b.line; };
  marks.erase(std::unique(marks.begin(), marks.end(), sameLine), marks.end());
  return marks;
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
      auto path = text::fromOneLine(line.substr(5));
      known = path && !path->empty();
      if (known) entries.push_back({std::move(*path), {}});
    } else if (known) {
      KeptMark mark;
      const auto [rest, error] = std::from_chars(line.data(), line.data() + line.size(), mark.line);
      if (error != std::errc() || mark.line < 0 || rest == line.data() + line.size() || *rest != ' ') continue;
      auto text = text::fromOneLine(line.substr(std::size_t(rest - line.data()) + 1));
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
    text::appendOnOneLine(entry.path, &one);
    one += '\n';
    for (const KeptMark& mark : entry.marks) {
      one += std::to_string(mark.line) + ' ';
      text::appendOnOneLine(mark.text, &one);
      one += '\n';
    }
    if (bytes.size() + one.size() <= kMostBytes) bytes += one;
  }
  return bytes;
}

std::vector<BookmarkFile::Entry> BookmarkFile::read() const {
  std::string error;
  bool isForeign = false;
  std::vector<Entry> entries = parse(text::readBytes(path_, &error, kMostBytes), &isForeign);
  const std::lock_guard lock(mutex_);
  for (const auto* unwritten : {&inWork_, &changed_}) {   // the later ones last
    std::erase_if(entries, [&](const Entry& entry) { return unwritten->contains(entry.path); });
    for (const auto& [path, marks] : *unwritten)
      if (!marks.empty()) entries.push_back({path, marks});
  }
  return entries;
}

bool BookmarkFile::isChanged() {
  text::FileStamp now = text::stampOf(path_, false);
  if (stamp_ == now) return false;
  stamp_ = std::move(now);
  return true;
}

void BookmarkFile::set(const std::string& path, KeptMarks marks) {
  const std::lock_guard lock(mutex_);
  changed_.insert_or_assign(path, std::move(marks));
}

std::string BookmarkFile::write() {
  const std::lock_guard writing(writing_);
  {
    const std::lock_guard lock(mutex_);
    inWork_.swap(changed_);
  }
  const std::map<std::string, KeptMarks>& changed = inWork_;   // only this changes it
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
  const std::lock_guard lock(mutex_);
  if (!failed.empty()) changed_.merge(inWork_);   // what was set meanwhile is newer
  inWork_.clear();
  return failed;
}
