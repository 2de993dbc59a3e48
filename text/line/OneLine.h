// Bytes on one line of a text file of the program's own: control characters and "%" as "%0a".
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace text {

void appendOnOneLine(std::string_view bytes, std::string* out);
std::optional<std::string> fromOneLine(std::string_view coded);   // nullopt: damaged

}   // namespace text
