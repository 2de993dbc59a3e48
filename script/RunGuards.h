// What holds a text and the person still while a command string runs.
#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QPointer>
#include <exception>

#include "control/CodeMax.h"

// The changes of a run to one control as one undo step, within which undo works, painted at the end. While the run waits the text is painted and
// can be edited; the step stays open until the person touches anything. The control may go away meanwhile.
class RunStep {
 public:
  explicit RunStep(CodeMax* control);
  ~RunStep();
  RunStep(const RunStep&) = delete;
  RunStep& operator=(const RunStep&) = delete;
  void beginWait(bool keepStep);
  void closeStep();   // while waiting: what follows is another step
  void endWait();

 private:
  QPointer<CodeMax> control_;
  std::shared_ptr<TextModel> model_;   // outlives the control as long as its run is open
  bool open_ = false, held_ = false;   // the model's run; what the control shows
  const int exceptions_ = std::uncaught_exceptions();
};

// Hears the person. While the run works nothing reaches the windows but Esc, which asks for its end; while it waits everything
// does, and each touch is told. Esc asks for the end then too, until the person has begun to work on something else.
class RunInput : public QObject {
  Q_OBJECT
 public:
  RunInput();
  ~RunInput() override;
  void setWaiting(bool on) {
    waiting_ = on;
    touched_ = false;
  }
  void lookIn();   // often: lets the windows paint and hears Esc when enough time has gone by
  bool isLooking() const { return looking_; }

 signals:
  void escape();
  void touched();

 protected:
  bool eventFilter(QObject* receiver, QEvent* event) override;

 private:
  QElapsedTimer clock_;
  bool waiting_ = false, looking_ = false, touched_ = false;
};
