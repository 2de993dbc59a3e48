#include "app/session/SessionFile.h"

#include <cerrno>
#include <charconv>

#include "text/file/FileIo.h"
#include "text/line/OneLine.h"

namespace {

constexpr std::string_view kSessionHeader = "session ", kSessionVersion = "1\n", kOlder = ".old", kNewer = ".new",
                           kDamaged = ".damaged", kLock = ".lock";
constexpr std::size_t kMostNumbers = 5000;   // of one list

// The fields of each part, for reading and for writing.
template <class Io>
void fields(Io& io, KeptDocument& d) {
  io("path", d.path);
  io("title", d.title);
  io("modified", d.modified);
  io("journal", d.journal);
  io("text", d.text);
  io("language", d.language);
  io("encoding", d.encoding);
  io("bom", d.bom);
  io("readonly", d.readOnly);
  io("selection", d.selection);
  io("columns", d.columns);
  io("top", d.top);
  io("folds", d.folds);
  io("zoom", d.zoom);
  io("wrap", d.wrapSwitched);
  io("bars", d.bars);
  io("state", d.state);
  io("level", d.level);
  io("place", d.place);
  io("bookmarks", d.bookmarks);
}
template <class Io>
void fields(Io& io, KeptDock& d) {
  io("name", d.name);
  io("shown", d.shown);
  io("floats", d.floats);
  io("area", d.area);
  io("place", d.place);
}
template <class Io>
void fields(Io& io, SessionState& s) {
  io("active", s.active);
  io("continues", s.continues);
  io("folder", s.folder);
  io("list", s.list);
  io("relative", s.relativeToList);
  io("find", s.find);
  io("replace", s.replace);
  io("case", s.matchCase);
  io("word", s.wholeWord);
  io("regex", s.regex);
  io("preserve", s.preserveCase);
}

void append(std::string* out, const std::string& value) { text::appendOnOneLine(value, out); }
void append(std::string* out, const std::optional<std::string>& value) { text::appendOnOneLine(value.value_or(""), out); }
void append(std::string* out, bool value) { *out += value ? '1' : '0'; }
void append(std::string* out, std::int64_t value) { *out += std::to_string(value); }
template <class Numbers>
void append(std::string* out, const Numbers& values) {
  std::size_t count = 0;
  for (const std::int64_t value : values) {
    if (count++ == kMostNumbers) break;
    if (count > 1) *out += ' ';
    *out += std::to_string(value);
  }
}

template <class Part>
std::vector<std::string> linesOf(Part part) {
  std::vector<std::string> lines;
  auto each = [&lines](const char* name, const auto& value) {
    std::string line = name;
    line += ' ';
    append(&line, value);
    if constexpr (requires { value.has_value(); })
      if (!value) line.clear();
    lines.push_back(std::move(line));
  };
  fields(each, part);
  return lines;
}

// A field that has its usual value is left out.
template <class Part>
void writePart(std::string* out, const Part& part) {
  const std::vector<std::string> lines = linesOf(part), usual = linesOf(Part());
  for (std::size_t i = 0; i < lines.size(); ++i)
    if (lines[i] != usual[i]) *out += lines[i] + '\n';
}

bool readNumber(std::string_view* from, std::int64_t* to) {
  while (from->starts_with(' ')) from->remove_prefix(1);
  std::int64_t read = 0;
  const auto [end, error] = std::from_chars(from->data(), from->data() + from->size(), read);
  if (error != std::errc()) return false;
  from->remove_prefix(std::size_t(end - from->data()));
  *to = read;
  return true;
}

void take(std::string_view from, std::string* to) { *to = text::fromOneLine(from).value_or(std::string()); }
void take(std::string_view from, std::optional<std::string>* to) { *to = text::fromOneLine(from); }
void take(std::string_view from, bool* to) { *to = from == "1"; }
void take(std::string_view from, std::int64_t* to) { readNumber(&from, to); }
void take(std::string_view from, std::vector<std::int64_t>* to) {
  to->clear();
  for (std::int64_t value; to->size() < kMostNumbers && readNumber(&from, &value);) to->push_back(value);
}
template <std::size_t kCount>
void take(std::string_view from, std::array<std::int64_t, kCount>* to) {
  for (std::int64_t& value : *to)
    if (!readNumber(&from, &value)) return;
}

// Takes one line into the field of its name; an unknown name is passed over.
template <class Part>
void readLine(std::string_view line, Part* part) {
  const std::size_t blank = std::min(line.find(' '), line.size());
  const std::string_view name = line.substr(0, blank), rest = line.substr(std::min(blank + 1, line.size()));
  auto each = [&](const char* field, auto& value) {
    if (name == field) take(rest, &value);
  };
  fields(each, *part);
}

bool isWholePath(const std::string& path) {
  const bool whole = path.starts_with('/') || (path.size() > 2 && path[1] == ':');
  return whole && path.find('\0') == std::string::npos;
}
bool isName(const std::string& name) { return name.find_first_of(std::string_view("/\\\0", 3)) == std::string::npos; }

int moveFile(const std::string& from, const std::string& to) {
  return text::fileSystem().renameAt(text::FileSystem::kCwd, from, text::FileSystem::kCwd, to, 0);
}

}   // namespace

std::string SessionFile::format(const SessionState& state) {
  std::string out = std::string(kSessionHeader) + std::string(kSessionVersion);
  writePart(&out, state);
  for (const KeptDock& dock : state.docks) {
    out += "dock\n";
    writePart(&out, dock);
  }
  for (const KeptDocument& document : state.documents) {
    out += "document\n";
    writePart(&out, document);
  }
  return out + "end " + std::to_string(state.documents.size()) + '\n';
}

SessionFile::Parsed SessionFile::parse(std::string_view bytes, SessionState* state, bool* isPartial) {
  *state = {};
  *isPartial = false;
  if (!bytes.starts_with(kSessionHeader)) return Parsed::damaged;
  bytes.remove_prefix(kSessionHeader.size());
  if (!bytes.starts_with(kSessionVersion)) {
    std::int64_t version = 0;
    return readNumber(&bytes, &version) && version > 1 && bytes.starts_with('\n') ? Parsed::later : Parsed::damaged;
  }
  bytes.remove_prefix(kSessionVersion.size());
  constexpr std::size_t kMostDocks = 20;
  KeptDock spareDock;
  KeptDocument spare;
  KeptDock* dock = nullptr;
  KeptDocument* document = nullptr;
  std::int64_t named = 0, said = -1;
  for (std::size_t end; said < 0 && (end = bytes.find('\n')) != std::string_view::npos; bytes.remove_prefix(end + 1)) {
    const std::string_view line = bytes.substr(0, end);
    if (line == "document") {
      const bool fits = state->documents.size() < kMostDocuments;
      ++named;
      document = fits ? &state->documents.emplace_back() : &(spare = {});
      *isPartial = *isPartial || !fits;
    } else if (line == "dock") {
      dock = state->docks.size() < kMostDocks ? &state->docks.emplace_back() : &spareDock;
    } else if (line.starts_with("end ")) {
      take(line.substr(4), &said);
    } else if (document) {
      readLine(line, document);
    } else if (dock) {
      readLine(line, dock);
    } else {
      readLine(line, state);
    }
  }
  if (said != named) {
    *state = {};
    return Parsed::damaged;
  }
  // What cannot be a document is left out, and the active one stays the same.
  std::int64_t active = -1;
  std::vector<KeptDocument> whole;
  for (std::size_t i = 0; i < state->documents.size(); ++i) {
    KeptDocument& one = state->documents[i];
    if (!isName(one.journal)) one.journal.clear();
    if (one.path.empty() ? one.title.empty() : !isWholePath(one.path)) continue;
    if (std::int64_t(i) == state->active) active = std::int64_t(whole.size());
    whole.push_back(std::move(one));
  }
  state->documents = std::move(whole);
  state->active = active;
  return Parsed::good;
}

// Letters, digits, and bytes of other scripts stand for themselves; a full stop never does, so that the endings of the other files tell
// them apart.
std::string SessionFile::fileNameOf(std::string_view name) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string file;
  for (const char c : name) {
    const auto code = static_cast<unsigned char>(c);
    const bool plain =
        (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' || c == '_' || code >= 0x80;
    if (plain) file += c;
    else file.append(1, '%').append(1, kDigits[code >> 4]).append(1, kDigits[code & 15]);
  }
  return file;
}

std::optional<std::string> SessionFile::nameOf(std::string_view fileName) {
  for (const std::string_view ending : {kNewer, kOlder})   // after a program that was killed, they may stand alone
    if (fileName.ends_with(ending)) fileName.remove_suffix(ending.size());
  if (fileName.empty() || fileName.find('.') != std::string_view::npos) return std::nullopt;
  return text::fromOneLine(fileName);
}

bool SessionFile::exists() const {
  for (const std::string_view ending : {std::string_view(), kNewer, kOlder})
    if (text::fileExists(path_ + std::string(ending))) return true;
  return false;
}

bool SessionFile::own() {
  if (lock_.ok()) return true;
  // The lock file is never removed: else two copies could each hold "the" lock.
  text::files::Descriptor file =
      text::files::open(text::FileSystem::kCwd, path_ + std::string(kLock), text::kRead | text::kWrite | text::kCreate, 0600);
  if (!file.ok()) return true;
  if (text::fileSystem().lock(file.get(), true, false) == -EWOULDBLOCK) return false;
  lock_ = std::move(file);
  return true;
}

SessionFile::Read SessionFile::read() {
  Read result;
  isDamaged_ = false;
  std::string trouble;
  // A program that was killed between two renames leaves the newest one under its first name.
  for (const std::string_view ending : {std::string_view(), kNewer, kOlder}) {
    const std::string path = path_ + std::string(ending);
    if (!text::fileExists(path)) continue;
    std::string error;
    const std::string bytes = text::readBytes(path, &error, kMostBytes);
    const Parsed parsed = error.empty() ? parse(bytes, &result.state, &result.isPartial) : Parsed::damaged;
    result.isThere = parsed == Parsed::good;
    if (result.isThere) return result;
    result.state = {};
    if (parsed == Parsed::later) {
      result.mayWrite = false;
      result.trouble = "it was written by a later version of the program";
      return result;
    }
    if (ending.empty()) isDamaged_ = true;
    if (result.trouble.empty()) result.trouble = error.empty() ? "the file is damaged" : error;
    if (ending == kNewer && !isDamaged_) result.trouble.clear();   // it was not whole yet
  }
  return result;
}

std::string SessionFile::write(const SessionState& state, std::uint64_t number) {
  const std::lock_guard writing(writing_);
  if (number < number_) return {};
  std::string bytes = format(state);
  number_ = number;
  if (bytes == written_) return {};
  const std::string newer = path_ + std::string(kNewer);
  if (const text::SaveResult saved = text::saveBytes(newer, bytes, 0600); !saved.ok()) return saved.error;
  if (const int r = moveFile(path_, path_ + std::string(isDamaged_ ? kDamaged : kOlder)); r < 0 && r != -ENOENT)
    return text::errorText(r);
  isDamaged_ = false;
  if (const int r = moveFile(newer, path_); r < 0) return text::errorText(r);
  const auto folder =
      text::files::open(text::FileSystem::kCwd, text::files::splitPath(path_).folder, text::kRead | text::kDirectory);
  if (folder.ok()) text::files::syncFolder(folder.get());
  written_ = std::move(bytes);
  return {};
}

int SessionFile::remove() {
  const std::lock_guard writing(writing_);
  written_.clear();
  int error = 0;
  for (const std::string_view ending : {kNewer, kOlder, std::string_view()})
    if (const int r = text::fileSystem().unlinkAt(text::FileSystem::kCwd, path_ + std::string(ending), false);
        r < 0 && r != -ENOENT)
      error = r;
  return error;
}
