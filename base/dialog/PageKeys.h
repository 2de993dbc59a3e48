// Ctrl+Tab and Ctrl+PgDown go to the next page of a dialog, Ctrl+Shift+Tab and Ctrl+PgUp to the previous one, wherever the focus
// is.
#pragma once

class QTabBar;
class QWidget;

void walkPagesByKeys(QWidget& dialog, QTabBar& pages);
