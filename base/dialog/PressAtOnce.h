// Alt and a letter press the button or tick the box at once. Qt does it 0.1 s later: a Return that follows quickly would close the
// dialog before the box is ticked. Installed once on the application.
#pragma once

#include <QObject>

class PressAtOnce : public QObject {
 public:
  using QObject::QObject;
  bool eventFilter(QObject* object, QEvent* event) override;
};
