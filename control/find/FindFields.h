// What the windows that search have in common: the fields for a text to find and one to replace it by, with one history, and their
// layout.
#pragma once

#include <QColor>
#include <QString>
#include <QStringList>
#include <initializer_list>

class QCheckBox;
class QComboBox;
class QDockWidget;
class QGridLayout;
class QLabel;
class QPalette;
class QProgressBar;
class QPushButton;
class QWidget;

QComboBox* makeFindField(QWidget* parent, const QString& name);
// Shows the text, and the history below it.
void fillFindField(QComboBox* field, const QString& text, bool replace);
void rememberFind(QComboBox* field, bool replace);   // puts its text first in the history
void putFirst(QComboBox* field);                     // the same in a history of the field's own

// The content of such a window: rows of label, field and buttons, and a last one with the switches and what came of the search. The
// window leaves the height to the texts; on a low screen it scrolls.
struct FindGrid {
  explicit FindGrid(QDockWidget* window);

  QComboBox* field(const QString& caption, const char* name, int row);   // an empty caption: no label
  QLabel* label(const QString& caption, QWidget* buddy, int row);
  // Column 0: the caller places it.
  QPushButton* button(const QString& caption, const char* name, int row = 0, int column = 0);
  QCheckBox* box(const QString& caption, const char* name, const QString& tip = {});   // the caller places it
  void setSwitches(int row, std::initializer_list<QCheckBox*> boxes);                  // and status, progress and cancel
  static void setTabOrder(std::initializer_list<QWidget*> parts);

  QWidget* content;
  QGridLayout* grid;
  QLabel* status;
  QProgressBar* progress;   // hidden, as `cancel` is
  QPushButton* cancel;
};

QColor badTextColor(const QPalette& palette);                   // of an error
void tellFind(QLabel* status, const QString& text, bool bad);   // what came of a search, or an error
// Shows the window; the docks beside it keep their sizes as far as there is room.
void showFindWindow(QDockWidget* window);
