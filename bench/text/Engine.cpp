// The text engine: building, typing, many edits, bulk replacing with its undo, marks, memory.
#include <cstdio>
#include <random>

#include "bench/Bench.h"
#include "text/store/Document.h"

namespace {

using namespace bench;
using namespace text;

constexpr std::size_t blockSize = 1 << 20;

Snapshot readInBlocks(const std::string& path) {
  SnapshotBuilder builder;
  std::FILE* in = std::fopen(path.c_str(), "rb");
  for (;;) {
    auto block = std::shared_ptr<char[]>(new char[blockSize]);
    const auto read = std::fread(block.get(), 1, blockSize, in);
    if (read == 0) break;
    builder.append(std::move(block), read);
  }
  std::fclose(in);
  return builder.finish();
}

void build(benchmark::State& state) {
  const auto size = static_cast<std::size_t>(state.range(0));
  const auto path = logFile(size);
  for (auto _ : state) {
    const Snapshot text = readingRows("build from blocks, " + megabytes(size), path, size, [&] { return readInBlocks(path); });
    std::mt19937_64 random(1);
    const int count = 200000;
    const auto look = best(1, [&] {
      for (int i = 0; i < count; ++i) {
        const auto line = text.lineAt(ByteOffset(static_cast<std::int64_t>(random() % size)));
        benchmark::DoNotOptimize(text.lineStart(line));
      }
    });
    row("line at a random offset and its start, " + megabytes(size), look / count * 1e6, "us", 0);
  }
}
BENCHMARK(build)->Arg(100 * MB)->Arg(GB)->Iterations(1)->Unit(benchmark::kMillisecond);

void typing(benchmark::State& state) {
  for (auto _ : state) {
    Document other;   // the code has run before
    other.apply(Edit{{}, "x"}, {}, Join::typing);
    Document document;
    document.reset(readInBlocks(logFile(GB)));
    std::int64_t at = GB / 2;
    const auto type = [&](int count) {
      for (int i = 0; i < count; ++i, ++at) document.apply(Edit{{ByteOffset(at), ByteOffset(at)}, "x"}, {}, Join::typing);
    };
    const auto first = best(1, [&] { type(1); });
    row("first typed character in the middle of 1 GB", first * 1e6, "us", 0);
    const auto before = allocatedMemory();
    const auto thousand = best(1, [&] { type(1000); });
    row("one more typed character there", thousand * 1e3, "us", 20);
    row("memory per 1,000 typed characters", static_cast<double>(allocatedMemory() - before) / 1e3, "KB", 200);
    const Snapshot held = document.snapshot();
    const auto jumping = best(1, [&] {
      for (int i = 0; i < 1000; ++i) {
        at = static_cast<std::int64_t>((static_cast<std::uint64_t>(i) * 2654435761u) % GB);
        type(1);
      }
    });
    row("typed character at 1,000 far places", jumping * 1e3, "us", 20);

    std::vector<MarkId> marks;
    const auto adding = best(1, [&] {
      for (std::int64_t i = 0; i < 300000; ++i) marks.push_back(document.addMark(ByteOffset(i * 3000)));
    });
    row("adding one of 300,000 marks", adding / 300000 * 1e6, "us", 0);
    at = GB / 3;
    row("typed character with 300,000 marks", best(1, [&] { type(1000); }) * 1e3, "us", 20);
  }
}
BENCHMARK(typing)->Iterations(1)->Unit(benchmark::kMillisecond);

// Seconds for a million random small edits, all kept for undo.
double randomEdits(Snapshot text, double* undoMemory) {
  Document document;
  const auto size = text.size().value;
  document.reset(std::move(text));
  document.setUndoLimit(SIZE_MAX, SIZE_MAX);
  const auto before = allocatedMemory();
  std::mt19937_64 random(7);
  const auto seconds = best(1, [&] {
    for (int i = 0; i < 1000000; ++i) {
      const auto begin = static_cast<std::int64_t>(random() % static_cast<std::uint64_t>(size - 100));
      const bool remove = i % 2 == 1;
      document.apply(Edit{{ByteOffset(begin), ByteOffset(begin + (remove ? 4 : 0))}, remove ? "" : "edit"}, {});
    }
  });
  *undoMemory = static_cast<double>(allocatedMemory() - before) / 1e6;
  return seconds;
}

void randomly(benchmark::State& state) {
  for (auto _ : state) {
    double small = 0, large = 0;
    const auto log = simulationLog(MB);
    const auto atMB = randomEdits(Snapshot(log), &small);
    const auto atGB = randomEdits(readInBlocks(logFile(GB)), &large);
    row("one of 1,000,000 random edits at 1 GB", atGB, "us", 20);
    ratioRow("1,000,000 random edits at 1 GB / at 1 MB", atGB, atMB, 3);
    row("memory for each of them with undo, 1 MB", small, "B", 0);
    row("memory for each of them with undo, 1 GB", large, "B", 0);
  }
}
BENCHMARK(randomly)->Iterations(1)->Unit(benchmark::kMillisecond);

void grouped(benchmark::State& state) {
  constexpr std::int64_t count = 100000;
  for (auto _ : state) {
    Document document;
    document.reset(readInBlocks(logFile(100 * MB)));
    const auto edits = best(1, [&] {
      const UndoGroup group(document);
      for (std::int64_t i = 0; i < count; ++i) {
        const ByteOffset at((i * 7919 * 1009) % static_cast<std::int64_t>(100 * MB));
        document.apply(Edit{{at, at + i % 3}, "macro"}, {});
      }
    });
    row("one of 100,000 single edits in a group, 100 MB", edits / count * 1e6, "us", 20);
    row("undo of the group", best(1, [&] { document.undo(); }) * 1e3, "ms", edits * 1e3);
  }
}
BENCHMARK(grouped)->Iterations(1)->Unit(benchmark::kMillisecond);

void replaceAll(benchmark::State& state) {
  const auto log = simulationLog(100 * MB);
  std::vector<Edit> edits;
  for (auto at = log.find(logWord); at != log.npos; at = log.find(logWord, at + logWord.size())) {
    const auto begin = static_cast<std::int64_t>(at);
    edits.push_back({{ByteOffset(begin), ByteOffset(begin + static_cast<std::int64_t>(logWord.size()))}, "exchange"});
  }
  for (auto _ : state) {
    const auto limit = limitCopy(log) + limitMemmem(log, logWord);
    Document document;
    document.reset(Snapshot(log));
    const auto before = allocatedMemory();
    const auto apply = best(1, [&] { document.apply(edits, {}); });
    const auto memory = allocatedMemory() - before;
    const auto undo = best(1, [&] { document.undo(); });
    const auto redo = best(1, [&] { document.redo(); });
    ratioRow("replacing " + std::to_string(edits.size()) + " words in 100 MB / (copy + memmem)", apply, limit, 6);
    ratioRow("undo of it / the replacing", undo, apply, 1);
    ratioRow("redo of it / the replacing", redo, apply, 1);
    row("memory for it with undo", static_cast<double>(memory) / 1e6, "MB", 0);
    // The text as it reads afterwards: whole, in the runs that searching and saving see.
    const auto size = static_cast<std::size_t>(document.snapshot().size().value);
    std::string whole(size, ' ');
    const auto reading = best(3, [&] {
      const auto& text = document.snapshot();
      char* to = whole.data();
      for (ByteOffset at; at < text.size();) {
        const auto chunk = text.chunkAt(at);
        to = std::copy(chunk.begin(), chunk.end(), to);
        at += static_cast<std::int64_t>(chunk.size());
      }
    });
    const auto again = whole;
    const auto copying = best(3, [&] { whole.replace(0, size, again); });
    ratioRow("reading the replaced text by chunks / copying it", reading, copying, 0);
  }
}
BENCHMARK(replaceAll)->Iterations(1)->Unit(benchmark::kMillisecond);

}   // namespace
