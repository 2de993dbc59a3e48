// What command strings cost: many statements, commands on a big text, the log, started programs, batch mode.
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QTimer>

#include "bench/Application.h"
#include "bench/Bench.h"
#include "document/frmDocument.h"
#include "document/frmLog.h"
#include "process/Process.h"
#include "script/Batch.h"
#include "script/mCMXParser.h"
#include "settings/RegistryFile.h"
#include "tests/document/FakeFrame.h"

namespace {

QString lines(const char* line, int count) { return QString::fromLatin1(line).repeated(count); }

class BenchFrame : public FakeFrame {
 public:
  BenchFrame() {
    bench::needApplication();
    file = std::make_unique<RegistryFile>(folder.filePath(QStringLiteral("settings.conf")));
    registry::setStore(file.get());
    registry::store().setReadOnly(true);
    window = std::make_unique<frmLog>();
    document = std::make_unique<frmDocument>();
    open = {active = document.get()};
  }
  ~BenchFrame() override {
    document.reset();
    window.reset();
    registry::setStore(nullptr);
  }
  double run(const QString& commands) {
    const auto start = bench::Clock::now();
    if (mCMXParser::Run(0, 0, commands).ending != mCMXParser::Ending::done) std::abort();
    return bench::secondsSince(start);
  }

  frmLog* log() override { return window.get(); }

  QTemporaryDir folder;
  std::unique_ptr<RegistryFile> file;
  std::unique_ptr<frmLog> window;
  std::unique_ptr<frmDocument> document;
};

// The longest time in which the window did not answer.
class Pauses {
 public:
  Pauses() {
    clock_.start();
    QObject::connect(&timer_, &QTimer::timeout, &timer_, [this] { longest = std::max(longest, double(clock_.restart())); });
    timer_.start(2);
  }
  double longest = 0;   // milliseconds

 private:
  QElapsedTimer clock_;
  QTimer timer_;
};

void Statements(benchmark::State& state) {
  for (auto _ : state) {
    BenchFrame frame;
    frame.document->cmx->setText(QStringLiteral("one\ntwo\nthree\n"));
    frame.document->show();
    bench::row("100,000 statement lines on a small text",
               frame.run(lines("cmdLINEDOWN\ncmdINSERTCHAR x\ncmdDELETEBACK\ncmdHOME\n", 25000)), "s", 1);
    frame.window->show();
    bench::row("ECHO of 100,000 lines", frame.run(lines("ECHO some text of a usual length $Title\n", 100000)), "s", 1);
  }
}

void BigText(benchmark::State& state) {
  for (auto _ : state) {
    BenchFrame frame;
    CodeMax& cmx = *frame.document->cmx;
    cmx.model()->replaceAll(text::Snapshot(bench::simulationLog(100 * bench::MB)), {});
    frame.document->show();
    QApplication::processEvents();
    const int insert = 211;
    const double plain = bench::best(3, [&] {
      for (int n = 0; n < 100; ++n) cmx.ExecuteCmd(insert, QStringLiteral("x"));
    });
    double shortest = 1e9;
    for (int n = 0; n < 3; ++n) shortest = std::min(shortest, frame.run(lines("cmdINSERTCHAR x\n", 100)));
    bench::row("100 edit commands on 100 MB, above the edits themselves", (shortest - plain) * 1000, "ms", 100);
  }
}

void Programs(benchmark::State& state) {
  for (auto _ : state) {
    BenchFrame frame;
    frame.window->resize(900, 300);
    frame.window->show();
    Pauses pauses;
    const double seconds = frame.run(
        QStringLiteral("SHELL sh -c \"yes 'a line of output that is as long as lines of tools are' | head -c 100000000\""));
    bench::row("a program prints 100 MB, until all is shown", seconds, "s", 0);
    bench::row("longest pause of the window meanwhile", pauses.longest, "ms", 200);
    bench::row("size of the log afterwards", double(frame.window->cmx->model()->snapshot().size().value) / double(bench::MB), "MB",
               40);
  }
}

void BatchMode(benchmark::State& state) {
  for (auto _ : state) {
    BenchFrame frame;
    BatchOptions options;
    const QByteArray text = QByteArray("  wire [31:0] some_signal;\t// and a comment\n").repeated(300);
    for (int n = 0; n < 1000; ++n) {
      options.files << frame.folder.filePath(QStringLiteral("f%1.v").arg(n));
      QFile file(options.files.last());
      if (!file.open(QFile::WriteOnly) || file.write(text) != text.size()) std::abort();
    }
    options.commands = QStringLiteral("cmdSETFINDTEXT wire\ncmdSETREPLACETEXT logic\ncmdREPLACEALLINBUFFER\n");
    for (const bool save : {false, true}) {
      options.save = save;
      const auto start = bench::Clock::now();
      if (batch::run(options) != batch::kDone) std::abort();
      bench::row(save ? "batch over 1,000 files of 300 lines, saved" : "batch over 1,000 files of 300 lines",
                 bench::secondsSince(start), "s", 5);
    }
  }
}

BENCHMARK(Statements)->Iterations(1);
BENCHMARK(BigText)->Iterations(1);
BENCHMARK(Programs)->Iterations(1);
BENCHMARK(BatchMode)->Iterations(1);

}   // namespace
