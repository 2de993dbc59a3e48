#include "language/FieldWalk.h"

#include <QApplication>
#include <QKeyEvent>

#include "control/CodeMax.h"
#include "language/CaretWords.h"

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

bool FieldWalk::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() != QEvent::KeyPress) return false;
  const auto* key = static_cast<QKeyEvent*>(event);
  const auto* widget = qobject_cast<QWidget*>(watched);
  if (key->key() != Qt::Key_Tab || key->modifiers() != Qt::NoModifier || !widget ||
      !(widget == &cmx_ || cmx_.isAncestorOf(widget)))
    return false;
  if (begin_ && fieldLeft()) return NextField(cmx_, end());
  stop();
  return false;
}
