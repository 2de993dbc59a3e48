// T8: large texts open, answer keys and take little more memory than their bytes. T9: what is given up for them is colour and
// the like, never text. The usual run is a tenth of the sizes promised; ZELKOR_FULL=1 takes them whole.
#include "tests/control/PaneFixture.h"
#include "tests/support/Cost.h"
#include "tests/support/files/TempFolder.h"

using namespace Qt::StringLiterals;
using testing_files::TempFolder;

namespace {

constexpr std::int64_t kMiB = 1 << 20;

bool full() { return qEnvironmentVariableIsSet("ZELKOR_FULL"); }

class Limits : public PaneFixture {
 public:
  // What the user does at the text's start, middle and end, each until it is painted; the edits are undone again. The processor's
  // time for the dearest of it, in milliseconds: of three rounds the cheapest counts, so that only what it always costs is seen.
  double dearestKey() {
    std::vector<double> costs;
    for (int round = 0; round < 3; ++round) {
      const std::vector<double> now = keyCosts();
      if (costs.empty()) costs = now;
      for (std::size_t i = 0; i < now.size(); ++i) costs[i] = std::min(costs[i], now[i]);
    }
    return *std::max_element(costs.begin(), costs.end());
  }

 private:
  std::vector<double> keyCosts() {
    std::vector<double> costs;
    const auto timed = [&](auto act) {
      const double before = spentMs();
      act();
      QApplication::processEvents();
      viewport()->grab();
      costs.push_back(spentMs() - before);
    };
    for (const CmPosition& at : {CmPosition{0, 0}, {control.LineCount() / 2, 5}, {control.LineCount() - 1, 0}}) {
      timed([&] { control.SetSel({at.LineNo, at.ColNo, at.LineNo, at.ColNo, false}); });
      for (int i = 0; i < 5; ++i) timed([&] { key(Qt::Key_A, {}, u"a"_s); });
      timed([&] { key(Qt::Key_Return, {}, u"\r"_s); });
      timed([&] { key(Qt::Key_End); });
      timed([&] { key(Qt::Key_A, {}, u"a"_s); });
      timed([&] { key(Qt::Key_Home); });
      for (int i = 0; i < 3; ++i) timed([&] { key(Qt::Key_Z, Qt::ControlModifier); });
      timed([&] { key(Qt::Key_PageDown); });
    }
    timed([&] { key(Qt::Key_End, Qt::ControlModifier); });
    timed([&] { key(Qt::Key_Home, Qt::ControlModifier); });
    return costs;
  }
};

TEST_F(Limits, T8_LargeTextsOpenAnswerAndFit) {
  struct Row {
    const char* name;
    std::int64_t bytes;        // of the whole promise
    std::int64_t lineLength;   // 0: one line
    double memory;             // most, in the text's bytes
  };
  control.setLanguage(u"C/C++"_s);
  control.setText(QString(2000, u'x') + QString(u"xxxxx\n"_s).repeated(500));
  const double small = dearestKey();
  for (const Row& row : {Row{"10 million lines", 30'000'000, 3, 1.6}, Row{"a line of 100 MiB", 100 * kMiB, 0, 1.3},
                         Row{"1 GiB", 1024 * kMiB, 80, 1.2}}) {   // smaller ones leave little behind
    SCOPED_TRACE(row.name);
    const std::int64_t bytes = full() ? row.bytes : row.bytes / 10;
    const TempFolder folder(TempFolder::Where::memory);
    const std::string path = folder / "large", copy = folder / "copy";
    {
      std::string text(std::size_t(bytes), 'x');
      for (std::int64_t i = row.lineLength - 1; row.lineLength > 0 && i < bytes; i += row.lineLength) text[std::size_t(i)] = '\n';
      testing_files::writeRaw(path, text);
    }
    const std::int64_t before = memoryUse().resident;
    control.setLanguage(u"C/C++"_s);
    ASSERT_EQ(control.OpenFile(QString::fromStdString(path)), QString());
    ASSERT_EQ(control.LineCount(), row.lineLength > 0 ? bytes / row.lineLength + 1 : 1);
    const double dearest = dearestKey();
    control.setWordWrap(static_cast<int>(WordWrap::window));
    const double wrapped = dearestKey();
    control.setWordWrap(static_cast<int>(WordWrap::off));
    const std::int64_t grown = memoryUse().resident - before;
    std::printf("%s: dearest key %.1f ms, wrapped %.1f ms, of a small text %.1f ms, memory %.2f of %lld MiB\n", row.name, dearest,
                wrapped, small, double(grown) / double(bytes), static_cast<long long>(bytes / kMiB));
    if (!kSanitized) {
      EXPECT_LT(std::max(dearest, wrapped), small * 400);
      EXPECT_LT(double(grown), double(bytes) * row.memory + 48.0 * kMiB);
    }
    EXPECT_FALSE(control.Modified()) << "all was undone";
    ASSERT_TRUE(control.SaveFile(QString::fromStdString(copy)).ok());
    EXPECT_TRUE(text::stampOf(copy, true).sameContent(text::stampOf(path, true)));
    control.model()->replaceAll(text::Snapshot(), {});
  }
}

TEST_F(Limits, T9_WhatIsTooMuchForColoursIsKeptAsText) {
  const std::string nested = std::string(60'000, '(') + "{[\"/*" + std::string(60'000, ')');
  std::string manyBreaks, mixed;
  for (int i = 0; i < 200'000; ++i) manyBreaks += "\r\n";
  for (int i = 0; i < 40'000; ++i)
    mixed += std::string(
        "\0\x80\xE2\x80\xAE"
        "a\xCC\x81\t",
        9);
  const std::pair<const char*, std::string> rows[] = {
      {"a long line", std::string(3'000'000, 'w')},
      {"a long line of words",
       [] {
         std::string text;
         for (int i = 0; i < 300'000; ++i) text += "if else ";
         return text;
       }()},
      {"deep nesting", nested},
      {"an endless string", "\"" + std::string(500'000, '\\') + "\n" + std::string(500'000, '"')},
      {"an endless comment", "/*" + std::string(1'000'000, '\n')},
      {"many breaks", manyBreaks},
      {"marks and controls on one line", mixed},
      {"a letter with endless marks",
       [] {
         std::string text = "a";
         for (int i = 0; i < 100'000; ++i) text += "\xCC\x81";
         return text;
       }()},
  };
  const TempFolder folder(TempFolder::Where::memory);
  for (const auto& [name, bytes] : rows) {
    SCOPED_TRACE(name);
    testing_files::writeRaw(folder / "file", bytes);
    control.setLanguage(u"C/C++"_s);
    ASSERT_EQ(control.OpenFile(QString::fromStdString(folder / "file")), QString());
    for (const bool spaces : {false, true}) {
      control.setWhiteSpaceDisplay(spaces);
      viewport()->grab();
    }
    for (const int code : {Qt::Key_End, Qt::Key_PageDown, Qt::Key_Home}) {
      key(code, Qt::ControlModifier);
      key(Qt::Key_X, {}, u"x"_s);
      viewport()->grab();
    }
    const std::string typed = this->bytes();
    EXPECT_EQ(typed.size(), bytes.size() + 3);
    for (int i = 0; i < 3; ++i) key(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_FALSE(control.Modified());
    EXPECT_TRUE(this->bytes() == bytes);
    control.setModified(true);
    ASSERT_TRUE(control.SaveFile(QString::fromStdString(folder / "file")).ok());
    EXPECT_TRUE(testing_files::readRaw(folder / "file") == bytes);
  }
  control.setWhiteSpaceDisplay(false);
}

}   // namespace
