#include "control/LongWork.h"

#include <QApplication>
#include <QCloseEvent>
#include <QEventLoop>
#include <QMainWindow>
#include <QProgressDialog>
#include <QScopedValueRollback>
#include <QTimer>
#include <algorithm>
#include <future>

#include "base/Dialogs.h"
#include "base/Program.h"

namespace {
constexpr int kLookPeriod = 50;   // milliseconds
constexpr std::int64_t kLongFile = 4 << 20;   // bytes
QEventLoop* waiting = nullptr;    // for the work that shows how far it is

// Goes by itself only: what cannot be cancelled keeps its window, as without it the user could take away what the work is for.
class Progress : public QProgressDialog {
 public:
  Progress(const QString& what, bool mayCancel, QWidget* window)
      : QProgressDialog(what, mayCancel ? QCoreApplication::translate("LongWork", "Cancel") : QString(), 0, mayCancel ? 100 : 0, window), mayCancel_(mayCancel) {}
  void reject() override {
    if (mayCancel_) QProgressDialog::reject();
  }

 protected:
  void closeEvent(QCloseEvent* event) override {
    if (mayCancel_) QProgressDialog::closeEvent(event);
    else event->ignore();
  }

 private:
  const bool mayCancel_;
};
}

bool LongWork::cancelRunning() {
  if (waiting) waiting->quit();
  return waiting != nullptr;
}

void LongWork::run(QWidget& window, std::int64_t bytes, const std::function<void(text::SearchControl&)>& work, const QString& what, bool mayCancel) {
  text::SearchControl control;
  std::future<void> done = std::async(std::launch::async, [&] { work(control); });
  const auto ready = [&done](std::chrono::milliseconds wait) { return done.wait_for(wait) == std::future_status::ready; };
  if (!ready(moment)) {
    const ModalGuard guard;
    Progress progress(what, mayCancel, &window);
    progress.setObjectName(QStringLiteral("longWork"));
    progress.setWindowModality(Qt::ApplicationModal);
    progress.setAutoClose(false);
    progress.setAutoReset(false);
    QEventLoop loop;
    const QScopedValueRollback current(waiting, &loop);
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, &loop, [&] {
      if (mayCancel) progress.setValue(static_cast<int>(std::clamp<std::int64_t>(control.bytesDone * 100 / std::max<std::int64_t>(1, bytes), 0, 99)));
      if (ready(std::chrono::milliseconds(0))) loop.quit();
    });
    if (mayCancel) QObject::connect(&progress, &QProgressDialog::canceled, &loop, &QEventLoop::quit);
    timer.start(kLookPeriod);
    progress.show();
    loop.exec();
    control.cancel = true;   // cancelled, the dialog is gone: no key may come in until the work has noticed
  }
  done.get();
}

void LongWork::forFile(QWidget& asker, std::int64_t bytes, const std::function<void(text::SearchControl&)>& work, const QString& what,
                       bool mayCancel) {
  // A text that is being opened has no window yet; the one that a dialog has just left may not be active again.
  QWidget* window = asker.window()->isVisible() ? asker.window() : nullptr;
  for (QWidget* each : QApplication::topLevelWidgets())
    if (!window && each->isVisible() && qobject_cast<QMainWindow*>(each)) window = each;
  if (bytes >= kLongFile && window && !gBusy()) return run(*window, bytes, work, what, mayCancel);
  text::SearchControl control;
  work(control);
}
