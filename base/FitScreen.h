// Keeps windows on the screen: one that opens larger than the screen has room for becomes smaller. Where the fields of a dialog
// need more than that they scroll, above the row of its buttons. Installed once on the application.
#pragma once

#include <QObject>

class FitScreen : public QObject {
 public:
  using QObject::QObject;
  bool eventFilter(QObject* object, QEvent* event) override;
};
