#include "control/view/PaneMouse.h"

#include <QApplication>
#include <QClipboard>
#include <QDrag>
#include <QDropEvent>
#include <QHelpEvent>
#include <QMimeData>
#include <QPointer>
#include <QScrollBar>
#include <QStyleHints>
#include <QTimerEvent>
#include <QToolTip>
#include <QUrl>
#include <QWheelEvent>
#include <algorithm>
#include <cmath>
#include <utility>

#include "bridge/FileNames.h"
#include "control/edit/Carets.h"
#include "control/edit/ColumnBlock.h"
#include "control/edit/TextMime.h"
#include "control/folds/FoldMarks.h"
#include "control/folds/PaneFolds.h"
#include "control/keys/KeyCommands.h"
#include "control/view/Pane.h"
#include "text/line/Chars.h"
#include "text/line/Words.h"

using text::ByteOffset;
using text::ByteRange;
using text::LineNo;

namespace {
constexpr int kAutoScrollInterval = 30;   // milliseconds
constexpr int kDropScrollInterval = 60;   // of text that is dragged
constexpr int kBookmarkWidth = 14;        // width of the part of the margin that sets bookmarks, in pixels
}   // namespace

PaneMouse::PaneMouse(Pane& pane) : pane_(pane) {}

bool PaneMouse::onSelection(const QPoint& point) const {
  const Editor& editor = *pane_.editor_;
  if (!editor.hasSelection() || !pane_.view_.overText(point)) return false;
  const text::SelectionState s = editor.selection();
  if (!s.column) {
    const ByteRange range = editor.selectedRange();
    const ByteOffset at = pane_.view_.offsetAt(point, true);
    return at >= range.begin && at < range.end;
  }
  const ColumnBlock block = columnBlock(*pane_.state_.model, s, pane_.state_.options->tabSize);
  const std::int64_t line = pane_.view_.lineAtY(point.y()), cell = pane_.view_.cellAt(point);
  return line >= block.first.value && line <= block.last.value && cell >= block.left && cell < block.right;
}

bool PaneMouse::onOtherSelection(const QPoint& point) const {
  if (!carets::several(*pane_.editor_) || !pane_.view_.overText(point)) return false;
  const ByteOffset at = pane_.view_.offsetAt(point, true);
  const auto others = carets::others(*pane_.editor_);
  const auto caret = std::ranges::upper_bound(others, at, {}, &Caret::end);
  return caret != others.end() && caret->begin() <= at;
}

void PaneMouse::press(QMouseEvent* event) {
  last_ = pressed_ = event->position().toPoint();
  if (event->button() == Qt::MiddleButton) {
    pastePrimary(pressed_);
  } else if (event->button() == Qt::LeftButton) {
    const Pane::Action action(pane_);
    if (pressed_.x() < pane_.view_.margin) pressMargin(event);
    else pressText(event);
  } else if (event->button() == Qt::RightButton && !onSelection(pressed_) && !onOtherSelection(pressed_) &&
             pressed_.x() >= pane_.view_.margin) {
    const Pane::Action action(pane_);
    pane_.editor_->moveCaret(pane_.view_.offsetAt(pressed_), false);
  }
}

void PaneMouse::pressText(QMouseEvent* event) {
  Editor& editor = *pane_.editor_;
  TextView& view = pane_.view_;
  const bool extend = event->modifiers().testFlag(Qt::ShiftModifier);
  if (const std::int64_t folded = foldedAt(pressed_); folded >= 0 && event->modifiers() == Qt::NoModifier)
    return pane_.folds_->toggleAt(LineNo(folded), false);
  const ByteOffset at = view.offsetAt(pressed_);
  if ((event->modifiers().testFlag(Qt::AltModifier) && pane_.state_.options->columnSel) || columnMode(editor)) {
    drag_ = Drag::block;
    clickAdds_ = !extend && !columnMode(editor);
    const text::SelectionState s = editor.selection();
    originLine_ = extend ? pane_.snapshot().lineAt(s.anchor).value : view.lineAtY(pressed_.y());
    originCell_ =
        extend ? cellOf(*pane_.state_.model, s.anchor, s.anchorVirtual, pane_.state_.options->tabSize) : view.cellAt(pressed_);
    if (!clickAdds_) dragTo(pressed_);
    return;
  }
  // Ctrl too: a window manager may take Alt and the button.
  if (!extend && (event->modifiers() & (Qt::AltModifier | Qt::ControlModifier))) {
    clickAdds_ = pane_.state_.options->dragDrop && onSelection(pressed_);
    if (clickAdds_) return void(drag_ = Drag::undecided);
    const std::size_t before = carets::count(editor);
    carets::toggle(editor, at);
    drag_ = carets::count(editor) < before ? Drag::none : Drag::caret;
    return;
  }
  const bool third = sinceDoubleClick_.isValid() &&
                     sinceDoubleClick_.elapsed() < QGuiApplication::styleHints()->mouseDoubleClickInterval() &&
                     (pressed_ - doubleClicked_).manhattanLength() < QApplication::startDragDistance();
  sinceDoubleClick_.invalidate();
  if (third) {
    drag_ = Drag::lines;
    selectLines(pane_.snapshot().lineAt(at), false);
  } else if (!extend && pane_.state_.options->dragDrop && onSelection(pressed_)) {
    drag_ = Drag::undecided;
  } else {
    drag_ = Drag::characters;
    editor.moveCaret(at, extend);
  }
}

void PaneMouse::pressMargin(QMouseEvent* event) {
  if (pane_.view_.belowText(pressed_.y())) return;
  const LineNo line(pane_.view_.lineAtY(pressed_.y()));
  if (onHandle(pressed_) && pane_.folds_->handleAt(line) != PaneFolds::Handle::none)
    return pane_.folds_->toggleAt(line, event->modifiers().testFlag(Qt::ShiftModifier));
  if (pressed_.x() < kBookmarkWidth) {
    pane_.state_.model->setBookmark(line, !pane_.state_.model->hasBookmark(line));
    return;
  }
  drag_ = Drag::lines;
  selectLines(line, event->modifiers().testFlag(Qt::ShiftModifier));
}

// With what is folded behind it.
ByteRange PaneMouse::wholeLine(LineNo line) const {
  return {pane_.snapshot().lineStart(line), pane_.snapshot().lineEndWithBreak(line + pane_.folds_->hiddenBehind(line))};
}

std::int64_t PaneMouse::foldedAt(const QPoint& point) const {
  if (point.x() < pane_.view_.margin || !pane_.view_.rows.map.hidesAny()) return -1;
  const std::int64_t line = pane_.view_.lineAtY(point.y());
  return foldMarks::boxOf(pane_.view_, line).contains(point) ? line : -1;
}

// Where a first row has its handle, if it begins a block.
bool PaneMouse::onHandle(const QPoint& point) const {
  const TextView& view = pane_.view_;
  return point.x() < view.margin && point.x() >= view.margin - 1 - view.foldMargin && !view.belowText(point.y()) &&
         view.placeAtY(point.y()).row == 0;
}

bool PaneMouse::showTip(const QPoint& at, const QPoint& global) {
  std::int64_t line = foldedAt(at);
  if (onHandle(at)) line = pane_.view_.lineAtY(at.y());
  if (line < 0 || pane_.folds_->hiddenBehind(LineNo(line)) == 0) return false;
  // As rich text, so that nothing of it is taken for such.
  QToolTip::showText(global, QStringLiteral("<pre>%1</pre>").arg(pane_.folds_->hiddenText(LineNo(line)).toHtmlEscaped()), &pane_);
  return true;
}

void PaneMouse::selectLines(LineNo line, bool extend) {
  const ByteRange whole = wholeLine(line);
  if (extend) {
    const ByteOffset anchor = pane_.editor_->selection().anchor;
    const LineNo from = pane_.snapshot().lineAt(anchor);
    origin_ = wholeLine(from);
    dragTo(pressed_);
    return;
  }
  origin_ = whole;
  pane_.editor_->setSelection({whole.begin, whole.end, 0, 0, false});
}

void PaneMouse::doubleClick(QMouseEvent* event) {
  doubleClicked_ = last_ = pressed_ = event->position().toPoint();
  if (event->button() != Qt::LeftButton) return press(event);
  if (pressed_.x() < pane_.view_.margin) return press(event);
  {
    const Pane::Action action(pane_);
    const ByteOffset at = pane_.view_.offsetAt(pressed_, true);
    if (event->modifiers().testFlag(Qt::ControlModifier)) {
      const ByteRange word = text::wordAt(pane_.snapshot(), at);
      drag_ = Drag::none;
      return carets::add(*pane_.editor_, {word.begin, word.end});
    }
    drag_ = Drag::words;
    pane_.editor_->selectWordAt(at);
    origin_ = pane_.editor_->selectedRange();
  }
  sinceDoubleClick_.start();
  emit pane_.doubleClicked();
}

void PaneMouse::move(QMouseEvent* event) {
  const QPoint point = event->position().toPoint();
  if (!event->buttons().testFlag(Qt::LeftButton)) {
    const bool arrow =
        point.x() < pane_.view_.margin || foldedAt(point) >= 0 || (pane_.state_.options->dragDrop && onSelection(point));
    pane_.viewport()->setCursor(arrow ? Qt::ArrowCursor : Qt::IBeamCursor);
    return;
  }
  last_ = point;
  if (drag_ == Drag::none) return;
  if (clickAdds_ && (point - pressed_).manhattanLength() < QApplication::startDragDistance()) return;
  clickAdds_ = false;
  if (drag_ == Drag::undecided) {
    if ((point - pressed_).manhattanLength() < QApplication::startDragDistance()) return;
    drag_ = Drag::none;
    startTextDrag();
    return;
  }
  dragTo(point);
  const bool outside = point.y() < 0 || point.y() >= pane_.view_.height || point.x() < pane_.view_.margin ||
                       point.x() >= pane_.view_.margin + pane_.view_.width;
  if (!outside) autoScroll_.stop();
  else if (!autoScroll_.isActive()) autoScroll_.start(kAutoScrollInterval, this);
}

void PaneMouse::dragTo(const QPoint& point) {
  const Pane::Action action(pane_);
  Editor& editor = *pane_.editor_;
  TextView& view = pane_.view_;
  const text::Snapshot& text = pane_.snapshot();
  const QPoint inside(point.x(), std::clamp(point.y(), 0, std::max(0, view.height - 1)));
  if (drag_ == Drag::block) {
    editor.setSelection(columnSelection(*pane_.state_.model, LineNo(originLine_), originCell_, LineNo(view.lineAtY(inside.y())),
                                        view.cellAt(inside), pane_.state_.options->tabSize));
    return;
  }
  const ByteOffset at = view.offsetAt(inside);
  if (drag_ == Drag::characters) {
    editor.moveCaret(at, true);
    return;
  }
  if (drag_ == Drag::caret) return carets::setMain(editor, {editor.selection().anchor, at});
  ByteRange reached = text::wordAt(text, at);
  if (drag_ == Drag::lines) {
    reached = wholeLine(LineNo(view.lineAtY(inside.y())));
  } else if (at < reached.begin || at > reached.end) {
    reached = {at, at};
  }
  if (reached.begin < origin_.begin) editor.setSelection({origin_.end, reached.begin, 0, 0, false});
  else editor.setSelection({origin_.begin, std::max(origin_.end, reached.end), 0, 0, false});
}

void PaneMouse::release(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton) return;
  autoScroll_.stop();
  const Drag was = drag_;
  drag_ = Drag::none;
  if (was == Drag::undecided || clickAdds_) {
    const Pane::Action action(pane_);
    if (std::exchange(clickAdds_, false)) carets::toggle(*pane_.editor_, pane_.view_.offsetAt(pressed_));
    else pane_.editor_->moveCaret(pane_.view_.offsetAt(event->position().toPoint()), false);
  }
  if (was != Drag::none) pane_.publishSelection();
}

void PaneMouse::timerEvent(QTimerEvent* event) {
  if (event->timerId() == dropScroll_.timerId()) {
    scrollUnderDrag();
    return showDrop(pane_.view_.offsetAt(dragged_));
  }
  if (event->timerId() != autoScroll_.timerId()) return QObject::timerEvent(event);
  // The further outside, the faster.
  const auto speed = [](int distance) { return distance == 0 ? 0 : (distance > 0 ? 1 : -1) * (4 + std::abs(distance) / 2); };
  TextView& view = pane_.view_;
  const int right = view.margin + view.width - 1;
  const int dy = speed(last_.y() < 0 ? last_.y() : std::max(0, last_.y() - view.height + 1));
  const int dx =
      drag_ == Drag::lines ? 0 : speed(last_.x() < view.margin ? last_.x() - view.margin : std::max(0, last_.x() - right));
  pane_.scrollTo(pane_.view_.target + dy, false);
  if (dx != 0) pane_.scrollSideways(std::clamp<std::int64_t>(view.left + dx, 0, pane_.highestLeft()));
  dragTo(last_);
}

void PaneMouse::wheel(QWheelEvent* event) {
  if (event->modifiers().testFlag(Qt::ControlModifier)) {
    if (event->phase() == Qt::ScrollMomentum) return event->accept();   // of a scrolling that began without Ctrl
    wheelRest_ += event->angleDelta().y() / 120.0;
    const int steps = static_cast<int>(wheelRest_);
    wheelRest_ -= steps;
    if (steps != 0) emit pane_.zoomed(steps);
    event->accept();
    return;
  }
  const bool byPixel = !event->pixelDelta().isNull();
  const int line = pane_.view_.lineHeight();
  QPointF way =
      byPixel ? QPointF(event->pixelDelta()) : QPointF(event->angleDelta()) * QApplication::wheelScrollLines() * line / 120;
  if (event->modifiers().testFlag(Qt::ShiftModifier) || event->modifiers().testFlag(Qt::AltModifier)) {
    if (way.x() == 0) way = {way.y(), 0};
  }
  // What is less than a pixel, or than a line where rows stay whole, counts with the next event.
  if (event->phase() == Qt::ScrollBegin) scrollRest_ = {};
  const int unit = byPixel || pane_.state_.smoothScrolling ? 1 : line;
  const auto take = [](double* rest, double more, int whole) {
    if (*rest * more < 0) *rest = 0;   // the other way
    *rest += more;
    const int taken = static_cast<int>(*rest / whole) * whole;
    *rest -= taken;
    return taken;
  };
  const QPoint pixels(take(&scrollRest_.rx(), way.x(), 1), take(&scrollRest_.ry(), way.y(), unit));
  if (pixels.y() != 0) pane_.scrollTo(pane_.view_.target - pixels.y(), !byPixel);
  if (pixels.x() != 0) pane_.scrollSideways(std::clamp<std::int64_t>(pane_.view_.left - pixels.x(), 0, pane_.highestLeft()));
  event->accept();
}

void PaneMouse::pastePrimary(const QPoint& point) {
  const QClipboard* clipboard = QGuiApplication::clipboard();
  if (!clipboard->supportsSelection() || pane_.state_.model->document().readOnly()) return;
  bool block = false;
  const QString text = TextMime::read(clipboard->mimeData(QClipboard::Selection), &block);
  const Pane::Action action(pane_);
  pane_.editor_->moveCaret(pane_.view_.offsetAt(point), false);
  if (text.isEmpty()) return;
  if (block) pane_.editor_->insertBlock(text);
  else pane_.editor_->replaceSelection(text);
  pane_.showCaret();
}

// --- Dragging text ---------------------------------------------------------------------------------------------------------------

void PaneMouse::textChanged(const text::Change& change) {
  if (drag_ == Drag::none) return;
  origin_ = {change.map(origin_.begin, text::Bias::alongRight), change.map(origin_.end, text::Bias::alongLeft)};
  origin_.end = std::max(origin_.begin, origin_.end);
  originLine_ = change.mapLine(LineNo(originLine_), pane_.snapshot()).value;
}

void PaneMouse::startTextDrag() {
  Editor& editor = *pane_.editor_;
  carets::drop(editor);   // one piece of text is dragged
  auto* drag = new QDrag(&pane_);
  const text::SelectionState dragged = editor.selection();
  const text::Document& document = pane_.state_.model->document();
  const std::uint64_t revision = document.revision();
  drag->setMimeData(dragged.column ? TextMime::make(editor.selectedText(), true).release()
                                   : TextMime::makeLazy(pane_.snapshot(), editor.selectedRange()).release());
  droppedHere_ = false;
  const QPointer<Pane> alive(&pane_);
  const bool writable = !pane_.state_.model->document().readOnly();
  const auto actions = writable ? Qt::CopyAction | Qt::MoveAction : Qt::DropActions(Qt::CopyAction);
  const Qt::DropAction done = drag->exec(actions, writable ? Qt::MoveAction : Qt::CopyAction);
  if (!alive || done != Qt::MoveAction || droppedHere_) return;
  // It was dropped on another text. If this one has changed meanwhile, nothing of it is deleted.
  if (document.revision() != revision || editor.selection() != dragged) return;
  const Pane::Action action(pane_);
  editor.replaceSelection({});
}

// Near an edge the text scrolls while it is dragged over.
void PaneMouse::scrollUnderDrag() {
  TextView& view = pane_.view_;
  const int line = view.lineHeight(), cell = static_cast<int>(std::ceil(pane_.state_.metrics->cell()));
  const auto edge = [](int at, int first, int end, int near, int step) {
    return end - first < 4 * near ? 0 : at < first + near ? -step : at >= end - near ? step : 0;
  };
  const int dy = edge(dragged_.y(), 0, view.height, line, line),
            dx = edge(dragged_.x(), view.margin, view.margin + view.width, 2 * cell, 2 * cell);
  if (dy == 0 && dx == 0) return dropScroll_.stop();
  if (!dropScroll_.isActive()) return dropScroll_.start(kDropScrollInterval, this);
  if (dy != 0) pane_.scrollTo(view.target + dy, false);
  if (dx != 0) pane_.scrollSideways(std::clamp<std::int64_t>(view.left + dx, 0, pane_.highestLeft()));
}

void PaneMouse::showDrop(std::optional<ByteOffset> at) {
  const auto old = std::exchange(pane_.dropAt_, at);
  if (old == at) return;
  for (const auto& place : {old, at})
    if (place) pane_.updateLines(pane_.snapshot().lineAt(*place).value, pane_.snapshot().lineAt(*place).value);
}

// Whether text that is dragged from the pane would be dropped onto itself.
bool PaneMouse::onDragged(Editor& from, ByteOffset at, bool moves) const {
  const int tabSize = pane_.state_.options->tabSize;
  const text::SelectionState& s = from.selection();
  if (!s.column) {
    const ByteRange range = from.selectedRange();
    return moves ? at >= range.begin && at <= range.end : at > range.begin && at < range.end;
  }
  const ColumnBlock block = columnBlock(from.model(), s, tabSize);
  const LineNo line = pane_.snapshot().lineAt(at);
  const std::int64_t cell = cellOf(from.model(), at, 0, tabSize);
  return line >= block.first && line <= block.last && cell >= block.left && cell < block.right;
}

// Puts the rows of a block in and selects it.
void PaneMouse::dropBlock(const QString& text, ByteOffset at) {
  Editor& editor = *pane_.editor_;
  const int tabSize = pane_.state_.options->tabSize;
  const LineNo first = pane_.snapshot().lineAt(at);
  const std::int64_t cell = cellOf(editor.model(), at, 0, tabSize);
  std::int64_t right = cell, rows = 0;
  for (const QStringView row : QStringView(text).split(u'\n')) {
    const std::string placed = std::string(static_cast<std::size_t>(cell % tabSize), ' ') + fromQString(row);
    right = std::max(right, cell - cell % tabSize + text::displayColumn(placed, std::ssize(placed), tabSize).value);
    ++rows;
  }
  if (!editor.insertBlock(text)) return;
  const LineNo last(std::min(first.value + rows, pane_.snapshot().lineCount()) - 1);
  editor.setSelection(columnSelection(editor.model(), first, cell, last, right, tabSize));
}

bool PaneMouse::dragOver(QDropEvent* event) {
  if (event->mimeData()->hasUrls()) {
    event->acceptProposedAction();
    return true;
  }
  if (pane_.state_.model->document().readOnly() || !pane_.state_.options->dragDrop || !TextMime::hasText(event->mimeData())) {
    event->ignore();
    return false;
  }
  dragged_ = event->position().toPoint();
  showDrop(pane_.view_.offsetAt(dragged_));
  scrollUnderDrag();
  event->acceptProposedAction();
  return true;
}

void PaneMouse::dragLeave() {
  dropScroll_.stop();
  showDrop(std::nullopt);
}

void PaneMouse::drop(QDropEvent* event) {
  if (event->mimeData()->hasUrls()) {
    QStringList paths;
    for (const QUrl& url : event->mimeData()->urls())
      if (url.isLocalFile()) paths << localFile(url);
    event->acceptProposedAction();
    if (!paths.isEmpty()) emit pane_.filesDropped(paths);
    return;
  }
  if (!dragOver(event)) return;
  ByteOffset at = *pane_.dropAt_;
  dragLeave();   // removes the mark, also if no text changes
  bool block = false;
  const QString text = TextMime::read(event->mimeData(), &block);
  Editor& editor = *pane_.editor_;
  const Pane::Action action(pane_);
  text::Document& document = pane_.state_.model->document();
  const text::UndoGroup step(document);
  // The selection of any pane of this text is moved as a whole; text dragged from another text is deleted by its own pane.
  auto* source = qobject_cast<Pane*>(event->source());
  if (source && source->state_.model != pane_.state_.model) source = nullptr;
  if (source) source->mouse_->droppedHere_ = true;
  const bool moves = event->dropAction() == Qt::MoveAction;
  if (source && onDragged(*source->editor_, at, moves)) return;
  if (source && moves) {
    Editor& from = *source->editor_;
    const text::MarkId mark = document.addMark(at);
    const Pane::Action there(*source);
    from.replaceSelection({});
    at = document.markAt(mark);
    document.removeMark(mark);
  }
  editor.moveCaret(at, false);
  if (block) {
    dropBlock(text, at);
  } else {
    editor.replaceSelection(text);
    const ByteOffset end = editor.selection().caret;
    editor.setSelection({at, end, 0, 0, false});
  }
  event->acceptProposedAction();
  pane_.showCaret();
  pane_.setFocus();
}

// --- The pane's events ---------------------------------------------------------------------------------------------------------

bool Pane::viewportEvent(QEvent* event) {
  if (event->type() == QEvent::ToolTip) {
    const auto* help = static_cast<QHelpEvent*>(event);
    if (!mouse_->showTip(help->pos(), help->globalPos())) QToolTip::hideText();
    return true;
  }
  return QAbstractScrollArea::viewportEvent(event);
}
void Pane::mousePressEvent(QMouseEvent* event) { mouse_->press(event); }
void Pane::mouseMoveEvent(QMouseEvent* event) { mouse_->move(event); }
void Pane::mouseReleaseEvent(QMouseEvent* event) { mouse_->release(event); }
void Pane::mouseDoubleClickEvent(QMouseEvent* event) { mouse_->doubleClick(event); }
void Pane::wheelEvent(QWheelEvent* event) { mouse_->wheel(event); }
void Pane::dragEnterEvent(QDragEnterEvent* event) {
  shown([&] { mouse_->dragOver(event); });
}
void Pane::dragMoveEvent(QDragMoveEvent* event) {
  shown([&] { mouse_->dragOver(event); });
}
void Pane::dragLeaveEvent(QDragLeaveEvent*) { mouse_->dragLeave(); }
void Pane::dropEvent(QDropEvent* event) {
  asked([&] { mouse_->drop(event); });
}
