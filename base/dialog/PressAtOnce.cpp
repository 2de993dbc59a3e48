#include "base/dialog/PressAtOnce.h"

#include <QAbstractButton>
#include <QShortcutEvent>
#include <QToolButton>

bool PressAtOnce::eventFilter(QObject* object, QEvent* event) {
  if (event->type() != QEvent::Shortcut || static_cast<QShortcutEvent*>(event)->isAmbiguous()) return false;
  auto* button = qobject_cast<QAbstractButton*>(object);
  if (!button || !button->isEnabled() || qobject_cast<QToolButton*>(button)) return false;   // these have menus and actions
  if (button->isCheckable() && (button->focusPolicy() & Qt::ClickFocus)) button->setFocus(Qt::ShortcutFocusReason);
  button->click();
  return true;
}
