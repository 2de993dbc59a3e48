#include "folder/CompareFolders.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <future>
#include <memory>
#include <mutex>
#include <new>
#include <optional>
#include <system_error>
#include <thread>

#include "text/file/FileCalls.h"
#include "text/file/FileIo.h"

namespace folder {
namespace {

constexpr std::size_t kPart = 256 << 10;          // of a file, read at a time
constexpr std::size_t kLineEndsMost = 16 << 20;   // larger files are not looked at for their line ends alone
constexpr unsigned kMostThreads = 8;

struct Listing {
  WalkReport report;
  std::vector<std::string> paths;   // below the folder, sorted
};

Listing list(const std::string& folder, const WalkOptions& options, const std::atomic<bool>& cancel) {
  Listing listing;
  const auto visit = [&](const std::string& path) {
    listing.paths.emplace_back(belowRoot(folder, path));
    return true;
  };
  listing.report = walk(folder, options, visit, &cancel);
  return listing;
}

// A file that is read to its end, also while others change it.
class BytesReader {
 public:
  explicit BytesReader(const std::string& path) {
    text::FileStatus status;
    error_ = text::fileSystem().statAt(text::FileSystem::kCwd, path, false, &status);   // links were left out
    if (error_ == 0 && !status.isRegular()) error_ = -EINVAL;
    if (error_ == 0) fd_ = text::files::open(text::FileSystem::kCwd, path, text::kRead | text::kNonBlock | text::kNoFollow);
    if (error_ == 0 && !fd_.ok()) error_ = fd_.error();
    size_ = status.size;
  }
  int error() const { return error_; }
  std::int64_t size() const { return size_; }
  // The next part; shorter than kPart only at the end. False: error() says why.
  bool next(std::vector<char>* to, std::string_view* part) {
    to->resize(kPart);
    std::size_t filled = 0;
    while (filled < kPart) {
      const std::int64_t n = text::files::readSome(fd_.get(), to->data() + filled, kPart - filled);
      if (n < 0) error_ = static_cast<int>(n);
      if (n <= 0) break;
      filled += static_cast<std::size_t>(n);
    }
    *part = {to->data(), filled};
    return error_ == 0;
  }

 private:
  int error_ = 0;
  text::files::Descriptor fd_;
  std::int64_t size_ = 0;
};

bool sameButLineEnds(const std::string& left, const std::string& right) {
  std::string error;
  const std::string a = text::readBytes(left, &error, kLineEndsMost),
                    b = error.empty() ? text::readBytes(right, &error, kLineEndsMost) : "";
  if (!error.empty()) return false;
  const auto atBreak = [](const std::string& s, std::size_t i) { return s[i] == '\r' && i + 1 < s.size() && s[i + 1] == '\n'; };
  std::size_t i = 0, j = 0;
  while (i < a.size() && j < b.size()) {
    if (atBreak(a, i)) ++i;
    if (atBreak(b, j)) ++j;
    if (a[i++] != b[j++]) return false;
  }
  return i == a.size() && j == b.size();
}

// The future of what runs on another thread, with its exceptions; the destructor waits for it. Invalid: no thread is to be had.
template <class Work>
auto onThread(Work work) -> std::future<decltype(work())> try {
  return std::async(std::launch::async, std::move(work));
} catch (const std::system_error&) { return {}; }

// Compares pairs of files on several threads.
class Pairs {
 public:
  Pairs(const std::string& left, const std::string& right, text::SearchControl& control)
      : left_(left), right_(right), control_(control) {}

  std::vector<std::string> paths;
  std::vector<FileDifference> differences;
  std::int64_t same = 0;

  void run() {
    control_.bytesTotal = static_cast<std::int64_t>(paths.size());
    const unsigned count = std::clamp(std::thread::hardware_concurrency(), 1u, kMostThreads);
    std::vector<std::future<void>> others;   // each is waited for, whatever is thrown
    for (unsigned i = 1; i < count && i < paths.size(); ++i) {
      others.push_back(onThread([this] { work(); }));
      if (!others.back().valid()) {   // those there are do it
        others.pop_back();
        break;
      }
    }
    work();
    for (std::future<void>& other : others) other.get();
  }

 private:
  void work() try {
    std::array<std::vector<char>, 2> buffers;
    std::vector<FileDifference> found;
    std::int64_t equal = 0;
    for (std::size_t i = 0; (i = next_++) < paths.size() && !control_.cancel; ++control_.bytesDone) {
      if (auto difference = compare(paths[i], &buffers)) found.push_back(std::move(*difference));
      else ++equal;
    }
    const std::lock_guard<std::mutex> lock(mutex_);
    same += equal;
    std::move(found.begin(), found.end(), std::back_inserter(differences));
  } catch (...) {
    next_ = paths.size();   // the others end as well
    throw;
  }

  std::optional<FileDifference> compare(const std::string& path, std::array<std::vector<char>, 2>* buffers) {
    const std::string one = joined(left_, path), other = joined(right_, path);
    BytesReader a(one), b(other);
    const auto failed = [&](const char* where, int error) -> FileDifference {
      return {FileDifference::unreadable, path, 1, "in the " + std::string(where) + " folder: " + text::errorText(error)};
    };
    if (a.error() == -ENOENT && b.error() != -ENOENT) return FileDifference{FileDifference::onlyRight, path, 1, {}};
    if (b.error() == -ENOENT && a.error() != -ENOENT) return FileDifference{FileDifference::onlyLeft, path, 1, {}};
    if (a.error() == -ENOENT) return std::nullopt;   // both are gone meanwhile
    if (a.error() != 0) return failed("first", a.error());
    if (b.error() != 0) return failed("second", b.error());
    FileDifference difference{FileDifference::content, path, 1, {}};
    for (bool first = true;; first = false) {
      std::string_view partA, partB;
      if (!a.next(&(*buffers)[0], &partA)) return failed("first", a.error());
      if (!b.next(&(*buffers)[1], &partB)) return failed("second", b.error());
      if (first && (isBinary(partA.substr(0, kBinaryHead)) || isBinary(partB.substr(0, kBinaryHead))))
        difference.kind = FileDifference::binary;
      if (partA != partB) {
        const auto end = std::mismatch(partA.begin(), partA.end(), partB.begin(), partB.end()).first;
        difference.line += std::count(partA.begin(), end, '\n');
        if (difference.kind == FileDifference::binary) difference.line = 1;
        else if (sameButLineEnds(one, other)) difference.kind = FileDifference::lineEnds;
        return difference;
      }
      if (partA.size() < kPart) return std::nullopt;
      if (difference.kind == FileDifference::binary && a.size() != b.size()) return difference;
      difference.line += std::count(partA.begin(), partA.end(), '\n');
      if (control_.cancel) return std::nullopt;
    }
  }

  const std::string &left_, &right_;
  text::SearchControl& control_;
  std::atomic<std::size_t> next_{0};
  std::mutex mutex_;
};

}   // namespace

FoldersCompared compareFolders(const std::string& left, const std::string& right, const WalkOptions& options,
                               text::SearchControl& control) try {
  FoldersCompared result;
  WalkOptions plain = options;
  plain.links = plain.textOnly = false;
  const auto listRight = [&] { return list(right, plain, control.cancel); };
  std::future<Listing> other = onThread(listRight);
  Listing a = list(left, plain, control.cancel), b = other.valid() ? other.get() : listRight();
  for (const auto& [listing, folder] : {std::pair{&a, &left}, std::pair{&b, &right}}) {
    const WalkReport& report = listing->report;
    if (!report.error.empty() && result.error.empty()) result.error = *folder + ": " + report.error;
    result.unlisted += report.unreadable - std::ssize(report.troubles);
    result.leftOut += report.ignored + report.hidden + report.masked + report.links + report.special;
    for (const WalkTrouble& trouble : report.troubles) {
      const std::string which = listing == &a ? "in the first folder: " : "in the second folder: ";
      result.differences.push_back(
          {FileDifference::unreadable, std::string(belowRoot(*folder, trouble.path)), 1, which + trouble.reason});
    }
  }
  if (!result.error.empty()) return result;

  // What only one folder gave may be in the other all the same, in another form or left out there.
  const auto lonely = [&](const std::string& path, const std::string& where, FileDifference::Kind kind) {
    text::FileStatus status;
    const int r = text::fileSystem().statAt(text::FileSystem::kCwd, joined(where, path), false, &status);
    const std::string place = kind == FileDifference::onlyLeft ? "second" : "first";
    if (r == -ENOENT || r == -ENOTDIR) result.differences.push_back({kind, path, 1, {}});
    else if (r < 0)
      result.differences.push_back({FileDifference::unreadable, path, 1, "in the " + place + " folder: " + text::errorText(r)});
    else if (status.isRegular()) ++result.leftOut;
    else
      result.differences.push_back({FileDifference::otherKind, path, 1,
                                    std::string(status.isSymlink()     ? "is a link"
                                                : status.isDirectory() ? "is a folder"
                                                                       : "is no regular file") +
                                        " in the " + place + " folder"});
  };
  Pairs pairs(left, right, control);
  for (std::size_t i = 0, j = 0; (i < a.paths.size() || j < b.paths.size()) && !control.cancel;) {
    const int order = i == a.paths.size() ? 1 : j == b.paths.size() ? -1 : a.paths[i].compare(b.paths[j]);
    if (order < 0) lonely(a.paths[i++], right, FileDifference::onlyLeft);
    else if (order > 0) lonely(b.paths[j++], left, FileDifference::onlyRight);
    else {
      pairs.paths.push_back(std::move(a.paths[i++]));
      ++j;
    }
  }
  pairs.run();
  result.same = pairs.same;
  std::move(pairs.differences.begin(), pairs.differences.end(), std::back_inserter(result.differences));
  std::stable_sort(result.differences.begin(), result.differences.end(),
                   [](const FileDifference& x, const FileDifference& y) { return x.path < y.path; });
  result.stopped = control.cancel;
  return result;
} catch (const std::bad_alloc&) {
  FoldersCompared failed;
  failed.error = "Out of memory";
  return failed;
}

std::string textOf(const FileDifference& difference) {
  switch (difference.kind) {
    case FileDifference::onlyLeft: return "only in the first folder";
    case FileDifference::onlyRight: return "only in the second folder";
    case FileDifference::content: return "differs";
    case FileDifference::lineEnds: return "differs in the ends of lines only";
    case FileDifference::binary: return "differs (binary)";
    case FileDifference::otherKind: return difference.why;
    case FileDifference::unreadable: return "cannot be read " + difference.why;
  }
  return {};
}

}   // namespace folder
