#include "control/CopyData.h"

#ifdef Q_OS_WIN
#include <windows.h>

#include <QAbstractNativeEventFilter>
#include <QCoreApplication>

namespace {

HWND windowOf(quint64 handle) { return reinterpret_cast<HWND>(static_cast<quintptr>(handle)); }
quint64 handleOf(HWND window) { return static_cast<quint64>(reinterpret_cast<quintptr>(window)); }

class CopyDataFilter : public QAbstractNativeEventFilter {
 public:
  std::function<void(const QString&)> received;

  bool nativeEventFilter(const QByteArray&, void* message, qintptr* result) override {
    const MSG* event = static_cast<const MSG*>(message);
    if (event->message != WM_COPYDATA || !received) return false;
    const auto* data = reinterpret_cast<const COPYDATASTRUCT*>(event->lParam);
    received(data && data->lpData ? QString::fromUtf16(static_cast<const char16_t*>(data->lpData), data->cbData / 2) : QString());
    *result = -1;   // handled, whatever came of it
    return true;
  }
};

}  // namespace

QList<TopWindow> copydata::topWindows() {
  QList<TopWindow> windows;
  for (HWND window = FindWindowW(nullptr, nullptr); window; window = GetWindow(window, GW_HWNDNEXT)) {
    QString caption(GetWindowTextLengthW(window), Qt::Uninitialized);
    caption.resize(GetWindowTextW(window, reinterpret_cast<wchar_t*>(caption.data()), int(caption.size()) + 1));
    windows << TopWindow{handleOf(window), handleOf(GetParent(window)), caption};
  }
  return windows;
}

void copydata::bringForward(quint64 window) {
  SetForegroundWindow(windowOf(window));
  if (IsIconic(windowOf(window))) ShowWindow(windowOf(window), SW_RESTORE);
}

bool copydata::send(quint64 to, quint64 from, const QString& text) {
  COPYDATASTRUCT data{0, DWORD(text.size() * 2), text.isEmpty() ? nullptr : const_cast<QChar*>(text.constData())};
  return SendMessageW(windowOf(to), WM_COPYDATA, WPARAM(windowOf(from)), reinterpret_cast<LPARAM>(&data)) != 0;
}

void copydata::receive(std::function<void(const QString&)> received) {
  static CopyDataFilter filter;
  if (!filter.received && received) QCoreApplication::instance()->installNativeEventFilter(&filter);
  if (filter.received && !received) QCoreApplication::instance()->removeNativeEventFilter(&filter);
  filter.received = std::move(received);
}
#endif
