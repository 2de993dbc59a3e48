// What the recovery journal costs at the window: a key with it and without it, and a save. Linked, and so run, behind Start.cpp, whose
// processes can make an application object only while there is none.
#include <QFile>
#include <QKeyEvent>
#include <QTemporaryDir>
#include <memory>
#include <numeric>
#include <vector>

#include "app/frame/frmMain.h"
#include "base/Program.h"
#include "bench/Application.h"
#include "bench/Bench.h"
#include "document/Recovery.h"
#include "document/frmDocument.h"
#include "settings/modRegistry.h"

namespace {

using namespace bench;

// From the key to the painted text, in seconds: the mean of so many keys, and the slowest.
struct Keys {
  double mean = 0, worst = 0;
};

Keys typed(frmMain& main, frmDocument* document, int count) {
  main.activate(document);
  QWidget* pane = nullptr;
  for (QWidget* widget : document->cmx->findChildren<QWidget*>())
    if (!pane && widget->inherits("Pane")) pane = widget;
  std::vector<double> each;
  for (int i = 0; i < count; ++i) {
    const auto start = std::chrono::steady_clock::now();
    QKeyEvent key(QEvent::KeyPress, Qt::Key_X, Qt::NoModifier, QStringLiteral("x"));
    QApplication::sendEvent(pane, &key);
    QApplication::processEvents();
    each.push_back(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
  }
  return {std::accumulate(each.begin(), each.end(), 0.0) / count, *std::max_element(each.begin(), each.end())};
}

void TypingWithJournal(benchmark::State& state) {
  for (auto _ : state) {
    QTemporaryDir home;
    for (const char* variable : {"XDG_CONFIG_HOME", "XDG_STATE_HOME", "XDG_RUNTIME_DIR"}) qputenv(variable, home.path().toUtf8());
    needApplication();
    setApplicationFolder(QStringLiteral(ZELKOR_SOURCE_FOLDER));
    modRegistry::NewKey(modRegistry::kGlobalKey);
    auto main = std::make_unique<frmMain>();
    main->show();
    const auto open = [&](const char* name) {
      QFile file(home.filePath(QString::fromLatin1(name)));
      const std::string bytes = simulationLog(MB);
      if (!file.open(QIODevice::WriteOnly) || file.write(bytes.data(), qint64(bytes.size())) < 0) std::abort();
      file.close();
      return main->openAt(file.fileName(), 1000, 5);
    };
    frmDocument* without = open("without.log");
    const RecoverySession session(home.filePath(QStringLiteral("recovery")));
    frmDocument* with = open("with.log");
    Keys off, on;
    for (int round = 0; round < 6; ++round) {   // by turns, the first for warming up
      const Keys a = typed(*main, without, 500), b = typed(*main, with, 500);
      if (round == 0) continue;
      off.mean += a.mean / 5;
      on.mean += b.mean / 5;
      off.worst = std::max(off.worst, a.worst);
      on.worst = std::max(on.worst, b.worst);
    }
    row("key until painted, 1 MB, without journal", off.mean * 1e3, "ms", 0);
    row("with journal, beyond that", (on.mean - off.mean) * 1e3, "ms", 1);
    row("the slowest of 2,500 without journal", off.worst * 1e3, "ms", 0);
    row("the slowest of 2,500 with journal", on.worst * 1e3, "ms", 0);
    double slowest = 0, shortest = 1e9;
    for (int i = 0; i < 10; ++i) {
      typed(*main, with, 1);
      const auto start = std::chrono::steady_clock::now();
      if (!with->SaveDocumment(with->CurrentFileName())) std::abort();
      const double took = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
      slowest = std::max(slowest, took);
      shortest = std::min(shortest, took);
    }
    row("save 1 MB with sync, on the wall, the quickest of 10", shortest * 1e3, "ms", 50);
    row("the slowest", slowest * 1e3, "ms", 0);
    main.reset();
  }
}
BENCHMARK(TypingWithJournal)->Iterations(1);

}   // namespace
