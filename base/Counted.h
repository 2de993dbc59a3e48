// Numbers with their words.
#pragma once

#include <QString>

// "1 hit", "1,234 hits".
inline QString counted(qint64 number, const QString& one, const QString& many) {
  return QStringLiteral("%L1 %2").arg(number).arg(number == 1 ? one : many);
}
