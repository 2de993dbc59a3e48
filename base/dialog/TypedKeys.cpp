#include "base/dialog/TypedKeys.h"

#include <QAbstractSpinBox>
#include <QComboBox>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTextEdit>

namespace {

bool isText(const QString& text) {
  return !text.isEmpty() &&
         (text[0].isPrint() || text[0].isSurrogate() || text[0].category() == QChar::Other_Format);   // or a joiner
}

// A field that takes no text, such as one for key sequences, receives all keys.
bool takesText(const QWidget& field) {
  return field.testAttribute(Qt::WA_InputMethodEnabled) &&
         (qobject_cast<const QLineEdit*>(&field) || qobject_cast<const QAbstractSpinBox*>(&field) ||
          qobject_cast<const QPlainTextEdit*>(&field) || qobject_cast<const QTextEdit*>(&field));
}

}   // namespace

bool typesText(const QKeyEvent& key) {
  const auto held = [&](Qt::KeyboardModifier modifier) { return key.modifiers().testFlag(modifier); };
  if (!isText(key.text()) || held(Qt::MetaModifier)) return false;
  if (held(Qt::ControlModifier) != held(Qt::AltModifier)) return false;
  if (!held(Qt::AltModifier)) return true;
#ifdef Q_OS_WIN
  return true;
#else
  return key.text()[0].toUpper().unicode() != key.key();   // with AltGr the letter differs from the key's own
#endif
}

bool TypedKeys::eventFilter(QObject* object, QEvent* event) {
  if (event->type() == QEvent::KeyPress) {
    auto* widget = qobject_cast<QWidget*>(object);
    if (widget && widget->focusProxy()) widget = widget->focusProxy();   // a completion list passes its keys to its field
    if (const auto* choice = qobject_cast<QComboBox*>(widget); choice && choice->isEditable()) widget = choice->lineEdit();
    const auto* key = static_cast<QKeyEvent*>(event);
    const bool ctrlAlone =
        key->modifiers().testFlag(Qt::ControlModifier) && !key->modifiers().testFlag(Qt::AltModifier);   // no field types that
    if (widget && takesText(*widget) && isText(key->text()) && !typesText(*key) && !ctrlAlone) return true;
  }
  return QObject::eventFilter(object, event);
}
