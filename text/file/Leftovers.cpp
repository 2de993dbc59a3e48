#include "text/file/Leftovers.h"

#include <algorithm>
#include <chrono>

#include "text/file/FileCalls.h"

namespace text {
namespace {

constexpr std::string_view kCopyMark = ".zelkor-recovery-";
constexpr std::size_t kMostName = 200;   // bytes of a file name or path used in the name of its copy
constexpr char kHex[] = "0123456789ABCDEF";
// If locks do not work between computers: a file being written is at least recent.
constexpr std::int64_t kUnfinishedNs = std::int64_t(10) * 60 * 1'000'000'000;

bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9'); }

std::string encodePath(const std::string& path) {
  std::string out;
  for (const char c : path) {
    const auto byte = static_cast<unsigned char>(c);
    if (isLetter(c) || (c >= 'A' && c <= 'Z') || c == '.' || c == '-' || c == '_' || byte >= 0x80) {
      out += c;
    } else {
      out += '%';
      out += kHex[byte >> 4];
      out += kHex[byte & 15];
    }
  }
  return out;
}

std::string decodePath(std::string_view name) {
  std::string out;
  for (std::size_t i = 0; i < name.size(); ++i) {
    const auto digit = [&](std::size_t at) {
      return at < name.size() ? std::string_view(kHex).find(name[at]) : std::string_view::npos;
    };
    const auto high = digit(i + 1), low = digit(i + 2);
    if (name[i] != '%' || high > 15 || low > 15) {
      out += name[i];
      continue;
    }
    out += static_cast<char>(high << 4 | low);
    i += 2;
  }
  return out;
}

// Whether an unfinished file may be removed: only if it certainly belongs to a finished save of this program.
bool isAbandoned(const std::string& path, const files::Descriptor& file) {
  FileStatus own, there;
  FileSystem& fs = fileSystem();
  if (!file.ok() || fs.statFd(file.get(), &own) < 0 || !own.isRegular() || own.owner != currentUser()) return false;
  const std::int64_t now =
      std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::system_clock::now().time_since_epoch()).count();
  if (now - own.mtimeNs < kUnfinishedNs || fs.lock(file.get(), true, false) < 0) return false;
  return fs.statAt(FileSystem::kCwd, path, false, &there) == 0 && there.device == own.device && there.inode == own.inode;
}

}   // namespace

std::string copyName(const std::string& unfinished, const std::string& path, bool elsewhere) {
  const std::size_t random = unfinished.size() - kUnfinishedPrefix.size() - kUnfinishedSuffix.size();
  const std::string letters = unfinished.substr(kUnfinishedPrefix.size(), random), own = files::splitPath(path).name;
  std::string name = elsewhere ? encodePath(path) : own;
  if (name.size() > kMostName) name = (elsewhere ? encodePath(own) : own).substr(0, kMostName);
  return "." + name + std::string(kCopyMark) + letters;
}

bool isCopyOf(const CopyName& copy, const std::string& name) { return copy.path == name.substr(0, kMostName); }

std::vector<CopyName> lookForLeftovers(const std::string& folder, bool elsewhere) {
  std::vector<std::string> names;
  std::vector<CopyName> copies;
  if (fileSystem().listDir(folder, &names) < 0) return copies;
  std::sort(names.begin(), names.end());
  for (const std::string& name : names) {
    const auto letters = [&](std::size_t from, std::size_t to) {
      return to >= from + 10 && std::all_of(name.begin() + std::ptrdiff_t(from), name.begin() + std::ptrdiff_t(to), isLetter);
    };
    if (name.starts_with(kUnfinishedPrefix) && name.ends_with(kUnfinishedSuffix) &&
        letters(kUnfinishedPrefix.size(), name.size() - kUnfinishedSuffix.size())) {
      const std::string path = folder + "/" + name;
      if (isAbandoned(path, files::open(FileSystem::kCwd, path, kRead | kNoFollow | kNonBlock)))
        fileSystem().unlinkAt(FileSystem::kCwd, path, false);
      continue;
    }
    const std::size_t mark = name.rfind(kCopyMark);
    if (!name.starts_with('.') || mark == std::string::npos || mark < 2 || !letters(mark + kCopyMark.size(), name.size())) continue;
    const std::string about = name.substr(1, mark - 1);
    copies.push_back({name, elsewhere ? decodePath(about) : about});
  }
  return copies;
}

}   // namespace text
