#include "control/edit/TypingAids.h"

#include <array>

TypingAids TypingAids::usual() {
  TypingAids aids;
  aids.completeTyped = true;
  return aids;
}

std::span<const TypingAids::Switch> TypingAids::switches() {
  // clang-format off
  static constexpr std::array rows{
      Switch{"COMPLETETYPED", "completeTyped", QT_TRANSLATE_NOOP("TypingAids", "O&ffer words while typing"), &TypingAids::completeTyped, true},
  };
  // clang-format on
  return rows;
}
