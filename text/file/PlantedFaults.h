// Faults that test programs plant on purpose, to prove that a test turns red. A real build plants none: the number is
// given by the compiler's command line of those programs only.
#pragma once

#ifndef ZELKOR_PLANTED_FAULT
#define ZELKOR_PLANTED_FAULT 0
#endif

namespace text {

enum class PlantedFault {
  none,
  skipSync,
  skipFolderSync,
  truncateFirst,
  ignoreShortWrite,
  skipCompare,
  dropJournalEarly,
  wideTemporary,
  switchToInPlace
};

namespace {
constexpr bool planted(PlantedFault fault) {
  return fault != PlantedFault::none && static_cast<int>(fault) == ZELKOR_PLANTED_FAULT;
}
}   // namespace

}   // namespace text
