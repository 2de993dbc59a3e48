#include "control/view/LineLayout.h"

#include <gtest/gtest.h>

namespace {

QFont testFont(const char* family) {
  QFont font(QString::fromLatin1(family));
  font.setPixelSize(14);
  return font;
}
QFont fixedFont() { return testFont("DejaVu Sans Mono"); }
QFont proportionalFont() { return testFont("DejaVu Sans"); }

LineLayout layOut(std::string_view line, const GlyphMetrics& metrics, int tab = 4) {
  return LineLayout(line, true, {}, metrics, tab, 1e300);
}

// The kinds and widths in cells: "g1 t3 l2[FF]".
std::string kindsOf(std::string_view line, const GlyphMetrics& metrics, int tab = 4) {
  std::string result;
  const LineLayout layout = layOut(line, metrics, tab);
  for (const LayoutItem& item : layout.items()) {
    if (!result.empty()) result += ' ';
    result += "gbtlos"[item.kind] + std::to_string(static_cast<int>(item.width / metrics.cell() + 0.5));
    if (item.kind == LayoutItem::label) result += "[" + layout.text(item).toStdString() + "]";
  }
  return result;
}

}   // namespace

TEST(LineLayout, H1_EveryCharacterHasItsPlaceAndNothingHides) {
  const GlyphMetrics metrics(fixedFont(), 1);
  ASSERT_TRUE(metrics.fixedPitch());
  struct Case {
    const char* what;
    std::string line, expected;
  };
  // clang-format off
  const Case cases[] = {
      {"plain", "a b", "g1 b1 g1"},
      {"tabs stop at multiples", "\ta\tabcd\t", "t4 g1 t3 g1 g1 g1 g1 t4"},
      {"wide characters take two cells", "\xE6\xBC\xA2z", "s2 g1"},
      {"a mark belongs to its letter", "e\xCC\x81x", "s1 g1"},
      {"a mark with nothing before it", "\xCC\x81x", "s1 g1"},
      {"a letter of the font", "\xC3\xA9", "g1"},
      {"bad bytes as hex", "\xFF\xC3", "l2[FF] l2[C3]"},
      {"a cut character", "\xE2\x82", "l2[E2] l2[82]"},
      {"controls have names", std::string("\0\x1B\r\x7F", 4), "l3[NUL] l3[ESC] l2[CR] l3[DEL]"},
      {"bidi override", "\xE2\x80\xAE", "l3[RLO]"},
      {"zero width space", "a\xE2\x80\x8B" "b", "g1 l4[ZWSP] g1"},
      {"zero width joiner behind a letter", "a\xE2\x80\x8D", "g1 l3[ZWJ]"},
      {"variation selector behind a letter", "a\xEF\xB8\x8F", "g1 l5[U+FE0F]"},
      {"tag character", "\xF3\xA0\x81\x81", "l6[U+E0041]"},
      {"byte order mark", "\xEF\xBB\xBF", "l3[BOM]"},
      {"no-break space is seen", "\xC2\xA0", "o1"},
      {"a syllable takes the cells of its signs", "\u0915\u093F" "a", "s2 g1"},
      {"a flag is one", "\U0001F1E9\U0001F1EA" "a", "s2 g1"},
      {"a family is one", "\U0001F468\u200D\U0001F469\u200D\U0001F467" "a", "s2 g1"},
      {"right-to-left letters stay in order", "\xD7\x90\xD7\x91", "s1 s1"},
  };
  // clang-format on
  for (const auto& c : cases) EXPECT_EQ(kindsOf(c.line, metrics), c.expected) << c.what;
  EXPECT_EQ(kindsOf("ab\tc", metrics, 8), "g1 g1 t6 g1");
}

TEST(LineLayout, PlacesAndBytesAgree) {
  for (const QFont& font : {fixedFont(), proportionalFont()}) {
    const GlyphMetrics metrics(font, 1);
    const std::string line = "if (a)\t\xE6\xBC\xA2\xFF e\xCC\x81 end";
    const LineLayout layout = layOut(line, metrics);
    double x = 0;
    for (const LayoutItem& item : layout.items()) {
      EXPECT_EQ(item.x, x) << "items follow each other";
      EXPECT_GE(item.width, 1);
      EXPECT_EQ(layout.xOf(item.byte), item.x);
      EXPECT_EQ(layout.byteAt(item.x + item.width * 0.4), item.byte);
      EXPECT_EQ(layout.byteAt(item.x + item.width * 0.6), item.byte + item.bytes);
      EXPECT_EQ(layout.byteAt(item.x + item.width * 0.6, true), item.byte);
      x += item.width;
    }
    EXPECT_EQ(layout.xOf(static_cast<std::int64_t>(line.size())), x);
    EXPECT_EQ(layout.byteAt(1e9), static_cast<std::int64_t>(line.size()));
    EXPECT_EQ(layout.byteAt(-5), 0);
  }
}
