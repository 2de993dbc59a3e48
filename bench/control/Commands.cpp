// Edit commands over a million lines, and blocks of a hundred thousand.
#include "bench/Bench.h"
#include "control/commands/CommandTable.h"
#include "control/edit/Carets.h"
#include "control/edit/Editor.h"

namespace {

// The window of no window, with a clipboard of its own.
struct Host : EditorHost {
  QString text;
  bool block = false;
  void note(const QString&) override {}
  QString clipboardText(bool* isBlock) override {
    *isBlock = block;
    return text;
  }
  void setClipboard(const QString& fresh, bool isBlock) override {
    text = fresh;
    block = isBlock;
  }
};

struct Bare {
  Host host;
  std::shared_ptr<TextModel> model = std::make_shared<TextModel>();
  Editor editor{model, std::make_shared<EditOptions>(), &host};

  void load(int lines, const char* line) {
    std::string text;
    for (int i = 0; i < lines; ++i) text += line;
    model->replaceAll(text::Snapshot(std::move(text)), {});
  }
  double run(const char* command) {
    const int id = commandByName(QString::fromLatin1(command))->id;
    const auto start = bench::Clock::now();
    editor.execute(id);
    return bench::secondsSince(start);
  }
};

void MillionLines(benchmark::State& state) {
  struct Case {
    const char *command, *line;
  };
  for (auto _ : state)
    for (const Case& c : {Case{"UPPERCASESELECTION", "  signal_a <= signal_b;\n"},
                          {"LOWERCASESELECTION", "Prüfung A\r\n"},
                          {"TABIFYSELECTION", "        a <= b;   -- x\n"},
                          {"UNTABIFYSELECTION", "\ta <=\tb;\n"},
                          {"INDENTSELECTION", "a <= b;\n"},
                          {"UNINDENTSELECTION", "    a <= b;\n"}}) {
      Bare bare;
      bare.load(1000000, c.line);
      bare.run("SELECTALL");
      bench::row(std::string(c.command) + " of 1,000,000 lines", bare.run(c.command), "s", 2);
      bench::row("  its undo", bare.run("UNDO"), "s", 2);
    }
}
BENCHMARK(MillionLines)->Iterations(1)->Unit(benchmark::kMillisecond);

void Blocks(benchmark::State& state) {
  for (auto _ : state) {
    Bare bare;
    bare.load(100000, "\tabcdef\n");
    bare.host.text = QStringLiteral("xy\n").repeated(99999) + QStringLiteral("xy");
    bare.host.block = true;
    bare.editor.setRange({0, 2, 0, 2});
    bench::row("PASTE of a block of 100,000 lines", bare.run("PASTE"), "s", 1);
    bare.editor.setRange({0, 2, 99999, 4, true});
    const auto start = bench::Clock::now();
    bare.editor.typeText(QStringLiteral("z"));
    bench::row("a key into each of 100,000 rows", bench::secondsSince(start), "s", 1);
    bare.editor.setRange({0, 1, 99999, 4, true});
    bench::row("CUT of a block of 100,000 lines", bare.run("CUT"), "s", 1);
  }
}
BENCHMARK(Blocks)->Iterations(1)->Unit(benchmark::kMillisecond);

void Carets(benchmark::State& state) {
  for (auto _ : state) {
    Bare bare;
    bare.load(100000, "  signal_a <= signal_b;\n");
    std::vector<Caret> list;
    for (std::int64_t line = 0; line < 100000; ++line) {
      const text::ByteOffset at = bare.editor.snapshot().lineStart(text::LineNo(line)) + 5;
      list.push_back({at, at});
    }
    carets::set(bare.editor, std::move(list), 0);
    const auto start = bench::Clock::now();
    bare.editor.typeText(QStringLiteral("z"));
    bench::row("a key at each of 100,000 carets", bench::secondsSince(start), "s", 0.2);
    for (const char* command : {"DELETEBACK", "LINEDOWN", "WORDRIGHTEXTEND", "UPPERCASESELECTION", "NEWLINE", "UNDO"})
      bench::row(std::string(command) + " at 100,000 carets", bare.run(command), "s", 0.2);
  }
}
BENCHMARK(Carets)->Iterations(1)->Unit(benchmark::kMillisecond);

}   // namespace
