// Guards during a run: they keep the text consistent and the user's input back.
#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QPointer>
#include <exception>

#include "control/CodeMax.h"

// Joins the changes of a run to one control into one undo step, within which undo works; the control is painted at the end. While
// the run waits, the text is painted and can be edited; the step is closed at the user's first action. The control may be destroyed
// meanwhile.
class RunStep {
 public:
  explicit RunStep(CodeMax* control);
  ~RunStep();
  RunStep(const RunStep&) = delete;
  RunStep& operator=(const RunStep&) = delete;
  void beginWait(bool keepStep);
  void closeStep();   // while waiting: later changes are another step
  void endWait();

 private:
  QPointer<CodeMax> control_;
  std::shared_ptr<TextModel> model_;   // kept alive while its run is open, also without the control
  bool open_ = false, held_ = false;   // whether the model's run is open, and whether the control's painting is held
  const int exceptions_ = std::uncaught_exceptions();
};

// Filters the user's input. While the run works, only Esc is handled, which requests its end. While it waits, all input is
// delivered, and each action is reported; Esc still requests the end, until the user begins to work on something else.
class RunInput : public QObject {
  Q_OBJECT
 public:
  RunInput();
  ~RunInput() override;
  void setWaiting(bool on) {
    waiting_ = on;
    touched_ = false;
  }
  void lookIn();   // to be called often: lets windows paint and checks for Esc if enough time has passed
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
