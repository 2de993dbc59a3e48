// The difference between two texts as one edit.
#pragma once

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>

#include "text/store/Document.h"

namespace text {

// The smallest edit that turns `before`, which starts at `at`, into `after`, cut at whole characters; none: the texts are equal.
inline std::optional<Edit> smallestEdit(ByteOffset at, std::string_view before, std::string_view after) {
  const auto inside = [](std::string_view s, std::size_t i) {
    return i < s.size() && (static_cast<unsigned char>(s[i]) & 0xC0) == 0x80;
  };
  std::size_t head = 0, tail = 0;
  const std::size_t shorter = std::min(before.size(), after.size());
  while (head < shorter && before[head] == after[head]) ++head;
  if (head == before.size() && head == after.size()) return std::nullopt;
  while (head > 0 && (inside(before, head) || inside(after, head))) --head;
  while (tail < shorter - head && before[before.size() - 1 - tail] == after[after.size() - 1 - tail]) ++tail;
  while (tail > 0 && (inside(before, before.size() - tail) || inside(after, after.size() - tail))) --tail;
  return Edit{{at + static_cast<std::int64_t>(head), at + static_cast<std::int64_t>(before.size() - tail)},
              std::string(after.substr(head, after.size() - head - tail))};
}

}   // namespace text
