#include "control/view/Pane.h"

#include <QAccessible>
#include <QClipboard>
#include <QDropEvent>
#include <QMimeData>
#include <QScrollBar>

#include "control/edit/Carets.h"
#include "control/edit/TextMime.h"
#include "control/view/PaneGrid.h"
#include "tests/control/PaneFixture.h"
#include "tests/support/EventLoop.h"
#include "tests/support/Text.h"

class PaneInput : public PaneFixture {};
class PaneViews : public PaneFixture {};

TEST_F(PaneInput, KeysTypeMoveAndTell) {
  put("|");
  control.setEnableCRLF(false);
  int typed = 0, returned = 0, moved = 0;
  QObject::connect(&control, &CodeMax::Typed, &control, [&] { ++typed; });
  QObject::connect(&control, &CodeMax::Return, &control, [&] { ++returned; });
  QObject::connect(&control, &CodeMax::SelChange, &control, [&] { ++moved; });
  typeText(q("ab"));
  key(Qt::Key_Return, {}, q("\r"));
  typeText(q("c"));
  EXPECT_EQ(now(), "ab\nc|");
  EXPECT_EQ(typed, 3);
  EXPECT_EQ(returned, 1);
  EXPECT_EQ(moved, 4) << "once for each key";
  key(Qt::Key_Left, Qt::ShiftModifier);
  EXPECT_EQ(now(), "ab\n|c@");
  key(Qt::Key_Home, Qt::ControlModifier);
  EXPECT_EQ(now(), "|ab\nc");
  key(Qt::Key_Delete);
  EXPECT_EQ(now(), "|b\nc");
  key(Qt::Key_Z, Qt::ControlModifier, q("\x1A"));
  EXPECT_EQ(now(), "|ab\nc");
  key(Qt::Key_Tab, {}, q("\t"));
  EXPECT_EQ(now(), "\t|ab\nc") << "Tab types and keeps the focus";
  key(Qt::Key_Q, Qt::ControlModifier | Qt::AltModifier, q("@"));
  EXPECT_EQ(now(), "\t@|ab\nc") << "AltGr comes as Ctrl+Alt";
  for (const auto modifiers :
       {Qt::KeyboardModifiers(Qt::AltModifier), Qt::AltModifier | Qt::ShiftModifier, Qt::KeyboardModifiers(Qt::MetaModifier)})
    key(Qt::Key_Q, modifiers, q("q"));
  key(Qt::Key_1, Qt::ControlModifier | Qt::AltModifier, q("1"));
  EXPECT_EQ(now(), "\t@|ab\nc") << "a key of menus and short-cuts that nobody has taken";
  key(Qt::Key_F11, Qt::ControlModifier, QString());
  EXPECT_EQ(now(), "\t@|ab\nc");
  key(Qt::Key_K, Qt::ControlModifier, q("\x0B"));
  key(Qt::Key_U, Qt::ControlModifier, q("\x15"));
  EXPECT_EQ(bytes(), "\t@AB\nc") << "a key sequence of two strokes";
}

TEST_F(PaneInput, MouseSelects) {
  const char* text = "|alpha beta\ngamma delta\nlast";
  struct Case {
    const char* what;
    std::function<void(PaneInput&)> act;
    const char* expected;
  };
  // clang-format off
  const Case cases[] = {
      {"click", [](PaneInput& t) { t.click(t.pointOf(1, 3)); }, "alpha beta\ngam|ma delta\nlast"},
      {"click behind a line", [](PaneInput& t) { t.click(t.pointOf(0, 10) + QPoint(200, 0)); }, "alpha beta|\ngamma delta\nlast"},
      {"click below the text", [](PaneInput& t) { t.click(t.pointOf(2, 2) + QPoint(0, 200)); }, "alpha beta\ngamma delta\nla|st"},
      {"shift-click", [](PaneInput& t) { t.click(t.pointOf(0, 6), Qt::ShiftModifier); }, "@alpha |beta\ngamma delta\nlast"},
      {"drag", [](PaneInput& t) { t.drag(t.pointOf(0, 2), t.pointOf(1, 2)); }, "al@pha beta\nga|mma delta\nlast"},
      {"double click", [](PaneInput& t) { t.mouse(QEvent::MouseButtonDblClick, t.pointOf(1, 7)); }, "alpha beta\ngamma @delta|\nlast"},
      {"double click and drag by words", [](PaneInput& t) {
         t.mouse(QEvent::MouseButtonDblClick, t.pointOf(1, 7));
         t.mouse(QEvent::MouseMove, t.pointOf(0, 7));
       }, "alpha |beta\ngamma delta@\nlast"},
      {"triple click", [](PaneInput& t) {
         t.mouse(QEvent::MouseButtonDblClick, t.pointOf(1, 7));
         t.click(t.pointOf(1, 7));
       }, "alpha beta\n@gamma delta\n|last"},
      {"margin click", [](PaneInput& t) { t.click({30, t.pointOf(1, 0).y()}); }, "alpha beta\n@gamma delta\n|last"},
      {"margin drag", [](PaneInput& t) { t.drag({30, t.pointOf(1, 0).y()}, {30, t.pointOf(2, 0).y()}); }, "alpha beta\n@gamma delta\nlast|"},
      {"shift-click in the margin", [](PaneInput& t) {
         t.drag(t.pointOf(1, 2), t.pointOf(2, 2));
         t.click({30, t.pointOf(0, 0).y()}, Qt::ShiftModifier);
       }, "|alpha beta\ngamma delta\n@last"},
      {"right click in the selection", [](PaneInput& t) {
         t.drag(t.pointOf(0, 2), t.pointOf(1, 2));
         t.mouse(QEvent::MouseButtonPress, t.pointOf(0, 4), Qt::RightButton);
       }, "al@pha beta\nga|mma delta\nlast"},
      {"block", [](PaneInput& t) { t.drag(t.pointOf(0, 1), t.pointOf(2, 3), Qt::AltModifier); }, "a#lpha beta\ngamma delta\nlas|t"},
      {"block past the ends", [](PaneInput& t) {
         t.drag(t.pointOf(0, 10) + QPoint(static_cast<int>(4 * t.pane()->view().metrics().cell()), 0), t.pointOf(1, 2), Qt::AltModifier);
       }, "alpha beta····#\nga|mma delta\nlast"},
  };
  // clang-format on
  for (const auto& c : cases) {
    put(text);
    c.act(*this);
    mouse(QEvent::MouseButtonRelease, {300, 100});
    EXPECT_EQ(now(), c.expected) << c.what;
  }
  control.setColumnSel(false);
  put(text);
  drag(pointOf(0, 1), pointOf(1, 3), Qt::AltModifier);
  EXPECT_EQ(now(), "a@lpha beta\ngam|ma delta\nlast");
  control.setColumnSel(true);
}

TEST_F(PaneInput, ColumnModeNeedsNoAlt) {
  const auto toggle = [this] {
    key(Qt::Key_K, Qt::ControlModifier);
    key(Qt::Key_R, Qt::ControlModifier);
  };
  put("al|pha beta\ng\nlast");
  toggle();
  for (const int code : {Qt::Key_Right, Qt::Key_Down, Qt::Key_Right}) key(code, Qt::ShiftModifier);
  EXPECT_EQ(now(), "al#pha beta\ng···|\nlast");
  key(Qt::Key_End, Qt::ShiftModifier);
  EXPECT_EQ(now(), "al#pha beta\ng|\nlast");
  drag(pointOf(0, 1), pointOf(2, 3));
  EXPECT_EQ(now(), "a#lpha beta\ng\nlas|t");
  toggle();
  put("alpha beta\ng\nlast|");
  drag(pointOf(0, 1), pointOf(2, 3));
  EXPECT_EQ(now(), "a@lpha beta\ng\nlas|t");
}

TEST_F(PaneInput, MarginClickTogglesBookmarks) {
  put("|a\nb\nc");
  click({5, pointOf(1, 0).y()});
  EXPECT_TRUE(control.hasBookmark(1));
  EXPECT_EQ(now(), "|a\nb\nc");
  click({5, pointOf(1, 0).y()});
  EXPECT_FALSE(control.hasBookmark(1));
  click({5, pointOf(2, 0).y() + 100});
  EXPECT_TRUE(control.model()->bookmarks().empty()) << "below the last line is none";
}

TEST_F(PaneInput, DraggingOutsideScrolls) {
  QString lines;
  for (int i = 0; i < 500; ++i) lines += q("line\n");
  control.setText(lines);
  mouse(QEvent::MouseButtonPress, pointOf(2, 0));
  mouse(QEvent::MouseMove, {100, viewport()->height() + 40});
  EXPECT_TRUE(spinUntil([this] { return control.CurrentPosition().LineNo >= 40; }));
  mouse(QEvent::MouseButtonRelease, {100, viewport()->height() + 40});
  EXPECT_EQ(control.GetSel(false).StartLineNo, 2);
  control.setText(QString(500, u'x'));
  mouse(QEvent::MouseButtonPress, pointOf(0, 2));
  mouse(QEvent::MouseMove, {viewport()->width() + 40, 5});
  EXPECT_TRUE(spinUntil([this] { return pane()->leftColumn() > 10; }));
  mouse(QEvent::MouseButtonRelease, {viewport()->width() + 40, 5});
}

TEST_F(PaneInput, TextIsDroppedMovedAndCopied) {
  const auto drop = [this](const QMimeData* data, const QPoint& at, Qt::DropAction action) {
    QDragEnterEvent enter(at, Qt::CopyAction | Qt::MoveAction, data, Qt::LeftButton, {});
    QApplication::sendEvent(viewport(), &enter);
    QDropEvent event(at, Qt::CopyAction | Qt::MoveAction, data, Qt::LeftButton, {});
    event.setDropAction(action);
    QApplication::sendEvent(viewport(), &event);
    return event.isAccepted();
  };
  put("one |two\n");
  const auto plain = TextMime::make(q("X\nY"), false);
  EXPECT_TRUE(drop(plain.get(), pointOf(0, 0), Qt::CopyAction));
  EXPECT_EQ(now(), "@X\nY|one two\n");
  key(Qt::Key_Z, Qt::ControlModifier);
  EXPECT_EQ(bytes(), "one two\n") << "one undo step";

  QMimeData files;
  files.setUrls({QUrl::fromLocalFile(q("/tmp/a b.v")), QUrl(q("http://x/y"))});
  QStringList dropped;
  QObject::connect(&control, &CodeMax::FilesDropped, &control, [&](const QStringList& paths) { dropped = paths; });
  drop(&files, pointOf(0, 0), Qt::CopyAction);
  EXPECT_EQ(dropped, QStringList{q("/tmp/a b.v")});
  EXPECT_EQ(bytes(), "one two\n");

  put("|1\n2\n");
  const auto block = TextMime::make(q("a\nbc"), true);
  EXPECT_TRUE(drop(block.get(), pointOf(0, 1), Qt::CopyAction));
  EXPECT_EQ(now(), "1#a\n2bc|\n") << "a block stays one, and is selected";
  control.setReadOnly(true);
  EXPECT_FALSE(drop(plain.get(), pointOf(0, 0), Qt::CopyAction));
  control.setReadOnly(false);

  put("|one two\n");
  control.setDragDrop(false);
  drop(plain.get(), pointOf(0, 0), Qt::CopyAction);
  EXPECT_EQ(bytes(), "one two\n");
  control.setDragDrop(true);
}

TEST_F(PaneInput, ClipboardKeepsBadBytesAndShapes) {
  put("@a\xFF z|");
  key(Qt::Key_C, Qt::ControlModifier);
  const QMimeData* data = QApplication::clipboard()->mimeData();
  EXPECT_EQ(data->text(), q("a\uFFFD z")) << "what others get";
  put("|");
  key(Qt::Key_V, Qt::ControlModifier);
  EXPECT_EQ(now(), "a\xFF z|");
  put("a#bc\nd|ef");
  put("1#23\n45|6");
  key(Qt::Key_C, Qt::ControlModifier);
  put("|xx\nyy");
  key(Qt::Key_V, Qt::ControlModifier);
  EXPECT_EQ(bytes().substr(0, 3), "2xx") << "a block stays a block";
  EXPECT_EQ(bytes().substr(3, 4), "\n5yy");
}

TEST_F(PaneInput, WheelScrollsAndZooms) {
  control.setText(QString(500, u'x') + QString(2000, u'\n'));
  viewport()->grab();
  const auto wheel = [this](int delta, Qt::KeyboardModifiers modifiers) {
    QWheelEvent event(QPointF(100, 100), viewport()->mapToGlobal(QPointF(100, 100)), {}, QPoint(0, delta), Qt::NoButton, modifiers,
                      Qt::NoScrollPhase, false);
    QApplication::sendEvent(viewport(), &event);
  };
  wheel(-120, {});
  EXPECT_EQ(pane()->topLine(), QApplication::wheelScrollLines());
  wheel(120, {});
  EXPECT_EQ(pane()->topLine(), 0);
  for (int i = 0; i < 120; ++i) wheel(-1, {});
  EXPECT_EQ(pane()->topLine(), QApplication::wheelScrollLines()) << "the parts of a step add up";
  wheel(120, {});
  wheel(-120, Qt::ShiftModifier);
  EXPECT_GT(pane()->leftColumn(), 0) << "sideways";
  wheel(120, Qt::ShiftModifier);
  EXPECT_EQ(pane()->leftColumn(), 0);
  const int before = pane()->view().lineHeight();
  pane()->setTopLine(100);
  for (int i = 0; i < 4; ++i) wheel(60, Qt::ControlModifier);
  EXPECT_EQ(pane()->topLine(), 100) << "the place stays";
  EXPECT_EQ(control.Zoom(), 120);
  EXPECT_GT(pane()->view().lineHeight(), before);
  for (int i = 0; i < 100; ++i) wheel(-120, Qt::ControlModifier);
  EXPECT_EQ(control.Zoom(), 30);
}

TEST_F(PaneViews, ScrollBarsFollowTextAndPlace) {
  control.setText(QString(100, u'\n'));
  control.splitPanes(0.5, 0);
  const auto agree = [this](const char* what) {
    QApplication::processEvents();
    for (const int i : {0, 1}) {
      const QScrollBar* bar = pane(i)->verticalScrollBar();
      const qint64 height = pane(i)->view().lineHeight();
      EXPECT_EQ(bar->maximum(), (control.LineCount() - pane(i)->visibleLines()) * height) << what << i;
      EXPECT_EQ(bar->value(), pane(i)->topLine() * height) << what << i;
    }
  };
  agree("loaded");
  key(Qt::Key_Return);
  agree("typed");
  pane(1)->setTopLine(50);
  pane()->editor().replaceSelection(q("x\ny\n"));
  agree("in the other pane");
  control.ExecuteCmd(Cmd::DOCUMENTEND);
  control.ExecuteCmd(Cmd::LINECUT);
  agree("cut at the end");
}

TEST_F(PaneInput, InputMethodsShowAndCommit) {
  put("a|b");
  ime(q("\u304B"), QString());
  EXPECT_EQ(bytes(), "ab") << "what is composed is not text yet";
  EXPECT_FALSE(control.Modified());
  const QRect composing = pane()->inputMethodQuery(Qt::ImCursorRectangle).toRect();
  ime(QString(), q("\u6F22"));
  EXPECT_EQ(now(), "a\xE6\xBC\xA2|b");
  EXPECT_EQ(composing, pane()->inputMethodQuery(Qt::ImCursorRectangle).toRect()) << "as wide as what was committed";
  EXPECT_EQ(pane()->inputMethodQuery(Qt::ImSurroundingText).toString(), q("a\u6F22b"));
  EXPECT_EQ(pane()->inputMethodQuery(Qt::ImCursorPosition).toInt(), 2);
  QInputMethodEvent replace;
  replace.setCommitString(q("Z"), -1, 1);
  QApplication::sendEvent(pane(), &replace);
  EXPECT_EQ(now(), "aZ|b");
}

TEST_F(PaneInput, FocusIsToldOncePerControl) {
  QWidget window;
  auto* other = new QWidget(&window);
  other->setFocusPolicy(Qt::StrongFocus);
  auto* inside = new CodeMax(&window);
  window.show();
  QApplication::setActiveWindow(&window);
  other->setFocus();
  std::string told;
  QObject::connect(inside, &CodeMax::GotFocus, inside, [&] { told += "in "; });
  QObject::connect(inside, &CodeMax::LostFocus, inside, [&] { told += "out "; });
  inside->splitPanes(0.5, 0);
  inside->setFocus();
  EXPECT_EQ(told, "in ");
  inside->findChildren<Pane*>().value(1)->setFocus();
  EXPECT_EQ(told, "in ") << "from pane to pane it stays inside";
  other->setFocus();
  EXPECT_EQ(told, "in out ");
  inside->setFocus();
  EXPECT_TRUE(inside->findChildren<Pane*>().value(1)->hasFocus()) << "back to the pane that had it";
}

TEST_F(PaneViews, PanesHaveTheirOwnCaretAndPlace) {
  QString lines;
  for (int i = 0; i < 300; ++i) lines += q("some line\n");
  control.setText(lines);
  pane()->setTopLine(50);
  control.splitPanes(0.5, 0.5);
  ASSERT_EQ(control.findChildren<Pane*>().size(), 4);
  EXPECT_EQ(pane(3)->topLine(), 50) << "a new one shows what was looked at";
  pane(0)->setTopLine(0);
  pane(3)->setTopLine(200);
  click(pointOf(203, 2, 3), {}, 3);
  QFocusEvent gain(QEvent::FocusIn);
  QApplication::sendEvent(pane(3), &gain);
  EXPECT_EQ(control.CurrentPosition(), (CmPosition{203, 2}));
  EXPECT_EQ(pane(0)->editor().selection().caret.value, 0);
  EXPECT_EQ(pane(0)->topLine(), 0);
  pane(0)->type(q("new\n"));
  EXPECT_EQ(control.CurrentPosition(), (CmPosition{204, 2})) << "it stays with its text";
  EXPECT_EQ(pane(3)->topLine(), 201) << "and what is seen too";
  control.splitPanes(0, 0);
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  ASSERT_EQ(control.findChildren<Pane*>().size(), 1);
  EXPECT_EQ(control.CurrentPosition(), (CmPosition{204, 2})) << "the one that is left shows what was looked at";
  control.setHSplitter(false);
  control.splitPanes(0.5, 0);
  EXPECT_EQ(control.findChildren<Pane*>().size(), 1) << "not allowed";
}

TEST_F(PaneViews, UndoShowsWhatItChanged) {
  QString lines;
  for (int i = 0; i < 1000; ++i) lines += q("some line\n");
  control.setText(lines);
  control.SetSel({10, 2, 10, 5, false});
  control.ReplaceSel(q("X"));
  control.SetSel({900, 0, 900, 0, false});
  EXPECT_GT(pane()->topLine(), 800);
  control.ExecuteCmd(Cmd::UNDO);
  EXPECT_EQ(control.GetSel(true), (CmRange{10, 2, 10, 5, false}));
  EXPECT_LE(pane()->topLine(), 10);
  EXPECT_GE(pane()->topLine() + pane()->visibleLines(), 11);
}

TEST_F(PaneViews, ReadersHearTheText) {
  put("one\ntw@o| \xE6\xBC\xA2");
  QAccessibleInterface* accessible = QAccessible::queryAccessibleInterface(pane());
  ASSERT_NE(accessible, nullptr);
  EXPECT_EQ(accessible->role(), QAccessible::EditableText);
  QAccessibleTextInterface* reader = accessible->textInterface();
  ASSERT_NE(reader, nullptr);
  EXPECT_EQ(reader->characterCount(), 9);
  EXPECT_EQ(reader->text(4, 9), q("two \u6F22"));
  EXPECT_EQ(reader->cursorPosition(), 7);
  int start = 0, end = 0;
  reader->selection(0, &start, &end);
  EXPECT_EQ(start, 6);
  EXPECT_EQ(end, 7);
  EXPECT_EQ(reader->text(-3, 99).size(), 9);
  const QRect rect = reader->characterRect(4);
  EXPECT_EQ(reader->offsetAtPoint(rect.center()), 4);
  accessible->editableTextInterface()->replaceText(0, 3, q("1"));
  EXPECT_EQ(bytes(), "1\ntwo \xE6\xBC\xA2");
  reader->setCursorPosition(2);
  EXPECT_EQ(control.CurrentPosition(), (CmPosition{1, 0}));
}

TEST_F(PaneInput, TheMouseAddsCarets) {
  put("|alpha\nbeta\ngamma");
  const auto count = [&] { return carets::count(control.editor()); };
  click(pointOf(1, 2), Qt::AltModifier);
  click(pointOf(2, 3), Qt::ControlModifier);
  EXPECT_EQ(count(), 3u) << "Alt and Ctrl add a caret";
  EXPECT_EQ(now(), "alpha\nbeta\ngam|ma") << "the last one is the main one";
  click(pointOf(1, 2), Qt::ControlModifier);
  EXPECT_EQ(count(), 2u) << "again, it goes";
  key(Qt::Key_X, {}, QStringLiteral("x"));
  EXPECT_EQ(now(), "xalpha\nbeta\ngamx|ma");
  drag(pointOf(0, 2), pointOf(1, 3), Qt::ControlModifier);
  EXPECT_EQ(now(), "xa@lpha\nbet|a\ngamxma") << "a drag with Ctrl selects";
  EXPECT_EQ(count(), 3u);
}
