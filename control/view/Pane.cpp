#include "control/view/Pane.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QInputMethod>
#include <QPaintEvent>
#include <QScrollBar>
#include <QStyleHints>
#include <QTimerEvent>
#include <algorithm>
#include <new>
#include <tuple>
#include <utility>

#include "control/code/BlockFinder.h"
#include "control/code/Brackets.h"
#include "control/edit/TextMime.h"
#include "control/folds/PaneFolds.h"
#include "control/marks/ChangeMarks.h"
#include "control/marks/ChangeTip.h"
#include "control/marks/MarkedBar.h"
#include "control/marks/TextAids.h"
#include "control/view/PaneAccessible.h"
#include "control/view/PaneMouse.h"
#include "control/view/PaneRows.h"

using text::ByteOffset;
using text::LineNo;

namespace {
constexpr std::int64_t kBracketBudget = 256 * 1024;   // bytes searched for a bracket's partner while painting
}

Pane::Action::~Action() {
  if (!pane_ || --pane_->state_.held > 0) return;
  pane_->shown([this] { emit pane_->heldEnded(); });
}

Pane::Pane(ViewState& state, QWidget* parent)
    : QAbstractScrollArea(parent),
      state_(state),
      view_(state),
      editor_(new Editor(state.model, state.options, this)),
      mouse_(new PaneMouse(*this)),
      sameWord_(new SameWord(*this)),
      rows_(new PaneRows(*this)),
      folds_(new PaneFolds(*editor_, view_.rows.map, [this](const auto& change) { changeRows(change); })) {
  PaneAccessible::install();
  setFrameShape(QFrame::NoFrame);
  setFocusPolicy(Qt::StrongFocus);
  setAttribute(Qt::WA_InputMethodEnabled);
  setAttribute(Qt::WA_KeyCompression, false);
  viewport()->setAttribute(Qt::WA_OpaquePaintEvent);
  viewport()->setCursor(Qt::IBeamCursor);
  viewport()->setMouseTracking(true);
  setAcceptDrops(true);
  setVerticalScrollBar(new MarkedBar(*this));
  connect(verticalScrollBar(), &QScrollBar::sliderMoved, this, &Pane::showLineTip);
  connect(verticalScrollBar(), &QScrollBar::actionTriggered, this, &Pane::barActed);
  editor_->onSelectionChanged = [this] { noteSelection(); };
  connect(&BlockFinder::of(*state.model), &BlockFinder::found, this, [this] {
    viewport()->update(0, 0, view_.margin, viewport()->height());   // the handles
    shown([this] { findPair(); });
  });
  connect(&ChangeMarks::of(*state_.model), &ChangeMarks::changed, this, [this] {
    viewport()->update(0, 0, view_.margin, viewport()->height());
    MarkedBar::of(*this).marksChanged();
  });
  new ChangeTip(*this);
  optionsChanged();
}

Pane::~Pane() = default;

PaneLook Pane::look() const {
  PaneLook look;
  look.selection = editor_->selection();
  look.others = carets::others(*editor_);
  look.focused = hasFocus() || state_.hits;   // during a search the current match stands out among the others
  look.caretOn = caretOn_ && hasFocus();
  look.overtype = editor_->overtype;
  look.pair = pair_;
  look.folds = folds_.get();
  look.dropAt = dropAt_;
  look.preedit = preedit_.get();
  if (state_.options->aids.changeMarks) look.changes = &ChangeMarks::of(*state_.model);
  if (state_.options->aids.markWord) look.sameWord = sameWord_->word();
  return look;
}

QRect Pane::caretRect() const { return PanePainter::caretRect(view_, look()); }

// --- What changed -----------------------------------------------------------------------------------------------------------

void Pane::modelChanged(const text::Change& change) {
  MarkedBar::of(*this).marksChanged();
  view_.forget();
  text::DisplayMap& map = view_.rows.map;
  const TextView::Place target = view_.placeAt(view_.target), top = view_.placeAt(view_.top);
  const std::int64_t targetWas = view_.topOf(target), topWas = view_.topOf(top);
  map.onChange(change, snapshot().lineCount());
  folds_->onChange(change);
  if (change.reset) {
    view_.target = view_.top = 0;
    scrollSideways(0);
    view_.forgetWidest();
  }
  // A change above does not move the visible lines.
  const auto shift = [&](const TextView::Place& place, std::int64_t was) {
    if (change.reset) return std::int64_t(0);
    const LineNo line = change.mapLine(place.line, snapshot(), text::Bias::left);
    return view_.topOf({line, std::clamp<std::int64_t>(map.rowsOf(line) - 1, 0, place.row)}) - was;
  };
  const std::int64_t topShift = shift(top, topWas);
  view_.target = std::max<std::int64_t>(0, view_.target + shift(target, targetWas));
  view_.top = std::max<std::int64_t>(0, view_.top + topShift);
  if (dropAt_) dropAt_ = change.map(*dropAt_, text::Bias::left);
  mouse_->textChanged(change);
  sameWord_->moved();
  // One change repaints its lines, several repaint all lines, once when the code that makes them has finished.
  allDirty_ = allDirty_ || change.reset || topShift != 0 || pending_.has_value() || change.spans.size() > 1000;
  try {
    if (!allDirty_) pending_ = change;
  } catch (const std::bad_alloc&) { allDirty_ = true; }
  if (allDirty_) pending_.reset();
  if (state_.held > 0) selectionDirty_ = true;   // what undo would do has changed, even if the caret has not moved
  if (state_.held > 0 || flushPosted_) return;
  shown([this] {
    QMetaObject::invokeMethod(
        this, [this] { flushText(); }, Qt::QueuedConnection);
    flushPosted_ = true;
  });
}

void Pane::flushText() {
  flushPosted_ = false;
  if (!allDirty_ && !pending_) return;
  fit();
  if (state_.options->aids.changeMarks) ChangeMarks::of(*state_.model).settle();
  allDirty_ = view_.takeMoved() || allDirty_;
  if (allDirty_) emit scrolled();
  const std::vector<std::int64_t> recolored = view_.findStates();
  if (allDirty_) {
    viewport()->update();
  } else {
    for (const auto& span : pending_->spans) {
      const bool moves = span.linesInserted != span.linesRemoved;   // what stands below
      auto [first, last] = std::pair(span.firstLine.value, span.firstLine.value + span.linesInserted);
      if (state_.options->aids.indentGuides) std::tie(first, last) = textAids::withBlanksAround(view_, first, last);
      updateLines(first, moves ? INT64_MAX / 2 : last);
      if (moves) break;
    }
    for (const std::int64_t line : recolored) updateLines(line, line);
  }
  allDirty_ = false;
  pending_.reset();
  repaintSelection();
  PaneAccessible::announceText(this);
  restartColoring();
  findPair();
}

void Pane::appearanceChanged() {
  MarkedBar::of(*this).marksChanged();   // bookmarks, options
  view_.forget();
  view_.findStates();
  restartColoring();
  findPair();
  viewport()->update();
}

void Pane::metricsChanged(ByteOffset top) {
  view_.forget();
  view_.forgetWidest();
  marginDigits_ = -1;   // not known: 0 is a margin that is not shown
  view_.setTopByte(top);
  kept_ = {top, view_.top, state_.model->document().revision()};
  fit();
  viewport()->update();
  emit scrolled();
}

void Pane::optionsChanged() {
  setVerticalScrollBarPolicy(state_.vScrollBar ? Qt::ScrollBarAlwaysOn : Qt::ScrollBarAlwaysOff);
  setHorizontalScrollBarPolicy(state_.hScrollBar && !(state_.mayWrap && state_.wrapsNow == WordWrap::window)
                                   ? Qt::ScrollBarAlwaysOn
                                   : Qt::ScrollBarAlwaysOff);
  marginDigits_ = -1;   // not known: 0 is a margin that is not shown
  folds_->setAllowed(state_.mayWrap);
  fit();
  viewport()->update();
}

void Pane::released() {
  flushText();
  if (!selectionDirty_) return;
  selectionDirty_ = false;
  showSelection();
  emit selectionChanged();
}

void Pane::setPainting(bool on) {
  viewport()->setUpdatesEnabled(on);
  if (on) viewport()->update();
}

void Pane::restartColoring() {
  if (!(view_.statesExact() && view_.allMarked()) && !colorTimer_.isActive()) colorTimer_.start(0, this);
}

void Pane::takeViewOf(const Pane& other) {
  editor_->setSelection(other.editor_->selection());
  editor_->overtype = other.editor_->overtype;
  folds_->setFolds(other.folds_->folds());
  fit();
  if (view_.rows.wraps()) view_.setTopByte(const_cast<Pane&>(other).view_.topByte());
  showAt(view_.rows.wraps() ? view_.target : other.view_.target);
  scrollSideways(other.view_.left);
}

// --- Selection ----------------------------------------------------------------------------------------------------------------

void Pane::noteSelection() {
  if (state_.held > 0) {
    selectionDirty_ = true;
    return;
  }
  shown([this] {
    updateSelection();
    emit selectionChanged();
  });
}

void Pane::showSelection() {
  shown([this] { updateSelection(); });
}

// After a change of the text too: it may move the lines of a selection, and the edges of a block in all of its lines.
void Pane::repaintSelection() {
  if (std::exchange(severalShown_, carets::several(*editor_)) || severalShown_) viewport()->update();
  const text::SelectionState old = shownSelection_, now = editor_->selection();
  const auto update = [&](std::int64_t a, std::int64_t b) { updateLines(std::min(a, b), std::max(a, b)); };
  const std::int64_t anchor = lineAt(now.anchor), caret = lineAt(now.caret);
  if (old.column || now.column || old.anchor != now.anchor || shownAnchor_ != anchor) {
    update(shownAnchor_, shownCaret_);
    update(anchor, caret);
  } else {
    update(shownCaret_, caret);   // and the ends of the highlighted line
    if ((old.anchor == old.caret) != (now.anchor == now.caret)) update(anchor, anchor);
  }
  shownAnchor_ = anchor;
  shownCaret_ = caret;
  shownSelection_ = now;
}

void Pane::updateSelection() {
  folds_->settle();
  repaintSelection();
  if (overtypeShown_ != editor_->overtype) {
    overtypeShown_ = editor_->overtype;
    emit overtypeChanged(overtypeShown_);
  }
  findPair();
  sameWord_->moved();
  restartBlink();
  PaneAccessible::announceSelection(this);
  if (hasFocus())
    QGuiApplication::inputMethod()->update(Qt::ImCursorRectangle | Qt::ImCursorPosition | Qt::ImSurroundingText |
                                           Qt::ImCurrentSelection | Qt::ImAnchorPosition);
}

void Pane::findPair() {
  const auto old = std::exchange(pair_, std::nullopt);
  const auto before = std::exchange(pairLines_, {-1, -1});
  const ByteOffset caret = editor_->selection().caret;
  if (editor_->selection().anchor == caret) {
    if (const auto bracket = matchingBracket(*state_.model, caret, kBracketBudget)) {
      pair_ = {text::ByteRange{bracket->here, bracket->here + 1}, text::ByteRange{bracket->partner, bracket->partner + 1}};
    } else if (BlockFinder& finder = BlockFinder::of(*state_.model); finder.mayBePair(caret)) {
      const auto blocks = finder.known();   // else this is called again
      if (const auto words = blocks ? blocks->pairAt(caret) : std::nullopt) pair_ = {words->here, words->partner};
    }
  }
  if (pair_) pairLines_ = {lineAt((*pair_)[0].begin), lineAt((*pair_)[1].begin)};
  if (old == pair_ && before == pairLines_) return;
  for (const auto& lines : {before, pairLines_})
    for (const std::int64_t line : lines)
      if (line >= 0) updateLines(line, line);
}

std::int64_t Pane::lineAt(ByteOffset at) const {
  const LineNo line = snapshot().lineAt(std::min(at, snapshot().size()));
  const text::DisplayMap& map = view_.rows.map;
  return map.hidesAny() && line.value < map.lines() ? map.shownUpTo(line).value : line.value;
}

void Pane::publishSelection() {
  QClipboard* clipboard = QGuiApplication::clipboard();
  if (!clipboard->supportsSelection() || !editor_->hasSelection()) return;
  if (editor_->selection().column)
    clipboard->setMimeData(TextMime::make(editor_->selectedText(), true).release(), QClipboard::Selection);
  else clipboard->setMimeData(TextMime::makeLazy(snapshot(), editor_->selectedRange()).release(), QClipboard::Selection);
}

void Pane::restartBlink() {
  caretOn_ = true;
  const int period = QGuiApplication::styleHints()->cursorFlashTime();
  if (hasFocus() && period >= 2) blinkTimer_.start(period / 2, this);
  else blinkTimer_.stop();
}

// --- Painting -------------------------------------------------------------------------------------------------------------------

void Pane::updateLines(std::int64_t first, std::int64_t last) {
  const int y = view_.yOf(std::max(first, view_.firstVisible()));
  const int end = last > view_.lastVisible() ? viewport()->height() : view_.bottomOf(last);
  if (y < end) viewport()->update(0, y, viewport()->width(), end - y);
}

void Pane::updateCaret() {
  // In a column selection without width every row shows the caret's line.
  if (severalShown_) return viewport()->update();
  viewport()->update(caretRect().adjusted(-1, 0, 1, 0));
}

void Pane::paintEvent(QPaintEvent* event) {
  try {
    paintParts(event->region());
  } catch (const std::bad_alloc&) {   // the rest comes with the next painting
  }
}

void Pane::paintParts(const QRegion& region) {
  if (state_.scale != devicePixelRatioF()) {
    state_.scale = devicePixelRatioF();
    state_.remeasure();
    view_.forget();
  }
  flushText();
  view_.findStates();
  QPainter painter(viewport());
  const PaneLook now = look();
  PanePainter pane(painter, view_, now);
  for (const QRect& part : region) pane.paint(part);
  restartColoring();
  // A line wider than all before became visible: the scroll bar is updated after painting.
  if (view_.takeMoved()) viewport()->update();
  if (view_.widestSeen() + state_.metrics->cell() * 2 > horizontalScrollBar()->maximum() + view_.width)
    QMetaObject::invokeMethod(
        this, [this] { fit(); }, Qt::QueuedConnection);
}

void Pane::timerEvent(QTimerEvent* event) {
  if (event->timerId() == blinkTimer_.timerId()) {
    caretOn_ = !caretOn_;
    updateCaret();
  } else if (event->timerId() == scrollTimer_.timerId()) {
    stepAnimation();
  } else if (event->timerId() == colorTimer_.timerId()) {
    try {
      if (const auto line = view_.goOnMarking()) return updateLines(*line, *line);
      if (view_.statesExact()) return colorTimer_.stop();
      if (!view_.goOnColoring()) return;
    } catch (const std::bad_alloc&) {   // it starts again with the next change
    }
    colorTimer_.stop();
    appearanceChanged();
  } else {
    QAbstractScrollArea::timerEvent(event);
  }
}

void Pane::focusInEvent(QFocusEvent* event) {
  QAbstractScrollArea::focusInEvent(event);
  restartBlink();
  viewport()->update();
  if (event->reason() != Qt::PopupFocusReason) emit focusChanged(true);
}

void Pane::focusOutEvent(QFocusEvent* event) {
  QAbstractScrollArea::focusOutEvent(event);
  firstStroke_ = 0;
  setPreedit({}, 0);
  blinkTimer_.stop();
  viewport()->update();
  if (event->reason() != Qt::PopupFocusReason) emit focusChanged(false);
}
