#include "folder/GitFolder.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>

#include "text/file/FileCalls.h"
#include "text/file/FileIo.h"

namespace folder {
namespace {

constexpr std::size_t kConfigLimit = 4 << 20, kIndexLimit = 1 << 30;

std::string readOrNothing(const std::string& path, std::size_t limit) {
  std::string error;
  std::string bytes = text::readBytes(path, &error, limit);
  return error.empty() ? bytes : std::string();
}

std::string trimmed(std::string_view s) {
  const auto from = s.find_first_not_of(" \t\r\n");
  return from == std::string_view::npos ? std::string() : std::string(s.substr(from, s.find_last_not_of(" \t\r\n") - from + 1));
}

std::string against(const std::string& folder, const std::string& path) {
  const bool whole = path.starts_with('/') || (path.size() > 1 && path[1] == ':');   // with a drive
  return whole ? path : folder + '/' + path;
}

std::string environment(const char* name) {
  const char* value = std::getenv(name);
  return value ? value : "";
}

std::string folded(std::string s) {
  for (char& c : s)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c + 32);
  return s;
}

// The value behind "=": quotes, backslashes and comments are worked off.
std::string settingValue(std::string_view raw) {
  std::string value;
  std::size_t kept = 0;   // blanks at the end count only inside quotes
  bool quoted = false;
  for (std::size_t i = 0; i < raw.size(); ++i) {
    char c = raw[i];
    if (c == '"') {
      quoted = !quoted;
      kept = value.size();
      continue;
    }
    if (!quoted && (c == '#' || c == ';')) break;
    if (c == '\\' && i + 1 < raw.size()) c = raw[++i] == 'n' ? '\n' : raw[i] == 't' ? '\t' : raw[i];
    value += c;
    if (quoted || (c != ' ' && c != '\t')) kept = value.size();
  }
  value.resize(kept);
  return value;
}

void readConfig(const std::string& path, GitSettings* settings, int depth = 0) {
  const std::string bytes = readOrNothing(path, kConfigLimit), home = environment("HOME");
  std::string section;
  for (std::size_t at = 0; at < bytes.size();) {
    std::size_t end = bytes.find('\n', at);
    if (end == std::string::npos) end = bytes.size();
    std::string line = trimmed(std::string_view(bytes).substr(at, end - at));
    at = end + 1;
    if (line.starts_with('[')) {
      const std::size_t close = line.find(']');
      section = folded(trimmed(std::string_view(line).substr(1, close == std::string::npos ? close : close - 1)));
      line = close == std::string::npos ? std::string() : trimmed(std::string_view(line).substr(close + 1));
    }
    if (line.empty() || line[0] == '#' || line[0] == ';') continue;
    const std::size_t equals = line.find('=');
    const std::string key = folded(trimmed(std::string_view(line).substr(0, equals)));
    std::string value = equals == std::string::npos ? "true" : settingValue(trimmed(std::string_view(line).substr(equals + 1)));
    const bool isPath = (section == "core" && key == "excludesfile") || (section == "include" && key == "path");
    if (isPath && value.starts_with("~/")) value = home + value.substr(1);
    if (section == "core" && key == "excludesfile") settings->excludesFile = value;
    if (section == "core" && key == "ignorecase")
      settings->foldCase = folded(value) == "true" || value == "1" || folded(value) == "yes" || folded(value) == "on";
    if (section == "extensions" && key == "objectformat") settings->hashBytes = folded(value) == "sha256" ? 32 : 20;
    if (section == "include" && key == "path" && depth < 10 && !value.empty())
      readConfig(against(text::files::splitPath(path).folder, value), settings, depth + 1);
  }
}

std::uint32_t number(std::string_view bytes, std::size_t at, int length) {
  std::uint32_t n = 0;
  for (int i = 0; i < length; ++i) n = n << 8 | static_cast<unsigned char>(bytes[at + static_cast<std::size_t>(i)]);
  return n;
}

}   // namespace

std::optional<GitFolder> gitFolderIn(const std::string& folder) {
  const std::string own = (folder == "/" ? std::string() : folder) + "/.git";
  text::FileStatus status;
  if (text::fileSystem().statAt(text::FileSystem::kCwd, own, true, &status) < 0) return std::nullopt;
  GitFolder git{folder, own, own};
  if (status.isRegular()) {   // a further work tree, or a part that is a repository of its own
    const std::string line = trimmed(readOrNothing(own, kConfigLimit));
    if (!line.starts_with("gitdir:")) return std::nullopt;
    git.own = against(folder, trimmed(std::string_view(line).substr(7)));
  } else if (!status.isDirectory()) {
    return std::nullopt;
  }
  const std::string common = trimmed(readOrNothing(git.own + "/commondir", kConfigLimit));
  git.shared = common.empty() ? git.own : against(git.own, common);
  // An empty folder of that name is no repository.
  if (text::fileSystem().statAt(text::FileSystem::kCwd, git.own + "/HEAD", false, &status) < 0) return std::nullopt;
  return git;
}

std::optional<GitFolder> gitFolderAbove(const std::string& folder) {
  for (std::string at = folder; !at.empty();) {
    if (auto git = gitFolderIn(at)) return git;
    const std::size_t slash = at.rfind('/');
    if (slash == std::string::npos || at == "/") break;
    at.resize(slash == 0 ? 1 : slash);
  }
  return std::nullopt;
}

GitSettings gitSettings(const GitFolder& git) {
  const std::string home = environment("HOME"), xdg = environment("XDG_CONFIG_HOME");
  const std::string user = (xdg.empty() ? home + "/.config" : xdg) + "/git/";
  GitSettings settings;
  settings.excludesFile = user + "ignore";
  for (const std::string& file : {std::string("/etc/gitconfig"), user + "config", home + "/.gitconfig", git.shared + "/config"})
    readConfig(file, &settings);
  if (!settings.excludesFile.empty()) settings.excludesFile = against(git.top, settings.excludesFile);
  return settings;
}

TrackedFiles TrackedFiles::read(const GitFolder& git, int hashBytes) {
  TrackedFiles tracked;
  tracked.add(readOrNothing(git.own + "/index", kIndexLimit), git, static_cast<std::size_t>(hashBytes), false);
  std::sort(tracked.paths_.begin(), tracked.paths_.end());
  return tracked;
}

// The file's form: "DIRC", version, number of entries; entries of a status, a hash, flags and a name; extensions; a hash. What
// does not fit into it ends the reading, and what was read counts.
void TrackedFiles::add(std::string_view bytes, const GitFolder& git, std::size_t hash, bool shared) {
  constexpr std::size_t kHead = 12, kStatus = 40;
  if (bytes.size() < kHead + hash || !bytes.starts_with("DIRC")) return;
  const std::uint32_t version = number(bytes, 4, 4), count = number(bytes, 8, 4);
  if (version < 2 || version > 4) return;
  std::size_t at = kHead;
  std::string path;
  for (std::uint32_t i = 0; i < count; ++i) {
    std::size_t name = at + kStatus + hash + 2;
    if (name + 2 > bytes.size()) return;
    if (number(bytes, name - 2, 2) & 0x4000) name += 2;   // more flags
    if (version == 4) {                                   // the name shares its beginning with the one before
      std::size_t cut = 0;
      for (bool more = true, first = true; more; first = false) {
        if (name >= bytes.size()) return;
        const unsigned char byte = static_cast<unsigned char>(bytes[name++]);
        cut = (first ? 0 : cut + 1) << 7 | (byte & 0x7f);
        more = byte & 0x80;
      }
      if (cut > path.size()) return;
      path.resize(path.size() - cut);
    } else {
      path.clear();
    }
    const std::size_t end = bytes.find('\0', name);
    if (end == std::string_view::npos) return;
    path += bytes.substr(name, end - name);
    at = version == 4 ? end + 1 : at + ((end - at + 8) & ~std::size_t{7});
    if (!path.empty()) paths_.push_back(path);
  }
  while (!shared && at + 8 + hash <= bytes.size()) {
    const std::size_t length = number(bytes, at + 4, 4);
    if (bytes.substr(at, 4) == "link" && length >= hash && at + 8 + hash <= bytes.size()) {   // most entries lie in a second file
      static constexpr char kDigits[] = "0123456789abcdef";
      std::string file = git.own + "/sharedindex.";
      for (const char byte : bytes.substr(at + 8, hash)) {
        file += kDigits[static_cast<unsigned char>(byte) >> 4];
        file += kDigits[static_cast<unsigned char>(byte) & 15];
      }
      add(readOrNothing(file, kIndexLimit), git, hash, true);
    }
    at += 8 + length;
  }
}

bool TrackedFiles::has(std::string_view path) const { return std::binary_search(paths_.begin(), paths_.end(), path); }

bool TrackedFiles::hasBelow(std::string_view folder) const {
  const std::string prefix = std::string(folder) + '/';
  const auto at = std::lower_bound(paths_.begin(), paths_.end(), prefix);
  return at != paths_.end() && at->starts_with(prefix);
}

}   // namespace folder
