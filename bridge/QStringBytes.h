// Conversion between Qt's strings and the bytes of the engine.
#pragma once

#include <QString>
#include <string>
#include <string_view>

#include "base/Strings.h"

// Valid UTF-8 becomes characters. A bad byte b becomes the lone surrogate kBadByte + b. Both ways are exact. Other lone surrogates
// become U+FFFD.
QString toQString(std::string_view bytes);
std::string fromQString(QStringView text);
