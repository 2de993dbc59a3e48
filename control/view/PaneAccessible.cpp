#include "control/view/PaneAccessible.h"

#include <algorithm>

#include "control/edit/Carets.h"
#include "control/view/Pane.h"
#include "text/line/Chars.h"

using text::ByteOffset;
using text::ByteRange;
using text::LineNo;

namespace {

constexpr std::int64_t kWhole = 2 * 1024 * 1024;   // bytes of a text that is presented completely
constexpr std::int64_t kAround = 512 * 1024;       // of a larger text, before and behind the caret

PaneAccessible* accessibleOf(Pane* pane) {
  if (!QAccessible::isActive()) return nullptr;
  return dynamic_cast<PaneAccessible*>(QAccessible::queryAccessibleInterface(pane));
}

}   // namespace

PaneAccessible::PaneAccessible(Pane* pane) : QAccessibleWidget(pane, QAccessible::EditableText), pane_(pane) { look(); }

void PaneAccessible::install() {
  static const bool once = [] {
    QAccessible::installFactory([](const QString& className, QObject* object) -> QAccessibleInterface* {
      auto* pane = className == QLatin1String("Pane") ? qobject_cast<Pane*>(object) : nullptr;
      return pane ? new PaneAccessible(pane) : nullptr;
    });
    return true;
  }();
  static_cast<void>(once);
}

void PaneAccessible::look() const {
  const text::Snapshot& now = pane_->view().snapshot();
  const ByteOffset caret = pane_->editor().selection().caret;
  const bool whole = now.size().value <= kWhole;
  if (now.sameAs(seen_) && (whole || (caret >= range_.begin && caret <= range_.end))) return;
  range_ = {ByteOffset(0), now.size()};
  if (!whole) {
    // Whole lines unless they are too long. The range begins at one of few positions, so that it seldom moves.
    const ByteOffset from(std::max<std::int64_t>(0, (caret.value / kAround - 1) * kAround)),
        to = std::min(now.size(), caret + kAround);
    // Of a line that is too long, whole characters.
    const auto boundary = [&](ByteOffset at) {
      text::LineMap line = pane_->editor().model().line(now.lineAt(at), pane_->editor().options().tabSize);
      return at >= line.start() + line.length() ? at : line.start() + line.at(text::LinePlace::atByte(at - line.start())).byte;
    };
    range_ = {std::max(now.lineStart(now.lineAt(from)), boundary(std::max(ByteOffset(0), from - kAround))),
              std::min(now.lineEndWithBreak(now.lineAt(to)), boundary(std::min(now.size(), to + kAround)))};
  }
  stretch_ = toQString(now.bytes(range_));
  seen_ = now;
}

int PaneAccessible::unitsTo(ByteOffset offset) const {
  look();
  const std::string before = seen_.bytes({range_.begin, std::clamp(offset, range_.begin, range_.end)});
  return static_cast<int>(text::columnOf(before, static_cast<std::int64_t>(before.size())).value);
}

ByteOffset PaneAccessible::offsetOf(int units) const {
  look();
  const QStringView before = QStringView(stretch_).first(std::clamp<qsizetype>(units, 0, stretch_.size()));
  return range_.begin + static_cast<std::int64_t>(fromQString(before).size());
}

void PaneAccessible::announceSelection(Pane* pane) {
  const PaneAccessible* self = accessibleOf(pane);
  if (!self) return;
  if (pane->editor().hasSelection()) {
    int start = 0, end = 0;
    self->selection(0, &start, &end);
    QAccessibleTextSelectionEvent event(pane, start, end);
    event.setCursorPosition(self->cursorPosition());
    QAccessible::updateAccessibility(&event);
  } else {
    QAccessibleTextCursorEvent event(pane, self->cursorPosition());
    QAccessible::updateAccessibility(&event);
  }
}

void PaneAccessible::announceText(Pane* pane) {
  const PaneAccessible* self = accessibleOf(pane);
  if (!self) return;
  const QString before = self->stretch_;
  self->look();
  const QString& after = self->stretch_;
  const qsizetype shorter = std::min(before.size(), after.size());
  qsizetype head = 0, tail = 0;
  while (head < shorter && before[head] == after[head]) ++head;
  while (tail < shorter - head && before[before.size() - 1 - tail] == after[after.size() - 1 - tail]) ++tail;
  QAccessibleTextUpdateEvent event(pane, static_cast<int>(head), before.mid(head, before.size() - head - tail),
                                   after.mid(head, after.size() - head - tail));
  QAccessible::updateAccessibility(&event);
}

void* PaneAccessible::interface_cast(QAccessible::InterfaceType type) {
  if (type == QAccessible::TextInterface) return static_cast<QAccessibleTextInterface*>(this);
  if (type == QAccessible::EditableTextInterface) return static_cast<QAccessibleEditableTextInterface*>(this);
  return QAccessibleWidget::interface_cast(type);
}

QAccessible::State PaneAccessible::state() const {
  QAccessible::State state = QAccessibleWidget::state();
  const bool readOnly = pane_->editor().document().readOnly();
  state.editable = !readOnly;
  state.readOnly = readOnly;
  state.multiLine = true;
  state.selectableText = true;
  return state;
}

QString PaneAccessible::text(QAccessible::Text what) const {
  if (what != QAccessible::Value) return QAccessibleWidget::text(what);
  look();
  return stretch_;
}

// Of several carets: first that of the main one, then the others in order.
std::vector<ByteRange> PaneAccessible::selections() const {
  std::vector<ByteRange> ranges;
  if (pane_->editor().hasSelection()) ranges.push_back(pane_->editor().selectedRange());
  for (const Caret& caret : carets::others(pane_->editor()))
    if (!caret.empty()) ranges.push_back({caret.begin(), caret.end()});
  return ranges;
}

void PaneAccessible::selection(int index, int* start, int* end) const {
  *start = *end = 0;
  const std::vector<ByteRange> ranges = selections();
  if (index < 0 || index >= static_cast<int>(ranges.size())) return;
  *start = unitsTo(ranges[static_cast<std::size_t>(index)].begin);
  *end = unitsTo(ranges[static_cast<std::size_t>(index)].end);
}

int PaneAccessible::selectionCount() const { return static_cast<int>(selections().size()); }
void PaneAccessible::addSelection(int start, int end) { setSelection(0, start, end); }

void PaneAccessible::removeSelection(int index) {
  if (index == 0) setCursorPosition(cursorPosition());
}

void PaneAccessible::setSelection(int index, int start, int end) {
  if (index != 0) return;
  const ByteOffset from = offsetOf(start), to = offsetOf(end);
  const Pane::Action action(*pane_);
  pane_->editor().setSelection({from, to, 0, 0, false});
  pane_->showCaret();
}

int PaneAccessible::cursorPosition() const { return unitsTo(pane_->editor().selection().caret); }
void PaneAccessible::setCursorPosition(int position) { setSelection(0, position, position); }

QString PaneAccessible::text(int start, int end) const {
  look();
  const qsizetype from = std::clamp<qsizetype>(start, 0, stretch_.size());
  return stretch_.mid(from, std::clamp<qsizetype>(end, from, stretch_.size()) - from);
}

int PaneAccessible::characterCount() const {
  look();
  return static_cast<int>(stretch_.size());
}

QRect PaneAccessible::characterRect(int offset) const {
  QRect rect = pane_->view().rectOf(offsetOf(offset));
  if (rect.width() <= 0) rect.setWidth(static_cast<int>(pane_->view().metrics().cell()));
  return {pane_->viewport()->mapToGlobal(rect.topLeft()), rect.size()};
}

int PaneAccessible::offsetAtPoint(const QPoint& point) const {
  const QPoint inside = pane_->viewport()->mapFromGlobal(point);
  return pane_->view().overText(inside) ? unitsTo(pane_->view().offsetAt(inside, true)) : -1;
}

void PaneAccessible::scrollToSubstring(int start, int) {
  const std::int64_t line = pane_->view().snapshot().lineAt(offsetOf(start)).value;
  if (line < pane_->topLine() || line >= pane_->topLine() + pane_->visibleLines()) pane_->setTopLine(line);
}

QString PaneAccessible::attributes(int, int* start, int* end) const {
  *start = 0;
  *end = characterCount();
  return {};
}

void PaneAccessible::deleteText(int start, int end) { replaceText(start, end, {}); }
void PaneAccessible::insertText(int offset, const QString& text) { replaceText(offset, offset, text); }

void PaneAccessible::replaceText(int start, int end, const QString& text) {
  const ByteOffset from = offsetOf(start), to = offsetOf(end);
  const Pane::Action action(*pane_);
  pane_->editor().replaceRange({std::min(from, to), std::max(from, to)}, text);
}
