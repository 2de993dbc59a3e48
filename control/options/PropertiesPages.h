// The pages of the properties dialog. Each edits only the options that it is given; the dialog finally applies them to the control.
#pragma once

#include <QWidget>
#include <functional>
#include <map>

#include "control/keys/KeyMap.h"
#include "control/options/ControlOptions.h"

class KeyField;
class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;
class QTreeWidget;
class QTreeWidgetItem;

class DisplayPage : public QWidget {
  Q_OBJECT
 public:
  DisplayPage(ControlOptions& options, QWidget* parent);
};

class EditingPage : public QWidget {
  Q_OBJECT
 public:
  EditingPage(ControlOptions& options, QWidget* parent);
};

class FontPage : public QWidget {
  Q_OBJECT
 public:
  FontPage(ControlOptions& options, QWidget* parent);
};

class LanguagePage : public QWidget {
  Q_OBJECT
 public:
  LanguagePage(ControlOptions& options, QWidget* parent);
};

class ColorsPage : public QWidget {
  Q_OBJECT
 public:
  ColorsPage(ControlOptions& options, QWidget* parent);
  void set(int slot, const QColor& color);   // invalid: the scheme's

 private:
  void showSlot();
  void setAll(const std::function<QColor(int slot)>& colorOf);
  int slot() const;

  ControlOptions& options_;
  QListWidget* list_;
  QPushButton* choose_;
  QLineEdit* code_;
  CodeMax* preview_;
};

// Works on a copy of the program's key map and notes changes of macros; apply() makes both effective.
class KeysPage : public QWidget {
  Q_OBJECT
 public:
  // `frame` is the window whose menu short-cuts are reported as conflicts.
  KeysPage(const QWidget* frame, QWidget* parent);
  void apply() const;

 private:
  void fill();
  void filter();
  void showSelected();
  void showConflicts();
  void bind();
  void unbind();
  void renameMacro();
  void removeMacro();
  KeyAction selected() const;
  QString nameOf(const KeyAction& action) const;
  QString keysTextOf(const KeyAction& action) const;

  const QWidget* frame_;
  KeyMap map_;
  QStringList macros_;                                 // the future names
  std::vector<std::pair<QString, QString>> changes_;   // renamed from, to; or removed: the second is empty
  QLineEdit* search_;
  KeyField *searchKeys_, *newKeys_;
  QTreeWidget* tree_;
  QLabel *help_, *conflicts_;
  QListWidget* keys_;
  QPushButton *bind_, *unbind_, *rename_, *remove_;
};

// A control that shows a sample in all colours.
CodeMax* makeSample(QWidget* parent);
