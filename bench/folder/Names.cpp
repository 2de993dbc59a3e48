// Going to a file: ranking 100,000 names for what was typed.
#include "folder/Names.h"
#include "bench/Bench.h"

namespace {

using namespace bench;

void rankNames(benchmark::State& state) {
  static constexpr const char* kWords[] = {"alu",    "fifo",   "uart",  "sync", "core", "axi",
                                           "bridge", "decode", "cache", "pll",  "top",  "pkg"};
  folder::NameTable table("/work");
  std::uint32_t random = 1;
  const auto word = [&] {
    random = random * 1664525 + 1013904223;
    return std::string(kWords[random >> 16 & 7]) + (random >> 28 ? "" : "x");
  };
  for (int i = 0; i < 100'000; ++i)
    table.add("design/" + word() + "/rtl/" + word() + '_' + word() + '/' + word() + '_' + std::to_string(i) + ".sv");
  folder::NameTies ties;
  ties.near = "design/alu/rtl";
  for (auto _ : state)
    for (const char* typed : {"", "a", "alu fifo", "dsgnalurtl9", "99999", "core_99:120"}) {
      const folder::NameQuery query = folder::parseNameQuery(typed);
      const double seconds = best(5, [&] { benchmark::DoNotOptimize(folder::rankNames({&table}, query, ties, 200)); });
      row("go to file, 100,000 names, \"" + std::string(typed) + "\"", seconds * 1000, "ms", 50);
    }
}
BENCHMARK(rankNames)->Iterations(1)->Unit(benchmark::kMillisecond);

}   // namespace
