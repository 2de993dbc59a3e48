// The command dialog: a field for command strings that run on the active document. It stays open beside the documents. When a line
// fails, it keeps the text and shows that line. It remembers the last 20 command strings for the next run of the program.
//
// It completes verbs, edit commands, variables and options while the user types, and shows their help.
#pragma once

#include <QDialog>
#include <QStringList>

class CommandField;
class QLabel;
class QPushButton;

class frmCommand : public QDialog {
  Q_OBJECT
 public:
  explicit frmCommand(QWidget* parent = nullptr);

  QString commands() const;
  void setCommands(const QString& text);
  void run();                                               // what the Run button does
  const QStringList& history() const { return history_; }   // newest first
  void recall(int step);   // 1: the next older one, -1: the next newer one; the typed text follows the newest

 protected:
  void keyPressEvent(QKeyEvent* event) override;

 private:
  void remember(const QString& text);
  void showHelp();

  CommandField* field_;
  QLabel *help_, *report_;
  QPushButton *run_, *older_, *newer_;
  QStringList history_;
  QString typed_;       // before recalling began
  int recalled_ = -1;   // shown entry of the history; -1: the typed text
};
