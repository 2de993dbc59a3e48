// Random texts full of trouble, for tests that compare with a plain model. ZELKOR_SEED and ZELKOR_STEPS set seed and length of a
// run; put RandomSeed's message into the test's trace, so that a failure says how to repeat it.
#pragma once

#include <cstdlib>
#include <iterator>
#include <random>
#include <string>

namespace test {

inline std::int64_t steps(std::int64_t usual) {
  const char* given = std::getenv("ZELKOR_STEPS");
  return given ? std::atoll(given) : usual;
}

class Random {
 public:
  Random() {
    const char* given = std::getenv("ZELKOR_SEED");
    seed_ = given ? std::strtoull(given, nullptr, 10) : std::random_device()();
    engine_.seed(seed_);
  }
  std::string message() const { return "ZELKOR_SEED=" + std::to_string(seed_); }
  // A number in [0, below); below > 0.
  std::int64_t upTo(std::int64_t below) { return static_cast<std::int64_t>(engine_() % static_cast<std::uint64_t>(below)); }
  bool oneIn(int n) { return upTo(n) == 0; }
  std::string text(std::int64_t symbols) {
    static const std::string alphabet[] = {
        "a",        "b",    " ",   "\r", "\n", "\r\n", "\t", std::string(1, '\0'), "\xff", "\xc3", "e\xcc\x81", "\xf0\x9f\x98\x80",
        "\xc3\xa9", "word", "\n\n"};
    std::string out;
    for (; symbols > 0; --symbols) out += alphabet[upTo(std::ssize(alphabet))];
    return out;
  }

 private:
  std::uint64_t seed_ = 0;
  std::mt19937_64 engine_;
};

}   // namespace test
