// What the user waits for: a key until it is on the screen, a long line, a page, a jump. Measured on Qt's offscreen platform.
#include <QApplication>
#include <QKeyEvent>

#include "bench/Application.h"
#include "bench/Bench.h"
#include "control/CodeMax.h"
#include "control/complete/Completer.h"
#include "control/edit/Carets.h"
#include "control/folds/PaneFolds.h"
#include "control/keys/KeyCommands.h"
#include "control/view/Pane.h"
#include "control/view/ViewState.h"

namespace {

// A shown control of 1000 x 700 pixels.
struct Window {
  Window() {
    bench::needApplication();
    control = std::make_unique<CodeMax>();
    control->setSmoothScrolling(false);
    control->resize(1000, 700);
    control->show();
    control->setFocus();
    control->setLanguage(QStringLiteral("C/C++"));
    pane = control->findChild<Pane*>();
    QApplication::processEvents();
  }
  void load(std::string bytes) {
    control->model()->replaceAll(text::Snapshot(std::move(bytes)), {});
    show();
  }
  void show() { QApplication::processEvents(); }
  // Until it is painted.
  double press(int key, Qt::KeyboardModifiers modifiers = {}, const QString& typed = {}) {
    const auto start = bench::Clock::now();
    QKeyEvent event(QEvent::KeyPress, key, modifiers, typed);
    QApplication::sendEvent(pane, &event);
    show();
    return bench::secondsSince(start);
  }

  std::unique_ptr<CodeMax> control;
  Pane* pane = nullptr;
};

void milliseconds(const std::string& what, double seconds, double most) { bench::row(what, seconds * 1000, "ms", most); }

void KeyInBigFile(benchmark::State& state) {
  for (auto _ : state) {
    Window window;
    window.load(bench::simulationLog(bench::GB));
    const qint64 middle = window.control->LineCount() / 2;
    window.control->SetSel({middle, 10, middle, 10, false});
    window.show();
    double sum = 0, worst = 0;
    constexpr int kKeys = 200;
    for (int i = 0; i < kKeys; ++i) {
      const double took = window.press(Qt::Key_A, {}, QStringLiteral("a"));
      sum += took;
      worst = std::max(worst, took);
    }
    milliseconds("a key in the middle of 1 GB until painted", sum / kKeys, 8);
    milliseconds("  the slowest of 200", worst, 0);
    milliseconds("  Return there, all below moves", window.press(Qt::Key_Return, {}, QStringLiteral("\r")), 8);
    milliseconds("  to the end of the text", window.press(Qt::Key_End, Qt::ControlModifier), 8);
  }
}
BENCHMARK(KeyInBigFile)->Iterations(1)->Unit(benchmark::kMillisecond);

// The same in a wrapped text, and what makes other rows of all lines.
void WrappedBigFile(benchmark::State& state) {
  for (auto _ : state) {
    Window window;
    window.load(bench::simulationLog(bench::GB));
    const auto since = [](auto act) {
      const auto start = bench::Clock::now();
      act();
      QApplication::processEvents();
      return bench::secondsSince(start);
    };
    window.control->resize(400, 700);
    window.show();
    const double on = since([&] { window.control->setWordWrap(static_cast<int>(WordWrap::window)); });
    milliseconds("1 GB: wrapping switched on until painted", on, 50);
    milliseconds("  to the end of the text", window.press(Qt::Key_End, Qt::ControlModifier), 100);
    const qint64 middle = window.control->LineCount() / 2;
    milliseconds("  to a line", since([&] { window.control->SetSel({middle, 10, middle, 10, false}); }), 100);
    double sum = 0;
    constexpr int kKeys = 200;
    for (int i = 0; i < kKeys; ++i) sum += window.press(Qt::Key_A, {}, QStringLiteral("a"));
    milliseconds("  a key there until painted", sum / kKeys, 8);
    milliseconds("  Return there, all below moves", window.press(Qt::Key_Return, {}, QStringLiteral("\r")), 8);
    double worst = 0;
    for (int width = 400; width < 1000; width += 20) worst = std::max(worst, since([&] { window.control->resize(width, 700); }));
    milliseconds("  the slowest of 30 new widths", worst, 16);
    window.load(bench::singleLine(100 * bench::MB));
    window.press(Qt::Key_End, Qt::ControlModifier);   // counts the line
    milliseconds("100 MB line: a key at its end until painted", window.press(Qt::Key_A, {}, QStringLiteral("a")), 16);
    milliseconds("  a page up", window.press(Qt::Key_PageUp), 16);
    const qint64 column = 50 * 1000 * 1000;
    window.control->SetSel({0, column, 0, column, false});
    window.show();
    milliseconds("  a key in its middle until painted", window.press(Qt::Key_A, {}, QStringLiteral("a")), 16);
    milliseconds("  a row down", window.press(Qt::Key_Down), 16);
  }
}
BENCHMARK(WrappedBigFile)->Iterations(1)->Unit(benchmark::kMillisecond);

// Blocks of a large file folded, and keys in it.
void FoldedFile(benchmark::State& state) {
  for (auto _ : state) {
    Window window;
    window.load(bench::verilogFile(10 * bench::MB));
    PaneFolds& folds = *window.pane->folds();
    const auto run = [&](const char* command) {
      const auto start = bench::Clock::now();
      window.control->ExecuteCmd(anyCommandByName(QString::fromLatin1(command))->id);
      window.show();
      return bench::secondsSince(start);
    };
    milliseconds("10 MB of Verilog: all folded until painted, its blocks read meanwhile", run("FOLDALL"), 200);
    milliseconds("  all unfolded", run("UNFOLDALL"), 200);
    milliseconds("  all folded again", run("FOLDALL"), 200);
    // Many small blocks, each folded for itself.
    std::string many;
    for (int i = 0; i < 200000; ++i) many += "if (a)\n{\n  b(); c(); d();\n}\n";
    window.load(many);
    const qint64 middle = window.control->LineCount() / 2;
    window.control->SetSel({middle, 0, middle, 0, false});
    const auto keys = [&](const std::string& what) {
      double sum = 0, worst = 0;
      constexpr int kKeys = 200;
      for (int i = 0; i < kKeys; ++i) {
        const double took = window.press(Qt::Key_A, {}, QStringLiteral("a"));
        sum += took;
        worst = std::max(worst, took);
      }
      milliseconds(what, sum / kKeys, 8);
      milliseconds("  the slowest of 200", worst, 0);
      milliseconds("  Return there, all below moves", window.press(Qt::Key_Return, {}, QStringLiteral("\r")), 8);
    };
    while (folds.handleAt(text::LineNo(middle + 1)) == PaneFolds::Handle::none) window.show();
    keys("200,000 blocks: a key in the middle until painted");
    milliseconds("  all folded", run("FOLDALL"), 0);
    keys("200,000 folds: a key in the middle until painted");
    milliseconds("  all unfolded", run("UNFOLDALL"), 0);
  }
}
BENCHMARK(FoldedFile)->Iterations(1)->Unit(benchmark::kMillisecond);

// Keys at many carets, and with the list of words.
void CaretsAndWords(benchmark::State& state) {
  for (auto _ : state) {
    Window window;
    window.load(bench::verilogFile(100 * bench::MB));
    const auto keys = [&](const std::string& what, int count, double most) {
      double sum = 0, worst = 0;
      for (int i = 0; i < count; ++i) {
        const double took = window.press(Qt::Key_A, {}, QStringLiteral("a"));
        sum += took;
        worst = std::max(worst, took);
      }
      milliseconds(what, sum / count, most);
      milliseconds("  the slowest of " + std::to_string(count), worst, 0);
    };
    Editor& editor = window.control->editor();
    std::vector<Caret> list;
    for (text::LineNo line(1000); line.value < 2000; ++line)
      list.push_back({editor.snapshot().lineStart(line), editor.snapshot().lineStart(line)});
    carets::set(editor, std::move(list), 0);
    keys("1,000 carets in 100 MB: a key until painted", 50, 30);
    carets::drop(editor);
    TypingAids aids;
    aids.completeTyped = true;
    window.control->setAids(aids);
    Completer words(*window.control);
    const qint64 middle = window.control->LineCount() / 2;
    window.control->SetSel({middle, 0, middle, 0, false});
    keys("words offered in 100 MB: a key until painted", 20, 20);
  }
}
BENCHMARK(CaretsAndWords)->Iterations(1)->Unit(benchmark::kMillisecond);

void LongLine(benchmark::State& state) {
  for (auto _ : state) {
    Window window;
    std::string bytes = bench::singleLine(20 * bench::MB);
    const auto start = bench::Clock::now();
    window.load(std::move(bytes));
    milliseconds("20 MB line: shown", bench::secondsSince(start), 50);
    const auto toEnd = bench::Clock::now();
    milliseconds("20 MB line: caret to its end", window.press(Qt::Key_End), 50);
    while (!window.pane->view().statesExact()) window.show();
    milliseconds("  and colours right", bench::secondsSince(toEnd), 0);
    milliseconds("20 MB line: a key there", window.press(Qt::Key_A, {}, QStringLiteral("a")), 50);
    double sum = 0;
    for (int i = 0; i < 20; ++i) sum += window.press(Qt::Key_A, {}, QStringLiteral("a"));
    milliseconds("  the next ones", sum / 20, 50);
    milliseconds(
        "20 MB line: position of the caret",
        [&] {
          const auto asked = bench::Clock::now();
          benchmark::DoNotOptimize(window.control->GetSel(false));
          return bench::secondsSince(asked);
        }(),
        50);
    milliseconds("20 MB line: back to its start", window.press(Qt::Key_Home), 50);
  }
}
BENCHMARK(LongLine)->Iterations(1)->Unit(benchmark::kMillisecond);

// Lines of ASCII pay nothing for the scripts that need more.
void PlainLines(benchmark::State& state) {
  for (auto _ : state) {
    Window window;
    const GlyphMetrics& metrics = window.pane->view().metrics();
    const std::string text = bench::verilogFile(4 * bench::MB);
    const auto eachLine = [&](auto look) {
      for (std::string_view rest = text; !rest.empty();) {
        const std::size_t length = std::min(rest.find('\n'), rest.size() - 1);
        look(rest.substr(0, length));
        rest.remove_prefix(length + 1);
      }
    };
    const double limit = bench::best(5, [&] {
      std::int64_t cells = 0;
      eachLine([&](std::string_view line) {
        for (; !line.empty(); line.remove_prefix(static_cast<std::size_t>(text::segmentAt(line, 0, 8).bytes))) ++cells;
      });
      benchmark::DoNotOptimize(cells);
    });
    const double took = bench::best(5, [&] {
      eachLine([&](std::string_view line) { benchmark::DoNotOptimize(LineLayout(line, true, {}, metrics, 8, 1e300)); });
    });
    bench::ratioRow("lines of ASCII laid out / their segments found", took, limit, 9);
    std::string comments;
    while (comments.size() < 4 * bench::MB)
      comments += "x = 1;   // \u05D0\u05D1\u05D2 (\u05D3\u05D4) 12 \u0633\u0644\u0627\u0645 \u0915\u094D\u0937\u093F\n";
    window.load(comments);
    double sum = 0;
    constexpr int kPages = 100;
    for (int i = 0; i < kPages; ++i) sum += window.press(Qt::Key_PageDown);
    milliseconds("a page of comments that are read from right to left", sum / kPages, 1000.0 / 60);
  }
}
BENCHMARK(PlainLines)->Iterations(1)->Unit(benchmark::kMillisecond);

void ColoredPages(benchmark::State& state) {
  for (auto _ : state) {
    Window window;
    window.load(bench::verilogFile(100 * bench::MB));
    constexpr int kPages = 300;
    auto start = bench::Clock::now();
    for (int i = 0; i < kPages; ++i) window.press(Qt::Key_PageDown);
    milliseconds("a page of a coloured 100 MB file", bench::secondsSince(start) / kPages, 1000.0 / 60);

    start = bench::Clock::now();
    window.press(Qt::Key_End, Qt::ControlModifier);
    milliseconds("first jump to its end, text shown", bench::secondsSince(start), 100);
    while (!window.pane->view().statesExact()) window.show();
    milliseconds("  and colours right", bench::secondsSince(start), 0);
    window.press(Qt::Key_Home, Qt::ControlModifier);
    milliseconds("jump to its end, coloured", window.press(Qt::Key_End, Qt::ControlModifier), 100);
  }
}
BENCHMARK(ColoredPages)->Iterations(1)->Unit(benchmark::kMillisecond);

}   // namespace
