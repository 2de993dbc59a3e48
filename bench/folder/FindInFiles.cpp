// Finding in a tree of source files, beside ripgrep over the same tree with the same number of threads.
#include "folder/FindInFiles.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <thread>

#include "bench/Bench.h"
#include "folder/Walk.h"

namespace {

using namespace bench;
namespace fs = std::filesystem;

// So many files ($ZELKOR_BENCH_FILES, else 20,000) of 15 KB each, 50 a folder; written once.
std::string tree() {
  const char* const wanted = std::getenv("ZELKOR_BENCH_FILES");
  const int files = wanted ? std::atoi(wanted) : 20'000;
  const char* const base = std::getenv("ZELKOR_BENCH_DIR");
  const fs::path root = (base ? fs::path(base) : fs::temp_directory_path()) / ("zelkor-bench-tree-" + std::to_string(files));
  if (fs::exists(root / "complete")) return root.string();
  fs::remove_all(root);
  const std::string source = verilogFile(4 * MB);
  constexpr std::size_t size = 15'000;
  for (int i = 0; i < files; ++i) {
    const fs::path folder = root / ("block" + std::to_string(i / 2500)) / ("unit" + std::to_string(i / 50 % 50));
    if (i % 50 == 0) fs::create_directories(folder);
    std::ofstream out(folder / ("file" + std::to_string(i) + ".sv"), std::ios::binary);
    const std::size_t at = std::size_t(i) * 7919 % (source.size() - size);
    out << "// file " << i << (i % 100 == 0 ? " rare_marker_" + std::to_string(i) : std::string()) << '\n'
        << source.substr(at, size) << '\n';
  }
  std::ofstream(root / "complete") << '\n';
  return root.string();
}

struct Ran {
  double seconds = 1e9, first = 0;
  std::int64_t lines = 0;
};

Ran ours(const std::string& root, const std::string& what, const text::SearchOptions& options, unsigned threads) {
  Ran ran;
  for (int i = 0; i < 3; ++i) {
    const auto start = Clock::now();
    const folder::FindText text(what, options);
    folder::FindRules rules;
    rules.threads = threads;
    text::SearchControl control;
    std::string rows;
    std::int64_t lines = 0;
    double first = 0;
    folder::findInFiles(
        text, rules,
        [&](const auto& give) {
          folder::WalkOptions all;
          all.ignored = all.hidden = true;
          folder::walk(root, all, [&](const std::string& path) { return give({path, {}}); });
        },
        [&](const folder::FileFinds& file) {
          if (first == 0) first = secondsSince(start);
          rows.clear();
          folder::appendRows(file, &rows);
          lines += static_cast<std::int64_t>(file.rows.size());
        },
        control);
    const double seconds = secondsSince(start);
    if (seconds < ran.seconds) ran = {seconds, first, lines};
  }
  return ran;
}

Ran ripgrep(const std::string& root, const std::string& arguments, unsigned threads) {
  Ran ran;
  const std::string command = "rg --no-config --no-ignore --hidden --no-heading -n --column -j " + std::to_string(threads) + " " +
                              arguments + " '" + root + "'";
  for (int i = 0; i < 3; ++i) {
    const auto start = std::chrono::steady_clock::now();
    std::int64_t lines = 0;
    FILE* pipe = popen(command.c_str(), "r");
    std::string buffer(1 << 16, '\0');
    while (const auto n = fread(buffer.data(), 1, buffer.size(), pipe))
      lines += std::count(buffer.begin(), buffer.begin() + static_cast<std::ptrdiff_t>(n), '\n');
    pclose(pipe);
    ran.seconds = std::min(ran.seconds, std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    ran.lines = lines;
  }
  return ran;
}

void findInFiles(benchmark::State& state) {
  if (std::system("rg --version >/dev/null 2>&1") != 0) {
    state.SkipWithError("ripgrep is not installed");
    return;
  }
  const std::string root = tree();
  const unsigned threads = std::max(1u, std::thread::hardware_concurrency());
  struct Case {
    const char *name, *what, *rg;
    text::SearchOptions options;
  };
  for (auto _ : state)
    for (const Case& c : {Case{"a literal", "rare_marker_", "-F -e rare_marker_", {.matchCase = true}},
                          Case{"the same without case", "Rare_Marker_", "-F -i -e Rare_Marker_", {}},
                          Case{"a whole word in every file", "posedge", "-F -w -e posedge", {.matchCase = true, .wholeWord = true}},
                          Case{"an alternation",
                               "rare_marker_1|no_such_word|neither",
                               "-e 'rare_marker_1|no_such_word|neither'",
                               {.matchCase = true, .regex = true}},
                          Case{"an expression with a literal inside",
                               "\\w+_marker_\\d+5",
                               "-e '\\w+_marker_\\d+5'",
                               {.matchCase = true, .regex = true}},
                          Case{"one without any, and none found (-P)",
                               "[A-Z]{9}\\d{5}[x-z]",
                               "-P -e '[A-Z]{9}\\d{5}[x-z]'",
                               {.matchCase = true, .regex = true}}}) {
      const Ran limit = ripgrep(root, c.rg, threads), ran = ours(root, c.what, c.options, threads);
      if (limit.lines != ran.lines)
        state.SkipWithError(("other lines: " + std::to_string(ran.lines) + " against " + std::to_string(limit.lines)).c_str());
      ratioRow("find in files, " + std::string(c.name) + " (" + std::to_string(ran.lines) + " lines) / rg", ran.seconds,
               limit.seconds, 1.5);
      if (c.options.regex == false) row("its first result", ran.first * 1000, "ms", 50);
    }
}
BENCHMARK(findInFiles)->Iterations(1)->Unit(benchmark::kMillisecond);

}   // namespace
