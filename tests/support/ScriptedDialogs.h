// Answers the program's boxes by script. While it lives it is in force; every box is recorded. A box that nobody
// scripted fails the test and is cancelled; an answer that nobody asked for fails it at the end.
#pragma once

#include <QStringList>
#include <deque>
#include <functional>
#include <vector>

#include "base/dialog/Dialogs.h"

class ScriptedDialogs : public Dialogs {
 public:
  enum class Kind { message, input, open, save };
  struct Box {
    Kind kind = Kind::message;
    QString text, title;             // prompt of an input box; empty text for file dialogs
    Icon icon = Icon::none;          // messages only
    Buttons buttons = Buttons::ok;   // messages only
    QString initial;                 // input boxes only
    FileDialogRequest request;       // file dialogs only, as asked
  };

  ScriptedDialogs();
  ~ScriptedDialogs() override;
  ScriptedDialogs(const ScriptedDialogs&) = delete;
  ScriptedDialogs& operator=(const ScriptedDialogs&) = delete;

  // Answers are used in this order whatever the kind of box; a box of another kind than the next answer fails.
  // `whileUp` runs while the box is up.
  ScriptedDialogs& answer(Answer answer, std::function<void()> whileUp = {});
  ScriptedDialogs& answerInput(std::optional<QString> text, std::function<void()> whileUp = {});
  ScriptedDialogs& answerOpen(QStringList paths, int filterIndex = 0);   // 0: as asked
  ScriptedDialogs& answerSave(QString path, int filterIndex = 0);
  // For message boxes that may or may not come: whatever is not scripted gets this answer.
  void answerAny(Answer answer) { any_ = answer; }

  std::vector<Box> boxes;   // oldest first
  QStringList urls;         // handed to openUrl, which succeeds unless urlsFail
  bool urlsFail = false;
  const Box& last() const;     // fails the test when there was none
  QStringList texts() const;   // of all boxes, in order

  Answer messageBox(const QString& text, const QString& title, Icon icon, Buttons buttons) override;
  std::optional<QString> inputBox(const QString& prompt, const QString& title, const QString& initial) override;
  QStringList openFile(FileDialogRequest& request) override;
  QString saveFile(FileDialogRequest& request) override;
  bool openUrl(const QString& url) override;

 private:
  struct Step {
    Kind kind = Kind::message;
    Answer answer = Answer::cancel;
    std::optional<QString> input;
    QStringList paths;
    int filterIndex = 0;
    std::function<void()> whileUp;
  };
  std::optional<Step> take(Box box);
  std::deque<Step> steps_;
  std::optional<Answer> any_;
  Dialogs* previous_;
};
