// The display and editing options of CodeMax.
#include <algorithm>

#include "control/CodeMaxImpl.h"

bool CodeMax::HSplitter() const { return impl_->grid->horizontalAllowed(); }
bool CodeMax::VSplitter() const { return impl_->grid->verticalAllowed(); }
bool CodeMax::HScrollBar() const { return impl_->state.hScrollBar; }
bool CodeMax::VScrollBar() const { return impl_->state.vScrollBar; }
bool CodeMax::SmoothScrolling() const { return impl_->state.smoothScrolling; }
bool CodeMax::LineToolTips() const { return impl_->state.lineToolTips; }
bool CodeMax::LeftMargin() const { return impl_->state.leftMargin; }
bool CodeMax::ColumnSel() const { return impl_->state.options->columnSel; }
bool CodeMax::DragDrop() const { return impl_->state.options->dragDrop; }
bool CodeMax::PreserveCase() const { return impl_->state.options->preserveCase; }
bool CodeMax::TabExpand() const { return impl_->state.options->expandTabs; }
bool CodeMax::ColorSyntax() const { return impl_->state.colorSyntax; }
bool CodeMax::WhiteSpaceDisplay() const { return impl_->state.whiteSpace; }
bool CodeMax::StickyLine() const { return impl_->state.stickyLine; }
int CodeMax::AutoIndentMode() const { return static_cast<int>(impl_->state.options->autoIndent); }
int CodeMax::WordWrap() const { return static_cast<int>(impl_->state.wordWrap); }
int CodeMax::WrapColumn() const { return impl_->state.wrapColumn; }
bool CodeMax::wraps() const { return impl_->state.mayWrap && impl_->state.wrapsNow != ::WordWrap::off; }
int CodeMax::TabSize() const { return impl_->state.options->tabSize; }

void CodeMax::setHSplitter(bool on) { impl_->grid->allow(on, VSplitter()); }
void CodeMax::setVSplitter(bool on) { impl_->grid->allow(HSplitter(), on); }

void CodeMax::setHScrollBar(bool on) {
  impl_->state.hScrollBar = on;
  impl_->refit();
}

void CodeMax::setVScrollBar(bool on) {
  impl_->state.vScrollBar = on;
  impl_->refit();
}

void CodeMax::setSmoothScrolling(bool on) { impl_->state.smoothScrolling = on; }
void CodeMax::setLineToolTips(bool on) { impl_->state.lineToolTips = on; }

void CodeMax::setLeftMargin(bool on) {
  impl_->state.leftMargin = on;
  impl_->refit();
}

void CodeMax::setColumnSel(bool on) { impl_->state.options->columnSel = on; }
void CodeMax::setDragDrop(bool on) { impl_->state.options->dragDrop = on; }
void CodeMax::setPreserveCase(bool on) { impl_->state.options->preserveCase = on; }
void CodeMax::setTabExpand(bool on) { impl_->state.options->expandTabs = on; }

void CodeMax::setColorSyntax(bool on) {
  impl_->state.colorSyntax = on;
  impl_->repaint();
}

void CodeMax::setWhiteSpaceDisplay(bool on) {
  impl_->state.whiteSpace = on;
  impl_->repaint();
}

void CodeMax::setStickyLine(bool on) {
  impl_->state.stickyLine = on;
  impl_->refit();
}

void CodeMax::setAutoIndentMode(int mode) {
  if (mode >= static_cast<int>(AutoIndent::off) && mode <= static_cast<int>(AutoIndent::language))
    impl_->state.options->autoIndent = static_cast<AutoIndent>(mode);
}

const TypingAids& CodeMax::Aids() const { return impl_->state.options->aids; }

void CodeMax::setAids(const TypingAids& aids) {
  impl_->state.options->aids = aids;
  impl_->repaint();
}

int CodeMax::CompletionKeyMode() const { return Aids().completionKeys; }

void CodeMax::setCompletionKeyMode(int mode) {
  if (mode >= static_cast<int>(CompletionKeys::entered) && mode <= static_cast<int>(CompletionKeys::both))
    impl_->state.options->aids.completionKeys = mode;
}

void CodeMax::setTabSize(int size) {
  if (size < 1 || size > 32 || size == TabSize()) return;
  impl_->state.options->tabSize = size;
  impl_->measure();
}

void CodeMax::setWordWrap(int mode) {
  const auto chosen = static_cast<::WordWrap>(mode);
  if (mode < 0 || mode > static_cast<int>(::WordWrap::column) || chosen == impl_->state.wordWrap) return;
  impl_->state.wordWrap = impl_->state.wrapsNow = chosen;
  impl_->refit();
}

void CodeMax::setWrapColumn(int column) {
  if (column < kLeastWrapColumn || column > kMostWrapColumn || column == WrapColumn()) return;
  impl_->state.wrapColumn = column;
  impl_->refit();
}

void CodeMax::setMayWrap(bool allowed) {
  impl_->state.mayWrap = allowed;
  impl_->refit();
}

QColor CodeMax::GetColor(int slot) const { return impl_->state.colors.color(static_cast<ColorSlot>(slot)); }

void CodeMax::SetColor(int slot, const QColor& color) {
  impl_->state.colors.setColor(slot, color);
  impl_->repaint();
}

QFont CodeMax::Font() const { return impl_->state.font; }

void CodeMax::setFontOf(const QFont& font) {
  impl_->state.font = font;
  impl_->measure();
}

int CodeMax::Zoom() const { return impl_->state.zoom; }

void CodeMax::setZoom(int percent) {
  percent = std::clamp(percent, 30, 500);
  if (percent == impl_->state.zoom) return;
  impl_->state.zoom = percent;
  impl_->measure();
}

void CodeMax::splitPanes(double horizontalBar, double verticalBar) {
  impl_->grid->split(Qt::Horizontal, horizontalBar);
  impl_->grid->split(Qt::Vertical, verticalBar);
}

void CodeMax::setLineBacks(std::function<LineBack(text::LineNo)> backs) {
  impl_->state.lineBack = std::move(backs);
  for (Pane* each : impl_->grid->panes()) each->viewport()->update();
}

CodeMax::ShownPart CodeMax::shownPart() const {
  Pane& pane = impl_->pane();
  const QWidget& area = *pane.viewport();
  return {pane.view().top, pane.view().left, pane.view().lineHeight(), {area.mapTo(this, QPoint()), area.size()}};
}

void CodeMax::showPart(qint64 top, qint64 left) {
  impl_->pane().showAt(top);
  impl_->pane().scrollSideways(left);
}
