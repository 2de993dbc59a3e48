#include "text/line/OneLine.h"

#include <charconv>

namespace text {

void appendOnOneLine(std::string_view bytes, std::string* out) {
  constexpr char kDigits[] = "0123456789abcdef";
  for (const char c : bytes) {
    const auto code = static_cast<unsigned char>(c);
    if (code >= 0x20 && code != 0x7f && c != '%') out->push_back(c);
    else out->append(1, '%').append(1, kDigits[code >> 4]).append(1, kDigits[code & 15]);
  }
}

std::optional<std::string> fromOneLine(std::string_view coded) {
  std::string bytes;
  for (std::size_t i = 0; i < coded.size(); ++i) {
    if (coded[i] != '%') {
      bytes += coded[i];
      continue;
    }
    unsigned code = 0;
    const std::string_view digits = coded.substr(i + 1, 2);
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), code, 16);
    if (digits.size() < 2 || error != std::errc() || end != digits.data() + 2) return std::nullopt;
    bytes += static_cast<char>(code);
    i += 2;
  }
  return bytes;
}

}   // namespace text
