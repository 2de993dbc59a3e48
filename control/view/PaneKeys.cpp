// Keys, input methods and commands of a pane.
#include <QAction>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMenu>
#include <utility>

#include "base/Strings.h"
#include "base/dialog/Memory.h"
#include "base/dialog/TypedKeys.h"
#include "bridge/LongWork.h"
#include "control/edit/AutoClose.h"
#include "control/edit/Carets.h"
#include "control/edit/PasteHistory.h"
#include "control/edit/TextMime.h"
#include "control/folds/PaneFolds.h"
#include "control/keys/KeyCommands.h"
#include "control/keys/KeyMacro.h"
#include "control/keys/KeyMap.h"
#include "control/view/Pane.h"

using text::ByteOffset;

namespace {

// Queued: it may close the window of this text.
void runNamed(Pane& pane, const QString& name) {
  for (QAction* action : pane.window()->findChildren<QAction*>())
    if (action->property(kNamedActionProperty).toString() == name)
      return void(QMetaObject::invokeMethod(action, &QAction::trigger, Qt::QueuedConnection));
}

}   // namespace

bool Pane::runCommand(int id, const QVariant& argument) {
  const Action action(*this);
  const std::uint64_t revision = state_.model->document().revision();
  const text::SelectionState before = editor_->selection();
  if (!executeAny(*editor_, id, argument)) return false;
  afterCommand(before, revision);
  return true;
}

void Pane::afterCommand(const text::SelectionState& before, std::uint64_t revision) {
  if (before != editor_->selection() || revision != state_.model->document().revision()) {
    // A move that the user cancelled is none.
    if (!showCaret(revision == state_.model->document().revision())) editor_->setSelection(before);
    if (before != editor_->selection()) publishSelection();
  }
}

void Pane::work(std::int64_t bytes, const std::function<void(text::SearchControl&)>& work) { LongWork::run(*this, bytes, work); }

void Pane::asked(const std::function<void()>& work) {
  const text::SelectionState before = editor_->selection();
  const QPointer<Pane> alive(this);
  if (!withMemory(work) && alive) editor_->setSelection(before);
}

void Pane::playMacro(const QString& name) {
  const Action action(*this);
  const std::uint64_t revision = state_.model->document().revision();
  const text::SelectionState before = editor_->selection();
  keyMacros().play(*editor_, name, editor_->repeatCount);
  editor_->repeatCount = 1;
  afterCommand(before, revision);
}

void Pane::type(const QString& text) {
  if (text.isEmpty()) return;
  {
    const Action action(*this);
    if (!autoClose::type(*editor_, text) && !editor_->typeText(text)) return;
    showCaret();
  }
  emit typed();
}

bool Pane::event(QEvent* event) {
  if (event->type() == QEvent::ShortcutOverride) {
    // Keys of the text take precedence over menus.
    KeyAction bound;
    const int stroke = KeyMap::strokeOf(*static_cast<QKeyEvent*>(event));
    if (stroke != 0 && (firstStroke_ != 0 || (keyMap().find(stroke, 0, &bound) != KeyMap::Match::none && bound.named.isEmpty()))) {
      event->accept();
      return true;
    }
  } else if (event->type() == QEvent::KeyPress) {
    // Tab and Backtab would move the focus.
    auto* key = static_cast<QKeyEvent*>(event);
    if (key->key() == Qt::Key_Tab || key->key() == Qt::Key_Backtab) {
      keyPressEvent(key);
      if (key->isAccepted()) return true;
    }
  }
  return QAbstractScrollArea::event(event);
}

void Pane::keyPressEvent(QKeyEvent* event) {
  asked([&] { keyPressed(event); });
}

void Pane::keyPressed(QKeyEvent* event) {
  const int stroke = KeyMap::strokeOf(*event);
  if (stroke == 0 && event->text().isEmpty()) {   // a modifier alone
    event->ignore();
    return;
  }
  event->accept();
  const int first = std::exchange(firstStroke_, 0);
  KeyAction bound;
  switch (stroke == 0  ? KeyMap::Match::none
          : first == 0 ? keyMap().find(stroke, 0, &bound)
                       : keyMap().find(first, stroke, &bound)) {
    case KeyMap::Match::exact:
      if (first != 0) note({});
      if (!bound.named.isEmpty()) {
        if (first != 0) runNamed(*this, bound.named);
        else event->ignore();   // a short-cut whose action is disabled
      } else if (!bound.macro.isEmpty()) {
        playMacro(bound.macro);
      } else {
        if (folds_->opensBefore(bound.command)) return;
        runCommand(bound.command, {});
        const Command* command = anyCommandById(bound.command);
        if (command && qstrcmp(command->name, "NEWLINE") == 0) emit returned();
      }
      return;
    case KeyMap::Match::partial:
      firstStroke_ = stroke;
      note(QKeySequence(stroke).toString(QKeySequence::NativeText));
      return;
    case KeyMap::Match::none: break;
  }
  if (first != 0) {   // no such sequence: the stroke does not type text either
    note({});
    return;
  }
  if (typesText(*event) || (event->modifiers() == Qt::NoModifier && event->text() == QLatin1String("\t"))) {
    type(event->text());
    return;
  }
  event->ignore();
}

void Pane::offerPasteHistory() {
  auto* menu = new QMenu(this);
  menu->setAttribute(Qt::WA_DeleteOnClose);
  constexpr int kShown = 60;   // characters
  int number = 0;
  for (const CopiedText& copied : pasteHistory().texts()) {
    QString line = plainForDisplay(copied.text.simplified(), kShown);
    line.replace(u'&', QStringLiteral("&&"));
    const QString key = ++number < 10 ? QStringLiteral("&%1  ").arg(number) : QStringLiteral("%1  ").arg(number);
    menu->addAction(key + line, this, [this, copied] {
      setClipboard(copied.text, copied.block);
      asked([this] { runCommand(static_cast<int>(Cmd::PASTE), {}); });
    });
  }
  menu->popup(viewport()->mapToGlobal(caretRect().bottomLeft()));
  menu->setActiveAction(menu->actions().constFirst());
}

// --- Input methods ----------------------------------------------------------------------------------------------------------

void Pane::setPreedit(const QString& text, int cursor) {
  if (text.isEmpty() && !preedit_) return;
  const std::int64_t line = snapshot().lineAt(editor_->selection().caret).value;
  preedit_.reset();
  if (!text.isEmpty()) {
    preedit_ = std::make_unique<Preedit>();
    preedit_->text = text;
    preedit_->cursor = cursor;
    preedit_->bytes = fromQString(text);
    preedit_->layout = LineLayout(preedit_->bytes, true, {}, *state_.metrics, state_.options->tabSize, 1e300);
  }
  updateLines(line, line);
}

void Pane::inputMethodEvent(QInputMethodEvent* event) {
  event->accept();
  asked([&] { inputMethodCame(event); });
}

void Pane::inputMethodCame(QInputMethodEvent* event) {
  if (state_.model->document().readOnly()) {
    event->ignore();
    return;
  }
  setPreedit({}, 0);
  const text::Snapshot& text = snapshot();
  if (event->replacementLength() > 0 || event->replacementStart() != 0) {
    const CmPosition caret = editor_->positionOf(editor_->selection().caret);
    const auto from = editor_->offsetOf({caret.LineNo, std::max<qint64>(0, caret.ColNo + event->replacementStart())});
    const auto to = editor_->offsetOf(
        {caret.LineNo, std::max<qint64>(0, caret.ColNo + event->replacementStart() + event->replacementLength())});
    const Action action(*this);
    carets::drop(*editor_);   // what is replaced stands at the main one only
    editor_->replaceRange({from, to}, event->commitString());
    showCaret();
  } else if (!event->commitString().isEmpty()) {
    type(event->commitString());
  }
  int cursor = static_cast<int>(event->preeditString().size());
  for (const auto& attribute : event->attributes()) {
    if (attribute.type == QInputMethodEvent::Cursor) cursor = attribute.start;
    if (attribute.type == QInputMethodEvent::Selection) {
      const qint64 line = text.lineAt(editor_->selection().caret).value;
      editor_->setRange({line, attribute.start, line, attribute.start + attribute.length, false});
    }
  }
  if (!event->preeditString().isEmpty() && editor_->hasSelection() && !editor_->selection().column) editor_->replaceSelection({});
  setPreedit(event->preeditString(), cursor);
  showCaret();
  event->accept();
}

QVariant Pane::inputMethodQuery(Qt::InputMethodQuery query) const {
  // Surroundings are those of the line, at most about this much on both sides of the caret; whole characters.
  constexpr std::int64_t kAround = 1024;
  const ByteOffset caret = editor_->selection().caret;
  text::LineMap line = state_.model->line(snapshot().lineAt(caret), state_.options->tabSize);
  const auto boundary = [&](ByteOffset at) {
    return line.start() + line.at(text::LinePlace::atByte(std::max<std::int64_t>(0, at - line.start()))).byte;
  };
  const ByteOffset from = boundary(caret - kAround), to = boundary(caret + kAround);
  const auto unitsTo = [&](ByteOffset at) {
    return static_cast<int>(line.columnOf(std::clamp(at, from, to) - line.start()) - line.columnOf(from - line.start()));
  };
  switch (query) {
    case Qt::ImEnabled: return !state_.model->document().readOnly();
    case Qt::ImCursorRectangle: return caretRect().translated(viewport()->pos());
    case Qt::ImFont: return state_.metrics->font();
    case Qt::ImHints: return static_cast<int>(Qt::ImhNoPredictiveText | Qt::ImhNoAutoUppercase | Qt::ImhMultiLine);
    case Qt::ImCursorPosition: return unitsTo(caret);
    case Qt::ImAnchorPosition: return unitsTo(editor_->selection().anchor);
    case Qt::ImSurroundingText: return toQString(snapshot().bytes({from, to}));
    case Qt::ImCurrentSelection: {
      const text::ByteRange range = editor_->selectedRange();
      return range.length() > kAround ? QString() : editor_->selectedText();
    }
    default: return QAbstractScrollArea::inputMethodQuery(query);
  }
}

// --- What the editor asks of its window --------------------------------------------------------------------------------------------

void Pane::showFindDialog(bool replace) { emit findWanted(replace); }
void Pane::hideFindDialog() { emit findUnwanted(); }
void Pane::note(const QString& text) { emit noted(text); }
void Pane::toggleWhiteSpaceDisplay() {
  state_.whiteSpace = !state_.whiteSpace;
  emit whiteSpaceToggled();
}
void Pane::toggleStickyLine() {
  state_.stickyLine = !state_.stickyLine;
  emit stickyLineToggled();
}
void Pane::toggleWordWrap() {
  if (!state_.mayWrap) return note(tr("This text is not wrapped"));
  const WordWrap on = state_.wordWrap == WordWrap::off ? WordWrap::window : state_.wordWrap;
  state_.wrapsNow = state_.wrapsNow == WordWrap::off ? on : WordWrap::off;
  emit wordWrapToggled();
}
void Pane::contextMenuEvent(QContextMenuEvent* event) {
  const QPoint at =
      event->reason() == QContextMenuEvent::Keyboard ? viewport()->mapToGlobal(caretRect().bottomLeft()) : event->globalPos();
  bool handled = false;
  emit rightClicked(at, &handled);
  if (!handled) showDefaultMenu(at);
  event->accept();
}

void Pane::showDefaultMenu(const QPoint& globalPosition) {
  QMenu menu(this);
  const bool writable = !state_.model->document().readOnly(), selected = carets::anySelection(*editor_);
  const auto add = [&](const QString& label, const char* command, bool enabled) {
    QAction* action = menu.addAction(label, this, [this, command] {
      if (const Command* row = commandByName(QString::fromLatin1(command))) asked([&] { runCommand(row->id, {}); });
    });
    action->setEnabled(enabled);
  };
  add(tr("&Undo"), "UNDO", writable && state_.model->document().canUndo());
  add(tr("&Redo"), "REDO", writable && state_.model->document().canRedo());
  menu.addSeparator();
  add(tr("Cu&t"), "CUT", writable && selected);
  add(tr("&Copy"), "COPY", selected);
  add(tr("&Paste"), "PASTE", writable && TextMime::hasText(QGuiApplication::clipboard()->mimeData()));
  menu.addSeparator();
  add(tr("Select &All"), "SELECTALL", true);
  menu.exec(globalPosition);
}
