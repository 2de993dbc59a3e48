// Faults that test programs contain on purpose, to prove that a test detects them. A normal build contains none: the number is
// defined on the compiler's command line of these programs only.
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
