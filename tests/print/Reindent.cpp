// Re-indentation: the words, the stack, the plain way and the careful one, the latter by the shipped definitions.
#include "change/indent/Reindent.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QRegularExpression>
#include <random>

#include "change/indent/StandingLines.h"
#include "control/code/LanguageTable.h"
#include "language/Registration.h"
#include "language/ucCM.h"

namespace {

QString list(const char* words) {
  QString text;
  for (const QString& word : QString::fromLatin1(words).split(u' ', Qt::SkipEmptyParts)) text += word + QStringLiteral("\r\n");
  return text;
}

QStringList lines(const QString& text) { return text.split(u'\n'); }

QString indented(const QStringList& in, const std::vector<int>& indents) {
  QStringList out;
  for (qsizetype i = 0; i < in.size(); ++i) {
    const int columns = indents[static_cast<std::size_t>(i)];
    out << (columns == kStays ? in[i] : QString(columns, u' ') + in[i].mid(leadingLength(in[i])));
  }
  return out.join(u'\n');
}

QString plain(const QString& text, const BlockWords& words, int unit) {
  const QStringList in = lines(text);
  return indented(in, indentsByFirstWord([&](qint64 i) { return in[i]; }, in.size(), words, unit));
}

QString careful(const QString& text, const BlockWords& words, int unit, const text::Highlighter* highlighter,
                const FormatRules& rules = {}) {
  const QStringList in = lines(text);
  return indented(in, indentsByWholeLine([&](qint64 i) { return in[i]; }, in.size(), words, unit, highlighter, rules, 8));
}

QString flat(const QString& text) { return indented(lines(text), std::vector<int>(std::size_t(text.count(u'\n') + 1))); }

QString source(const QString& path) {
  QFile file(qEnvironmentVariable("ZELKOR_SOURCE", QStringLiteral(".")) + u'/' + path);
  EXPECT_TRUE(file.open(QFile::ReadOnly)) << path.toStdString();
  return QString::fromUtf8(file.readAll()).remove(u'\r');
}

// The definitions that come with the program.
class ReindentShipped : public testing::Test {
 protected:
  ReindentShipped() {
    manager.setIniFile(qEnvironmentVariable("ZELKOR_SOURCE", QStringLiteral(".")) + QStringLiteral("/config/Zelkor.ini"));
    manager.Init();
    AddLanguages(*manager.Languages());
  }
  ~ReindentShipped() override { RemoveLanguages(); }
  const clsLang& language(const QString& extension) {
    const int index = manager.GetLangFromExt(extension);
    EXPECT_GT(index, 0) << extension.toStdString();
    return *manager.Languages()->Item(index);
  }
  static BlockWords wordsOf(const clsLang& language) { return {language.BlockStart, language.BlockEnd, language.BlockMid}; }

  ucCM manager;
};

}   // namespace

TEST(Reindent, ByFirstWord) {
  const BlockWords words(list("B D*"), list("E"), list("M"));
  struct Case {
    const char *before, *after;
    int unit;
  };
  const Case cases[] = {
      {"B\nx\nE", "B\n    x\nE", 4},
      {"D\nx\nE\ny", "D\n        x\nE\ny", 4},
      {"E\nx", "E\nx", 4},
      {"  E\n\tE\nB\nx", "E\nE\nB\n  x", 2},
      {"B\nx\nM\ny\nE", "B\n  x\nM\n  y\nE", 2},
      {"M\nx", "M\n  x", 2},
      {"B\n\nx\n   \nE", "B\n  \n  x\n  \nE", 2},   // blank lines get the blanks too
      {"x B\ny", "x B\ny", 2},                      // only the first word counts
      {"B\nB\nD\nx\nE\nE\nE", "B\n B\n  D\n    x\n  E\n E\nE", 1},
      {"B\nx\nE", "B\nx\nE", 0},
      {"", "", 4},
  };
  for (const auto& c : cases) EXPECT_EQ(plain(QLatin1String(c.before), words, c.unit).toStdString(), c.after) << c.before;
}

// The careful way leaves well-formed code as it is and makes it anew from flat lines; what was aligned by hand cannot come back.
TEST_F(ReindentShipped, CodeStaysAsItIs) {
  struct Case {
    const char* file;
    int unit;
    const char* byHand = nullptr;   // lines that flat text does not give back; null: it is not tried
  };
  const Case cases[] = {{"Samples/sample.v", 2, "^ *(START|SHIFT|STOP ) = 2'd"},
                        {"Samples/sample1.vhd", 2, "^$"},
                        {"Samples/palasm.pds", 2},
                        {"Samples/report.scr", 2},
                        {"Samples/wave.do", 4},
                        {"Samples/timspec.ucf", 2},
                        {"tests/print/reindent/module.v", 2, "^     comment"},
                        {"tests/print/reindent/package.sv", 2},
                        {"tests/print/reindent/byhand.sv", 2},
                        {"tests/print/reindent/byhand.vhd", 2},
                        {"tests/print/reindent/statements.sv", 2},
                        {"tests/print/reindent/literals.vhd", 2},
                        {"tests/print/reindent/bind.sv", 2},
                        {"tests/print/reindent/entity.vhd", 2},
                        {"tests/print/reindent/architecture.vhd", 2},
                        {"tests/print/reindent/braces.c", 4},
                        {"tests/print/reindent/class.cc", 4},
                        {"tests/print/reindent/proc.tcl", 2},
                        {"tests/print/reindent/switch.tcl", 4},
                        {"tests/print/reindent/if.sh", 2}};
  for (const auto& c : cases) {
    const QString code = source(QLatin1String(c.file));
    const clsLang& language = this->language(QString::fromLatin1(c.file).section(u'.', -1));
    const auto highlighter = LanguageTable::find(language.Name);
    for (const bool isFlat : {false, true}) {
      if (isFlat && !c.byHand) continue;
      const QStringList expected = lines(code),
                        found = lines(careful(isFlat ? flat(code) : code, wordsOf(language), c.unit, highlighter.get()));
      for (qsizetype i = 0; i < expected.size(); ++i) {
        if (isFlat && QRegularExpression(QLatin1String(c.byHand)).match(expected[i]).hasMatch()) continue;
        EXPECT_EQ(found[i].toStdString(), expected[i].toStdString())
            << c.file << ':' << i + 1 << (isFlat ? ", from flat lines" : "");
      }
    }
  }
}

// What a text does throughout is its style; only what stands apart from it moves. A flat text has no style.
TEST_F(ReindentShipped, TheTextsOwnStyleStays) {
  const clsLang& verilog = language(QStringLiteral("v"));
  const auto highlighter = LanguageTable::find(verilog.Name);
  const auto block = [](const char* indent, const char* last) {
    const QString i = QLatin1String(indent);
    return QStringLiteral("always @(posedge c)\nbegin\n%1a <= b;\n%1case (s)\n%1default: d <= e;\n%1endcase\n%2f <= g;\nend\n")
        .arg(i, QLatin1String(last));
  };
  const QString body = QStringLiteral("module m (\n    input c\n);\n%1%1%1endmodule\n%2");
  const BlockWords words = wordsOf(verilog);
  const QString four = body.arg(block("    ", "    "), QString());
  EXPECT_EQ(careful(four, words, 4, highlighter.get()).toStdString(), four.toStdString());
  EXPECT_EQ(careful(body.arg(block("    ", "  "), QString()), words, 4, highlighter.get()).toStdString(), four.toStdString());
  EXPECT_EQ(careful(four, words, 2, highlighter.get()).toStdString(),
            QString(four).replace(QLatin1String("    "), QLatin1String("  ")).toStdString());
  EXPECT_NE(careful(flat(four), words, 4, highlighter.get()).toStdString(), four.toStdString());
}

// What stands in texts over several lines belongs to them, as do the words that end them. The code around them goes on as ever.
TEST_F(ReindentShipped, TextsOverLinesStay) {
  struct Case {
    const char *extension, *before, *after;
  };
  // clang-format off
  const Case cases[] = {
      {"tcl", "proc p {} {\nputs \"a {\n\t \n b\\\"c\n }\"\nset y 2\n}", "proc p {} {\n  puts \"a {\n\t \n b\\\"c\n }\"\n  set y 2\n}"},
      {"sh", "f() {\necho \"x\n y # \" 'do\n\\' z\necho \\\" don\\'t\nx\n}",
       "f() {\n  echo \"x\n y # \" 'do\n\\' z\n  echo \\\" don\\'t\n  x\n}"},
      {"sh", "f() {\ncat <<-'E F' <<B # <<C\n don't {\n\tE F\n fi\n B\nB\necho $((1 << n)) <<<x \"<<Q\"\nx\n}",
       "f() {\n  cat <<-'E F' <<B # <<C\n don't {\n\tE F\n fi\n B\nB\n  echo $((1 << n)) <<<x \"<<Q\"\n  x\n}"},
      {"pl", "sub f {\nprint <<\"EOT\" . \"a\";\n  text }\nEOT\nreturn 1 << 2;\n\n=item x\n\n  y {\n\n=cut\n\nreturn 2;\n}\n__END__\n {\n  x",
       "sub f {\n  print <<\"EOT\" . \"a\";\n  text }\nEOT\n  return 1 << 2;\n\n=item x\n\n  y {\n\n=cut\n\n  return 2;\n}\n__END__\n {\n  x"},
      {"cpp", "void f() {\na = R\"(x \"{\n \" { )x\"\n)\"; b();\nc = uR\"x({\n)\"\n )x\" \"{\";\nd = \"a\\\n   b\";\ne = R\"(\")\";\ng();\n}",
       "void f() {\n  a = R\"(x \"{\n \" { )x\"\n)\"; b();\n  c = uR\"x({\n)\"\n )x\" \"{\";\n  d = \"a\\\n   b\";\n  e = R\"(\")\";\n  g();\n}"},
      {"cmake", "if(A)\nmessage(\"a\n  endif()\n\")\nset(B 1)\nendif()", "if(A)\n  message(\"a\n  endif()\n\")\n  set(B 1)\nendif()"},
  };
  // clang-format on
  for (const auto& c : cases) {
    const clsLang& language = this->language(QLatin1String(c.extension));
    const auto highlighter = LanguageTable::find(language.Name);
    EXPECT_EQ(careful(QLatin1String(c.before), wordsOf(language), 2, highlighter.get(), formatRules(language)).toStdString(),
              c.after)
        << c.extension;
  }
}

TEST_F(ReindentShipped, LanguagesWhoseBlocksAreBlanksListNoWords) {
  for (const char* extension : {"py", "yaml", "mk"})
    EXPECT_TRUE(wordsOf(language(QLatin1String(extension))).isEmpty()) << extension;
}

TEST_F(ReindentShipped, BranchesWithinManyOpenBlocksCostNoCopies) {
  const clsLang& verilog = language(QStringLiteral("v"));
  const BlockWords words(verilog.BlockStart, verilog.BlockEnd, verilog.BlockMid, true);
  const auto highlighter = LanguageTable::find(verilog.Name);
  constexpr int kDepth = 20000;
  QStringList text;
  for (int i = 0; i < kDepth; ++i) text << QStringLiteral("`ifdef A") << QStringLiteral("begin");
  text << QStringLiteral("x;") << QStringLiteral("`else") << QStringLiteral("y;");
  const auto indents = indentsByWholeLine([&](qint64 i) { return text[i]; }, text.size(), words, 1, highlighter.get(), {}, 8);
  EXPECT_EQ(indents[2 * kDepth], kDepth);
  EXPECT_EQ(indents[2 * kDepth + 2], kDepth - 1) << "as it was where the branch began";
}

TEST(Reindent, ByWholeLineSurvivesUnbalancedText) {
  const BlockWords words(list("begin"), list("end"), QString());
  EXPECT_EQ(careful(QStringLiteral("end\nend\nbegin\nx;"), words, 2, nullptr).toStdString(), "end\nend\nbegin\n  x;");
  const QString brackets = QStringLiteral(")\n)]\n(((\nx\n;\nend ] begin");
  EXPECT_EQ(flat(careful(brackets, words, 2, nullptr)).toStdString(), brackets.toStdString());
}

// The quick ways to know which lines stay say what reading all tokens says.
TEST_F(ReindentShipped, LinesThatStayAreTheSameWithoutTokens) {
  const char* const parts[] = {"\"",   "\\", "'",  "\"\"\"", "'''",  "<<EOT", "EOT",    "<<-",  "R\"x(",
                               ")x\"", "/*", "*/", "//",     "#",    "a",     "=begin", "=end", "__END__",
                               " ",    "{",  "`",  "--",     "\\\"", "echo ", "(("};
  std::mt19937 random(7);
  std::int64_t held = 0;
  for (const auto& language : *manager.Languages()) {
    const auto highlighter = LanguageTable::find(language->Name);
    if (!highlighter || !highlighter->valid()) continue;
    for (int round = 0; round < 30; ++round) {
      StandingLines full(highlighter.get(), formatRules(*language)), quick(highlighter.get(), formatRules(*language));
      std::string text;
      std::int64_t stay = 0;
      std::vector<text::Token> tokens;
      for (int i = 0; i < 12; ++i) {
        std::string line;
        for (auto n = random() % 5; n > 0; --n) line += parts[random() % std::size(parts)];
        full.scan(line, &tokens);
        quick.scan(line, nullptr);
        ASSERT_EQ(quick.stays(), full.stays()) << language->Name.toStdString() << ":\n" << text << line;
        stay += full.stays();
        text += line + '\n';
      }
      held += stay;
      if (!quick.mayHold(text::Snapshot(std::string(text)), 12)) {
        EXPECT_EQ(stay, 0) << language->Name.toStdString() << ":\n" << text;
      }
    }
  }
  EXPECT_GT(held, 1000);   // or there was nothing to compare
}
