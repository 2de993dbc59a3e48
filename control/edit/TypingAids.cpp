#include "control/edit/TypingAids.h"

#include <QStringList>
#include <algorithm>
#include <array>

TypingAids TypingAids::usual() {
  TypingAids aids;
  aids.completeTyped = aids.closeBrackets = aids.surround = aids.markWord = aids.indentGuides = aids.changeMarks = aids.barMarks =
      true;
  return aids;
}

QString TypingAids::rulersText() const {
  QStringList columns;
  for (const int column : rulers) columns += QString::number(column);
  return columns.join(QStringLiteral(", "));
}

void TypingAids::setRulers(const QString& text) {
  rulers.clear();
  for (const QString& part : text.split(u',')) {
    const int column = part.trimmed().toInt();
    if (column >= 1 && column <= 10000) rulers.push_back(column);
  }
  std::ranges::sort(rulers);
  rulers.erase(std::unique(rulers.begin(), rulers.end()), rulers.end());
}

std::span<const TypingAids::Switch> TypingAids::switches() {
  // clang-format off
  static constexpr std::array rows{
      Switch{"COMPLETETYPED", "completeTyped", QT_TRANSLATE_NOOP("TypingAids", "O&ffer words while typing"), &TypingAids::completeTyped, true},
      Switch{"AUTOCLOSE", "closeBrackets", QT_TRANSLATE_NOOP("TypingAids", "Close brackets and &quotes"), &TypingAids::closeBrackets, true},
      Switch{"SURROUND", "surround", QT_TRANSLATE_NOOP("TypingAids", "Brackets and quotes s&urround a selection"), &TypingAids::surround, true},
      Switch{"MARKWORD", "markWord", QT_TRANSLATE_NOOP("TypingAids", "All &places of the word at the caret"), &TypingAids::markWord, false},
      Switch{"INDENTGUIDES", "indentGuides", QT_TRANSLATE_NOOP("TypingAids", "In&dent guides"), &TypingAids::indentGuides, false},
      Switch{"CHANGEMARKS", "changeMarks", QT_TRANSLATE_NOOP("TypingAids", "Lines that di&ffer from the file, in the margin"), &TypingAids::changeMarks, false},
      Switch{"BARMARKS", "barMarks", QT_TRANSLATE_NOOP("TypingAids", "M&arks in the scroll bar"), &TypingAids::barMarks, false},
      Switch{"TRAILINGBLANKS", "trailingBlanks", QT_TRANSLATE_NOOP("TypingAids", "E&xtra blanks at the ends of lines"), &TypingAids::trailingBlanks, false},
      Switch{"TRIMCHANGED", "trimChanged", QT_TRANSLATE_NOOP("TypingAids", "&Saving deletes blanks at the ends of changed lines"), &TypingAids::trimChanged, true},
  };
  // clang-format on
  return rows;
}
