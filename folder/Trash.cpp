#include "folder/Trash.h"

#ifdef _WIN32
#include <windows.h>

#include <shellapi.h>

#include "bridge/QStringBytes.h"
#else
#include <cerrno>
#include <cstdlib>
#include <ctime>

#include "text/file/FileCalls.h"
#include "text/file/FileIo.h"
#endif

namespace folder {

#ifdef _WIN32
std::string moveToTrash(const std::string& path) {
  std::wstring names = toQString(path).replace(u'/', u'\\').toStdWString();
  names.push_back(L'\0');   // a list that ends with an empty name
  SHFILEOPSTRUCTW operation{};
  operation.wFunc = FO_DELETE;
  operation.pFrom = names.c_str();
  operation.fFlags = FOF_ALLOWUNDO | FOF_NOCONFIRMATION | FOF_NOERRORUI | FOF_SILENT | FOF_WANTNUKEWARNING;
  const int r = SHFileOperationW(&operation);
  return r == 0 && !operation.fAnyOperationsAborted ? std::string() : "The trash does not take it";
}
#else
namespace {

constexpr int kCwd = text::FileSystem::kCwd;

// As addresses have it: all but plain characters and "/" as %XX.
std::string coded(const std::string& path) {
  static constexpr char kDigits[] = "0123456789ABCDEF";
  std::string out;
  for (const char c : path) {
    const auto b = static_cast<unsigned char>(c);
    if ((b >= 'a' && b <= 'z') || (b >= 'A' && b <= 'Z') || (b >= '0' && b <= '9') ||
        std::string_view("/-_.~").find(c) != std::string_view::npos) {
      out += c;
    } else {
      out += '%';
      out += kDigits[b >> 4];
      out += kDigits[b & 15];
    }
  }
  return out;
}

// The folder that a device's tree begins with.
std::string topOf(const std::string& folder, std::uint64_t device) {
  std::string top = folder;
  for (;;) {
    const std::string above = text::files::splitPath(top).folder;
    text::FileStatus status;
    if (above == top || text::fileSystem().statAt(kCwd, above, true, &status) < 0 || status.device != device) return top;
    top = above;
  }
}

// A trash that a user other than this one could have put there is none.
bool isOwnFolder(const std::string& path) {
  text::FileStatus status;
  return text::fileSystem().statAt(kCwd, path, false, &status) == 0 && status.isDirectory() && status.owner == text::currentUser();
}

std::string homeTrash() {
  const char* data = std::getenv("XDG_DATA_HOME");
  const char* home = std::getenv("HOME");
  if (data && *data == '/') return std::string(data) + "/Trash";
  return home ? std::string(home) + "/.local/share/Trash" : std::string();
}

// Into one trash. record: how the place is named there. 0, or -errno.
int moveInto(const std::string& trash, const std::string& path, const std::string& record) {
  for (const char* part : {"/files", "/info"})
    if (!text::makeFolders(trash + part, 0700).empty() || !isOwnFolder(trash + part)) return -EACCES;
  char when[32];
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  ::localtime_r(&now, &local);
  std::strftime(when, sizeof when, "%Y-%m-%dT%H:%M:%S", &local);
  const std::string info = "[Trash Info]\nPath=" + coded(record) + "\nDeletionDate=" + when + "\n";
  const std::string title = text::files::splitPath(path).name;
  for (int n = 1; n < 10000; ++n) {   // the name under which it lies is claimed by its record first
    const std::string name = n == 1 ? title : title + '.' + std::to_string(n), about = trash + "/info/" + name + ".trashinfo";
    const text::files::Descriptor fd = text::files::open(kCwd, about, text::kWrite | text::kCreate | text::kExclusive, 0600);
    if (fd.error() == -EEXIST) continue;
    if (!fd.ok()) return fd.error();
    int r = text::files::writeAll(fd.get(), info);
    if (r >= 0) r = text::fileSystem().renameAt(kCwd, path, kCwd, trash + "/files/" + name, text::kNoReplace);
    if (r >= 0) return 0;
    text::fileSystem().unlinkAt(kCwd, about, false);
    if (r != -EEXIST) return r;
  }
  return -EEXIST;
}

}   // namespace

std::string moveToTrash(const std::string& path) {
  const text::files::PathParts parts = text::files::splitPath(path);
  text::FileStatus folder;
  if (const int r = text::fileSystem().statAt(kCwd, parts.folder, true, &folder); r < 0) return text::errorText(r);
  int r = -EXDEV;
  if (const std::string home = homeTrash(); !home.empty()) r = moveInto(home, path, path);
  if (r == 0) return {};
  if (r != -EXDEV) return text::errorText(r);
  // Another disk has a trash of its own; the record counts from where that disk begins.
  const std::string top = topOf(parts.folder, folder.device), begin = top == "/" ? "" : top;
  const std::string user = std::to_string(text::currentUser());
  text::FileStatus shared;
  const std::string all = begin + "/.Trash";
  constexpr std::uint32_t kSticky = 01000;
  if (text::fileSystem().statAt(kCwd, all, false, &shared) == 0 && shared.isDirectory() && (shared.mode & kSticky))
    if (moveInto(all + '/' + user, path, path.substr(begin.size() + 1)) == 0) return {};
  r = moveInto(begin + "/.Trash-" + user, path, path.substr(begin.size() + 1));
  return r == 0 ? std::string() : "The disk has no trash that takes it: " + text::errorText(r);
}
#endif

}   // namespace folder
