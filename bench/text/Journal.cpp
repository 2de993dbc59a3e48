// The recovery journal: what a key costs with it and without it, and the start with nothing to recover.
#include <cstdlib>
#include <filesystem>
#include <numeric>
#include <vector>

#include "bench/Bench.h"
#include "text/journal/Journal.h"
#include "text/journal/JournalRead.h"

namespace {

using namespace bench;
using namespace text;

struct Folder {
  Folder() {
    char name[] = "/tmp/zelkor-bench-XXXXXX";
    if (::mkdtemp(name)) path = name;
  }
  ~Folder() { std::filesystem::remove_all(path); }
  std::string path;
};

struct Keys {
  double mean = 0, worst = 0;   // seconds of a key
};

Keys typed(Document& document, int count) {
  std::vector<double> each;
  std::int64_t at = document.snapshot().size().value / 2;
  for (int i = 0; i < count; ++i, ++at) {
    const auto start = std::chrono::steady_clock::now();
    document.apply(Edit{{ByteOffset(at), ByteOffset(at)}, "x"}, {}, Join::typing);
    each.push_back(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
  }
  return {std::accumulate(each.begin(), each.end(), 0.0) / count, *std::max_element(each.begin(), each.end())};
}

void keys(benchmark::State& state) {
  for (auto _ : state) {
    const Folder folder;
    for (const std::size_t size : {MB, 50 * MB}) {
      const std::string name = std::to_string(size / MB) + " MB";
      const Snapshot text(simulationLog(size));
      Document without;
      without.reset(text);
      typed(without, 100);
      const Keys off = typed(without, 5000);
      JournalWriter writer(folder.path);
      Document with;
      with.reset(text);
      Journal journal(writer, with);
      const Keys first = typed(with, 1);
      const Keys on = typed(with, 5000);
      row("key, " + name + ", without journal", off.mean * 1e6, "us", 0);
      row("key, " + name + ", with journal, beyond that", (on.mean - off.mean) * 1e6, "us", 1000);
      row("the first one, which begins the journal", first.mean * 1e6, "us", 1000);
      row("the slowest of 5,000", on.worst * 1e6, "us", 0);
      const auto start = std::chrono::steady_clock::now();
      writer.flush(60000);
      row("everything on the disk", std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count() * 1e3, "ms", 0);
      journal.discard();
    }
  }
}
BENCHMARK(keys)->Iterations(1)->Unit(benchmark::kMillisecond);

void start(benchmark::State& state) {
  for (auto _ : state) {
    const Folder folder;
    const double seconds = best(5, [&] {
      const JournalWriter writer(folder.path + "/recovery");
      benchmark::DoNotOptimize(leftJournals(writer.folder()).size());
    });
    row("start with nothing to recover", seconds * 1e3, "ms", 5);
  }
}
BENCHMARK(start)->Iterations(1)->Unit(benchmark::kMillisecond);

}   // namespace
