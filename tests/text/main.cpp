// The main() of the engine's tests, which need no application.
#include "tests/support/Skips.h"

int main(int argc, char** argv) {
  ::testing::InitGoogleTest(&argc, argv);
  return runAllTests();
}
