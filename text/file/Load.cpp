// Reads files: whole texts in blocks that the text keeps, small files as bytes, and stamps.
#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>
#include <new>
#include <vector>

#include "text/file/Decode.h"
#include "text/file/EncodingStreams.h"
#include "text/file/FileCalls.h"
#include "text/file/FileIo.h"
#include "text/store/ContentHash.h"

namespace text {
namespace {

constexpr std::size_t kBlock = 1024 * 1024;     // size of a block of a large text
constexpr std::size_t kStep = 128 * 1024;       // read and examined at once, so that it is still in the cache
constexpr char kNoMemory[] = "Out of memory";   // short enough to need no memory itself

// The kinds of line breaks in a text.
struct BreakScan {
  bool lf = false, cr = false, lfBeforeCr = false;
  void add(std::string_view bytes) {
    if (!lf) {
      const auto at = bytes.find('\n');
      lf = at != std::string_view::npos;
      if (lf) lfBeforeCr = !cr && bytes.substr(0, at).find('\r') == std::string_view::npos;
    }
    if (!cr) cr = bytes.find('\r') != std::string_view::npos;
  }
  LineMode mode() const { return cr && !lf ? LineMode::cr : LineMode::lf; }
};

struct Block {
  std::shared_ptr<const char[]> bytes;
  std::size_t length = 0;
};

// Opens a regular file for reading; never waits for a FIFO or touches a device. Returns an error text, empty on success.
std::string openRegular(const std::string& path, files::Descriptor* fd, FileStatus* status) {
  if (const int r = fileSystem().statAt(FileSystem::kCwd, path, true, status); r < 0) return errorText(r);
  if (auto text = files::notRegularText(*status); !text.empty()) return text;
  *fd = files::open(FileSystem::kCwd, path, kRead | kNonBlock);
  if (!fd->ok()) return errorText(fd->error());
  if (const int r = fileSystem().statFd(fd->get(), status); r < 0) return errorText(r);
  return files::notRegularText(*status);
}

bool isProtected(const std::string& path, const FileStatus& status) {
  constexpr std::uint32_t kWriters = 0222;
  return (status.mode & kWriters) == 0 || fileSystem().accessAt(FileSystem::kCwd, path, false) < 0;
}

class Loader {
 public:
  Loader(const LoadOptions& options, SearchControl* control) : options_(options), control_(control) {}

  LoadedFile load(const std::string& path) {
    LoadedFile file;
    files::Descriptor fd;
    file.error = openRegular(path, &fd, &file.stamp.status);
    if (file.error.empty() && physicalMemory() > 0 && static_cast<std::uint64_t>(file.stamp.status.size) > physicalMemory())
      file.error = "The file is larger than the memory of this computer";
    if (control_) control_->bytesTotal = file.stamp.status.size;
    if (file.error.empty()) file.error = readAll(fd.get(), file.stamp.status.size);
    if (file.error.empty()) file.error = makeText(&file);
    if (!file.error.empty()) {
      file.text = Snapshot();
      return file;
    }
    file.stamp.exists = true;
    file.stamp.contentHash = hash_.value();
    file.readOnly = isProtected(path, file.stamp.status);
    return file;
  }

  LoadedFile decode(std::shared_ptr<const char[]> bytes, std::size_t length) {
    LoadedFile file;
    hashes_ = false;
    for (std::size_t at = 0; at < length; at += kBlock) {
      const std::size_t part = std::min(kBlock, length - at);
      // A byte order mark lies in the first block whole, as it does when a file is read.
      for (std::size_t step = 0; step < part; step += kStep) look({bytes.get() + at + step, std::min(kStep, part - step)});
      take({std::shared_ptr<const char[]>(bytes, bytes.get() + at), part});
    }
    bytes.reset();
    file.error = makeText(&file);
    if (!file.error.empty()) file.text = Snapshot();
    return file;
  }

 private:
  bool cancelled() const { return control_ && control_->cancel.load(std::memory_order_relaxed); }

  // Reads to the end, also if the file grows or shrinks meanwhile. The builder treats each block as UTF-8 at once, because nearly
  // every file is UTF-8.
  std::string readAll(int fd, std::int64_t size) {
    for (;;) {
      const std::int64_t missing = size - total_;
      // A block is never smaller than a byte order mark, so that a mark is complete in the first block.
      const std::size_t capacity = missing > 0 ? std::clamp<std::size_t>(static_cast<std::size_t>(missing), 4, kBlock) : 4096;
      char spare[4096];   // usually there is nothing behind the expected size: do not allocate a block for it
      std::shared_ptr<char[]> block;
      if (missing > 0) block = std::make_shared_for_overwrite<char[]>(capacity);
      char* const to = missing > 0 ? block.get() : spare;
      std::size_t filled = 0;
      bool end = false;
      while (filled < capacity) {
        if (cancelled()) return "Cancelled";
        const std::int64_t n = files::readSome(fd, to + filled, std::min(kStep, capacity - filled));
        if (n < 0) return errorText(static_cast<int>(n));
        end = n == 0;
        if (end) break;
        look({to + filled, static_cast<std::size_t>(n)});
        filled += static_cast<std::size_t>(n);
      }
      if (filled > 0) {
        if (missing <= 0) {
          block = std::make_shared_for_overwrite<char[]>(filled);
          std::memcpy(block.get(), spare, filled);
        }
        take({std::move(block), filled});
      }
      if (end) return {};
    }
  }

  void look(std::string_view bytes) {
    if (hashes_) hash_.add(bytes);
    if (!options_.format) detector_.add(bytes);
    breaks_.add(bytes);
    total_ += static_cast<std::int64_t>(bytes.size());
    if (control_) control_->bytesDone.store(total_, std::memory_order_relaxed);
  }

  void take(Block block) {
    blocks_.push_back(block);
    builder_->append(std::move(block.bytes), block.length);
  }

  bool startsWith(std::string_view mark) const {
    return !mark.empty() && !blocks_.empty() && std::string_view(blocks_[0].bytes.get(), blocks_[0].length).starts_with(mark);
  }

  std::string makeText(LoadedFile* file) {
    if (options_.format) {
      file->format.encoding = options_.format->encoding;
      file->format.bom = startsWith(byteOrderMark(file->format.encoding));
    } else {
      file->format = detector_.result(options_.fallback);
    }
    if (file->format != FileFormat{} || breaks_.mode() != LineMode::lf)
      if (!rebuild(file->format)) return std::string("The file cannot be read as ") + name(file->format.encoding);
    file->firstLineCrlf = !breaks_.lfBeforeCr;
    file->text = builder_->finish();
    return {};
  }

  // Builds the text again if the first guess (UTF-8 without mark, lines ended by LF) was wrong. Each block is freed after its
  // conversion.
  bool rebuild(FileFormat format) {
    builder_.reset();
    if (format.encoding != Encoding::utf8) return convert(format);
    if (format.bom) {
      const auto mark = byteOrderMark(format.encoding).size();
      Block& first = blocks_[0];
      first.bytes = std::shared_ptr<const char[]>(first.bytes, first.bytes.get() + mark);
      first.length -= mark;
    }
    builder_ = std::make_unique<SnapshotBuilder>(breaks_.mode());
    for (auto& block : blocks_)
      if (block.length > 0) builder_->append(std::move(block.bytes), block.length);
    return true;
  }

  bool convert(FileFormat format) {
    Decoder decoder(format.encoding);
    std::vector<std::string> parts;
    breaks_ = BreakScan();
    std::size_t skip = format.bom ? byteOrderMark(format.encoding).size() : 0;
    const auto keep = [&](std::string part) {
      if (part.empty()) return;
      part.shrink_to_fit();
      breaks_.add(part);
      parts.push_back(std::move(part));
    };
    for (auto& block : blocks_) {
      std::string part;
      part.reserve(block.length + block.length / 8);
      decoder.add(std::string_view(block.bytes.get(), block.length).substr(skip), &part);
      skip = 0;
      block.bytes.reset();
      keep(std::move(part));
    }
    std::string rest;
    if (!decoder.finish(&rest)) return false;
    keep(std::move(rest));
    builder_ = std::make_unique<SnapshotBuilder>(breaks_.mode());
    for (auto& part : parts) builder_->append(std::move(part));
    return true;
  }

  const LoadOptions& options_;
  SearchControl* control_;
  std::vector<Block> blocks_;
  std::unique_ptr<SnapshotBuilder> builder_ = std::make_unique<SnapshotBuilder>();
  FormatDetector detector_;
  ContentHash hash_;
  bool hashes_ = true;
  BreakScan breaks_;
  std::int64_t total_ = 0;
};

}   // namespace

LoadedFile loadFile(const std::string& path, const LoadOptions& options, SearchControl* control) {
  try {
    return Loader(options, control).load(path);
  } catch (const std::bad_alloc&) {
    LoadedFile failed;
    failed.error = kNoMemory;
    return failed;
  }
}

LoadedFile decodeFile(std::shared_ptr<const char[]> bytes, std::size_t length, const LoadOptions& options) {
  try {
    return Loader(options, nullptr).decode(std::move(bytes), length);
  } catch (const std::bad_alloc&) {
    LoadedFile failed;
    failed.error = kNoMemory;
    return failed;
  }
}

std::string readBytes(const std::string& path, std::string* error, std::size_t limit) {
  try {
    std::string bytes;
    files::Descriptor fd;
    FileStatus status;
    *error = openRegular(path, &fd, &status);
    if (!error->empty()) return {};
    const std::size_t most = limit > 0 ? limit : std::numeric_limits<std::size_t>::max() / 2;
    const auto expected = static_cast<std::size_t>(std::max<std::int64_t>(status.size, 0));
    for (std::size_t filled = 0;;) {
      if (filled > most || (filled == 0 && expected > most)) {
        *error = "The file is too large";
        return {};
      }
      // One byte more than expected, so that one read also finds the end.
      bytes.resize(filled < expected ? expected + 1 : filled + 4096);
      const std::int64_t n = files::readSome(fd.get(), bytes.data() + filled, bytes.size() - filled);
      if (n < 0) {
        *error = errorText(static_cast<int>(n));
        return {};
      }
      filled += static_cast<std::size_t>(n);
      if (n == 0) {
        bytes.resize(filled);
        return bytes;
      }
    }
  } catch (const std::bad_alloc&) {
    *error = kNoMemory;
    return {};
  }
}

FileStamp stampOf(const std::string& path, bool withContent) {
  FileStamp stamp;
  stamp.exists = fileSystem().statAt(FileSystem::kCwd, path, true, &stamp.status) == 0;
  if (!stamp.exists) stamp.status = {};
  if (!withContent || !stamp.exists || !stamp.status.isRegular()) return stamp;
  files::Descriptor fd = files::open(FileSystem::kCwd, path, kRead | kNonBlock);
  if (!fd.ok()) return stamp;
  fileSystem().statFd(fd.get(), &stamp.status);
  if (const int r = files::hashContent(fd.get(), &stamp.contentHash); r < 0) stamp.contentHash = 0;
  return stamp;
}

bool fileExists(const std::string& path) {
  FileStatus status;
  return fileSystem().statAt(FileSystem::kCwd, path, true, &status) == 0;
}

bool writeProtected(const std::string& path) {
  FileStatus status;
  return fileSystem().statAt(FileSystem::kCwd, path, true, &status) == 0 && isProtected(path, status);
}

std::string makeFolders(const std::string& path, unsigned mode) {
  for (std::size_t at = 0; at != std::string::npos;) {
    at = path.find_first_of(files::kSeparators, at + 1);
    const std::string part = path.substr(0, at);
    if (part.empty() || part == "/") continue;
    const int r = fileSystem().makeDirAt(FileSystem::kCwd, part, mode);
    if (r == 0) continue;
    FileStatus status;
    const int there = fileSystem().statAt(FileSystem::kCwd, part, true, &status);
    if (there == 0 && status.isDirectory()) continue;
    return errorText(there == 0 ? -ENOTDIR : r == -EEXIST ? there : r);
  }
  return {};
}

}   // namespace text
