#include "folder/FileList.h"

#include <algorithm>
#include <cstdlib>
#include <set>
#include <string_view>
#include <utility>

#include "bridge/FileNames.h"
#include "bridge/QStringBytes.h"
#include "folder/Walk.h"
#include "text/file/FileCalls.h"
#include "text/file/FileIo.h"

namespace folder {
namespace {

constexpr std::size_t kListLimit = 64 << 20, kSourceLimit = 64 << 20;

// Options whose value is a word of its own and no file of the design.
constexpr std::string_view kWithValue[] = {"-top", "--top",   "-top-module", "--top-module", "-work",   "-lib",
                                           "-L",   "-l",      "-o",          "-s",           "-define", "-d",
                                           "-D",   "-CFLAGS", "-LDFLAGS",    "-timescale",   "-Mdir",   "--Mdir"};

std::string absolute(const std::string& path, const std::string& folder) {
  return fromQString(fullPath(toQString(path), toQString(folder)));
}

bool isName(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_'; }

struct Word {
  std::string text;
  int line = 0;
};

// The words of a list without its comments.
std::vector<Word> wordsOf(std::string_view bytes, int* openComment) {
  std::vector<Word> words;
  int line = 1;
  const auto isBlank = [](char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\f' || c == '\v'; };
  for (std::size_t i = 0; i < bytes.size();) {
    const std::string_view rest = bytes.substr(i);
    if (isBlank(rest[0])) {
      line += rest[0] == '\n';
      ++i;
    } else if (rest.starts_with("//") || rest[0] == '#') {
      i = std::min(bytes.find('\n', i), bytes.size());
    } else if (rest.starts_with("/*")) {
      const std::size_t close = bytes.find("*/", i + 2);
      if (close == std::string_view::npos) *openComment = line;
      const std::size_t end = close == std::string_view::npos ? bytes.size() : close + 2;
      const std::string_view comment = bytes.substr(i, end - i);
      line += static_cast<int>(std::count(comment.begin(), comment.end(), '\n'));
      i = end;
    } else if (rest[0] == '\\' && rest.size() > 1 && (rest[1] == '\n' || rest[1] == '\r')) {
      ++i;   // the line goes on
    } else {
      Word word{{}, line};
      for (bool quoted = false; i < bytes.size() && bytes[i] != '\n' && (quoted || !isBlank(bytes[i])); ++i) {
        if (bytes[i] == '"') quoted = !quoted;
        else word.text += bytes[i];
      }
      words.push_back(std::move(word));
    }
  }
  return words;
}

// Puts the values of variables in. False: *unknown names one that is not set.
bool substitute(std::string* text, std::string* unknown) {
  std::string out;
  for (std::size_t i = 0; i < text->size(); ++i) {
    const char c = (*text)[i], next = i + 1 < text->size() ? (*text)[i + 1] : '\0';
    const char close = next == '(' ? ')' : next == '{' ? '}' : '\0';
    std::size_t from = i + (close ? 2 : 1), end = from;
    if (close) end = text->find(close, from);
    else
      while (end < text->size() && isName((*text)[end])) ++end;
    if (c != '$' || end == std::string::npos || end == from) {
      out += c;
      continue;
    }
    const std::string name = text->substr(from, end - from);
    const char* value = std::getenv(name.c_str());
    if (!value) return *unknown = name, false;
    out += value;
    i = close ? end : end - 1;
  }
  *text = std::move(out);
  return true;
}

// "+incdir+a+b" behind its name: "a", "b".
std::vector<std::string> plusParts(const std::string& text, std::size_t from) {
  std::vector<std::string> parts;
  while (from < text.size()) {
    const std::size_t end = std::min(text.find('+', from), text.size());
    if (end > from) parts.push_back(text.substr(from, end - from));
    from = end + 1;
  }
  return parts;
}

// The names that a source includes. Comments and strings hide none.
std::vector<std::string> includesOf(std::string_view source) {
  std::vector<std::string> names;
  for (std::size_t i = source.find_first_of("\"/`"); i < source.size(); i = source.find_first_of("\"/`", i)) {
    const std::string_view rest = source.substr(i);
    if (rest.starts_with("//")) {
      i = source.find('\n', i);
    } else if (rest.starts_with("/*")) {
      const std::size_t end = source.find("*/", i + 2);
      i = end == std::string_view::npos ? end : end + 2;
    } else if (rest[0] == '"') {
      for (++i; i < source.size() && source[i] != '"' && source[i] != '\n'; ++i) i += source[i] == '\\';
      ++i;
    } else if (rest.starts_with("`include")) {
      i = source.find_first_not_of(" \t", i + 8);
      if (i >= source.size() || (source[i] != '"' && source[i] != '<')) continue;
      const std::size_t end = source.find_first_of(source[i] == '<' ? ">\n" : "\"\n", i + 1);
      if (end == std::string_view::npos) break;
      if (source[end] != '\n') names.emplace_back(source.substr(i + 1, end - i - 1));
      i = end + 1;
    } else {
      ++i;
    }
  }
  return names;
}

class Reader {
 public:
  Reader(std::string workingFolder, const std::atomic<bool>* cancel) : working_(std::move(workingFolder)), cancel_(cancel) {}

  void read(const std::string& list, bool relativeToList, const std::string& namedBy, int line) {
    if (std::find(open_.begin(), open_.end(), list) != open_.end())
      return problem(namedBy, line, list + " is being read already: a list cannot hold itself");
    std::string error;
    const std::string bytes = text::readBytes(list, &error, kListLimit);
    if (!error.empty()) return problem(namedBy, line, list + ": " + error);
    if (std::find(found_.lists.begin(), found_.lists.end(), list) == found_.lists.end()) found_.lists.push_back(list);
    open_.push_back(list);
    take(bytes, list, relativeToList ? text::files::splitPath(list).folder : working_);
    open_.pop_back();
  }

  FileList finish() {
    for (std::size_t i = 0; i < found_.libraryFolders.size() && goesOn(); ++i) library(found_.libraryFolders[i]);
    for (std::size_t i = 0; i < found_.files.size() && goesOn(); ++i) {   // grows
      std::string error;
      const std::string file = found_.files[i];
      for (const std::string& name : includesOf(text::readBytes(file, &error, kSourceLimit))) include(file, name);
    }
    return std::move(found_);
  }

  FileList& found() { return found_; }

 private:
  bool goesOn() const { return !cancel_ || !cancel_->load(std::memory_order_relaxed); }
  void problem(const std::string& list, int line, std::string text) { found_.problems.push_back({list, line, std::move(text)}); }

  void take(const std::string& bytes, const std::string& list, const std::string& folder) {
    int openComment = 0;
    std::vector<Word> words = wordsOf(bytes, &openComment);
    if (openComment) problem(list, openComment, "this comment has no end");
    for (std::size_t i = 0; i < words.size() && goesOn(); ++i) {
      Word& word = words[i];
      std::string unknown;
      if (!substitute(&word.text, &unknown)) {
        problem(list, word.line, "the variable " + unknown + " is not set");
        continue;
      }
      const std::string& text = word.text;
      const bool known = text == "-f" || text == "-F" || text == "-v" || text == "-y" || text == "-I" || text == "-incdir";
      if (known || std::find(std::begin(kWithValue), std::end(kWithValue), text) != std::end(kWithValue)) {
        if (i + 1 == words.size()) {
          problem(list, word.line, text + " needs a value");
        } else if (!substitute(&words[++i].text, &unknown)) {
          problem(list, words[i].line, "the variable " + unknown + " is not set");
        } else if (known) {
          option(text, absolute(words[i].text, folder), list, words[i].line);
        }
      } else if (text.starts_with("+incdir+")) {
        for (const std::string& part : plusParts(text, 8)) option("-I", absolute(part, folder), list, word.line);
      } else if (text.starts_with("-I")) {
        option("-I", absolute(text.substr(2), folder), list, word.line);
      } else if (text.starts_with("+libext+")) {
        for (std::string& part : plusParts(text, 8)) found_.libraryExtensions.push_back(std::move(part));
      } else if (text.starts_with("+define+")) {
        for (std::string& part : plusParts(text, 8)) found_.defines.push_back(std::move(part));
      } else if (!text.empty() && text[0] != '-' && text[0] != '+') {
        file(absolute(text, folder), list, word.line);
      }
    }
  }

  void option(const std::string& name, const std::string& path, const std::string& list, int line) {
    if (name == "-f" || name == "-F") return read(path, name == "-F", list, line);
    if (name == "-v") return file(path, list, line);
    text::FileStatus status;
    const int r = text::fileSystem().statAt(text::FileSystem::kCwd, path, true, &status);
    if (r < 0) return problem(list, line, path + ": " + text::errorText(r));
    if (!status.isDirectory()) return problem(list, line, path + ": Is not a folder");
    auto& folders = name == "-y" ? found_.libraryFolders : found_.includeFolders;
    if (std::find(folders.begin(), folders.end(), path) == folders.end()) folders.push_back(path);
  }

  void file(const std::string& path, const std::string& list, int line) {
    text::FileStatus status;
    const int r = text::fileSystem().statAt(text::FileSystem::kCwd, path, true, &status);
    if (r < 0) return problem(list, line, path + ": " + text::errorText(r));
    if (const std::string what = text::files::notRegularText(status); !what.empty()) return problem(list, line, path + ": " + what);
    add(path);
  }

  void add(const std::string& path) {
    if (seen_.insert(path).second) found_.files.push_back(path);
  }

  void library(const std::string& path) {
    static const std::vector<std::string> kUsual{".v", ".sv"};
    const auto& extensions = found_.libraryExtensions.empty() ? kUsual : found_.libraryExtensions;
    std::vector<Listed> entries;
    bool hasRules = false, hasGit = false;
    listFolder(path, &entries, &hasRules, &hasGit);
    for (const Listed& entry : entries)
      if (entry.isFile &&
          std::any_of(extensions.begin(), extensions.end(), [&](const std::string& e) { return entry.name.ends_with(e); }))
        add(path + '/' + entry.name);
  }

  void include(const std::string& file, const std::string& name) {
    std::vector<std::string> folders{text::files::splitPath(file).folder, working_};
    folders.insert(folders.end(), found_.includeFolders.begin(), found_.includeFolders.end());
    for (const std::string& folder : folders) {
      const std::string path = absolute(name, folder);
      text::FileStatus status;
      if (text::fileSystem().statAt(text::FileSystem::kCwd, path, true, &status) < 0 || !status.isRegular()) continue;
      return add(path);
    }
  }

  const std::string working_;
  const std::atomic<bool>* cancel_;
  FileList found_;
  std::vector<std::string> open_;   // lists that are being read, outermost first
  std::set<std::string> seen_;
};

}   // namespace

FileList readFileList(const std::string& list, const std::string& workingFolder, bool relativeToList,
                      const std::atomic<bool>* cancel) {
  Reader reader(workingFolder, cancel);
  reader.read(list, relativeToList, list, 0);
  return reader.finish();
}

std::string likelyWorkingFolder(const std::string& list) {
  const std::string own = text::files::splitPath(list).folder;
  std::string best = own;
  std::size_t most = 0;
  for (std::string at = own; !at.empty() && at != "/" && at != ".";) {
    Reader reader(at, nullptr);
    reader.read(list, false, list, 0);
    const std::size_t here =
        reader.found().files.size() + reader.found().includeFolders.size() + reader.found().libraryFolders.size();
    if (here > most) {
      most = here;
      best = at;
    }
    const std::size_t slash = at.rfind('/');
    at.resize(slash == std::string::npos ? 0 : slash);
  }
  return best;
}

}   // namespace folder
