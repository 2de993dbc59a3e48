// What all measurements share: texts to measure with, the limits to measure against, and the way a row is printed.
//
// A row is one figure beside what it may be at most. Most are ratios of a time to a limit that was measured in the same run
// (reading the file, counting line feeds, searching with memmem, copying), so they mean the same on every machine.
// A measurement is a Google Benchmark with one iteration that calls row() once for each of its figures.
#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace bench {

constexpr std::size_t MB = 1000 * 1000, GB = 1000 * MB;

// Texts; the same for the same size in every run.
constexpr std::string_view logWord = "transaction";   // about 2,900 times in each MB of the log
std::string simulationLog(std::size_t bytes);
std::string verilogFile(std::size_t bytes);   // modules, with block comments now and then
std::string singleLine(std::size_t bytes);

// The path of a file with the log of so many bytes, in $ZELKOR_BENCH_DIR or the folder for temporary files; written once.
std::string logFile(std::size_t bytes);

// The time on the wall; with ZELKOR_BENCH_CLOCK=cpu the processor time of this program, for a machine that others use too.
struct Clock {
  using time_point = std::chrono::steady_clock::time_point;
  static time_point now();
};
inline double secondsSince(Clock::time_point start) { return std::chrono::duration<double>(Clock::now() - start).count(); }

// Gives freed memory back to the system.
void trimMemory();

// The shortest of so many runs, in seconds. Each run gets its memory fresh from the system, as a program just started does.
template <class Work>
double best(int runs, const Work& work) {
  double shortest = 1e9;
  for (int i = 0; i < runs; ++i) {
    trimMemory();
    const auto start = Clock::now();
    work();
    shortest = std::min(shortest, secondsSince(start));
  }
  return shortest;
}

// The limits, in seconds.
double limitReadAndCount(const std::string& path, int runs = 3);   // the file into memory, and its line feeds counted
double limitCopy(std::string_view text, int runs = 3);
double limitMemmem(std::string_view text, std::string_view word, int runs = 3);   // all places of the word

// Bytes.
std::int64_t residentMemory();
std::int64_t allocatedMemory();   // handed out by malloc

// Records a figure of the running measurement; `unit` is "x" for a ratio. A figure above `most` marks the row and makes
// the program end with 1; most == 0 only reports.
void row(const std::string& what, double figure, const std::string& unit, double most, const std::string& note = {});
// The same for a ratio of two times in seconds; the note says both.
void ratioRow(const std::string& what, double seconds, double limit, double most);

inline std::string megabytes(std::size_t size) {
  return size >= GB ? std::to_string(size / GB) + " GB" : std::to_string(size / MB) + " MB";
}

// Two rows for making something of a whole file: the shortest of three times against reading it and counting its line feeds,
// and the memory that stays against its size. Gives what the last run made.
template <class Make>
auto readingRows(const std::string& what, const std::string& path, std::size_t size, const Make& make) {
  const auto limit = limitReadAndCount(path);
  trimMemory();
  const auto resident = residentMemory();
  decltype(make()) made{};
  double seconds = 1e9;
  for (int i = 0; i < 3; ++i) {
    made = {};
    seconds = std::min(seconds, best(1, [&] { made = make(); }));
  }
  ratioRow(what + " / (read + count line feeds)", seconds, limit, 1.5);
  row(what + ", memory that stays / size", static_cast<double>(residentMemory() - resident) / static_cast<double>(size), "x", 1.15);
  return made;
}

}   // namespace bench
