#include "bench/Bench.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <vector>

#if defined(__GLIBC__)
#include <malloc.h>
#endif
#if defined(__unix__)
#include <unistd.h>
#endif

namespace bench {

namespace {

struct Row {
  std::string what, unit, note;
  double figure, most;
};
std::vector<Row>& rows() {
  static std::vector<Row> list;
  return list;
}

// xorshift: the same numbers everywhere
class Numbers {
 public:
  std::uint64_t upTo(std::uint64_t below) {
    state_ ^= state_ << 13;
    state_ ^= state_ >> 7;
    state_ ^= state_ << 17;
    return (state_ >> 11) % below;
  }

 private:
  std::uint64_t state_ = 0x2545f4914f6cdd1d;
};

}   // namespace

std::string simulationLog(std::size_t bytes) {
  static const char* const units[] = {"top.u_core0.u_alu", "top.u_core1.u_lsu", "top.u_noc.u_router_3", "top.u_ddr.u_phy"};
  static const char* const acts[] = {"write burst", "read burst", "retry", "grant", "transaction", "flush", "stall"};
  static const char* const levels[] = {"INFO", "INFO", "INFO", "WARNING", "DEBUG"};
  Numbers numbers;
  std::string text;
  text.reserve(bytes + 128);
  char line[160];
  for (std::uint64_t time = 0; text.size() < bytes; time += 1 + numbers.upTo(90)) {
    const auto kind = numbers.upTo(7);
    const char* act = kind == 0 || kind == 3 ? "transaction" : acts[kind % 4];
    const int length = std::snprintf(line, sizeof line, "%10llu ns  %-7s %-22s %-12s id=%05llu addr=0x%08llx data=0x%08llx\n",
                                     static_cast<unsigned long long>(time), levels[numbers.upTo(5)], units[numbers.upTo(4)], act,
                                     static_cast<unsigned long long>(numbers.upTo(99999)),
                                     static_cast<unsigned long long>(numbers.upTo(1ull << 32)),
                                     static_cast<unsigned long long>(numbers.upTo(1ull << 32)));
    text.append(line, static_cast<std::size_t>(length));
  }
  text.resize(bytes);
  return text;
}

std::string verilogFile(std::size_t bytes) {
  Numbers numbers;
  std::string text;
  text.reserve(bytes + 1024);
  for (unsigned module = 0; text.size() < bytes; ++module) {
    const auto name = "unit_" + std::to_string(module), width = std::to_string(8 << numbers.upTo(4));
    if (module % 5 == 0) text += "/* Block " + name + ":\n * reads its operands in one cycle,\n * \"answers\" in the next.\n */\n";
    text += "module " + name + " #(parameter W = " + width +
            ") (\n  input wire clk, rst_n,\n  input wire [W-1:0] a, b,\n"
            "  output reg [W-1:0] y\n);\n";
    for (auto i = 4 + numbers.upTo(12); i > 0; --i)
      text += "  wire [W-1:0] t" + std::to_string(i) + " = (a ^ " + width + "'h" + std::to_string(numbers.upTo(99)) +
              ") + b; // step\n";
    text +=
        "  always @(posedge clk or negedge rst_n)\n    if (!rst_n) y <= {W{1'b0}};\n    else begin\n      y <= t1 & t2;\n"
        "      $display(\"%t y=%h\", $time, y);\n    end\nendmodule\n\n";
  }
  text.resize(bytes);
  return text;
}

std::string singleLine(std::size_t bytes) {
  auto text = simulationLog(bytes);
  std::replace(text.begin(), text.end(), '\n', ';');
  return text;
}

std::string logFile(std::size_t bytes) {
  const char* folder = std::getenv("ZELKOR_BENCH_DIR");
  const auto path = (folder ? std::filesystem::path(folder) : std::filesystem::temp_directory_path()) /
                    ("zelkor-bench-" + std::to_string(bytes) + ".log");
  std::error_code error;
  if (std::filesystem::file_size(path, error) != bytes || error) {
    std::ofstream out(path, std::ios::binary);
    const auto text = simulationLog(bytes);
    out.write(text.data(), static_cast<std::streamsize>(text.size()));
    if (!out.flush()) {
      std::fprintf(stderr, "cannot write %s\n", path.c_str());
      std::exit(2);
    }
  }
  return path;
}

Clock::time_point Clock::now() {
  static const char* const kind = std::getenv("ZELKOR_BENCH_CLOCK");
  static const bool cpu = kind && std::string_view(kind) == "cpu";
  if (!cpu) return std::chrono::steady_clock::now();
  return time_point(std::chrono::duration_cast<time_point::duration>(
      std::chrono::duration<double>(static_cast<double>(std::clock()) / CLOCKS_PER_SEC)));
}

void trimMemory() {
#if defined(__GLIBC__)
  malloc_trim(0);
#endif
}

double limitReadAndCount(const std::string& path, int runs) {
  const auto size = std::filesystem::file_size(path);
  return best(runs, [&] {
    std::unique_ptr<char[]> memory(new char[size]);
    std::FILE* in = std::fopen(path.c_str(), "rb");
    const auto read = std::fread(memory.get(), 1, size, in);
    std::fclose(in);
    std::int64_t lines = 0;
    for (std::size_t at = 0; at < read; at += 4096)   // short runs, so that the compiler may count in narrow lanes
      lines += std::count(memory.get() + at, memory.get() + std::min<std::size_t>(at + 4096, read), '\n');
    benchmark::DoNotOptimize(lines);
  });
}

double limitCopy(std::string_view text, int runs) {
  return best(runs, [&] {
    std::unique_ptr<char[]> memory(new char[text.size()]);
    std::memcpy(memory.get(), text.data(), text.size());
    benchmark::DoNotOptimize(memory.get());
    benchmark::ClobberMemory();
  });
}

double limitMemmem(std::string_view text, std::string_view word, int runs) {
  return best(runs, [&] {
    std::size_t hits = 0;
#if defined(__GLIBC__)
    const char* const end = text.data() + text.size();
    for (const char* at = text.data();
         (at = static_cast<const char*>(memmem(at, static_cast<std::size_t>(end - at), word.data(), word.size())));
         at += word.size())
      ++hits;
#else
    for (auto at = text.find(word); at != text.npos; at = text.find(word, at + word.size())) ++hits;
#endif
    benchmark::DoNotOptimize(hits);
  });
}

std::int64_t residentMemory() {
#if defined(__unix__)
  std::ifstream in("/proc/self/statm");
  std::int64_t all = 0, resident = 0;
  in >> all >> resident;
  return resident * sysconf(_SC_PAGESIZE);
#else
  return 0;
#endif
}

std::int64_t allocatedMemory() {
#if defined(__GLIBC__)
  const auto info = mallinfo2();
  return static_cast<std::int64_t>(info.uordblks + info.hblkhd);
#else
  return residentMemory();
#endif
}

void row(const std::string& what, double figure, const std::string& unit, double most, const std::string& note) {
  rows().push_back({what, unit, note, figure, most});
}

void ratioRow(const std::string& what, double seconds, double limit, double most) {
  char note[96];
  std::snprintf(note, sizeof note, "%.4g ms / %.4g ms", seconds * 1e3, limit * 1e3);
  row(what, seconds / limit, "x", most, note);
}

}   // namespace bench

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  bool within = true;
  std::printf("\n%-62s %10s %-5s %9s\n", "figure", "", "", "at most");
  for (const auto& r : bench::rows()) {
    const bool over = r.most > 0 && r.figure > r.most;
    within = within && !over;
    std::printf("%-62s %10.3g %-5s %9s  %s%s\n", r.what.c_str(), r.figure, r.unit.c_str(),
                r.most > 0 ? std::to_string(r.most).substr(0, std::to_string(r.most).find('.') + 3).c_str() : "", r.note.c_str(),
                over ? "  TOO MUCH" : "");
  }
  return within ? 0 : 1;
}
