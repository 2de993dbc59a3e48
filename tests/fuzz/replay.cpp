// Feeds the stored inputs of a folder to a fuzz target:  replay_TARGET FOLDER
#include <filesystem>
#include <fstream>
#include <iterator>

#include "tests/fuzz/Fuzz.h"
#include "tests/support/files/OwnHome.h"

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv) __attribute__((weak));

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  const testing_files::OwnHome home;
  if (LLVMFuzzerInitialize) LLVMFuzzerInitialize(&argc, &argv);
  int count = 0;
  for (const auto& entry : std::filesystem::directory_iterator(argv[1])) {
    std::ifstream in(entry.path(), std::ios::binary);
    const std::string bytes((std::istreambuf_iterator<char>(in)), {});
    std::fprintf(stderr, "%s\n", entry.path().filename().c_str());
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    ++count;
  }
  std::printf("%d inputs\n", count);
  return count > 0 ? 0 : 1;
}
