// Keeps windows on the screen. A window that opens larger than the screen is made smaller; the fields of a dialog that do not fit
// scroll above the row of its buttons. Installed once on the application.
#pragma once

#include <QObject>
#include <QRect>

class QScreen;

class FitScreen : public QObject {
 public:
  using QObject::QObject;
  bool eventFilter(QObject* object, QEvent* event) override;
  static QRect room(const QScreen& screen);   // for a window, without its frame and title bar
};
