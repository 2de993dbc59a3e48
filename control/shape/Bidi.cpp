#include "control/shape/Bidi.h"

#include <QChar>
#include <algorithm>
#include <numeric>

namespace shape {

namespace {

using Class = QChar::Direction;
constexpr std::size_t kOpenBrackets = 63;   // as the algorithm says

Class classOf(const Sign& sign) {
  switch (sign.kind) {
    case Sign::blank: return QChar::DirWS;
    case Sign::tab: return QChar::DirS;
    case Sign::box:
      return sign.code == 0x200E || sign.code == 0x200F || sign.code == 0x61C ? QChar::direction(sign.code) : QChar::DirON;
    case Sign::plain: break;
  }
  return QChar::direction(sign.code);
}

bool isNumber(Class c) { return c == QChar::DirEN || c == QChar::DirAN; }
bool isNeutral(Class c) { return c == QChar::DirON || c == QChar::DirWS || c == QChar::DirS || c == QChar::DirB; }
// As which direction it counts for neutrals beside it: L or R; else ON.
Class strongOf(Class c) { return c == QChar::DirL ? QChar::DirL : c == QChar::DirR || isNumber(c) ? QChar::DirR : QChar::DirON; }

// Rules W1 to W7.
void resolveWeak(std::vector<Class>& all) {
  Class before = QChar::DirL, strong = QChar::DirL;
  for (Class& c : all) {
    if (c == QChar::DirNSM) c = before;
    before = c;
    if (c == QChar::DirL || c == QChar::DirR || c == QChar::DirAL) strong = c;
    else if (c == QChar::DirEN && strong == QChar::DirAL) c = QChar::DirAN;
  }
  for (Class& c : all)
    if (c == QChar::DirAL) c = QChar::DirR;
  for (std::size_t i = 1; i + 1 < all.size(); ++i) {
    if (all[i - 1] != all[i + 1] || !isNumber(all[i - 1])) continue;
    if (all[i] == QChar::DirCS || (all[i] == QChar::DirES && all[i - 1] == QChar::DirEN)) all[i] = all[i - 1];
  }
  for (std::size_t i = 0; i < all.size();) {
    if (all[i] != QChar::DirET) {
      ++i;
      continue;
    }
    std::size_t end = i;
    while (end < all.size() && all[end] == QChar::DirET) ++end;
    const bool number = (i > 0 && all[i - 1] == QChar::DirEN) || (end < all.size() && all[end] == QChar::DirEN);
    std::fill(all.begin() + static_cast<std::ptrdiff_t>(i), all.begin() + static_cast<std::ptrdiff_t>(end),
              number ? QChar::DirEN : QChar::DirON);
    i = end;
  }
  strong = QChar::DirL;
  for (Class& c : all) {
    if (c == QChar::DirES || c == QChar::DirCS || c == QChar::DirBN) c = QChar::DirON;
    if (c == QChar::DirL || c == QChar::DirR) strong = c;
    else if (c == QChar::DirEN && strong == QChar::DirL) c = QChar::DirL;
  }
}

// The bracket that closes an opening one, the same for all that count as equal; 0: none.
char32_t closerOf(const Sign& sign) {
  if (sign.kind != Sign::plain) return 0;
  const char32_t other = QChar::mirroredChar(sign.code);
  const bool opens = other != sign.code && QChar::category(sign.code) == QChar::Punctuation_Open;
  return !opens ? 0 : other == 0x232A ? 0x3009 : other;
}
char32_t asCloser(const Sign& sign) { return sign.kind != Sign::plain ? 0 : sign.code == 0x232A ? 0x3009 : sign.code; }

// Rule N0.
void resolveBrackets(std::span<const Sign> signs, std::vector<Class>& all) {
  struct Open {
    std::size_t at;
    char32_t closer;
  };
  std::vector<Open> open;
  std::vector<std::pair<std::size_t, std::size_t>> pairs;
  for (std::size_t i = 0; i < signs.size(); ++i) {
    if (!isNeutral(all[i])) continue;
    if (const char32_t closer = closerOf(signs[i])) {
      if (open.size() == kOpenBrackets) break;
      open.push_back({i, closer});
      continue;
    }
    const auto match =
        std::find_if(open.rbegin(), open.rend(), [code = asCloser(signs[i])](const Open& o) { return o.closer == code; });
    if (match == open.rend()) continue;
    pairs.emplace_back(match->at, i);
    open.erase(std::prev(match.base()), open.end());
  }
  std::sort(pairs.begin(), pairs.end());
  Class context = QChar::DirL;   // the last strong one before a bracket
  std::size_t seen = 0;
  for (const auto& [begin, end] : pairs) {
    for (; seen < begin; ++seen)
      if (const Class c = strongOf(all[seen]); c != QChar::DirON) context = c;
    bool left = false, right = false;
    for (std::size_t i = begin + 1; i < end && !left; ++i) {
      left = all[i] == QChar::DirL;
      right = right || strongOf(all[i]) == QChar::DirR;
    }
    if (!left && !right) continue;
    all[begin] = all[end] = left || context == QChar::DirL ? QChar::DirL : QChar::DirR;
  }
}

// Rules N1 and N2.
void resolveNeutrals(std::vector<Class>& all) {
  for (std::size_t i = 0; i < all.size();) {
    if (!isNeutral(all[i])) {
      ++i;
      continue;
    }
    std::size_t end = i;
    while (end < all.size() && isNeutral(all[end])) ++end;
    const Class before = i > 0 ? strongOf(all[i - 1]) : QChar::DirL, behind = end < all.size() ? strongOf(all[end]) : QChar::DirL;
    std::fill(all.begin() + static_cast<std::ptrdiff_t>(i), all.begin() + static_cast<std::ptrdiff_t>(end),
              before == behind ? before : QChar::DirL);
    i = end;
  }
}

}   // namespace

std::vector<unsigned char> levels(std::span<const Sign> signs) {
  std::vector<Class> all;
  all.reserve(signs.size());
  for (const Sign& sign : signs) all.push_back(classOf(sign));
  resolveWeak(all);
  resolveBrackets(signs, all);
  resolveNeutrals(all);
  std::vector<unsigned char> result;
  result.reserve(all.size());
  for (const Class c : all) result.push_back(c == QChar::DirR ? 1 : isNumber(c) ? 2 : 0);
  return result;
}

std::vector<std::size_t> visualOrder(std::span<const Sign> row, std::span<unsigned char> levels) {
  bool plain = true;   // what stands between here and the row's end, or a tab, are blanks
  for (std::size_t i = row.size(); i-- > 0;) {
    if (row[i].kind == Sign::tab) plain = true;
    else plain = plain && row[i].kind == Sign::blank;
    if (plain) levels[i] = 0;
  }
  std::vector<std::size_t> order(row.size());
  std::iota(order.begin(), order.end(), std::size_t(0));
  const auto at = [&](std::size_t i) { return order.begin() + static_cast<std::ptrdiff_t>(i); };
  for (unsigned char level = 2; level > 0; --level) {
    for (std::size_t i = 0; i < row.size();) {
      std::size_t end = i;
      while (end < row.size() && levels[order[end]] >= level) ++end;
      std::reverse(at(i), at(end));
      i = end + 1;
    }
  }
  return order;
}

}   // namespace shape
