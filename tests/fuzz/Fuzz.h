// What the fuzz targets share. Each target is one file with fuzzOne(); a build with the compiler's fuzzer feeds it endlessly,
// the normal build feeds it the stored inputs of corpus/TARGET (replay.cpp). An oracle that fails ends the program.
#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace fuzz {

inline void (*failed)() = [] {};

inline void check(bool good, const char* what) {
  if (good) return;
  std::fprintf(stderr, "oracle: %s\n", what);
  failed();
  std::abort();
}

// Takes parts off an input.
class Input {
 public:
  Input(const std::uint8_t* data, std::size_t size) : rest_(reinterpret_cast<const char*>(data), size) {}
  std::uint8_t byte() {
    if (rest_.empty()) return 0;
    const auto first = static_cast<std::uint8_t>(rest_[0]);
    rest_.remove_prefix(1);
    return first;
  }
  std::string_view take(std::size_t length) {
    const std::string_view part = rest_.substr(0, length);
    rest_.remove_prefix(part.size());
    return part;
  }
  std::string_view until(char end) {   // without it
    const std::string_view part = rest_.substr(0, rest_.find(end));
    rest_.remove_prefix(part.size() < rest_.size() ? part.size() + 1 : part.size());
    return part;
  }
  std::string_view rest() const { return rest_; }
  bool empty() const { return rest_.empty(); }

 private:
  std::string_view rest_;
};

}   // namespace fuzz
