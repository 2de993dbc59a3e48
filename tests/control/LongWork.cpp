// Find commands on large texts: small ones are done at once, long ones show a window in which they can be cancelled.
#include "control/LongWork.h"

#include <QMainWindow>
#include <QProgressDialog>
#include <QTimer>
#include <thread>

#include "base/Dialogs.h"
#include "base/Program.h"
#include "control/CommandTable.h"
#include "tests/control/PaneFixture.h"
#include "tests/support/EventLoop.h"

namespace {

class LongWorkTest : public PaneFixture {
 protected:
  const std::chrono::milliseconds moment = LongWork::moment;
  ~LongWorkTest() override {
    LongWork::moment = moment;
    searchState() = {};
  }
};

TEST_F(LongWorkTest, IsDoneOnAThreadAndCanBeCancelled) {
  const std::thread::id here = std::this_thread::get_id();
  std::thread::id worker;
  const auto note = [&](text::SearchControl&) { worker = std::this_thread::get_id(); };
  LongWork::run(control, 1, note);
  EXPECT_NE(worker, here);

  LongWork::moment = std::chrono::milliseconds(1);
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

TEST_F(LongWorkTest, FindCommandsDoTheSameEitherWay) {
  for (const bool shown : {false, true}) {
    LongWork::moment = std::chrono::milliseconds(shown ? 0 : 1000);
    searchState().findText = QStringLiteral("ab");
    searchState().replaceText = QStringLiteral("c");
    const auto command = [&](const char* name) { control.ExecuteCmd(commandByName(QString::fromLatin1(name))->id); };
    put("|ab x ab x\nab\n");
    command("FINDNEXT");
    EXPECT_EQ(now(), "@ab| x ab x\nab\n");
    command("FINDPREV");
    EXPECT_EQ(now(), "ab x ab x\n@ab|\n");
    command("FINDMARKALL");
    EXPECT_TRUE(control.hasBookmark(0) && control.hasBookmark(1));
    command("REPLACEALLINBUFFER");
    EXPECT_EQ(bytes(), "c x c x\nc\n");
    control.ExecuteCmd(129);
    EXPECT_EQ(bytes(), "ab x ab x\nab\n") << "one step";
    searchState().options.regex = true;
    searchState().findText = QStringLiteral("(");
    command("FINDNEXT");
    EXPECT_EQ(bytes(), "ab x ab x\nab\n");
    searchState() = {};
  }
}

TEST_F(LongWorkTest, OnlyLongFilesUnderAShownWindowGoToAThread) {
  const std::thread::id here = std::this_thread::get_id();
  std::thread::id worker;
  const auto file = [&](std::int64_t bytes) {
    CodeMax fresh;   // has no window yet
    LongWork::forFile(fresh, bytes, [&](text::SearchControl&) { worker = std::this_thread::get_id(); }, QString(), false);
    return worker == here;
  };
  QMainWindow frame;
  EXPECT_TRUE(file(1 << 30));
  frame.show();
  EXPECT_TRUE(file(1000));
  EXPECT_FALSE(file(1 << 30));
  const BusyGuard busy;
  EXPECT_TRUE(file(1 << 30));
}

TEST_F(LongWorkTest, WhileACommandStringRunsNoWindowComes) {
  LongWork::moment = std::chrono::milliseconds(0);
  const BusyGuard busy;
  std::thread::id worker;
  pane()->work(1 << 30, [&](text::SearchControl&) { worker = std::this_thread::get_id(); });
  EXPECT_EQ(worker, std::this_thread::get_id());
}

}  // namespace
