#include "base/dialog/FitScreen.h"

#include <QApplication>
#include <QDialog>
#include <QDialogButtonBox>
#include <QEvent>
#include <QFrame>
#include <QMessageBox>
#include <QPointer>
#include <QScreen>
#include <QScrollArea>
#include <QStyle>
#include <QVBoxLayout>
#include <algorithm>

namespace {

constexpr int kFrame = 8;   // around a window, beside its title

// Moves the dialog's content into a scroll area. If its last row holds the buttons, they stay below the area.
void makeScroll(QDialog& dialog) {
  QLayout* fields = dialog.layout();
  auto* content = new QWidget;
  QWidget* buttons = nullptr;
  if (QLayoutItem* last = fields->count() > 1 ? fields->itemAt(fields->count() - 1) : nullptr)
    if ((buttons = qobject_cast<QDialogButtonBox*>(last->widget()))) fields->removeWidget(buttons);
  QPointer<QWidget> first = dialog.focusWidget();
  for (QWidget* next = dialog.nextInFocusChain(); !first && next != &dialog; next = next->nextInFocusChain())
    if (next->focusPolicy() & Qt::TabFocus && next->isEnabledTo(&dialog)) first = next;
  content->setLayout(fields);   // removes it from the dialog, with its widgets
  auto* area = new QScrollArea(&dialog);
  area->setWidget(content);
  area->setWidgetResizable(true);
  area->setFrameShape(QFrame::NoFrame);
  area->setFocusPolicy(Qt::NoFocus);
  auto* layout = new QVBoxLayout(&dialog);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(area);
  if (first) first->setFocus();   // it lost it on the way
  if (!buttons) return;
  buttons->setParent(nullptr);   // Tab comes to them last again
  auto* row = new QVBoxLayout;
  row->setContentsMargins(fields->contentsMargins());
  row->addWidget(buttons);
  layout->addLayout(row);
}

void fit(QWidget& window) {
  const QRect room = FitScreen::room(*window.screen());
  const QSize least = window.minimumSizeHint().expandedTo(window.minimumSize());
  const bool tooLarge = least.width() > room.width() || least.height() > room.height();
  auto* dialog = qobject_cast<QDialog*>(&window);
  // A message box lays itself out; Dialogs.cpp keeps its text short.
  if (tooLarge && dialog && dialog->layout() && !qobject_cast<QMessageBox*>(dialog)) {
    dialog->setMinimumSize(0, 0);
    makeScroll(*dialog);
    const int bar = dialog->style()->pixelMetric(QStyle::PM_ScrollBarExtent) + 2;
    dialog->resize(least.expandedTo(dialog->size()) + QSize(bar, 0));
  }
  QRect place(window.pos(), window.size().boundedTo(room.size()));
  place.moveLeft(std::clamp(place.left(), room.left(), room.right() + 1 - place.width()));
  place.moveTop(std::clamp(place.top(), room.top(), room.bottom() + 1 - place.height()));
  if (place.size() != window.size()) window.resize(place.size());
  // Without a position the window manager places the window. Dialogs are placed beside their parent window.
  const bool chosen = window.testAttribute(Qt::WA_Moved);
  if (place.topLeft() == window.pos() || !(chosen || dialog)) return;
  window.move(place.topLeft());
  window.setAttribute(Qt::WA_Moved, chosen);
}

bool isPlaced(const QWidget& window) {
  const auto type = window.windowType();
  return window.isWindow() && (type == Qt::Window || type == Qt::Dialog || type == Qt::Tool) && !window.isMaximized() &&
         !window.isFullScreen();
}

}   // namespace

QRect FitScreen::room(const QScreen& screen) {
  const int title = QApplication::style()->pixelMetric(QStyle::PM_TitleBarHeight);
  return screen.availableGeometry().adjusted(kFrame, title + kFrame, -kFrame, -kFrame);
}

bool FitScreen::eventFilter(QObject* object, QEvent* event) {
  if (event->type() == QEvent::Show && !event->spontaneous())
    if (auto* window = qobject_cast<QWidget*>(object); window && isPlaced(*window)) fit(*window);
  return QObject::eventFilter(object, event);
}
