// What the user waits for when printing: the PDF, the first page of the preview. Measured on Qt's offscreen platform.
#include "bench/print/Language.h"
#include "control/CodeMax.h"
#include "page/PdfFile.h"
#include "page/VSPrinter.h"
#include "print/PrintSettings.h"
#include "print/frmPreview.h"

namespace {

// Verilog of so many lines in a control of its language.
struct Source {
  CodeMax cmx;
  std::size_t bytes = 0;
  explicit Source(qint64 lines) {
    bench::needApplication();
    std::string text = bench_print::verilogLines(lines);
    bytes = text.size();
    cmx.setLanguage(bench_print::language()->Name);
    cmx.model()->replaceAll(text::Snapshot(std::move(text)), {});
  }
};

PrintSettings settings() {
  PrintSettings s;
  s.text.LineNumbers = s.text.Keywordsbold = true;
  return s;
}

CWordWrap wrapper() {
  CWordWrap wrap;
  wrap.SetSingleComment(QStringLiteral("//"));
  wrap.SetMultiLineComment(QStringLiteral("/*"), QStringLiteral("*/"));
  return wrap;
}

void Pdf(benchmark::State& state) {
  for (auto _ : state) {
    Source source(10000);
    double seconds = 1e9, layout = 1e9;
    for (int i = 0; i < 3; ++i) {
      const auto start = bench::Clock::now();
      CWordWrap wrap = wrapper();
      VSPrinter printer;
      layOut(source.cmx, QStringLiteral("bench.v"), settings(), wrap, printer);
      layout = std::min(layout, bench::secondsSince(start));
      benchmark::DoNotOptimize(makePdf({&printer.document()}, QStringLiteral("bench.v")));
      seconds = std::min(seconds, bench::secondsSince(start));
    }
    bench::row("10,000 lines of Verilog to PDF", seconds, "s", 2);
    bench::row("  laying them out", layout, "s", 0);
  }
}
BENCHMARK(Pdf)->Iterations(1)->Unit(benchmark::kMillisecond);

void LayoutMemory(benchmark::State& state) {
  for (auto _ : state) {
    Source source(100000);
    bench::trimMemory();
    const auto before = bench::allocatedMemory();
    CWordWrap wrap = wrapper();
    VSPrinter printer;
    const auto start = bench::Clock::now();
    layOut(source.cmx, QStringLiteral("bench.v"), settings(), wrap, printer);
    bench::row("100,000 lines laid out", bench::secondsSince(start), "s", 0);
    bench::row("memory of the layout / text", double(bench::allocatedMemory() - before) / double(source.bytes), "x", 20);
  }
}
BENCHMARK(LayoutMemory)->Iterations(1)->Unit(benchmark::kMillisecond);

// The time from the order until a page is on the screen, and the longest time the window does not answer meanwhile.
void PreviewOpens(benchmark::State& state) {
  for (auto _ : state) {
    Source source(100000);
    const auto start = bench::Clock::now();
    frmPreview preview({nullptr, &source.cmx, QStringLiteral("bench.v")}, false);
    double first = 0, longest = 0;
    auto last = start;
    QObject::connect(&preview, &frmPreview::answered, &preview, [&] {
      const auto now = bench::Clock::now();
      longest = std::max(longest, std::chrono::duration<double>(now - last).count());
      last = now;
      if (first == 0 && !preview.document().pages.empty()) first = bench::secondsSince(start);
    });
    preview.show();
    preview.layOutText();
    bench::row("first page of the preview of 100,000 lines", first * 1000, "ms", 500);
    bench::row("  the longest time it does not answer", longest * 1000, "ms", 200);
    bench::row("  all pages", bench::secondsSince(start), "s", 0);
  }
}
BENCHMARK(PreviewOpens)->Iterations(1)->Unit(benchmark::kMillisecond);

}   // namespace
