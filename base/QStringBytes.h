// Conversion between Qt's strings and the bytes of the engine.
#pragma once

#include <QString>
#include <string>
#include <string_view>

// Valid UTF-8 becomes characters. A bad byte b becomes the lone surrogate U+DC00 + b. Both ways are exact. Other lone surrogates
// become U+FFFD.
inline constexpr char16_t kBadByte = 0xDC00;   // added to the byte
constexpr bool isBadByte(char32_t unit) { return unit >= kBadByte + 0x80u && unit <= kBadByte + 0xFFu; }
QString toQString(std::string_view bytes);
std::string fromQString(QStringView text);
