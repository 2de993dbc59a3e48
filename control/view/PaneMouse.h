// Mouse input of a pane: placing the caret, selecting characters, words, lines and columns with scrolling at the edge, dragging
// text, the margin, pasting the mouse selection, the wheel.
#pragma once

#include <QBasicTimer>
#include <QElapsedTimer>
#include <QMouseEvent>
#include <QObject>
#include <optional>

#include "text/store/Change.h"

class Editor;
class Pane;
class QDropEvent;
class QMimeData;
class QWheelEvent;

class PaneMouse : public QObject {
  Q_OBJECT
 public:
  explicit PaneMouse(Pane& pane);

  void press(QMouseEvent* event);
  void doubleClick(QMouseEvent* event);
  void move(QMouseEvent* event);
  void release(QMouseEvent* event);
  void wheel(QWheelEvent* event);
  bool showTip(const QPoint& at, const QPoint& global);   // what is folded there. False: nothing
  void textChanged(const text::Change& change);           // the start of a drag moves with the text
  // A drag over the pane: shows the drop position; hides it; drops the text.
  bool dragOver(QDropEvent* event);
  void dragLeave();
  void drop(QDropEvent* event);

 protected:
  void timerEvent(QTimerEvent* event) override;

 private:
  enum class Drag { none, characters, words, lines, block, undecided, caret };
  void pressText(QMouseEvent* event);
  void pressMargin(QMouseEvent* event);
  text::ByteRange wholeLine(text::LineNo line) const;
  bool onHandle(const QPoint& point) const;
  // The folded line whose box is at the point; -1: none.
  std::int64_t foldedAt(const QPoint& point) const;
  void selectLines(text::LineNo line, bool extend);
  void dragTo(const QPoint& point);
  void pastePrimary(const QPoint& point);
  void startTextDrag();
  void scrollUnderDrag();
  void showDrop(std::optional<text::ByteOffset> at);   // where it would be dropped
  bool onDragged(Editor& from, text::ByteOffset at, bool moves) const;
  void dropBlock(const QString& text, text::ByteOffset at);
  bool onSelection(const QPoint& point) const;   // of the main caret
  bool onOtherSelection(const QPoint& point) const;

  Pane& pane_;
  Drag drag_ = Drag::none;
  QPoint pressed_, last_, doubleClicked_;
  QElapsedTimer sinceDoubleClick_;
  text::ByteRange origin_;                         // the word or lines at the start of the drag
  std::int64_t originLine_ = 0, originCell_ = 0;   // of a block
  QBasicTimer autoScroll_;
  bool clickAdds_ = false;   // released where it was pressed, the button adds a caret; else it drags a block
  QPoint dragged_;           // where text is dragged over the pane
  QBasicTimer dropScroll_;
  double wheelRest_ = 0;       // fraction of a wheel step
  QPointF scrollRest_;         // what the wheel has not scrolled yet, in pixels
  bool droppedHere_ = false;   // text dragged from here was dropped on the same text
};
