#include "folder/FileLook.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <new>

#include "folder/Walk.h"
#include "text/file/Decode.h"
#include "text/file/FileCalls.h"

namespace folder {

namespace {

constexpr std::size_t kWideSample = 64 << 10;   // what tells UTF-16
constexpr std::size_t kSmallest = 64 << 10;     // of the memory that files are read into
constexpr std::size_t kKept = 4 << 20;          // more than that is given back behind a large file
constexpr std::int64_t kLargest = std::int64_t(1) << 30;

Skipped kindOf(int error) {
  switch (-error) {
    case EACCES:
    case EPERM: return Skipped::noRights;
    case ENOENT:
    case ENOTDIR:
#ifdef ESTALE
    case ESTALE:
#endif
      return Skipped::vanished;
    case ENXIO:
    case ENODEV:
    case EISDIR: return Skipped::notRegular;
    case ELOOP: return Skipped::linkLoop;
    case ENOMEM:
    case EFBIG:
    case EOVERFLOW: return Skipped::tooLarge;
    default: return Skipped::unreadable;
  }
}

// Only texts with NULs in what is looked at are taken for UTF-16 without a mark.
bool mayBeWide(std::string_view bytes) {
  return bytes.starts_with("\xff\xfe") || bytes.starts_with("\xfe\xff") ||
         bytes.substr(0, kWideSample).find('\0') != std::string_view::npos;
}

}   // namespace

const char* reason(Skipped skipped) {
  static constexpr const char* kTexts[kSkippedKinds] = {
      "", "binary", "too large", "no rights", "gone meanwhile", "no regular file", "link loop", "search given up", "not readable"};
  return kTexts[static_cast<int>(skipped)];
}

FileLook::FileLook(const ReadRules& rules) : rules_(rules), largest_(rules.largest) {
  const auto memory = static_cast<std::int64_t>(std::min<std::uint64_t>(text::physicalMemory(), INT64_MAX));
  if (largest_ <= 0) largest_ = memory > 0 ? std::min(kLargest, memory / 8) : kLargest;
}

// Reads to the end, also of a file that grows meanwhile. 0 or -errno; -EFBIG beyond the largest.
int FileLook::fill(int fd, std::int64_t expected, std::size_t* length) {
  const auto needed = static_cast<std::size_t>(expected) + 1;   // the read behind the end is the same call
  if (!buffer_ || buffer_.use_count() > 1 || capacity_ < needed || (capacity_ > kKept && needed < kKept)) {
    capacity_ = std::max(kSmallest, needed + needed / 4);
    buffer_.reset();
    buffer_ = std::make_shared_for_overwrite<char[]>(capacity_);
  }
  std::size_t filled = 0;
  for (;;) {
    if (static_cast<std::int64_t>(filled) > largest_) return -EFBIG;
    if (filled == capacity_) {
      auto more = std::make_shared_for_overwrite<char[]>(capacity_ * 2);
      std::memcpy(more.get(), buffer_.get(), filled);
      buffer_ = std::move(more);
      capacity_ *= 2;
    }
    const std::size_t wanted = capacity_ - filled;
    const std::int64_t n = text::files::readSome(fd, buffer_.get() + filled, wanted);
    if (n < 0) return static_cast<int>(n);
    filled += static_cast<std::size_t>(n);
    *length = filled;
    // Short of what was asked for and as long as it was said to be: that is the end.
    if (n == 0 || (static_cast<std::size_t>(n) < wanted && static_cast<std::int64_t>(filled) == expected)) return 0;
  }
}

FileLook::Text FileLook::read(const std::string& path, const text::Needles& needles) try {
  Text result;
  const auto skip = [&](Skipped kind, std::string why = {}) {
    result.skipped = kind;
    result.why = std::move(why);
    return std::move(result);
  };
  text::FileStatus status;
  auto& system = text::fileSystem();
  if (const int r = system.statAt(text::FileSystem::kCwd, path, true, &status); r < 0) return skip(kindOf(r), text::errorText(r));
  if (!status.isRegular()) return skip(Skipped::notRegular, text::files::notRegularText(status));
  if (const auto open = rules_.openTexts.find({status.device, status.inode}); open != rules_.openTexts.end()) {
    result.text = open->second;
    result.bytes = open->second.size().value;
    return result;
  }
  if (status.size > largest_) return skip(Skipped::tooLarge);
  const auto fd = text::files::open(text::FileSystem::kCwd, path, text::kRead | text::kNonBlock);
  if (!fd.ok()) return skip(kindOf(fd.error()), text::errorText(fd.error()));
  if (const int r = system.statFd(fd.get(), &status); r < 0) return skip(kindOf(r), text::errorText(r));
  if (!status.isRegular()) return skip(Skipped::notRegular, text::files::notRegularText(status));
  if (status.size > largest_) return skip(Skipped::tooLarge);
  std::size_t length = 0;
  if (const int r = fill(fd.get(), std::max<std::int64_t>(status.size, 0), &length); r < 0)
    return skip(kindOf(r), text::errorText(r));
  const std::string_view bytes(buffer_.get(), length);
  result.bytes = static_cast<std::int64_t>(length);
  if (!rules_.binary && isBinary(bytes.substr(0, kBinaryHead))) return skip(Skipped::binary);
  if (!mayBeWide(bytes) && !needles.mayMatch(bytes)) return result;
  text::LoadedFile file = text::decodeFile(buffer_, length);
  if (!file.error.empty()) return skip(Skipped::unreadable, file.error);
  result.text = std::move(file.text);
  return result;
} catch (const std::bad_alloc&) {
  Text failed;
  failed.skipped = Skipped::tooLarge;
  failed.why = "Out of memory";
  return failed;
}

}   // namespace folder
