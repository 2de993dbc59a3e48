#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <new>

#include "text/file/EncodingStreams.h"
#include "text/file/Leftovers.h"
#include "text/file/SaveWays.h"

namespace text {
namespace {

constexpr std::size_t kPart = 256 * 1024;   // converted, hashed or written at once
constexpr std::size_t kStartSync = 8 * 1024 * 1024;
constexpr std::size_t kSmall = 16 * 1024;   // smaller parts are collected before writing

class BytesSource final : public SaveSource {
 public:
  explicit BytesSource(std::string_view bytes) : bytes_(bytes) {}
  std::int64_t size() const override { return static_cast<std::int64_t>(bytes_.size()); }
  int each(const Sink& sink) const override { return bytes_.empty() ? 0 : sink(bytes_); }

 private:
  std::string_view bytes_;
};

class TextSource final : public SaveSource {
 public:
  TextSource(const Snapshot& text, FileFormat format, SearchControl* control) : text_(text), format_(format), control_(control) {
    const int passes = format.encoding == Encoding::utf8 ? 1 : 2;   // see prepare
    if (control_) control_->bytesTotal = text.size().value * passes;
  }

  // Before any file call: determines the size and the first character that cannot be encoded. Returns an error text, empty if all
  // can be.
  std::string prepare() {
    EncodeError misfit;
    if (format_.encoding == Encoding::utf8) {
      size_ = text_.size().value + static_cast<std::int64_t>(format_.bom ? byteOrderMark(Encoding::utf8).size() : 0);
      return {};
    }
    bool fits = true;
    each([&](std::string_view part) { return size_ += static_cast<std::int64_t>(part.size()), 0; }, &fits, &misfit);
    return fits ? std::string() : describe(misfit);
  }
  std::int64_t size() const override { return size_; }
  int each(const Sink& sink) const override { return each(sink, nullptr, nullptr); }

 private:
  int each(const Sink& sink, bool* fits, EncodeError* misfit) const {
    const bool plain = format_.encoding == Encoding::utf8;
    Encoder encoder(format_);
    std::string out;
    bool good = true;
    const auto hand = [&] {
      const int r = out.empty() ? 0 : sink(out);
      out.clear();
      return r;
    };
    if (plain && format_.bom)
      if (const int r = sink(byteOrderMark(format_.encoding)); r < 0) return r;
    for (ByteOffset at; good && at < text_.size();) {
      std::string_view chunk = text_.chunkAt(at);
      if (!plain) chunk = chunk.substr(0, kPart);
      at += static_cast<std::int64_t>(chunk.size());
      if (control_) control_->bytesDone += static_cast<std::int64_t>(chunk.size());
      if (!plain) good = encoder.add(chunk, &out, misfit);
      if (const int r = plain ? sink(chunk) : hand(); r < 0) return r;
    }
    if (!plain && good) good = encoder.finish(&out, misfit);
    if (fits) *fits = good;
    return hand();
  }

  std::string describe(const EncodeError& misfit) const {
    const LineNo line = text_.lineAt(ByteOffset(misfit.offset));
    char what[64];
    const bool byte = static_cast<unsigned char>(text_.at(ByteOffset(misfit.offset))) == misfit.code;
    if (byte) std::snprintf(what, sizeof what, "The byte %02X", static_cast<unsigned>(misfit.code));
    else std::snprintf(what, sizeof what, "The character U+%04X", static_cast<unsigned>(misfit.code));
    return std::string(what) + " in line " + std::to_string(line.value + 1) + " does not fit the encoding " +
           name(format_.encoding);
  }

  const Snapshot& text_;
  FileFormat format_;
  SearchControl* control_;
  std::int64_t size_ = 0;
};

// Resolves the symbolic links of the last part of the path, so that the rename replaces the file at their end.
int followLinks(SaveTarget* target) {
  constexpr int kMostLinks = 40;
  for (int links = 0;; ++links) {
    target->parts = files::splitPath(target->path);
    if (target->parts.name.empty()) return target->path.empty() ? -ENOENT : -EISDIR;
    const int r = fileSystem().statAt(FileSystem::kCwd, target->path, false, &target->status);
    target->exists = r == 0;
    if (r == -ENOENT) return 0;
    if (r < 0) return r;
    if (!target->status.isSymlink()) return 0;
    if (links == kMostLinks) return -ELOOP;
    std::string to;
    if (const int read = fileSystem().readLinkAt(FileSystem::kCwd, target->path, &to); read < 0) return read;
    target->path = to.starts_with('/') || target->parts.folder == "." ? to : target->parts.folder + "/" + to;
  }
}

// Examines target and folder without changing anything. Returns an error text, empty on success.
std::string lookAt(SaveTarget* target) {
  if (const int r = followLinks(target); r < 0) return errorText(r);
  target->folder = files::open(FileSystem::kCwd, target->parts.folder, kRead | kDirectory);
  if (!target->folder.ok() && (!target->exists || target->folder.error() != -EACCES)) return errorText(target->folder.error());
  if (!target->exists) return {};
  if (auto text = files::notRegularText(target->status); !text.empty()) return text;
  if (const int r = fileSystem().accessAt(FileSystem::kCwd, target->path, false); r < 0) return errorText(r);
  target->file = files::open(FileSystem::kCwd, target->path, kRead | kNoFollow | kNonBlock);
  if (!target->file.ok()) return errorText(target->file.error());
  if (const int r = fileSystem().statFd(target->file.get(), &target->status); r < 0) return errorText(r);
  return files::notRegularText(target->status);
}

// True if renaming a new file over the old one is impossible or would separate it from its other names.
bool mustOverwrite(const SaveTarget& target) {
  if (!target.exists) return false;
  if (target.status.links > 1 || !target.folder.ok()) return true;
  FileStatus folder;
  if (fileSystem().statFd(target.folder.get(), &folder) == 0 && folder.device != target.status.device) return true;
  return fileSystem().accessAt(FileSystem::kCwd, target.parts.folder, true) == -EACCES;
}

std::string& recoveryFolder() {
  static std::string folder;
  return folder;
}

std::string recoveryFolderOrDefault() {
  if (!recoveryFolder().empty()) return recoveryFolder();
  const auto variable = [](const char* variableName) {
    const char* value = std::getenv(variableName);
    return std::string(value && *value == '/' ? value : "");
  };
  if (const auto state = variable("XDG_STATE_HOME"); !state.empty()) return state + "/zelkor/recovery";
  if (const auto home = variable("HOME"); !home.empty()) return home + "/.local/state/zelkor/recovery";
  return {};
}

SaveResult save(const std::string& path, const SaveSource& source, const std::optional<FileStamp>& expected, unsigned mode) {
  SaveTarget target;
  target.path = path;
  target.expected = expected;
  target.mode = mode;
  SaveResult result;
  result.error = lookAt(&target);
  if (!result.ok()) return result;
  if (expected && (expected->exists != target.exists || (target.exists && expected->status.size != target.status.size)))
    return saveRefusedAsChanged();
  if (!mustOverwrite(target))
    if (auto replaced = saveByReplacing(target, source)) return *replaced;
  return saveByOverwriting(target, source, recoveryFolderOrDefault());
}

template <class Action>
SaveResult withMemory(Action action) {
  try {
    return action();
  } catch (const std::bad_alloc&) {
    SaveResult failed;
    failed.error = "Out of memory";   // short enough to need no memory itself
    return failed;
  }
}

}   // namespace

SaveResult saveFailed(int error, const std::string& more) {
  SaveResult result;
  result.error = errorText(error) + more;
  return result;
}

SaveResult saveRefusedAsChanged() {
  SaveResult result;
  result.error = "The file was changed by another program";
  result.changedOnDisk = true;
  return result;
}

int writeSource(int fd, const SaveSource& source, std::uint64_t* hash) {
  ContentHash content;
  std::string pending;   // small parts (a much edited text has many) are written together
  std::size_t started = 0;
  const auto flush = [&] {
    const int r = files::writeAll(fd, pending);
    pending.clear();
    return r;
  };
  const int r = source.each([&](std::string_view part) {
    if (part.size() < kSmall) {
      content.add(part);
      pending.append(part);
      return pending.size() >= kPart ? flush() : 0;
    }
    int done = flush();
    for (; done == 0 && !part.empty(); part.remove_prefix(std::min(part.size(), kPart))) {
      content.add(part.substr(0, kPart));
      done = files::writeAll(fd, part.substr(0, kPart));
      started += std::min(part.size(), kPart);
      if (started >= kStartSync) {   // the disk works meanwhile
        fileSystem().startSync(fd);
        started = 0;
      }
    }
    return done;
  });
  if (r < 0) return r;
  *hash = content.value();
  return flush();
}

files::Descriptor createUnfinished(int folder, unsigned mode, std::string* name) {
  files::Descriptor file = files::createUnique(folder, std::string(kUnfinishedPrefix), std::string(kUnfinishedSuffix), mode, name);
  if (file.ok()) fileSystem().lock(file.get(), true, false);
  return file;
}

int removeOwn(int folder, const std::string& name) {
  const int r = fileSystem().unlinkAt(folder, name, false);
  return r == 0 || r == -ENOENT ? 0 : fileSystem().unlinkAt(folder, name, false);
}

std::string savedFile(const std::string& path) {
  SaveTarget target;
  target.path = path;
  return followLinks(&target) == 0 ? target.path : path;
}

void setRecoveryFolder(const std::string& folder) { recoveryFolder() = folder; }

SaveResult saveFile(const std::string& path, const Snapshot& text, const SaveOptions& options, SearchControl* control) {
  return withMemory([&] {
    TextSource source(text, options.format, control);
    SaveResult result;
    result.error = source.prepare();
    return result.ok() ? save(path, source, options.expected, 0666) : result;
  });
}

SaveResult saveBytes(const std::string& path, std::string_view bytes, unsigned mode) {
  return withMemory([&] { return save(path, BytesSource(bytes), std::nullopt, mode); });
}

}   // namespace text
