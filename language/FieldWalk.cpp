#include "language/FieldWalk.h"

#include <QApplication>
#include <QInputMethodEvent>
#include <QKeyEvent>

#include "control/CodeMax.h"
#include "language/CaretWords.h"
#include "text/Words.h"

FieldWalk::FieldWalk(CodeMax& cmx, text::ByteRange range) : QObject(&cmx), cmx_(cmx) {
  text::Document& document = cmx.editor().document();
  begin_ = document.addMark(range.begin, text::Gravity::left);
  end_ = document.addMark(range.end, text::Gravity::right);
  changes_ = document.subscribe([this](const text::Change& change) {
    if (change.reset) begin_ = end_ = 0;   // another text: the marks are gone
  });
  qApp->installEventFilter(this);
}

FieldWalk::~FieldWalk() = default;

FieldWalk* FieldWalk::of(const CodeMax& cmx) {
  for (QObject* child : cmx.children())
    if (auto* walk = qobject_cast<FieldWalk*>(child); walk && walk->begin_) return walk;
  return nullptr;
}

void FieldWalk::start(CodeMax& cmx, text::ByteRange range) {
  if (FieldWalk* walk = of(cmx)) {
    if (walk->contains(range.begin, range.end)) return;
    walk->stop();
  }
  new FieldWalk(cmx, range);   // the control's child
}

bool FieldWalk::isActive(CodeMax& cmx) {
  const FieldWalk* walk = of(cmx);
  return walk && walk->fieldLeft();
}

text::ByteOffset FieldWalk::end() const { return cmx_.editor().document().markAt(end_); }

bool FieldWalk::contains(text::ByteOffset begin, text::ByteOffset end) const {
  return begin_ && begin >= cmx_.editor().document().markAt(begin_) && end <= this->end();
}

bool FieldWalk::fieldLeft() const {
  const Editor& editor = cmx_.editor();
  const text::ByteRange selected = editor.selectedRange();
  if (!contains(selected.begin, selected.end)) return false;
  return editor.snapshot().bytes({selected.end, end()}).find("$$") != std::string::npos;
}

void FieldWalk::stop() {
  if (begin_) {
    cmx_.editor().document().removeMark(begin_);
    cmx_.editor().document().removeMark(end_);
  }
  begin_ = end_ = 0;
  changes_.reset();
  qApp->removeEventFilter(this);
  deleteLater();
}

bool FieldWalk::markerSelected() const {
  const text::ByteRange selected = cmx_.editor().selectedRange();
  return contains(selected.begin, selected.end) && cmx_.SelText() == QLatin1String("$$");
}

qint64 FieldWalk::proposalLength() const {
  const CmRange selected = cmx_.GetSel(true);
  const QString behind = cmx_.GetLine(selected.EndLineNo).mid(selected.EndColNo);
  qint64 length = 0;
  while (length < behind.size() && text::classOf(behind[length].unicode()) == text::CharClass::word) ++length;
  return length;
}

bool FieldWalk::tab() {
  const bool onMarker = markerSelected();
  if (onMarker) {
    const CmRange marker = cmx_.GetSel(true);
    const qint64 proposal = proposalLength();
    if (proposal > 0) cmx_.ReplaceSel({});
    const qint64 behind = proposal > 0 ? marker.StartColNo + proposal : marker.EndColNo;
    cmx_.SetSel({marker.StartLineNo, behind, marker.StartLineNo, behind, false});
  }
  if (fieldLeft()) return NextField(cmx_, end());
  stop();
  return onMarker;
}

bool FieldWalk::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() != QEvent::KeyPress && event->type() != QEvent::InputMethod) return false;
  const auto* widget = qobject_cast<QWidget*>(watched);
  if (!begin_ || !widget || !(widget == &cmx_ || cmx_.isAncestorOf(widget)) || cmx_.ReadOnly()) return false;

  bool replaces = false;   // what is selected gives way to something
  if (event->type() == QEvent::InputMethod) {
    const auto* input = static_cast<QInputMethodEvent*>(event);
    replaces = !input->commitString().isEmpty() || !input->preeditString().isEmpty();
  } else {
    const auto* key = static_cast<QKeyEvent*>(event);
    if (key->key() == Qt::Key_Tab && key->modifiers() == Qt::NoModifier) return tab();
    const bool plain = !(key->modifiers() & (Qt::ControlModifier | Qt::MetaModifier)) || (key->modifiers() & Qt::AltModifier);
    replaces = (plain && !key->text().isEmpty() && key->text()[0].isPrint()) || key->matches(QKeySequence::Paste) ||
               key->key() == Qt::Key_Backspace || key->key() == Qt::Key_Delete;
  }
  if (replaces && markerSelected()) {
    CmRange both = cmx_.GetSel(true);
    both.EndColNo += proposalLength();
    cmx_.SetSel(both);
  }
  return false;
}
