// The shipped definitions give the shipped samples back as they are.
#include <gtest/gtest.h>

#include <QFile>
#include <QRegularExpression>

#include "control/LanguageTable.h"
#include "language/Registration.h"
#include "language/ucCM.h"
#include "print/Reindent.h"

namespace {

QString sourceFile(const char* path) {
  QFile file(qEnvironmentVariable("ZELKOR_SOURCE", QStringLiteral(".")) + u'/' + QLatin1String(path));
  EXPECT_TRUE(file.open(QFile::ReadOnly)) << path;
  return QString::fromUtf8(file.readAll());
}

struct Shipped {
  BlockWords words;
  std::shared_ptr<const text::Highlighter> highlighter;
};

Shipped shipped(const char* extension) {
  ucCM manager;
  manager.setIniFile(qEnvironmentVariable("ZELKOR_SOURCE", QStringLiteral(".")) + QStringLiteral("/config/Zelkor.ini"));
  manager.Init();
  AddLanguages(*manager.Languages());
  const int index = manager.GetLangFromExt(QLatin1String(extension));
  EXPECT_GT(index, 0) << extension;
  const auto language = manager.Languages()->Item(index);
  return {BlockWords(language->BlockStart, language->BlockEnd, language->BlockMid), LanguageTable::find(language->Name)};
}

QStringList careful(const QStringList& in, const Shipped& language, int unit) {
  const auto indents = indentsByWholeLine([&](qint64 i) { return in[i]; }, in.size(), language.words, unit, language.highlighter.get(), 8);
  QStringList out;
  for (qsizetype i = 0; i < in.size(); ++i) out << QString(indents[static_cast<std::size_t>(i)], u' ') + in[i].mid(leadingLength(in[i]));
  return out;
}

QStringList flat(const QStringList& in) {
  QStringList out;
  for (const QString& line : in) out << line.mid(leadingLength(line));
  return out;
}

void expectLines(const QStringList& found, const QStringList& expected, const QString& except = {}) {
  ASSERT_EQ(found.size(), expected.size());
  for (qsizetype i = 0; i < found.size(); ++i) {
    if (!except.isEmpty() && QRegularExpression(except).match(expected[i]).hasMatch()) continue;
    EXPECT_EQ(found[i].toStdString(), expected[i].toStdString()) << "line " << i + 1;
  }
}

}  // namespace

TEST(ReindentSamples, StayAsTheyAre) {
  struct Case {
    const char *file, *extension;
    int unit;
  };
  const Case cases[] = {{"Samples/sample.v", "v", 2}, {"Samples/sample1.vhd", "vhd", 2}, {"Samples/palasm.pds", "pds", 2},
                        {"Samples/report.scr", "scr", 2}, {"Samples/wave.do", "do", 4}, {"Samples/timspec.ucf", "ucf", 2}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.file);
    const QStringList lines = sourceFile(c.file).remove(u'\r').split(u'\n');
    expectLines(careful(lines, shipped(c.extension), c.unit), lines);
  }
}

// Only what was aligned by hand cannot come back.
TEST(ReindentSamples, ComeBackFromFlatText) {
  const QStringList verilog = sourceFile("Samples/sample.v").remove(u'\r').split(u'\n');
  expectLines(careful(flat(verilog), shipped("v"), 2), verilog, QStringLiteral("^ *(START|SHIFT|STOP ) = 2'd"));
  const QStringList vhdl = sourceFile("Samples/sample1.vhd").remove(u'\r').split(u'\n');
  expectLines(careful(flat(vhdl), shipped("vhd"), 2), vhdl);
}

TEST(ReindentSamples, LanguagesWhoseBlocksAreBlanksListNoWords) {
  for (const char* extension : {"py", "yaml", "mk"}) EXPECT_TRUE(shipped(extension).words.isEmpty()) << extension;
}

TEST(ReindentSamples, CodeAsItIsFound) {
  struct Case {
    const char *extension, *code;
    int unit;
  };
  const Case cases[] = {
      {"sv", R"(package p;
  typedef enum logic [1:0] {
    IDLE,
    RUN
  } state_t;
  import "DPI-C" function int f(int a);
  virtual class base extends other;
    virtual interface bus vif;
    extern function new(string name);
    pure virtual task run();
    virtual task stop();
      x = 1;
    endtask : stop
    constraint c {
      a < b;
    }
  endclass
endpackage
module m;
  always_ff @(posedge clk)
    unique case (s)
      A, B:
        if (x)
          y <= 1;
        else
          y <= 2;
      C: begin
        y <= 3;
      end
      default: ;
    endcase
  a1: assert property (p);
  property p;
    @(posedge clk) a |-> b;
  endproperty
  assign z = a ? b :
    c;
`ifdef X
  wire w;
`endif
endmodule)", 2},
      {"vhd", R"(entity e
is
end e;
architecture a of e is
  component c
    port (x : in bit);
  end component;
  function f return integer;
  attribute k of a : architecture is "y";
begin
  g : if W > 1 generate
    u : entity work.c
      port map (x => y);
  elsif W = 0 generate
    v <= x;
  else generate
    v <= y when z else
      w;
  end generate g;
  process
  begin
    wait for 1 ns;
    if a = b
      and c = d
    then
      x := 1;
    end if;
    assert false report "x" & integer'image(i)
      severity error;
  end process;
end a;)", 2},
      {"tcl", R"(proc p {a b} {
    set x [list $a \
        $b]
    switch $a {
        one { return 1 }
        default {
            puts "}"
        }
    }
    if {$a} {
        # {
        puts $x
    } else {
        puts ${b}
    }
})", 4},
      {"cpp", R"(template <typename T>
class X : public Y {
    Q_DISABLE_COPY(X)
public:
    X()
        : a(1),
          b(2)
    {
        if (a) return;
        switch (b) {
        case 1:
            g();
            break;
        default: h();
        }
        for (int i = 0; i < 3; ++i)
            if (i)
                k([&] {
                    l();
                });
    }
#define M(x) \
  do { \
  } while (0)
private:
    enum { A, B,
        C };
};)", 4},
      {"sh", R"(if a; then
  b
elif c
then
  d
else
  e
fi
while f
do
  g
done)", 2},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.extension);
    const QStringList lines = QString::fromUtf8(c.code).split(u'\n');
    expectLines(careful(lines, shipped(c.extension), c.unit), lines);
  }
}
