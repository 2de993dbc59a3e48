#include "script/RunGuards.h"

#include <QApplication>
#include <QKeyEvent>
#include <QTimer>

#include "base/dialog/Dialogs.h"

namespace {
constexpr int kLookPeriod = 80;   // milliseconds
}

RunStep::RunStep(CodeMax* control) : control_(control) {
  if (!control) return;
  model_ = control->model();
  endWait();
}

RunStep::~RunStep() {
  if (open_ && std::uncaught_exceptions() > exceptions_) model_->document().abandonRun();
  beginWait(false);
  model_.reset();
}

void RunStep::beginWait(bool keepStep) {
  if (!keepStep) closeStep();
  if (held_ && control_) {
    control_->release();
    control_->setVisibleText(true);
  }
  held_ = false;
}

void RunStep::closeStep() {
  if (open_) model_->document().endRun();
  open_ = false;
}

void RunStep::endWait() {
  if (!control_) return;
  if (!open_) model_->document().beginRun();
  open_ = held_ = true;
  control_->setVisibleText(false);
  control_->hold();
}

RunInput::RunInput() {
  clock_.start();
  if (qApp) qApp->installEventFilter(this);
}

RunInput::~RunInput() = default;

void RunInput::lookIn() {
  if (clock_.elapsed() < kLookPeriod) return;
  looking_ = true;
  QCoreApplication::processEvents();
  looking_ = false;
  clock_.restart();
}

bool RunInput::eventFilter(QObject* receiver, QEvent* event) {
  if (!looking_ && (!waiting_ || isDialogUp() || QApplication::activePopupWidget())) return false;
  switch (event->type()) {
    case QEvent::KeyPress:
      if (static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape && (looking_ || !touched_)) {
        emit escape();
        return true;
      }
      [[fallthrough]];
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
    case QEvent::InputMethod:
    case QEvent::Drop:
    case QEvent::Shortcut:
      if (looking_) return true;
      touched_ = true;
      emit touched();
      return false;
    // Between two statements no other code may read or destroy a partly changed text.
    case QEvent::ShortcutOverride:
    case QEvent::KeyRelease:
    case QEvent::MouseButtonRelease:
    case QEvent::ContextMenu:
    case QEvent::Wheel:
    case QEvent::DragEnter: return looking_;
    case QEvent::Close:
      if (looking_) event->ignore();
      return looking_;
    case QEvent::Timer: return looking_ && (receiver->isWidgetType() || qobject_cast<QTimer*>(receiver));
    default: return false;
  }
}

#include "moc_RunGuards.cpp"
