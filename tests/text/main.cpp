// The main() of the engine's tests, which need no application.
#include "tests/support/Skips.h"
#include "tests/support/files/OwnHome.h"

int main(int argc, char** argv) {
  ::testing::InitGoogleTest(&argc, argv);
  const testing_files::OwnHome home;
  return runAllTests();
}
