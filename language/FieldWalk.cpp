#include "language/FieldWalk.h"

#include <QApplication>
#include <QInputMethodEvent>
#include <QKeyEvent>

#include "control/CodeMax.h"
#include "language/CaretWords.h"
#include "text/line/Words.h"

namespace {
constexpr qsizetype kMarker = 2;   // length of "$$"
}

FieldWalk::FieldWalk(CodeMax& cmx, text::ByteRange range) : QObject(&cmx), cmx_(cmx) {
  text::Document& document = cmx.editor().document();
  begin_ = document.addMark(range.begin, text::Bias::left);
  end_ = document.addMark(range.end, text::Bias::right);
  changes_ = document.subscribe([this](const text::Change& change) {
    if (change.reset) begin_ = end_ = fieldBegin_ = fieldEnd_ = 0;   // another text: its marks do not exist any more
  });
  connect(&cmx, &CodeMax::SelChange, this, &FieldWalk::leftField, Qt::QueuedConnection);   // it changes the text
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
    walk->dropField();   // the new text is not a name to repeat
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

void FieldWalk::beginField() {
  endField();
  const QString marked = cmx_.SelText();
  if (marked.size() <= kMarker) return;
  const text::ByteRange range = cmx_.editor().selectedRange();
  fieldName_ = marked.mid(kMarker);
  fieldBegin_ = cmx_.editor().document().addMark(range.begin, text::Bias::left);
  fieldEnd_ = cmx_.editor().document().addMark(range.end, text::Bias::right);
}

bool FieldWalk::endField() {
  if (!fieldBegin_) return false;
  text::Document& document = cmx_.editor().document();
  const QString typed = toQString(document.snapshot().bytes({document.markAt(fieldBegin_), document.markAt(fieldEnd_)}));
  dropField();
  // Nothing: the field was deleted; the other fields stay. The marker is there again: undo. Several lines: not a name.
  return !typed.isEmpty() && !typed.startsWith(QLatin1String("$$")) && !typed.contains(u'\n') && fill(fieldName_, typed);
}

void FieldWalk::dropField() {
  if (!fieldBegin_) return;
  cmx_.editor().document().removeMark(fieldBegin_);
  cmx_.editor().document().removeMark(fieldEnd_);
  fieldBegin_ = fieldEnd_ = 0;
}

bool FieldWalk::fill(const QString& name, const QString& with) {
  constexpr std::int64_t kLargest = 1 << 20;   // maximum size of the template with the text typed into it
  Editor& editor = cmx_.editor();
  const text::ByteOffset begin = editor.document().markAt(begin_);
  if (cmx_.ReadOnly() || end() - begin > kLargest || name[0].isDigit()) return false;   // equal numbers may mean different things
  const QString inside = toQString(editor.snapshot().bytes({begin, end()})), field = QStringLiteral("$$") + name;
  std::vector<text::Edit> edits;
  for (qsizetype at = 0; (at = inside.indexOf(field, at)) >= 0; at += field.size()) {
    const qsizetype behind = at + field.size();
    if (behind < inside.size() && text::classOf(inside[behind].unicode()) == text::CharClass::word) continue;
    const text::ByteOffset from = begin + static_cast<std::int64_t>(fromQString(inside.left(at)).size());
    edits.push_back({{from, from + static_cast<std::int64_t>(fromQString(field).size())}, fromQString(with)});
  }
  return !edits.empty() && editor.document().apply(edits, editor.selection());
}

void FieldWalk::leftField() {
  if (!fieldBegin_) return;
  const text::Document& document = cmx_.editor().document();
  const text::ByteRange selected = cmx_.editor().selectedRange();
  if (selected.begin < document.markAt(fieldBegin_) || selected.end > document.markAt(fieldEnd_)) endField();
}

void FieldWalk::stop() {
  endField();
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
  const bool went = endField() || onMarker;
  if (onMarker) {
    const CmRange marker = cmx_.GetSel(true);
    const qint64 proposal = proposalLength();
    if (proposal > 0) {
      const QString name = cmx_.GetLine(marker.EndLineNo).mid(marker.EndColNo, proposal);
      const EditBlock block(cmx_);
      cmx_.ReplaceSel({});
      fill(name, name);
    }
    const qint64 behind = proposal > 0 ? marker.StartColNo + proposal : marker.EndColNo;
    cmx_.SetSel({marker.StartLineNo, behind, marker.StartLineNo, behind, false});
  }
  if (fieldLeft()) return NextField(cmx_, end());
  stop();
  return went;
}

bool FieldWalk::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() != QEvent::KeyPress && event->type() != QEvent::InputMethod) return false;
  const auto* widget = qobject_cast<QWidget*>(watched);
  if (!begin_ || !widget || !(widget == &cmx_ || cmx_.isAncestorOf(widget)) || cmx_.ReadOnly()) return false;

  bool replaces = false;   // the selection will be replaced
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
    beginField();
  }
  return false;
}
