#include "control/LongWork.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QProgressDialog>
#include <QTimer>
#include <algorithm>
#include <future>

#include "base/Dialogs.h"

namespace {
constexpr int kLookPeriod = 50;   // milliseconds
}

void LongWork::run(QWidget& window, std::int64_t bytes, const std::function<void(text::SearchControl&)>& work) {
  text::SearchControl control;
  if (bytes < limit) return work(control);
  std::future<void> done = std::async(std::launch::async, [&] { work(control); });
  const auto ready = [&done](std::chrono::milliseconds wait) { return done.wait_for(wait) == std::future_status::ready; };
  if (!ready(moment)) {
    const ModalGuard guard;
    QProgressDialog progress(QCoreApplication::translate("LongWork", "Searching..."), QCoreApplication::translate("LongWork", "Cancel"), 0, 100,
                             &window);
    progress.setObjectName(QStringLiteral("longWork"));
    progress.setWindowModality(Qt::ApplicationModal);
    progress.setAutoClose(false);
    progress.setAutoReset(false);
    QEventLoop loop;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, &loop, [&] {
      progress.setValue(static_cast<int>(std::clamp<std::int64_t>(control.bytesDone * 100 / std::max<std::int64_t>(1, bytes), 0, 99)));
      if (ready(std::chrono::milliseconds(0))) loop.quit();
    });
    QObject::connect(&progress, &QProgressDialog::canceled, &loop, [&] { control.cancel = true; });
    timer.start(kLookPeriod);
    progress.show();
    // Signals that end the program and other copies' messages come by sockets: the text must not go away under the command.
    loop.exec(QEventLoop::ExcludeSocketNotifiers);
    control.cancel = true;
  }
  done.get();
}
