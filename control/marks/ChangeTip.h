// Shows what stood in the file, while the mouse rests on the mark of a changed line.
#pragma once

#include <QObject>

class Pane;

class ChangeTip : public QObject {
 public:
  explicit ChangeTip(Pane& pane);   // belongs to it

 protected:
  bool eventFilter(QObject* object, QEvent* event) override;

 private:
  Pane& pane_;
};
