// Keeps windows on the screen: one that opens larger than the screen has room for becomes smaller. Where the fields of a dialog
// need more than that they scroll, above the row of its buttons. Installed once on the application.
#pragma once

#include <QObject>
#include <QRect>

class QScreen;

class FitScreen : public QObject {
 public:
  using QObject::QObject;
  bool eventFilter(QObject* object, QEvent* event) override;
  static QRect room(const QScreen& screen);   // for a window without its frame and title
};
