// Comparing two texts of 1,000,000 lines, beside reading and hashing their lines and beside the programs that compare files.
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>

#include "bench/Bench.h"
#include "text/diff/LineDiff.h"
#include "text/line/LineReader.h"
#include "text/store/ContentHash.h"

namespace {

using namespace bench;
namespace fs = std::filesystem;

constexpr int kLines = 1'000'000, kChanges = 10'000;

// Every tenth line is one of its own; many are blank or "end".
std::vector<std::string> lines(bool unique) {
  std::mt19937 random(1);
  std::vector<std::string> all;
  for (int i = 0; i < kLines; ++i) {
    const unsigned what = unique ? 9 : random() % 10;
    all.push_back(what < 3   ? ""
                  : what < 6 ? "  end"
                  : what < 9 ? "    q" + std::to_string(random() % 50) + " <= d;"
                             : "  assign net_" + std::to_string(i) + " = source_" + std::to_string(random() % 1000) + ";");
  }
  return all;
}

std::vector<std::string> changed(std::vector<std::string> all, bool only) {
  std::mt19937 random(2);
  if (only) {
    for (int i = 0; i < kChanges; ++i) all[random() % all.size()] += " // changed";
    return all;
  }
  std::vector<std::string> other;
  for (std::string& line : all) {
    const unsigned what = random() % (2 * kLines / kChanges);
    if (what == 0) continue;
    other.push_back(std::move(line));
    if (what == 1) other.push_back(other[random() % other.size()]);
  }
  return other;
}

std::vector<std::string> shuffled(std::vector<std::string> all) {
  std::shuffle(all.begin(), all.end(), std::mt19937(3));
  return all;
}

std::string joined(const std::vector<std::string>& all) {
  std::string text;
  for (const std::string& line : all) (text += line) += '\n';
  return text;
}

std::uint64_t hashLines(const text::Snapshot& text) {
  std::uint64_t all = 0;
  text::LineReader reader(text);
  for (std::string_view line; reader.next(&line);) all += text::ContentHash::of(line);
  return all;
}

double program(const std::string& command) {
  double shortest = 1e9;
  for (int i = 0; i < 2; ++i) {
    const auto start = std::chrono::steady_clock::now();
    if (const int code = std::system((command + " >/dev/null 2>&1").c_str()); code < 0 || code >> 8 > 1) return 0;
    shortest = std::min(shortest, std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
  }
  return shortest;
}

void compareLines(benchmark::State& state) {
  const char* const base = std::getenv("ZELKOR_BENCH_DIR");
  const fs::path folder = base ? fs::path(base) : fs::temp_directory_path();
  const std::string fileA = (folder / "zelkor-bench-diff-a").string(), fileB = (folder / "zelkor-bench-diff-b").string();
  struct Case {
    const char* name;
    std::vector<std::string> before, after;
    double most;   // seconds
  };
  const std::vector<std::string> unique = lines(true), equal = lines(false);
  for (auto _ : state)
    for (const Case& c :
         {Case{"10,000 lines changed", unique, changed(unique, true), 1},
          Case{"10,000 lines added and removed", unique, changed(unique, false), 1},
          Case{"many equal lines, 10,000 changed", equal, changed(equal, true), 1},
          Case{"many equal lines, 10,000 added and removed", equal, changed(equal, false), 1},
          Case{"shuffled", unique, shuffled(unique), 5}, Case{"many equal lines, shuffled", equal, shuffled(equal), 5}}) {
      const std::string one = joined(c.before), other = joined(c.after);
      const text::Snapshot before(one), after(other);
      std::size_t hunks = 0;
      const double seconds = best(3, [&] { hunks = text::diffLines(before, after).size(); });
      const double limit = best(3, [&] { benchmark::DoNotOptimize(hashLines(before) + hashLines(after)); });
      const std::string name = "compare 1,000,000 lines, " + std::string(c.name) + " (" + std::to_string(hunks) + " hunks)";
      row(name, seconds, "s", c.most);
      ratioRow("the same / (read and hash the lines)", seconds, limit, 0);
      if (c.most > 1) continue;   // the others take minutes
      std::ofstream(fileA, std::ios::binary) << one;
      std::ofstream(fileB, std::ios::binary) << other;
      if (const double theirs = program("diff '" + fileA + "' '" + fileB + "'"); theirs > 0)
        ratioRow("the same / diff, with its reading", seconds, theirs, 0);
      if (const double theirs = program("git diff --no-index '" + fileA + "' '" + fileB + "'"); theirs > 0)
        ratioRow("the same / git diff --no-index, with its reading", seconds, theirs, 0);
    }
  fs::remove(fileA);
  fs::remove(fileB);
}
BENCHMARK(compareLines)->Iterations(1)->Unit(benchmark::kMillisecond);

}   // namespace
