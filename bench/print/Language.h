// A language and texts for the measurements of printing and formatting.
#pragma once

#include <memory>
#include <string>

#include "bench/Application.h"
#include "bench/Bench.h"
#include "control/code/LanguageTable.h"
#include "language/clsLang.h"

namespace bench_print {

// Verilog with its block words; letter case has no meaning, so that the case filters work.
inline std::shared_ptr<clsLang> language() {
  static const auto made = [] {
    auto l = std::make_shared<clsLang>();
    l->Name = QStringLiteral("bench-verilog");
    l->BlockStart = QStringLiteral("module\r\nbegin\r\ncase\r\nfunction\r\ntask\r\ngenerate\r\n");
    l->BlockEnd = QStringLiteral("endmodule\r\nend\r\nendcase\r\nendfunction\r\nendtask\r\nendgenerate\r\n");
    CmLanguage table;
    table.Keywords = QStringLiteral(
        "always\nassign\nbegin\ncase\nelse\nend\nendcase\nendmodule\nif\ninput\nmodule\nnegedge\nor\noutput\nparameter\nposedge\nre"
        "g\nwire\n");
    table.Operators = QStringLiteral("=\n<=\n+\n-\n&\n|\n");
    table.SingleLineComments = QStringLiteral("//\n");
    table.MultiLineComments1 = QStringLiteral("/*\n");
    table.MultiLineComments2 = QStringLiteral("*/\n");
    table.StringDelims = QStringLiteral("\"\n");
    LanguageTable::registerLanguage(l->Name, table);
    return l;
  }();
  return made;
}

// Exactly so many lines of Verilog.
inline std::string verilogLines(std::int64_t lines) {
  std::string text = bench::verilogFile(std::size_t(lines) * 60);
  std::size_t at = 0;
  for (std::int64_t i = 0; i < lines; ++i) {
    const auto end = text.find('\n', at);
    if (end == std::string::npos) std::abort();   // the generator's lines are shorter than 60 characters on the average
    at = end + 1;
  }
  text.resize(at);
  return text;
}

}   // namespace bench_print
