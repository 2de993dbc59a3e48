#include "bridge/LongWork.h"

#include <QApplication>
#include <QCloseEvent>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QMainWindow>
#include <QPointer>
#include <QProgressDialog>
#include <QScopedValueRollback>
#include <QTimer>
#include <algorithm>
#include <future>
#include <optional>
#include <thread>
#include <utility>

#include "base/Program.h"
#include "base/Workspace.h"
#include "base/dialog/Dialogs.h"

namespace {
constexpr std::chrono::milliseconds kLookPeriod{20};
constexpr std::chrono::milliseconds kLastWait{200};   // how long cancelled work may take to end before it is abandoned
constexpr int kWhole = 100;                           // percent

struct Running {
  LongWork::Patience patience;
  std::function<void()> cancel;   // of the work that shows how far it is
  LongWork::Watch::Look watcher;
};
Running& running() { return Workspace::current().part<Running>(); }
LongWork::Watch::Look& watcher() { return running().watcher; }

// Closes only by itself. Work that cannot be cancelled keeps its window; else the user could close a document that the work needs.
class Progress : public QProgressDialog {
 public:
  Progress(const QString& what, bool mayCancel, QWidget* window)
      : QProgressDialog(what, mayCancel ? QCoreApplication::translate("LongWork", "Cancel") : QString(), 0, 0, window),
        mayCancel_(mayCancel) {
    setObjectName(QStringLiteral("longWork"));
    setWindowModality(Qt::ApplicationModal);
    setAutoClose(false);
    setAutoReset(false);
  }
  void reject() override {
    if (mayCancel_) QProgressDialog::reject();
  }
  void tell(int percent) {   // -1: something goes on
    setMaximum(percent < 0 ? 0 : kWhole);
    setValue(std::max(0, percent));
  }

 protected:
  void closeEvent(QCloseEvent* event) override {
    if (mayCancel_) QProgressDialog::closeEvent(event);
    else event->ignore();
  }

 private:
  const bool mayCancel_;
};

// Shared by both threads.
struct Task {
  text::SearchControl control;
  std::promise<void> done;
  LongWork::Work work;
};

class Waiter {
 public:
  Waiter(LongWork::Work work, std::int64_t bytes)
      : bytes_(bytes), task_(std::make_shared<Task>()), done_(task_->done.get_future()) {
    task_->work = std::move(work);
    std::thread([task = task_] {
      try {
        task->work(task->control);
        task->done.set_value();
      } catch (...) { task->done.set_exception(std::current_exception()); }
    }).detach();
  }
  bool ready(std::chrono::milliseconds wait = {}) const { return done_.wait_for(wait) == std::future_status::ready; }
  void cancel() { task_->control.cancel = true; }
  void finish() { done_.get(); }

  int percent() const {
    const std::int64_t total = task_->control.bytesTotal > 0 ? std::int64_t(task_->control.bytesTotal) : bytes_;
    return total <= 0 ? -1 : static_cast<int>(std::clamp<std::int64_t>(task_->control.bytesDone * kWhole / total, 0, kWhole - 1));
  }

  void inRun(const QString& what) {
    while (!ready(kLookPeriod))
      if (!watcher()(what, percent())) return;
  }

  void underWindow(QWidget* window, const QString& what, bool mayCancel) {
    const ModalGuard guard;
    QEventLoop loop;
    std::unique_ptr<Progress> progress;
    bool isQuiet = true, isCancelled = false;
    const QScopedValueRollback cancel(running().cancel, std::function<void()>([&] {
                                        isCancelled = true;
                                        loop.quit();
                                      }));
    QTimer look;
    QObject::connect(&look, &QTimer::timeout, &loop, [&] {
      if (progress) progress->tell(percent());
      if (ready()) loop.quit();
    });
    look.start(kLookPeriod);
    QTimer::singleShot(running().patience.quiet, &loop, [&] {
      isQuiet = false;
      loop.quit();
    });
    loop.exec(QEventLoop::ExcludeUserInputEvents);
    if (isQuiet || isCancelled || ready()) return;   // both timers may have come at once
    progress = std::make_unique<Progress>(what, mayCancel, window);
    if (mayCancel) QObject::connect(progress.get(), &QProgressDialog::canceled, &loop, &QEventLoop::quit);
    progress->show();   // before any setValue(): that runs events, and Cancel would not be connected yet
    loop.exec();
  }

 private:
  const std::int64_t bytes_;
  std::shared_ptr<Task> task_;
  std::future<void> done_;
};

// A document that is being opened has no window yet. After a dialog its window may not be active again.
QWidget* shownWindow(QWidget* asker) {
  if (asker && asker->window()->isVisible()) return asker->window();
  if (QWidget* dialog = asker ? nullptr : QApplication::activeModalWidget()) return dialog;
  for (QWidget* each : QApplication::topLevelWidgets())
    if (each->isVisible() && qobject_cast<QMainWindow*>(each)) return each;
  return nullptr;
}

// False: the work was cancelled and has not ended yet.
bool runOn(QWidget& asker, std::int64_t bytes, LongWork::Work work, const QString& what, bool mayCancel, bool mayLeave) {
  QWidget* window = shownWindow(&asker);
  const bool inRun = gBusy();
  if (!window || (inRun && !watcher())) {
    text::SearchControl control;
    work(control);
    return true;
  }
  Waiter waiter(std::move(work), bytes);
  if (!waiter.ready(running().patience.moment)) {
    if (inRun) waiter.inRun(what);
    else waiter.underWindow(window, what, mayCancel);
    waiter.cancel();   // after Cancel the window is gone: block keys until the work has noticed
    if (mayLeave && !waiter.ready(kLastWait)) return false;
  }
  waiter.finish();
  return true;
}
}   // namespace

LongWork::Patience& LongWork::patience() { return running().patience; }

LongWork::Watch::Watch(Look look) : before_(std::exchange(watcher(), std::move(look))) {}
LongWork::Watch::~Watch() { watcher() = std::move(before_); }

bool LongWork::cancelRunning() {
  const std::function<void()> cancel = running().cancel;
  if (cancel) cancel();
  return cancel != nullptr;
}

void LongWork::run(QWidget& asker, std::int64_t bytes, const Work& work, const QString& what, bool mayCancel) {
  runOn(asker, bytes, std::cref(work), what, mayCancel, false);
}

struct LongWork::Loop::State {
  QPointer<QWidget> window;
  QString what;
  QElapsedTimer sinceBegin{}, sinceLook{};
  bool cancelled = false;
  std::unique_ptr<Progress> progress{};
  std::optional<ModalGuard> modal{};
  std::function<void()> cancelBefore{};

  void showWindow() {
    modal.emplace();
    progress = std::make_unique<Progress>(what, true, window);
    QObject::connect(progress.get(), &QProgressDialog::canceled, progress.get(), [this] { cancelled = true; });
    cancelBefore = std::exchange(running().cancel, [this] { cancelled = true; });
    progress->show();
  }
};

LongWork::Loop::Loop(QWidget* asker, const QString& what) : state_(new State{shownWindow(asker), what}) {
  state_->sinceBegin.start();
  state_->sinceLook.start();
}

LongWork::Loop::~Loop() {
  if (state_->progress) running().cancel = std::move(state_->cancelBefore);
}

bool LongWork::Loop::goesOn(int percent) {
  State& s = *state_;
  const Patience& patience = running().patience;
  if (s.cancelled || s.sinceLook.elapsed() < std::min(kLookPeriod, patience.moment).count()) return !s.cancelled;
  s.sinceLook.restart();
  if (gBusy()) {
    s.cancelled = watcher() && !watcher()(s.what, percent);
  } else if (s.window && s.sinceBegin.elapsed() >= (patience.moment + patience.quiet).count()) {
    if (!s.progress) s.showWindow();
    s.progress->tell(percent);
    QCoreApplication::processEvents();
  }
  return !s.cancelled;
}

bool LongWork::runOrLeave(QWidget& asker, Work work, const QString& what) {
  return runOn(asker, 0, std::move(work), what, true, true);
}
