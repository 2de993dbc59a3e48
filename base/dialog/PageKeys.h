// Ctrl+Tab and Ctrl+PgDown walk the pages of a dialog, Ctrl+Shift+Tab and Ctrl+PgUp walk them back, wherever in it the focus is.
#pragma once

class QTabBar;
class QWidget;

void walkPagesByKeys(QWidget& dialog, QTabBar& pages);
