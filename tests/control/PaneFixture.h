// A shown control with helpers that inject what the user does.
#pragma once

#include <gtest/gtest.h>

#include <QApplication>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QWheelEvent>

#include "control/CodeMax.h"
#include "control/view/Pane.h"
#include "tests/support/Caret.h"

inline QPalette desktopPalette(bool dark) {
  QPalette palette;
  palette.setColor(QPalette::Base, dark ? Qt::black : Qt::white);
  palette.setColor(QPalette::Text, dark ? Qt::white : Qt::black);
  return palette;
}

class PaneFixture : public ::testing::Test {
 public:
  PaneFixture() {
    QFont font(QStringLiteral("DejaVu Sans Mono"));
    font.setPixelSize(14);
    control.setFontOf(font);
    control.setSmoothScrolling(false);
    control.resize(640, 360);
    control.show();
    control.setFocus();
    QApplication::processEvents();
  }

  Pane* pane(int i = 0) { return control.findChildren<Pane*>().value(i); }
  QWidget* viewport(int i = 0) { return pane(i)->viewport(); }

  // Text with caret and selection marked as in tests/support/Caret.h.
  void put(const char* marked) {
    const CaretText text = parseCaret(marked);
    control.model()->replaceAll(text::Snapshot(text.bytes), {});
    control.editor().setSelection(text.selection);
    QApplication::processEvents();
  }
  std::string now() { return printCaret(bytes(), control.editor().selection()); }
  std::string bytes() { return control.model()->snapshot().bytes(); }

  // As the system does: menus are asked first, then the focus widget gets the key.
  void key(int code, Qt::KeyboardModifiers modifiers = {}, const QString& text = {}) {
    for (const auto type : {QEvent::ShortcutOverride, QEvent::KeyPress}) {
      QKeyEvent event(type, code, modifiers, text);
      QApplication::sendEvent(pane(), &event);
    }
  }
  void typeText(const QString& text) {
    for (const QChar c : text) key(c.isLetter() ? c.toUpper().unicode() : int(c.unicode()), {}, c);
  }
  void ime(const QString& preedit, const QString& commit) {
    QInputMethodEvent event(preedit, {});
    event.setCommitString(commit);
    QApplication::sendEvent(pane(), &event);
  }

  // The middle of the left edge of a character: a click there puts the caret before it.
  QPoint pointOf(qint64 line, qint64 column, int which = 0) {
    const QPoint corner = pane(which)->view().pointOf(pane(which)->editor().offsetOf({line, column}));
    return corner + QPoint(1, pane(which)->view().lineHeight() / 2);
  }
  void mouse(QEvent::Type type, QPoint at, Qt::MouseButton button = Qt::LeftButton, Qt::KeyboardModifiers modifiers = {},
             int which = 0) {
    const bool move = type == QEvent::MouseMove, up = type == QEvent::MouseButtonRelease;
    QMouseEvent event(type, at, viewport(which)->mapToGlobal(at), move ? Qt::NoButton : button,
                      up ? Qt::NoButton : Qt::MouseButtons(button), modifiers);
    QApplication::sendEvent(viewport(which), &event);
  }
  void click(QPoint at, Qt::KeyboardModifiers modifiers = {}, int which = 0) {
    mouse(QEvent::MouseButtonPress, at, Qt::LeftButton, modifiers, which);
    mouse(QEvent::MouseButtonRelease, at, Qt::LeftButton, modifiers, which);
  }
  void drag(QPoint from, QPoint to, Qt::KeyboardModifiers modifiers = {}) {
    mouse(QEvent::MouseButtonPress, from, Qt::LeftButton, modifiers);
    mouse(QEvent::MouseMove, to, Qt::LeftButton, modifiers);
    mouse(QEvent::MouseButtonRelease, to, Qt::LeftButton, modifiers);
  }

  CodeMax control;
};
