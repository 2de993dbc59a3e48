// A field for command strings with completion at the caret.
#pragma once

#include <QCompleter>
#include <QString>
#include <vector>

#include "base/dialog/TextField.h"

struct Completion {
  QString text, help;
};

// Completions at the end of `beforeCaret` (the line up to the caret): statements at the beginning, options behind USAGE, variables
// behind "$". *begin: start of the part that a completion replaces.
std::vector<Completion> completionsFor(const QString& beforeCaret, qsizetype* begin);
// The help of the statement or variable at the caret; empty: none.
QString commandHelp(const QString& line, qsizetype caret);

class CommandField : public TextField {
  Q_OBJECT
 public:
  explicit CommandField(QWidget* parent = nullptr);
  void markLine(int line);   // from 1; 0 removes the mark; moves the caret there

 signals:
  void runAsked();   // Ctrl+Return

 protected:
  bool event(QEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

 private:
  void offer(bool evenWithoutLetters);
  void insert(const QString& completion);

  QCompleter completer_;
};
