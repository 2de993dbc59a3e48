#include "handoff/CopyData.h"

#ifdef Q_OS_WIN
#include <windows.h>

#include <QAbstractNativeEventFilter>
#include <QCoreApplication>

namespace {

class CopyDataFilter : public QAbstractNativeEventFilter {
 public:
  std::function<void(const QString&)> received;

  bool nativeEventFilter(const QByteArray&, void* message, qintptr* result) override {
    const MSG* event = static_cast<const MSG*>(message);
    if (event->message != WM_COPYDATA || !received) return false;
    const auto* data = reinterpret_cast<const COPYDATASTRUCT*>(event->lParam);
    received(data && data->lpData ? QString::fromUtf16(static_cast<const char16_t*>(data->lpData), data->cbData / 2) : QString());
    *result = -1;   // handled, whatever the result is
    return true;
  }
};

}   // namespace

void copydata::receive(std::function<void(const QString&)> received) {
  static CopyDataFilter filter;
  if (!filter.received && received) QCoreApplication::instance()->installNativeEventFilter(&filter);
  if (filter.received && !received) QCoreApplication::instance()->removeNativeEventFilter(&filter);
  filter.received = std::move(received);
}
#endif
