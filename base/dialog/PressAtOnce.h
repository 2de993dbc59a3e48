// A letter with Alt presses its button or ticks its box at once. The library does so a tenth of a second later, so that a Return that
// follows quickly would end the dialog first and what was ticked would be lost. One for the program, as a filter of its events.
#pragma once

#include <QObject>

class PressAtOnce : public QObject {
 public:
  using QObject::QObject;
  bool eventFilter(QObject* object, QEvent* event) override;
};
