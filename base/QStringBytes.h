// Texts of the tool kit and bytes of the engine.
#pragma once

#include <QString>
#include <string>
#include <string_view>

// Conversion at the border of the engine: valid UTF-8 to characters; a bad byte b to the lone surrogate U+DC00 + b, and back,
// so that both ways are exact. Other lone surrogates become U+FFFD.
QString toQString(std::string_view bytes);
std::string fromQString(QStringView text);
