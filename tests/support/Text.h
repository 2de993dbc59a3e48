// Literals and shown texts in tests.
#pragma once

#include <QString>
#include <string>

inline QString q(const char* text) { return QString::fromUtf8(text); }
inline std::string s(const QString& text) { return text.toStdString(); }
