#include "change/compare/CompareView.h"

#include <QGridLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QScopedValueRollback>
#include <QTimer>
#include <algorithm>

#include "base/Counted.h"
#include "change/compare/CompareStrip.h"
#include "control/CodeMax.h"
#include "control/keys/KeyMap.h"
#include "text/file/Encoding.h"
#include "text/line/LineEnds.h"

using compare::kLeft;
using compare::kRight;
using compare::Lines;
using compare::linesOf;
using compare::Side;
using text::LineNo;

namespace {
constexpr std::int64_t kLineEndsLook = 1 << 20;   // bytes from which the line ends of a text are told
}

CompareView::CompareView(CodeMax* left, CodeMax* right, QWidget* parent)
    : QWidget(parent), texts_{left, right}, comparison_(new Comparison(left->model(), right->model(), this)) {
  strip_ = new CompareStrip(*comparison_, texts_, this);
  overview_ = new CompareOverview(*comparison_, texts_, this);
  for (QLabel*& name : names_) {
    name = new QLabel(this);
    name->setTextFormat(Qt::PlainText);
    name->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    name->setMargin(3);
  }
  grid_ = new QGridLayout(this);
  grid_->setContentsMargins(0, 0, 0, 0);
  grid_->setSpacing(0);
  grid_->addWidget(strip_, 1, 1);
  grid_->addWidget(overview_, 1, 3);
  grid_->setColumnStretch(0, 1);
  grid_->setColumnStretch(2, 1);
  grid_->setRowStretch(1, 1);
  for (const Side side : {kLeft, kRight}) {
    texts_[side]->setParent(this);
    setUp(side);
  }
  arrange();
  showBacks();
  connect(comparison_, &Comparison::changed, this, [this] {
    formatsKnown_ = formatsKnown_ && !comparison_->compared();
    if (std::exchange(updatePosted_, true)) return;   // once for all changes that a command makes
    QMetaObject::invokeMethod(
        this,
        [this] {
          updatePosted_ = false;
          repaint();
          emit stateChanged();
        },
        Qt::QueuedConnection);
  });
  connect(comparison_, &Comparison::moreFound, this, &CompareView::showBacks);
  connect(strip_, &CompareStrip::chosen, this, &CompareView::showDifference);
  connect(strip_, &CompareStrip::takeOverAsked, this, [this](int difference, Side from) { takeOver(from, difference); });
  connect(overview_, &CompareOverview::chosen, this, &CompareView::showDifference);
  connect(overview_, &CompareOverview::placeChosen, this, [this](double part) {
    const auto lines = static_cast<double>(texts_[active_]->LineCount());
    showLine(active_, static_cast<qint64>(part * lines));
  });
}

CompareView::~CompareView() {
  for (CodeMax* text : texts_) disconnect(text, nullptr, this, nullptr);
}

void CompareView::setUp(Side side) {
  CodeMax* text = texts_[side];
  text->setHSplitter(false);
  text->setVSplitter(false);
  connect(text, &CodeMax::Scrolled, this, [this, text] { syncFrom(sideOf(text)); });
  connect(text, &CodeMax::GotFocus, this, [this, text] {
    if (sideOf(text) != active_) takenTo_.reset();
    active_ = sideOf(text);
    emit stateChanged();
  });
  connect(text, &CodeMax::SelChange, this, [this, text] {
    if (sideOf(text) != active_) return;
    if (!own_) takenTo_.reset();
    emit stateChanged();
  });
  connect(text->model().get(), &TextModel::changed, this, [this] {
    if (!own_) takenTo_.reset();
  });
  text->focusProxy()->installEventFilter(this);   // its only pane
}

void CompareView::arrange() {
  for (const Side side : {kLeft, kRight}) {
    const int column = side == kLeft ? 0 : 2;
    grid_->addWidget(names_[side], 0, column);
    grid_->addWidget(texts_[side], 1, column);
  }
  setTabOrder(texts_[kLeft], texts_[kRight]);
}

void CompareView::setName(Side side, const QString& name) {
  full_[side] = name;
  texts_[side]->setAccessibleName(name);
  showNames();
}

void CompareView::showNames() {   // the end of a path says most
  for (const Side side : {kLeft, kRight}) {
    const int room = texts_[side]->width() - 2 * names_[side]->margin();
    names_[side]->setText(names_[side]->fontMetrics().elidedText(full_[side], Qt::ElideLeft, room));
    names_[side]->setToolTip(full_[side].toHtmlEscaped());
  }
}

void CompareView::resizeEvent(QResizeEvent* event) {
  QWidget::resizeEvent(event);
  grid_->activate();
  showNames();
}

void CompareView::activate(Side side) {
  active_ = side;
  texts_[side]->setFocus();
}

void CompareView::showBacks() {
  for (CodeMax* text : texts_) text->setLineBacks([this, text](LineNo line) { return backOf(sideOf(text), line); });
}

void CompareView::repaint() {
  showBacks();
  strip_->setWritable(!texts_[kLeft]->ReadOnly(), !texts_[kRight]->ReadOnly());
  strip_->setCurrent(current());
  overview_->differencesChanged();
}

LineBack CompareView::backOf(Side side, LineNo line) const {
  const Comparison::Line found = comparison_->lineAt(side, line.value);
  LineBack back;
  if (found.kind == Comparison::Line::Kind::equal && !found.missingAbove && !found.missingBelow) return back;
  const CompareColors colors = CompareColors::of(*texts_[side]);
  if (found.kind == Comparison::Line::Kind::changed) back.line = colors.changed;
  if (found.kind == Comparison::Line::Kind::single) back.line = colors.single;
  back.part = colors.changedPart;
  back.parts = found.parts;
  back.rule = colors.rule;
  back.ruleAbove = found.missingAbove;
  back.ruleBelow = found.missingBelow;
  return back;
}

void CompareView::syncFrom(Side side) {
  if (syncing_) return;
  const QScopedValueRollback syncing(syncing_, true);
  const Side there = compare::other(side);
  std::array<compare::ScrollState, 2> states;
  for (const Side each : {kLeft, kRight}) {
    const CodeMax::ShownPart part = texts_[each]->shownPart();
    states[each] = {part.top, part.area.height(), part.lineHeight, texts_[each]->LineCount()};
  }
  texts_[there]->showPart(compare::topBeside(comparison_->hunks(), side, states[side], states[there]),
                          texts_[side]->shownPart().left);
  strip_->update();
  overview_->update();
}

int CompareView::current() const { return comparison_->differenceAt(active_, texts_[active_]->CurrentPosition().LineNo); }

void CompareView::showLine(Side side, qint64 line) {
  const CodeMax::ShownPart part = texts_[side]->shownPart();
  texts_[side]->showPart(line * part.lineHeight - part.area.height() / 2, 0);
  syncFrom(side);
}

void CompareView::showDifference(int difference) {
  if (difference < 0 || difference >= count()) return;
  const text::LineHunk hunk = comparison_->hunks()[comparison_->hunkOf(difference)];
  const QScopedValueRollback own(own_, true);
  for (const Side side : {kLeft, kRight}) {
    const qint64 line = std::min<qint64>(linesOf(hunk, side).begin, texts_[side]->LineCount() - 1);
    texts_[side]->SetSel({line, 0, line, 0, false}, false);
  }
  // The beginning of the difference, and as much of it as fits.
  const Lines lines = linesOf(hunk, active_);
  const CodeMax::ShownPart part = texts_[active_]->shownPart();
  const qint64 visible = part.area.height() / part.lineHeight;
  const qint64 above = std::max<qint64>(2, (visible - std::min<qint64>(lines.count(), visible)) / 2);
  texts_[active_]->showPart((lines.begin - above) * part.lineHeight, 0);
  syncFrom(active_);
  strip_->setCurrent(difference);
  emit stateChanged();
}

bool CompareView::step(int direction) {
  if (count() == 0) return false;
  int next = current();
  if (next >= 0) {
    next += direction;
  } else {
    const qint64 line = texts_[active_]->CurrentPosition().LineNo;
    int low = 0, high = count();   // the first difference behind the line
    while (low < high) {
      const int middle = (low + high) / 2;
      if (linesOf(comparison_->hunks()[comparison_->hunkOf(middle)], active_).begin > line) high = middle;
      else low = middle + 1;
    }
    next = direction > 0 ? low : low - 1;
  }
  showDifference((next + count()) % count());
  return true;
}

bool CompareView::canTakeOver(Side from) const {
  if (texts_[compare::other(from)]->ReadOnly()) return false;
  if (!texts_[active_]->HasSelection()) return current() >= 0;
  const LineRange lines = texts_[active_]->editor().selectedLines();
  const std::size_t hunk = compare::hunkFrom(comparison_->hunks(), active_, lines.first);
  return hunk < comparison_->hunks().size() &&
         linesOf(comparison_->hunks()[hunk], active_).begin < lines.end + (lines.end == texts_[active_]->LineCount() ? 1 : 0);
}

bool CompareView::takeOver(Side from) {
  if (!canTakeOver(from)) return false;
  if (!texts_[active_]->HasSelection()) return takeOver(from, current());
  const LineRange lines = texts_[active_]->editor().selectedLines();
  return apply({from, std::nullopt, Lines{lines.first, lines.end}, active_});
}

bool CompareView::takeOver(Side from, int difference) {
  if (difference < 0 || difference >= count() || texts_[compare::other(from)]->ReadOnly()) return false;
  return apply({from, comparison_->hunkOf(difference), std::nullopt, from});
}

bool CompareView::apply(const compare::TakeOver& what) {
  const Side to = compare::other(what.from);
  const QScopedValueRollback own(own_, true);
  if (!comparison_->takeOver(*this, what, texts_[to]->editor().selection())) return false;
  takenTo_ = to;
  emit stateChanged();
  return true;
}

bool CompareView::undo(int command) {
  const QScopedValueRollback own(own_, true);
  const bool done = texts_[undoSide()]->ExecuteCmd(command);
  emit stateChanged();
  return done;
}

// The keys of a text go to it before any menu.
bool CompareView::eventFilter(QObject* object, QEvent* event) {
  if (event->type() != QEvent::KeyPress) return QWidget::eventFilter(object, event);
  const int stroke = KeyMap::strokeOf(*static_cast<QKeyEvent*>(event));
  if (stroke == 0) return false;
  KeyAction bound;
  const KeyMap::Match match = keyMap().find(stroke, 0, &bound);
  const bool second = std::exchange(inSequence_, !inSequence_ && match == KeyMap::Match::partial);
  if (second || match != KeyMap::Match::exact || undoSide() == active_) return false;
  if (bound.command != static_cast<int>(Cmd::UNDO) && bound.command != static_cast<int>(Cmd::REDO)) return false;
  undo(bound.command);
  return true;
}

void CompareView::swapSides() {
  std::swap(texts_[kLeft], texts_[kRight]);
  std::swap(names_[kLeft], names_[kRight]);
  std::swap(full_[kLeft], full_[kRight]);
  active_ = compare::other(active_);
  if (takenTo_) takenTo_ = compare::other(*takenTo_);
  strip_->setTexts(texts_);
  overview_->setTexts(texts_);
  arrange();
  comparison_->swap();
}

QString CompareView::formats() const {
  std::array<QString, 2> ends, encodings;
  for (const Side side : {kLeft, kRight}) {
    const TextModel& model = comparison_->model(side);
    switch (text::lineEndsOf(model.snapshot(), kLineEndsLook)) {
      case text::LineEnds::crlf: ends[side] = QStringLiteral("Win"); break;
      case text::LineEnds::lf: ends[side] = QStringLiteral("Unix"); break;
      case text::LineEnds::mixed: ends[side] = tr("mixed"); break;
      case text::LineEnds::none: break;
    }
    encodings[side] = QString::fromLatin1(text::name(model.format.encoding)) + (model.format.bom ? tr(" with BOM") : QString());
  }
  QString differ;
  const bool endsDiffer = (!ends[kLeft].isEmpty() && !ends[kRight].isEmpty() && ends[kLeft] != ends[kRight]);
  if (endsDiffer) differ += tr("; line ends differ (%1, %2)").arg(ends[kLeft], ends[kRight]);
  else if (comparison_->equal() == Comparison::Equal::butForLineEnds) differ += tr("; line ends differ");
  if (encodings[kLeft] != encodings[kRight]) differ += tr("; encodings differ (%1, %2)").arg(encodings[kLeft], encodings[kRight]);
  return differ;
}

QString CompareView::summary() const {
  QString text;
  if (comparison_->failed()) return tr("The texts cannot be compared: there is not enough memory");
  if (count() > 0) {
    const int at = current();
    text = at >= 0 ? tr("Difference %L1 of %L2").arg(at + 1).arg(count()) : counted(count(), tr("difference"), tr("differences"));
  } else if (!comparison_->compared()) {
    return tr("Comparing...");
  } else {
    text = comparison_->equal() == Comparison::Equal::underRules ? tr("The texts are equal but for what is ignored")
                                                                 : tr("The texts are equal");
  }
  if (!std::exchange(formatsKnown_, true)) formats_ = formats();
  return text + formats_;
}
