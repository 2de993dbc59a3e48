// Find commands on large texts: small ones are done at once, long ones show a window in which they can be cancelled.
#include "bridge/LongWork.h"

#include <QKeyEvent>
#include <QProgressDialog>
#include <QTimer>
#include <atomic>
#include <future>
#include <thread>

#include "base/Program.h"
#include "base/dialog/Dialogs.h"
#include "control/commands/CommandTable.h"
#include "tests/control/PaneFixture.h"
#include "tests/support/EventLoop.h"

namespace {

class LongWorkTest : public PaneFixture {
 protected:
  const LongWork::Patience patience = LongWork::patience();
  ~LongWorkTest() override {
    LongWork::patience() = patience;
    searchState() = {};
  }
  static void showAtOnce() { LongWork::patience() = {std::chrono::milliseconds(1), std::chrono::milliseconds(1)}; }
  QProgressDialog* shownDialog() const {
    auto* dialog = control.window()->findChild<QProgressDialog*>();
    return dialog && dialog->isVisible() ? dialog : nullptr;
  }
  static void press(QWidget* widget, int key) {
    QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier);
    QApplication::sendEvent(widget, &event);
  }
};

TEST_F(LongWorkTest, IsDoneOnAThreadAndCanBeCancelled) {
  const std::thread::id here = std::this_thread::get_id();
  std::thread::id worker;
  const auto note = [&](text::SearchControl&) { worker = std::this_thread::get_id(); };
  LongWork::run(control, 1, note);
  EXPECT_NE(worker, here);

  showAtOnce();
  bool shown = false, cancelled = false;
  int steps = 0, looks = 0;
  QTimer look;
  QObject::connect(&look, &QTimer::timeout, &look, [&] {
    if (shown) ++looks;
    auto* dialog = control.window()->findChild<QProgressDialog*>();
    if (!dialog || dialog->value() < 30) return;
    shown = isDialogUp() && dialog->isModal();
    QApplication::sendEvent(dialog, std::make_unique<QKeyEvent>(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier).get());
  });
  look.start(5);
  LongWork::run(control, 100, [&](text::SearchControl& progress) {
    for (; !(cancelled = progress.cancel) && steps < kPatience; ++steps) {
      progress.bytesDone = 50;
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(100));   // time for a key, if the window took one
  });
  EXPECT_TRUE(shown && cancelled) << steps;
  EXPECT_EQ(looks, 0) << "nothing goes on between cancel and the end";
  EXPECT_FALSE(isDialogUp());
  EXPECT_THROW(LongWork::run(control, 100, [](text::SearchControl&) { throw std::bad_alloc(); }), std::bad_alloc);
}

TEST_F(LongWorkTest, WorkThatHasToEndKeepsItsWindowAndSaysHowFarItIs) {
  showAtOnce();
  std::atomic<bool> mayEnd = false;
  QString seen;
  QTimer look;
  QObject::connect(&look, &QTimer::timeout, &look, [&] {
    QProgressDialog* dialog = shownDialog();
    if (!dialog || dialog->value() != 40) return;
    press(dialog, Qt::Key_Escape);
    dialog->close();
    seen = QStringLiteral("%1 of %2%3")
               .arg(dialog->value())
               .arg(dialog->maximum())
               .arg(dialog->isVisible() ? QString() : QStringLiteral(", gone"));
    mayEnd = true;
  });
  look.start(5);
  bool cancelled = false;
  LongWork::run(
      control, 1,
      [&](text::SearchControl& progress) {
        progress.bytesTotal = 50;   // who does the work knows better
        progress.bytesDone = 20;
        for (int n = 0; n < kPatience && !mayEnd; ++n) std::this_thread::sleep_for(std::chrono::milliseconds(1));
        cancelled = progress.cancel;
      },
      QStringLiteral("Saving"), false);
  EXPECT_EQ(seen.toStdString(), "40 of 100");
  EXPECT_FALSE(cancelled);
}

TEST_F(LongWorkTest, ReadingThatHangsIsLeftWhenItIsCancelled) {
  showAtOnce();
  const auto hang = std::make_shared<std::promise<void>>();
  const auto read = std::make_shared<std::promise<int>>();
  QTimer look;
  QObject::connect(&look, &QTimer::timeout, &look, [&] {
    if (QProgressDialog* dialog = shownDialog()) press(dialog, Qt::Key_Escape);
  });
  look.start(5);
  EXPECT_FALSE(LongWork::runOrLeave(
      control,
      [hang, read](text::SearchControl&) {
        hang->get_future().wait();
        read->set_value(1);
      },
      QStringLiteral("Opening")));
  EXPECT_FALSE(isDialogUp());
  hang->set_value();
  EXPECT_EQ(read->get_future().get(), 1);
  bool called = false;
  EXPECT_TRUE(LongWork::runOrLeave(
      control, [&](text::SearchControl&) { called = true; }, QString()));
  EXPECT_TRUE(called);
}

TEST_F(LongWorkTest, WhileACommandStringRunsItsWatchHearsAndNoWindowComes) {
  showAtOnce();
  const BusyGuard busy;
  std::thread::id worker;
  const auto note = [&](text::SearchControl&) { worker = std::this_thread::get_id(); };
  pane()->work(1 << 30, note);
  EXPECT_EQ(worker, std::this_thread::get_id()) << "nobody watches";

  int heard = 0;
  bool window = false, cancelled = false;
  const LongWork::Watch watch([&](const QString&, int percent) {
    EXPECT_EQ(percent, 50);
    window = window || shownDialog();
    return ++heard < 3;
  });
  pane()->work(100, [&](text::SearchControl& progress) {
    progress.bytesDone = 50;
    for (int n = 0; n < kPatience && !(cancelled = progress.cancel); ++n) std::this_thread::sleep_for(std::chrono::milliseconds(1));
  });
  EXPECT_EQ(heard, 3);
  EXPECT_TRUE(cancelled && !window);
}

}   // namespace
