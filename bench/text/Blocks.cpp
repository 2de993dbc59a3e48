// Blocks: reading 10 MB of source for them, what an edit costs, and the memory that they take.
#include "text/fold/Blocks.h"

#include "bench/Bench.h"
#include "text/store/Document.h"

namespace {

using namespace bench;
using namespace text;

void blocks(benchmark::State& state) {
  const auto colors = std::make_shared<const Highlighter>(LanguageTables{.caseSensitive = true,
                                                                         .singleComments = {"//"},
                                                                         .multiCommentStart = {"/*"},
                                                                         .multiCommentEnd = {"*/"},
                                                                         .stringDelims = {"\""},
                                                                         .escapeChar = "\\"});
  const auto rules = std::make_shared<const FoldRules>(
      FoldLists{true,
                {"module", "begin", "case", "casex", "casez", "function", "task", "fork", "generate", "specify", "table"},
                {"endmodule", "end", "endcase", "endfunction", "endtask", "join", "endgenerate", "endspecify", "endtable"},
                {"pair fork join", "unit module", "layer `ifdef `ifndef / `elsif `else / `endif", "region //{ //}"}},
      colors);
  const std::string source = verilogFile(10 * MB);
  const Snapshot text(source);
  for (auto _ : state) {
    BlockIndex index;
    row("blocks of 10 MB of Verilog, read and matched",
        best(3,
             [&] {
               index.setRules(rules);
               index.update(text);
               benchmark::DoNotOptimize(index.blocks(text));
             }) *
            1e3,
        "ms", 200);
    trimMemory();
    const auto before = allocatedMemory();
    BlockIndex fresh;
    fresh.setRules(rules);
    fresh.update(text);
    const auto found = fresh.blocks(text);
    row("  memory for them / the text", double(allocatedMemory() - before) / double(source.size()), "x", 0.15);
    row("  all its folds", best(3, [&] { benchmark::DoNotOptimize(found->foldsIn(LineNo(0), LineNo(text.lineCount()))); }) * 1e3,
        "ms", 200);
    Document document;
    document.reset(text);
    Change made;
    const auto heard = document.subscribe([&](const Change& change) { made = change; });
    row("  again after a character typed in the middle",
        best(3,
             [&] {
               document.apply({{ByteOffset(5 * MB), ByteOffset(5 * MB)}, "x"}, {});
               fresh.edit(made);
               fresh.update(document.snapshot());
               benchmark::DoNotOptimize(fresh.blocks(document.snapshot()));
             }) *
            1e3,
        "ms", 30);
  }
}
BENCHMARK(blocks)->Iterations(1)->Unit(benchmark::kMillisecond);

}   // namespace
