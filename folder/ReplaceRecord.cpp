#include "folder/ReplaceRecord.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <thread>

#include "text/file/Decode.h"
#include "text/store/ContentHash.h"

namespace folder {

using text::fileSystem;
using text::FileSystem;

namespace {

constexpr std::string_view kMagic = "zelkor replaced 1\n", kMagicOfWindow = "zelkor replaced 2\n";
constexpr char kDamaged[] = "The record of its old text is damaged";
constexpr std::size_t kMostAbout = 4096;
constexpr int kLockTries = 50;
constexpr std::int64_t kMakingNs = 3600ll * 1'000'000'000;   // making a record takes less

std::int64_t nowNs() {
  return std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::system_clock::now().time_since_epoch()).count();
}

std::string entryName(int number) {
  char name[32];
  std::snprintf(name, sizeof name, "%06d", number);
  return name;
}
bool isEntry(const std::string& name) { return name.size() == 6 && name.find_first_not_of("0123456789") == std::string::npos; }

// One number and the sign behind it.
template <class Number>
bool take(std::string_view* rest, Number* value, char behind) {
  const auto [end, error] = std::from_chars(rest->data(), rest->data() + rest->size(), *value);
  if (error != std::errc() || end == rest->data() + rest->size() || *end != behind) return false;
  rest->remove_prefix(static_cast<std::size_t>(end - rest->data()) + 1);
  return true;
}

bool take(std::string_view* rest, FileContent* content, char behind) {
  return take(rest, &content->size, ' ') && take(rest, &content->hash, behind);
}

// The head of an entry, and where the old bytes begin. False: it is damaged, or was not written to its end.
bool readEntry(std::string_view bytes, ReplacedFile* file, std::string_view* old) {
  std::int64_t length = 0;
  const bool ofWindow = bytes.starts_with(kMagicOfWindow);
  if (!ofWindow && !bytes.starts_with(kMagic)) return false;
  bytes.remove_prefix(kMagic.size());
  if (!take(&bytes, &length, ' ') || length < 0 || static_cast<std::size_t>(length) >= bytes.size()) return false;
  file->path = bytes.substr(0, static_cast<std::size_t>(length));
  bytes.remove_prefix(static_cast<std::size_t>(length));
  if (bytes[0] != '\n') return false;
  bytes.remove_prefix(1);
  if (!take(&bytes, &file->before, ' ') || !take(&bytes, &file->made, ofWindow ? ' ' : '\n')) return false;
  file->unsaved = file->before;
  if (ofWindow && !take(&bytes, &file->unsaved, '\n')) return false;
  if (old) *old = bytes;
  return FileContent::of(bytes) == file->before;
}

Side sideOf(const ReplacedFile& file, const text::FileStamp& stamp) {
  const FileContent now = FileContent::of(stamp);
  if (now == file.before || now == file.unsaved) return Side::old;
  if (!stamp.exists) return Side::gone;
  return now == file.made ? Side::new_ : Side::other;
}

// The lock on "about", held by who writes the record or removes it. It is open for writing, as some network file systems give an
// exclusive lock for nothing less. *error: 0, or why it is not held.
text::files::Descriptor lockRecord(const std::string& folder, int* error) {
  auto about = text::files::open(FileSystem::kCwd, folder + "/about", text::kRead | text::kWrite);
  *error = about.ok() ? fileSystem().lock(about.get(), true, false) : about.error();
  return about;
}

// The numbers of the files with old bytes, ascending. False: they cannot be told.
bool entriesOf(const std::string& folder, std::vector<std::string>* entries) {
  entries->clear();
  if (fileSystem().listDir(folder, entries) < 0) return false;
  std::erase_if(*entries, [](const std::string& name) { return !isEntry(name); });
  std::sort(entries->begin(), entries->end());
  return true;
}

// The old bytes go while the lock is held, the locked file behind that: not every system removes an open one.
void removeRecord(const std::string& folder, text::files::Descriptor lock) {
  std::vector<std::string> entries;
  entriesOf(folder, &entries);
  for (const auto& name : entries) fileSystem().unlinkAt(FileSystem::kCwd, folder + "/" + name, false);
  lock.close();
  fileSystem().unlinkAt(FileSystem::kCwd, folder + "/done", false);
  fileSystem().unlinkAt(FileSystem::kCwd, folder + "/about", false);
  fileSystem().unlinkAt(FileSystem::kCwd, folder, true);
}

bool isRecord(const std::string& name) { return name.size() > 20 && name.find_first_not_of("0123456789-") == std::string::npos; }

// Ascending. 0, or -errno.
int recordsIn(const std::string& records, std::vector<std::string>* names) {
  const int r = fileSystem().listDir(records, names);
  std::erase_if(*names, [](const std::string& name) { return !isRecord(name); });
  std::sort(names->begin(), names->end());   // begins with the time
  return r;
}

}   // namespace

std::unique_ptr<ReplaceRecord> ReplaceRecord::begin(const std::string& records, const std::string& about, std::string* error) {
  *error = text::makeFolders(records, 0700);
  if (!error->empty()) return nullptr;
  std::unique_ptr<ReplaceRecord> record(new ReplaceRecord);
  std::vector<std::string> others;
  int made = recordsIn(records, &others);
  // The newest record has the highest number, also when the clock was set back.
  const std::int64_t newest = others.empty() ? 0 : std::atoll(others.back().c_str());
  const std::int64_t number = std::max(nowNs(), newest + 1);
  if (made >= 0) made = -EEXIST;
  for (int i = 0; made == -EEXIST && i < 100; ++i) {   // two editors may begin at once
    char name[64];
    std::snprintf(name, sizeof name, "/%020lld-%d", static_cast<long long>(number), i);
    record->folder_ = records + name;
    made = fileSystem().makeDirAt(FileSystem::kCwd, record->folder_, 0700);
  }
  if (made < 0) {
    record->finished_ = true;
    *error = text::errorText(made);
    return nullptr;
  }
  const std::string file = record->folder_ + "/about";
  *error = text::saveBytes(file, about.substr(0, kMostAbout), 0600).error;
  if (error->empty()) {
    int r = -EWOULDBLOCK;   // another editor may look at it at this moment
    for (int i = 0; r == -EWOULDBLOCK && i < kLockTries; ++i) {
      if (i > 0) std::this_thread::sleep_for(std::chrono::milliseconds(10));
      record->lock_ = lockRecord(record->folder_, &r);
    }
    if (r < 0) *error = text::errorText(r);
  }
  // The name of the record's folder has to last as well.
  const auto parent = text::files::open(FileSystem::kCwd, records, text::kRead | text::kDirectory);
  if (error->empty() && parent.ok())
    if (const int r = text::files::syncFolder(parent.get()); r < 0) *error = text::errorText(r);
  if (error->empty()) return record;
  removeRecord(record->folder_, std::move(record->lock_));
  record->finished_ = true;
  return nullptr;
}

ReplaceRecord::~ReplaceRecord() {
  if (!finished_) finish();
}

FileContent FileContent::of(std::string_view bytes) {
  return {static_cast<std::int64_t>(bytes.size()), text::ContentHash::of(bytes)};
}
FileContent FileContent::of(const text::FileStamp& stamp) {
  return stamp.exists ? FileContent{stamp.status.size, stamp.contentHash} : FileContent();
}

namespace {

std::string inHead(const FileContent& content) { return std::to_string(content.size) + ' ' + std::to_string(content.hash); }
std::string headOf(std::string_view magic, const std::string& path, std::string_view oldBytes, const FileContent& made) {
  return std::string(magic) + std::to_string(path.size()) + ' ' + path + '\n' + inHead(FileContent::of(oldBytes)) + ' ' +
         inHead(made);
}

}   // namespace

std::string ReplaceRecord::keep(const std::string& path, std::string_view oldBytes, const FileContent& made) {
  return write(headOf(kMagic, path, oldBytes, made) + '\n', oldBytes);
}

std::string ReplaceRecord::keepOfWindow(const std::string& path, std::string_view oldBytes, const FileContent& made,
                                        const FileContent& onDisk) {
  return write(headOf(kMagicOfWindow, path, oldBytes, made) + ' ' + inHead(onDisk) + '\n', oldBytes);
}

std::string ReplaceRecord::write(std::string head, std::string_view oldBytes) {
  head += oldBytes;
  std::string error = text::saveBytes(folder_ + "/" + entryName(kept_ + 1), head, 0600).error;
  if (error.empty()) ++kept_;
  return error;
}

void ReplaceRecord::drop() {
  if (kept_ > 0) fileSystem().unlinkAt(FileSystem::kCwd, folder_ + "/" + entryName(kept_--), false);
}

std::string ReplaceRecord::finish() {
  finished_ = true;
  std::string error;
  if (kept_ == 0) {
    removeRecord(folder_, std::move(lock_));
  } else {
    error = text::saveBytes(folder_ + "/done", "", 0600).error;
    lock_.close();
  }
  return error;
}

namespace {

std::optional<LastReplace> newestRecord(const std::string& records, bool finishedToo) {
  std::optional<LastReplace> last;
  std::vector<std::string> names, entries;
  recordsIn(records, &names);
  for (auto name = names.rbegin(); name != names.rend(); ++name) {
    const std::string folder = records + "/" + *name;
    const std::int64_t age = nowNs() - std::atoll(name->c_str());
    int locked = 0;
    auto lock = lockRecord(folder, &locked);
    if (locked == -EWOULDBLOCK || !entriesOf(folder, &entries)) continue;
    const bool mayGo = locked == 0 || locked == -ENOENT;   // else somebody may be at it
    if (entries.empty()) {                                 // a young one is being made: it is not locked at once
      if (mayGo && age > kMakingNs) removeRecord(folder, std::move(lock));
      continue;
    }
    if (last || age > std::int64_t(kRecordDays) * 86400 * 1'000'000'000) {
      if (mayGo) removeRecord(folder, std::move(lock));
      continue;
    }
    LastReplace& found = last.emplace();
    found.folder = folder;
    std::string error;
    found.about = text::readBytes(folder + "/about", &error, kMostAbout);
    found.interrupted = !text::fileExists(folder + "/done");
    if (!found.interrupted && !finishedToo) continue;
    for (const auto& entry : entries) {
      ReplacedFile& file = found.files.emplace_back();
      file.entry = file.path = folder + "/" + entry;   // the path until its own is read
      const std::string bytes = text::readBytes(file.entry, &error);
      if (!error.empty()) file.trouble = "Its old text cannot be read: " + error;
      else if (!readEntry(bytes, &file, nullptr)) file.trouble = kDamaged;
      else {
        const text::FileStamp now = text::stampOf(file.path, true);
        file.side = sideOf(file, now);
        file.device = now.status.device;
        file.inode = now.status.inode;
        found.bytes += file.before.size;
      }
    }
  }
  if (last && !last->interrupted && !finishedToo) last.reset();
  return last;
}

}   // namespace

std::optional<LastReplace> lastReplace(const std::string& records) { return newestRecord(records, true); }
std::optional<LastReplace> interruptedReplace(const std::string& records) { return newestRecord(records, false); }

void markTold(const LastReplace& last) { text::saveBytes(last.folder + "/done", "", 0600); }

std::vector<UndoneFile> undoReplace(const LastReplace& last) {
  std::vector<UndoneFile> undone;
  for (const auto& file : last.files) {
    UndoneFile& result = undone.emplace_back();
    result.path = file.path;
    result.trouble = file.trouble;
    if (!result.trouble.empty()) continue;
    ReplacedFile entry;
    std::string_view old;
    const std::string bytes = text::readBytes(file.entry, &result.trouble);
    if (result.trouble.empty() && !readEntry(bytes, &entry, &old)) result.trouble = kDamaged;
    const text::FileStamp now = text::stampOf(file.path, true);
    const Side side = sideOf(file, now);
    if (result.trouble.empty() && side == Side::gone) result.trouble = "It is not there any more";
    if (result.trouble.empty() && side == Side::other) result.trouble = "It has been changed since the replacing";
    if (result.trouble.empty() && side == Side::new_) {
      auto copy = std::make_shared_for_overwrite<char[]>(old.size() + 1);
      std::copy(old.begin(), old.end(), copy.get());
      const text::LoadedFile text = text::decodeFile(std::move(copy), old.size());
      result.trouble = text.error;
      if (result.trouble.empty()) result.trouble = text::saveFile(file.path, text.text, {text.format, now}).error;
      result.changed = result.trouble.empty();
    }
    if (result.trouble.empty()) fileSystem().unlinkAt(FileSystem::kCwd, file.entry, false);
  }
  int locked = 0;
  auto lock = lockRecord(last.folder, &locked);
  std::vector<std::string> entries;
  if (entriesOf(last.folder, &entries) && entries.empty()) removeRecord(last.folder, std::move(lock));
  return undone;
}

}   // namespace folder
