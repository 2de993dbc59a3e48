// A field that records the pressed keys: a sequence of one or two strokes. Only Tab, Shift+Tab and Esc keep their meaning in the
// dialog.
#pragma once

#include <QKeySequence>
#include <QLineEdit>

class KeyField : public QLineEdit {
  Q_OBJECT
 public:
  explicit KeyField(QWidget* parent);
  const QKeySequence& keys() const { return keys_; }
  void setKeys(const QKeySequence& keys);

 signals:
  void keysChanged(const QKeySequence& keys);

 protected:
  bool event(QEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void contextMenuEvent(QContextMenuEvent*) override {}

 private:
  QKeySequence keys_;
};
