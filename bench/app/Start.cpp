// From the start of the program to the first painted text, and what the time is spent on. Each round is a process of its own.
#include <sys/wait.h>
#include <unistd.h>

#include <QApplication>
#include <QDir>
#include <QEvent>
#include <QTemporaryDir>
#include <QTimer>
#include <memory>
#include <numeric>
#include <vector>

#include "app/frame/FrameMenus.h"
#include "app/frame/frmMain.h"
#include "app/session/Session.h"
#include "app/start/Instance.h"
#include "app/start/LeftoverLook.h"
#include "app/start/mGlobals.h"
#include "base/Program.h"
#include "bench/Bench.h"
#include "document/Languages.h"
#include "document/Recovery.h"
#include "document/frmRegistry.h"
#include "language/ucCM.h"
#include "settings/modRegistry.h"

namespace {

constexpr const char* kSteps[] = {"application object",   "frame with menus and bars", "who is first", "settings and languages",
                                  "profile, menus, show", "open a 300-line file",      "first paint"};
constexpr int kStepCount = int(std::size(kSteps));

// Ends the event loop once a pane has been painted.
class FirstPaint : public QObject {
 public:
  bool eventFilter(QObject* object, QEvent* event) override {
    if (event->type() == QEvent::Paint && object->inherits("Pane")) {
      qApp->removeEventFilter(this);
      QTimer::singleShot(0, qApp, [] { qApp->exit(); });
    }
    return false;
  }
};

// The steps of the start, their times into `to`; with the recovery of texts, of which there are none, or without. From a session or a
// name.
enum class Way { named, withoutRecovery, session };
void startOnce(int to, Way way) {
  const bool recovery = way != Way::withoutRecovery;
  double times[kStepCount] = {};
  auto last = bench::Clock::now();
  int step = 0;
  const auto done = [&] {
    times[step++] = bench::secondsSince(last);
    last = bench::Clock::now();
  };
  char name[] = "zelkor";
  char* names[] = {name, nullptr};
  int count = 1;
  QApplication application(count, names);
  FirstPaint painted;
  application.installEventFilter(&painted);
  done();
  setApplicationFolder(QStringLiteral(ZELKOR_SOURCE_FOLDER));
  const auto session = recovery ? std::make_unique<RecoverySession>() : nullptr;
  frmMain main;
  done();
  Instance instance(main);
  instance.CheckPrevInst({}, false, false);
  done();
  modRegistry::NewKey(modRegistry::kGlobalKey);
  useDefinitionFileOfSettings();
  InitLanguages();
  done();
  frmRegistry::instance().GetProfile(main, QStringLiteral("mnuFileMRU"));
  main.SetupToolStatus();
  main.SetupMenus();
  if (way == Way::session) Session::of(main).beginLast();
  main.show();
  done();
  if (way == Way::session) Session::of(main).show();
  else main.openFile(QStringLiteral(ZELKOR_SOURCE_FOLDER "/Samples/sample.v"));
  const auto look = recovery ? std::make_unique<LeftoverLook>(main) : nullptr;
  if (recovery) QTimer::singleShot(0, &main, [&] { Session::of(main).restoreTexts(); });
  done();
  application.exec();
  done();
  const ssize_t written = ::write(to, times, sizeof times);
  ::_exit(written == sizeof times ? 0 : 1);
}

struct Times {
  double of[kStepCount];
  double total() const { return std::accumulate(of, of + kStepCount, 0.0); }
};

// One start in a process of its own, with a session of so many documents; the first one is shown.
Times start(Way way, int documents) {
  int ends[2];
  if (::pipe(ends) != 0) std::abort();
  QTemporaryDir home;
  SessionState session;
  session.active = 0;
  for (int i = 0; i < documents; ++i) {
    KeptDocument& one = session.documents.emplace_back();
    one.path = i == 0 ? ZELKOR_SOURCE_FOLDER "/Samples/sample.v" : "/somewhere/rtl/block_" + std::to_string(i) + ".v";
    one.state = i == 0 ? windowstate::kMaximised : windowstate::kNormal;
  }
  const std::string folder = home.path().toStdString() + "/zelkor";
  if (!text::makeFolders(folder).empty() || (documents > 0 && !SessionFile(folder + "/session").write(session, 1).empty()))
    std::abort();
  const pid_t child = ::fork();
  if (child == 0) {
    for (const char* variable : {"XDG_CONFIG_HOME", "XDG_STATE_HOME", "XDG_RUNTIME_DIR"}) qputenv(variable, home.path().toUtf8());
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    startOnce(ends[1], way);
  }
  Times times;
  if (::read(ends[0], times.of, sizeof times.of) != sizeof times.of) std::abort();
  ::waitpid(child, nullptr, 0);
  ::close(ends[0]);
  ::close(ends[1]);
  return times;
}

void StartOfSession(benchmark::State& state) {
  for (auto _ : state) {
    constexpr int kDocuments[] = {1, 200, 2'000};
    double best[] = {1e9, 1e9, 1e9};
    for (int round = 0; round < 12; ++round)   // by turns
      for (std::size_t i = 0; i < std::size(kDocuments); ++i)
        if (i < 2 || round < 3) best[i] = std::min(best[i], start(Way::session, kDocuments[i]).total());
    bench::ratioRow("start of a session with 200 documents / with one", best[1], best[0], 1.3);
    bench::row("start of a session with 2,000 documents", best[2] * 1e3, "ms", 500);
  }
}

void Start(benchmark::State& state) {
  for (auto _ : state) {
    std::vector<double> best(kStepCount, 1e9);
    double bestTotal = 1e9, bestWithout = 1e9;
    for (int round = 0; round < 14; ++round) {   // by turns
      const bool recovery = round % 2 == 0;
      const Times times = start(recovery ? Way::named : Way::withoutRecovery, 0);
      if (!recovery) {
        bestWithout = std::min(bestWithout, times.total());
        continue;
      }
      for (int i = 0; i < kStepCount; ++i) best[std::size_t(i)] = std::min(best[std::size_t(i)], times.of[i]);
      bestTotal = std::min(bestTotal, times.total());
    }
    bench::row("start to the first painted text, after loading the program", bestTotal * 1e3, "ms", 80);
    bench::row("  of it: recovery, with nothing to recover", (bestTotal - bestWithout) * 1e3, "ms", 5);
    for (int i = 0; i < kStepCount; ++i) bench::row(std::string("  of it: ") + kSteps[i], best[std::size_t(i)] * 1e3, "ms", 0);
  }
}

BENCHMARK(Start)->Iterations(1);
BENCHMARK(StartOfSession)->Iterations(1);

}   // namespace
