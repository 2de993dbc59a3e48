// Feeds the stored inputs of a folder to a fuzz target, and inputs that are made of them at random:  replay_TARGET FOLDER
// ZELKOR_SEED chooses others; ZELKOR_FULL=1: many more.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <vector>

#include "tests/fuzz/Fuzz.h"
#include "tests/support/files/OwnHome.h"

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv) __attribute__((weak));

namespace {

std::string last;   // what an oracle that fails was given

void feed(const std::string& bytes) {
  last = bytes;
  LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
}

void show() {
  std::fprintf(stderr, "the input:");
  for (const unsigned char byte : last) std::fprintf(stderr, " %02x", byte);
  std::fprintf(stderr, "\n");
}

}   // namespace

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  const testing_files::OwnHome home;
  if (LLVMFuzzerInitialize) LLVMFuzzerInitialize(&argc, &argv);
  fuzz::failed = show;
  std::vector<std::string> stored;
  for (const auto& entry : std::filesystem::directory_iterator(argv[1])) {
    std::ifstream in(entry.path(), std::ios::binary);
    stored.emplace_back(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    feed(stored.back());
  }
  std::sort(stored.begin(), stored.end());
  std::mt19937 random(std::getenv("ZELKOR_SEED") ? unsigned(std::atoi(std::getenv("ZELKOR_SEED"))) : 1);
  const int made = stored.empty() ? 0 : std::getenv("ZELKOR_FULL") ? 20'000 : 1'000;
  for (int n = 0; n < made; ++n) {
    std::string bytes = n % 4 == 0 ? std::string() : stored[random() % stored.size()].substr(0, 160);
    for (auto changes = 1 + random() % (n % 4 == 0 ? 40 : 6); changes > 0; --changes) {
      const std::string& other = stored[random() % stored.size()];
      const std::size_t at = random() % (bytes.size() + 1), from = random() % (other.size() + 1);
      switch (random() % 4) {
        case 0: bytes.insert(at, 1, char(random())); break;
        case 1: bytes.replace(at, 1, 1, char(random())); break;
        case 2: bytes.erase(at, random() % 8); break;
        default: bytes.insert(at, other, from, random() % 16);
      }
    }
    feed(bytes);
  }
  std::printf("%zu stored inputs, %d made\n", stored.size(), made);
  return stored.empty() ? 1 : 0;
}
