#include "control/edit/TypingAids.h"

#include <array>

TypingAids TypingAids::usual() {
  TypingAids aids;
  aids.completeTyped = aids.closeBrackets = aids.surround = true;
  return aids;
}

std::span<const TypingAids::Switch> TypingAids::switches() {
  // clang-format off
  static constexpr std::array rows{
      Switch{"COMPLETETYPED", "completeTyped", QT_TRANSLATE_NOOP("TypingAids", "O&ffer words while typing"), &TypingAids::completeTyped, true},
      Switch{"AUTOCLOSE", "closeBrackets", QT_TRANSLATE_NOOP("TypingAids", "Close brackets and &quotes"), &TypingAids::closeBrackets, true},
      Switch{"SURROUND", "surround", QT_TRANSLATE_NOOP("TypingAids", "Brackets and quotes s&urround a selection"), &TypingAids::surround, true},
  };
  // clang-format on
  return rows;
}
