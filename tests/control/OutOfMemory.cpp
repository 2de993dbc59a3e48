// T10 through the control: when memory runs out while the user loads, pastes, replaces or undoes, a box says so, and text, undo,
// selection and file name are what they were.
#include <sys/resource.h>

#include <cstdlib>

#include <QClipboard>
#include <QDropEvent>
#include <QMimeData>

#include "base/dialog/Memory.h"
#include "control/commands/CommandTable.h"
#include "tests/control/PaneFixture.h"
#include "tests/support/Cost.h"
#include "tests/support/ScriptedDialogs.h"
#include "tests/support/files/AllocationFault.h"
#include "tests/support/files/Child.h"
#include "tests/support/files/TempFolder.h"

using namespace Qt::StringLiterals;

namespace {

class OutOfMemory : public PaneFixture {
 public:
  int number(const char* name) { return commandByName(QString::fromLatin1(name))->id; }
  static QString longText() { return u"pasted text\n"_s.repeated(20'000); }
  void paste() { key(Qt::Key_V, Qt::ControlModifier); }

  std::string state() {
    const auto& d = control.model()->document();
    return now() + "|" + std::to_string(d.canUndo()) + std::to_string(d.canRedo()) + std::to_string(d.modified()) + "|" +
           control.model()->path.toStdString();
  }
};

struct Deed {
  const char* name;
  std::function<void(OutOfMemory&)> prepare, act;
  std::size_t least = 0;   // bytes of an allocation that may fail; smaller ones are the tool kit's on the way to us
  std::function<void(OutOfMemory&)> approach = [](OutOfMemory&) {};   // done before each act, with all memory there is
};

TEST_F(OutOfMemory, T10_IsToldAndTheOldStateIsWhole) {
  testing_files::TempFolder folder;
  std::string large;
  for (int i = 0; i < 20'000; ++i) large += "line " + std::to_string(i) + "\n";
  testing_files::writeRaw(folder / "large", large);
  const auto search = [](OutOfMemory&) {
    searchState() = {};
    searchState().findText = u"fox"_s;
    searchState().replaceText = u"a much longer animal than it was"_s.repeated(20);
  };
  const auto clip = [](OutOfMemory&) { QGuiApplication::clipboard()->setText(longText()); };
  const auto pasted = [&](OutOfMemory& t) {
    clip(t);
    t.paste();
  };
  QMimeData dragged;
  const QPoint kDropAt(100, 20);
  const Deed deeds[] = {
      {"load", [](OutOfMemory&) {},
       [&](OutOfMemory& t) {
         const QString error = t.control.OpenFile(QString::fromStdString(folder / "large"));
         if (!error.isEmpty()) MsgBox(error);
       }},
      {"paste", clip, [](OutOfMemory& t) { t.paste(); }},
      {"paste over a selection of columns",
       [&](OutOfMemory& t) {
         clip(t);
         t.control.SetSel({0, 2, 2, 4, true});
       },
       [](OutOfMemory& t) { t.paste(); }},
      {"drop", [](OutOfMemory&) {},
       [&](OutOfMemory& t) {
         QDropEvent event(kDropAt, Qt::CopyAction, &dragged, Qt::LeftButton, {});
         QApplication::sendEvent(t.viewport(), &event);
       },
       200,
       [&](OutOfMemory& t) {
         dragged.setText(longText());
         QDragEnterEvent enter(kDropAt, Qt::CopyAction, &dragged, Qt::LeftButton, {});
         QApplication::sendEvent(t.viewport(), &enter);
       }},
      {"input method", [](OutOfMemory&) {}, [](OutOfMemory& t) { t.ime({}, longText()); }},
      {"replace all", search, [](OutOfMemory& t) { t.control.ExecuteCmd(t.number("REPLACEALLINBUFFER")); }},
      {"undo", pasted, [](OutOfMemory& t) { t.key(Qt::Key_Z, Qt::ControlModifier); }},
      {"redo",
       [&](OutOfMemory& t) {
         pasted(t);
         t.key(Qt::Key_Z, Qt::ControlModifier);
       },
       [](OutOfMemory& t) { t.key(Qt::Key_Y, Qt::ControlModifier); }},
      {"several commands as one step", search,
       [](OutOfMemory& t) {
         const EditBlock block(t.control);
         t.control.InsertText(u"first "_s, {0, 0});
         t.control.ExecuteCmd(t.number("REPLACEALLINBUFFER"));
         t.control.ReplaceLines(0, {longText().left(40'000).remove(u'\n')});
       }},
  };
  for (const Deed& deed : deeds) {
    SCOPED_TRACE(deed.name);
    const auto begin = [&] {
      put("the quick br|own fox\njumps over the fox\nand the fox is lazy\n");
      control.model()->path.clear();
      control.setModified(false);
      deed.prepare(*this);
      QApplication::processEvents();
    };
    begin();
    const std::string undone = state();
    deed.approach(*this);
    deed.act(*this);
    const std::string done = state();
    ASSERT_NE(done, undone);
    int failed = 0;
    for (long n = 1;; n += std::getenv("ZELKOR_FULL") ? 1 : 1 + n / 8) {
      SCOPED_TRACE("allocation " + std::to_string(n));
      begin();
      const std::string before = state();
      ScriptedDialogs boxes;
      boxes.answerAny(Answer::ok);
      deed.approach(*this);
      bool hit = false;
      {
        const testing_files::AllocationFault fault(n, false, deed.least);
        withMemory([&] { deed.act(*this); });   // as the application does around each event
        hit = fault.hit();
      }
      control.model()->document().checkInvariants();
      ASSERT_LE(boxes.boxes.size(), hit ? 1u : 0u);
      if (boxes.boxes.empty()) {
        ASSERT_EQ(state(), done) << "nothing was said, so all was done";
      } else {
        ++failed;
        EXPECT_TRUE(boxes.last().text.contains(u"memory"_s)) << boxes.last().text.toStdString();
        ASSERT_EQ(state(), before);
        QApplication::processEvents();   // what is shown fits the text
        deed.approach(*this);
        deed.act(*this);   // memory is there again
        ASSERT_EQ(state(), done);
      }
      if (!hit) break;
    }
    std::printf("%s: %d allocations failed\n", deed.name, failed);
    EXPECT_GT(failed, 0);
  }
}

#if !defined(__SANITIZE_ADDRESS__)   // its own memory leaves no room for a limit
// The same with the system's own limit, in a process that may have 400 MB more than it uses.
TEST_F(OutOfMemory, T10_ATextLargerThanMemoryIsNotPasted) {
  EXPECT_EQ(testing_files::inChild([&] {
              put("the te|xt");
              QGuiApplication::clipboard()->setText(u"0123456789abcdef"_s.repeated(12 << 20));   // 400 MB as it lies there
              rlimit limit{};
              limit.rlim_cur = limit.rlim_max = rlim_t(memoryUse().reserved) + (400u << 20);
              ASSERT_EQ(::setrlimit(RLIMIT_AS, &limit), 0);
              ScriptedDialogs boxes;
              boxes.answerAny(Answer::ok);
              for (int i = 0; i < 3; ++i) paste();
              EXPECT_GT(boxes.boxes.size(), 0u);
              EXPECT_TRUE(boxes.last().text.contains(u"memory"_s));
              EXPECT_LT(control.LineCount(), 2);
              typeText(u"x"_s);
              EXPECT_EQ(boxes.boxes.size(), 3u) << "keys work on";
              EXPECT_EQ(now(), "the tex|xt");
            }),
            0);
}
#endif

}   // namespace
