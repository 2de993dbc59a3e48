// A field for command strings that offers what may stand at the caret.
#pragma once

#include <QCompleter>
#include <QString>
#include <vector>

#include "base/dialog/TextField.h"

struct Completion {
  QString text, help;
};

// What may stand where `beforeCaret` (the line up to the caret) ends: statements at the beginning, options behind USAGE, variables behind
// "$". *begin: where the piece that it replaces begins.
std::vector<Completion> completionsFor(const QString& beforeCaret, qsizetype* begin);
// The help of the statement or variable that the caret stands in or behind; empty: none.
QString commandHelp(const QString& line, qsizetype caret);

class CommandField : public TextField {
  Q_OBJECT
 public:
  explicit CommandField(QWidget* parent = nullptr);
  void markLine(int line);   // from 1, 0 takes the mark away; the caret goes there

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
