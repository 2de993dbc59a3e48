#include "control/keys/KeyField.h"

#include <QKeyEvent>

#include "control/keys/KeyMap.h"

namespace {

bool staysInDialog(const QKeyEvent& event) {
  return event.key() == Qt::Key_Tab || event.key() == Qt::Key_Backtab ||
         (event.key() == Qt::Key_Escape && event.modifiers() == Qt::NoModifier);
}

}   // namespace

KeyField::KeyField(QWidget* parent) : QLineEdit(parent) {
  setPlaceholderText(tr("Press the keys"));
  setClearButtonEnabled(true);
  setAttribute(Qt::WA_InputMethodEnabled, false);
  connect(this, &QLineEdit::textChanged, this, [this](const QString& text) {
    if (text.isEmpty() && !keys_.isEmpty()) setKeys({});   // the clear button
  });
}

void KeyField::setKeys(const QKeySequence& keys) {
  keys_ = keys;
  setText(keys.toString(QKeySequence::NativeText));
  emit keysChanged(keys_);
}

bool KeyField::event(QEvent* event) {
  if (event->type() == QEvent::ShortcutOverride && !staysInDialog(*static_cast<QKeyEvent*>(event))) {
    event->accept();
    return true;
  }
  return QLineEdit::event(event);
}

void KeyField::keyPressEvent(QKeyEvent* event) {
  if (staysInDialog(*event)) return event->ignore();
  event->accept();
  const int stroke = KeyMap::strokeOf(*event);
  if (stroke == 0) return;
  if (keys_.count() == 1) setKeys(QKeySequence(keys_[0].toCombined(), stroke));
  else setKeys(QKeySequence(stroke));
}
