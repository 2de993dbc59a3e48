// Files: loading against reading and counting, saving against writing with sync.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

#include "bench/Bench.h"
#include "text/file/FileIo.h"

namespace {

using namespace bench;
using namespace text;

// Nothing is measured when the operation itself failed.
void require(const std::string& error) {
  if (error.empty()) return;
  std::fprintf(stderr, "%s\n", error.c_str());
  std::exit(1);
}

void load(benchmark::State& state) {
  const auto size = static_cast<std::size_t>(state.range(0));
  const auto path = logFile(size);
  for (auto _ : state) {
    require(readingRows("load " + megabytes(size), path, size, [&] { return loadFile(path); }).error);
  }
}
BENCHMARK(load)->Arg(100 * MB)->Arg(GB)->Iterations(1)->Unit(benchmark::kMillisecond);

// The limit: as many bytes from memory to a new file, synced.
double writeAndSync(const std::string& path, const std::string& bytes) {
  return best(3, [&] {
    const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL, 0600);
    for (std::size_t at = 0; at < bytes.size();) {
      const ssize_t n = ::write(fd, bytes.data() + at, std::min<std::size_t>(bytes.size() - at, 1 << 20));
      if (n <= 0) std::exit(1);
      at += static_cast<std::size_t>(n);
    }
    ::fsync(fd);
    ::close(fd);
    ::unlink(path.c_str());
  });
}

// An old file: one that was written in the last seconds is looked at twice before it is replaced.
void makeOld(const std::string& path) {
  namespace fs = std::filesystem;
  fs::last_write_time(path, fs::file_time_type::clock::now() - std::chrono::hours(1));
}

void save(benchmark::State& state) {
  const auto size = static_cast<std::size_t>(state.range(0));
  const auto log = logFile(size);
  const auto path = log + ".saved";
  for (auto _ : state) {
    std::string error;
    const auto limit = writeAndSync(path, readBytes(log, &error));
    require(error);
    const auto file = loadFile(log);
    require(file.error);
    ::unlink(path.c_str());
    double fresh = 1e9, over = 1e9;
    for (int i = 0; i < 3; ++i) {
      ::unlink(path.c_str());
      SaveResult result;
      fresh = std::min(fresh, best(1, [&] { result = saveFile(path, file.text, {}); }));
      require(result.error);
      makeOld(path);
      over = std::min(over, best(1, [&] { result = saveFile(path, file.text, {{}, result.stamp}); }));
      require(result.error);
    }
    ratioRow("save " + megabytes(size) + ", new file / (write + sync)", fresh, limit, size > 10 * MB ? 1.5 : 0);
    ratioRow("save " + megabytes(size) + ", checked and replaced / (write + sync)", over, limit, size > 10 * MB ? 2.0 : 0);
    row("save " + megabytes(size) + " with sync", over * 1e3, "ms", size > 10 * MB ? 0 : 50);
    ::unlink(path.c_str());
  }
}
BENCHMARK(save)->Arg(MB)->Arg(100 * MB)->Iterations(1)->Unit(benchmark::kMillisecond);

}   // namespace
