#include "control/edit/Editor.h"

#include <QClipboard>
#include <QCoreApplication>
#include <QGuiApplication>
#include <QScopeGuard>
#include <QScopedValueRollback>
#include <algorithm>
#include <cassert>
#include <random>
#include <tuple>

#include "base/Program.h"
#include "base/Workspace.h"
#include "bridge/LongWork.h"
#include "control/commands/CommandFunctions.h"
#include "control/commands/CommandTable.h"
#include "control/edit/ColumnBlock.h"
#include "control/edit/DisplayRows.h"
#include "control/edit/EditorAccess.h"
#include "control/edit/PasteHistory.h"
#include "control/edit/TextMime.h"
#include "control/find/UsersSearch.h"
#include "control/keys/KeyMacro.h"
#include "text/line/Chars.h"
#include "text/line/LineMap.h"
#include "text/line/Words.h"

using namespace text;

void EditorHost::work(std::int64_t, const std::function<void(text::SearchControl&)>& work) {
  text::SearchControl control;
  work(control);
}

void EditorHost::note(const QString& text) { SetStatusText(text); }

QString EditorHost::clipboardText(bool* block) {
  return TextMime::read(qGuiApp ? QGuiApplication::clipboard()->mimeData() : nullptr, block);
}

void EditorHost::setClipboard(const QString& text, bool block) {
  if (qGuiApp) QGuiApplication::clipboard()->setMimeData(TextMime::make(text, block).release());
}

QStringList EditorHost::clipboardPieces() { return TextMime::pieces(qGuiApp ? QGuiApplication::clipboard()->mimeData() : nullptr); }

void EditorHost::setClipboardPieces(const QString& text, const QStringList& pieces) {
  if (qGuiApp) QGuiApplication::clipboard()->setMimeData(TextMime::make(text, pieces).release());
}

namespace {
struct Search {
  SearchState state;
  std::optional<SearchState> users;   // restored unless the texts have been changed since
  QString findText, replaceText;
};
Search& search() { return Workspace::current().part<Search>(); }
}   // namespace

SearchState& searchState() { return search().state; }

void lendSearch(SearchState users) {
  search() = {searchState(), std::move(users), searchState().findText, searchState().replaceText};
}

SearchState& usersSearch() {
  SearchState& state = searchState();
  const auto users = std::exchange(search().users, std::nullopt);
  if (users && state.findText == search().findText && state.replaceText == search().replaceText) {
    state.findText = users->findText;
    state.replaceText = users->replaceText;
  }
  return state;
}

Editor::Editor(std::shared_ptr<TextModel> model, std::shared_ptr<EditOptions> options, EditorHost* host)
    : model_(std::move(model)), options_(std::move(options)), host_(host), impl_(new Impl) {
  QObject::connect(model_.get(), &TextModel::changed, &impl_->context, [this](const Change& change) {
    autoClose::textChanged(*this, change);
    if (!impl_->others.empty() && !impl_->placed) EditorAccess::follow(*this, change);
    if (impl_->ownChange > 0) return;
    SelectionState s = selection_;
    if (change.reset) {
      s = {};
    } else {
      // Text inserted by others at the edges of a selection is not selected.
      const bool forward = s.anchor < s.caret, keep = impl_->quiet || s.column || s.anchor == s.caret;
      s.anchor = change.map(s.anchor, !keep && forward ? Bias::alongRight : Bias::alongLeft);
      s.caret = change.map(s.caret, !keep && !forward ? Bias::alongRight : Bias::alongLeft);
    }
    if (impl_->quiet) selection_ = s;
    else EditorAccess::place(*this, s);
  });
}

Editor::~Editor() = default;

ByteOffset EditorAccess::snap(const Snapshot& text, ByteOffset at) {
  at = std::clamp(at, ByteOffset(0), text.size());
  if (at.value == 0 || at == text.size()) return at;
  const char here = text.at(at);
  if (here == '\n') return text.lineMode() == LineMode::lf && text.at(at - 1) == '\r' ? at - 1 : at;
  for (int back = 1; (here & 0xC0) == 0x80 && back <= 3 && at.value >= back; ++back) {
    if ((text.at(at - back) & 0xC0) == 0x80) continue;
    const std::string bytes = text.bytes({at - back, at - back + 4});
    return decode(bytes).bytes > back ? at - back : at;
  }
  return at;
}

namespace {

// During its lifetime the selection moves with the text, without notifications.
class Quiet {
 public:
  explicit Quiet(Editor& e) : flag_(EditorAccess::impl(e).quiet) { flag_ = true; }
  ~Quiet() { flag_ = false; }
  Quiet(const Quiet&) = delete;
  Quiet& operator=(const Quiet&) = delete;

 private:
  bool& flag_;
};

// During its lifetime the code that changes the text sets the selection. If an exception leaves the text unchanged, the old
// selection is restored.
class OwnChange {
 public:
  OwnChange(Editor& e, const SelectionState& before) : e_(e), before_(before), revision_(e.document().revision()) {
    ++EditorAccess::impl(e_).ownChange;
  }
  ~OwnChange() {
    --EditorAccess::impl(e_).ownChange;
    if (e_.document().revision() == revision_) EditorAccess::setSelection(e_, before_);
  }
  OwnChange(const OwnChange&) = delete;
  OwnChange& operator=(const OwnChange&) = delete;

 private:
  Editor& e_;
  const SelectionState before_;
  const std::uint64_t revision_;
};

// Removes the blanks that auto-indent put into the line that the caret leaves. The edit that inserted them is made again without
// them, so that it stays one undo step. Adjusts the selection `to`.
void leaveAutoBlanks(Editor& e, SelectionState& s) {
  const auto blanks = EditorAccess::autoBlanks(e);
  if (blanks && s.caret >= blanks->begin && s.caret <= blanks->end) return;
  const auto made = std::exchange(EditorAccess::impl(e).autoBlanks, std::nullopt);
  if (!blanks || e.document().readOnly() || !e.document().modified()) return;   // moving the caret must not modify a saved text
  const Quiet quiet(e);
  if (made->without && e.document().undo()) e.document().apply(*made->without, made->before);
  else e.document().apply(Edit{*blanks, {}}, e.selection());
  for (ByteOffset* at : {&s.anchor, &s.caret})
    if (*at > blanks->begin) *at = std::max(blanks->begin, *at - blanks->length());
}

}   // namespace

std::optional<ByteRange> EditorAccess::autoBlanks(Editor& e) {
  const auto& blanks = e.impl_->autoBlanks;
  return blanks && blanks->revision == e.document().revision() ? std::optional(blanks->range) : std::nullopt;
}

void EditorAccess::noteAutoBlanks(Editor& e, std::size_t length, Edit without, const SelectionState& before) {
  if (e.impl_->run || e.impl_->stepBefore) return;   // of one caret only
  const ByteOffset caret = e.selection_.caret, begin = caret - static_cast<std::int64_t>(length);
  const LineNo line = e.snapshot().lineAt(caret);
  if (length == 0 || e.snapshot().lineStart(line) != begin || e.snapshot().lineEnd(line) != caret) return;
  const bool inGroup = !e.document().canUndo();
  e.impl_->autoBlanks = {
      {begin, caret}, e.document().revision(), inGroup ? std::nullopt : std::optional(std::move(without)), before};
}

void EditorAccess::place(Editor& e, SelectionState s, std::optional<std::int64_t> goal) {
  if (e.impl_->autoBlanks) leaveAutoBlanks(e, s);
  s.anchor = snap(e.snapshot(), s.anchor);
  s.caret = snap(e.snapshot(), s.caret);
  if (!s.column) s.anchorVirtual = s.caretVirtual = 0;
  e.impl_->goal = goal;
  if (CaretRun* run = e.impl_->run) {   // shown when it has run at all carets
    run->refused = run->refused || run->changed;
    e.selection_ = s;
    return;
  }
  if (!e.impl_->others.empty()) settle(e, s, goal);
  if (s == e.selection_) return;
  e.selection_ = s;
  if (!e.impl_->pairs.empty()) autoClose::caretMoved(e);
  if (e.onSelectionChanged) e.onSelectionChanged();
}

bool EditorAccess::change(Editor& e, std::span<const Edit> edits, std::optional<SelectionState> after, Join join) {
  Document& document = e.document();
  if (document.readOnly()) return false;
  if (e.impl_->run) return e.impl_->run->take(edits, after, join);
  const SelectionState before = e.selection_;
  CaretSets& sets = CaretSets::of(e.model());
  const SelectionState kept = e.impl_->stepBefore.value_or(sets.keep(before, e.impl_->others));
  // The views are notified during the change; the selection that they read then must be valid in the new text.
  const std::uint64_t revision = document.revision();
  bool done = false;
  SelectionState next;
  if (after) {
    const OwnChange own(e, before);
    e.selection_ = next = *after;
    done = document.apply(edits, kept, join);
  } else {
    const Quiet quiet(e);
    done = document.apply(edits, kept, join);
    next = e.selection_;
  }
  e.selection_ = before;
  place(e, next);
  if (document.revision() != revision) document.setSelectionAfter(sets.keep(e.selection_, e.impl_->others));
  return done;
}

bool EditorAccess::put(Editor& e, ByteRange range, std::string bytes, Join join) {
  SelectionState after;
  after.anchor = after.caret = range.begin + static_cast<std::int64_t>(bytes.size());
  const Edit edit{range, std::move(bytes)};
  return change(e, std::span(&edit, 1), after, join);
}

std::string EditorAccess::incoming(Editor& e, QStringView text, LineNo line) {
  std::string bytes = fromQString(text);
  const bool crText = e.snapshot().lineMode() == LineMode::cr;
  if (bytes.find('\n') == std::string::npos && !(crText && bytes.find('\r') != std::string::npos)) return bytes;
  const std::string newLine = e.model().newLineFor(line);
  std::string result;
  result.reserve(bytes.size());
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    const bool pair = bytes[i] == '\r' && i + 1 < bytes.size() && bytes[i + 1] == '\n';
    if (pair) ++i;
    if (pair || bytes[i] == '\n' || (crText && bytes[i] == '\r')) result += newLine;
    else result += bytes[i];
  }
  return result;
}

std::string EditorAccess::indentOf(const Snapshot& text, LineNo line) { return blanksFrom(text, text.lineStart(line)); }

// A line break ends them.
std::string EditorAccess::blanksFrom(const Snapshot& text, ByteOffset at) {
  std::string indent;
  while (at < text.size()) {
    const std::string_view chunk = text.chunkAt(at);
    const std::size_t blanks = std::min(chunk.find_first_not_of(" \t"), chunk.size());
    indent += chunk.substr(0, blanks);
    if (blanks < chunk.size()) break;
    at += static_cast<std::int64_t>(chunk.size());
  }
  return indent;
}

void Editor::setSelection(SelectionState selection) {
  document().breakJoin();
  if (!impl_->run) carets::drop(*this);
  EditorAccess::place(*this, selection);
}

LineRange Editor::selectedLines(LineAtEnd lineAtEnd) const {
  const ByteRange range = selectedRange();
  const Snapshot& text = snapshot();
  const LineNo first = text.lineAt(range.begin);
  LineNo last = text.lineAt(range.end);
  const bool endsAtStart = last > first && range.end == text.lineStart(last) && !selection_.column;
  DisplayRows* const rows = endsAtStart ? nullptr : host_->displayRows();
  if (rows) last = rows->lastOf(last);   // what a row hides goes with it
  return {first.value, last.value + (endsAtStart && lineAtEnd == LineAtEnd::excluded ? 0 : 1)};
}

bool Editor::spansLines() const {
  const ByteRange range = selectedRange();
  return snapshot().lineAt(range.begin) != snapshot().lineAt(range.end);
}

ByteRange Editor::selectedRange() const {
  return {std::min(selection_.anchor, selection_.caret), std::max(selection_.anchor, selection_.caret)};
}

bool Editor::hasSelection() const {
  if (!selection_.column) return selection_.anchor != selection_.caret;
  const ColumnBlock block = columnBlock(*model_, selection_, options_->tabSize);
  return block.left != block.right;
}

void Editor::moveCaret(ByteOffset to, bool extend) { setSelection({extend ? selection_.anchor : to, to, 0, 0, false}); }

CmPosition Editor::positionOf(ByteOffset offset) const {
  const Snapshot& text = model_->snapshot();
  offset = EditorAccess::snap(text, offset);
  const LineNo line = text.lineAt(offset);
  text::LineMap map = model_->line(line, options_->tabSize);
  return {line.value, map.columnOf(offset - map.start()).value};
}

ByteOffset Editor::offsetOf(CmPosition position) const {
  const Snapshot& text = model_->snapshot();
  if (position.LineNo < 0) return ByteOffset(0);
  if (position.LineNo >= text.lineCount()) return text.size();
  text::LineMap map = model_->line(LineNo(position.LineNo), options_->tabSize);
  return map.start() + map.byteOfColumn(CharColumn(position.ColNo));
}

CmRange Editor::range(bool normalised) const {
  CmPosition to = positionOf(selection_.caret), from = selection_.anchor == selection_.caret ? to : positionOf(selection_.anchor);
  from.ColNo += selection_.anchorVirtual;
  to.ColNo += selection_.caretVirtual;
  if (normalised && (from.LineNo > to.LineNo || (from.LineNo == to.LineNo && from.ColNo > to.ColNo))) std::swap(from, to);
  return {from.LineNo, from.ColNo, to.LineNo, to.ColNo, selection_.column};
}

void Editor::setRange(const CmRange& range) {
  SelectionState s;
  s.column = range.ColumnSel;
  const auto end = [&](CmPosition position, std::int64_t* virtualCells) {
    const ByteOffset offset = offsetOf(position);
    const CmPosition real = positionOf(offset);
    if (s.column && real.LineNo == position.LineNo && snapshot().lineEnd(LineNo(real.LineNo)) == offset)
      *virtualCells = std::max<qint64>(0, position.ColNo - real.ColNo);
    return offset;
  };
  s.anchor = end({range.StartLineNo, range.StartColNo}, &s.anchorVirtual);
  s.caret = end({range.EndLineNo, range.EndColNo}, &s.caretVirtual);
  setSelection(s);
}

QString Editor::selectedText() const {
  const Snapshot& text = model_->snapshot();
  if (!selection_.column) return toQString(text.bytes(selectedRange()));
  if (!hasSelection()) return {};
  const ColumnBlock block = columnBlock(*model_, selection_, options_->tabSize);
  std::string rows;
  for (LineNo line = block.first; line <= block.last; ++line) {
    if (line > block.first) rows += '\n';
    rows += columnRowText(text, columnRow(*model_, line, block.left, block.right, options_->tabSize));
  }
  return toQString(rows);
}

void Editor::selectWordAt(ByteOffset offset) {
  const ByteRange word = wordAt(snapshot(), EditorAccess::snap(snapshot(), offset));
  setSelection({word.begin, word.end, 0, 0, false});
}

bool Editor::replaceRange(ByteRange range, const QString& text) {
  const Snapshot& now = snapshot();
  const ByteOffset begin = EditorAccess::snap(now, range.begin);
  const ByteOffset end = std::max(begin, EditorAccess::snap(now, range.end));
  return EditorAccess::put(*this, {begin, end}, EditorAccess::incoming(*this, text, now.lineAt(begin)));
}

bool Editor::replaceSelection(const QString& text) {
  if (!selection_.column) return replaceRange(selectedRange(), text);
  const EditorAccess::Inside inside(*this);
  return typeText(text);
}

bool Editor::undo() { return EditorAccess::travel(*this, &Document::undo); }
bool Editor::redo() { return EditorAccess::travel(*this, &Document::redo); }

bool EditorAccess::travel(Editor& e, std::optional<SelectionState> (Document::*step)()) {
  // During the notification the selection moves with the text; then the stored selection is restored.
  const SelectionState old = e.selection_;
  std::optional<SelectionState> selection;
  {
    const Quiet quiet(e);
    selection = (e.document().*step)();
  }
  if (!selection) return false;
  e.selection_ = old;
  bool known = true;
  const bool had = carets::several(e);
  const std::vector<Caret>* others = CaretSets::of(e.model()).find(*selection, &known);
  if (others) e.impl_->others = *others;
  else if (known) e.impl_->others.clear();
  place(e, *selection);
  if ((had || carets::several(e)) && e.onSelectionChanged) e.onSelectionChanged();
  if (step == &Document::undo && !e.document().canUndo() && e.document().undoWasDropped())
    e.host().note(QCoreApplication::translate("Editor", "Earlier changes cannot be undone: undo has a limit"));
  return true;
}

#ifndef NDEBUG
namespace {

// A broken text is found near the command that broke it: now and then behind a command, in a text that is quickly gone through.
class Checked {
 public:
  explicit Checked(Editor& e) : e_(e) {}
  ~Checked() {
    static thread_local std::minstd_rand random;
    if (random() % 16 != 0 || e_.snapshot().size().value > 100000) return;
    try {
      e_.document().checkInvariants();
      e_.model().lines().checkInvariants(e_.snapshot());
      for (const Caret& caret : carets::all(e_))
        for (const ByteOffset at : {caret.anchor, caret.caret}) assert(at == EditorAccess::snap(e_.snapshot(), at));
    } catch (const std::bad_alloc&) {}
  }
  Checked(const Checked&) = delete;
  Checked& operator=(const Checked&) = delete;

 private:
  Editor& e_;
};

}   // namespace
#endif

bool Editor::execute(CommandNumber id, const QVariant& argument) {
  const Command* command = commandById(id);
  if (command) EditorAccess::run(*this, *command, argument);
  return command != nullptr;
}

void EditorAccess::run(Editor& e, const Command& command, const QVariant& argument) {
#ifndef NDEBUG
  const Checked checked(e);
#endif
  Editor::Impl& impl = *e.impl_;
  noteForMacro(e, [&] { keyMacros().noteCommand(e, command.id, argument); });
  const Inside inside(e);
  // A command that prepares the next one does not use up its settings.
  const bool prepares = command.run == commandFunctions::setRepeatCount || command.run == commandFunctions::appendNextCut;
  int count = 1;
  if (!prepares) {
    count = std::exchange(e.repeatCount, 1);
    impl.cutAppends = std::exchange(e.appendNextCut, false);
    impl.askedCount = count;
    if (!command.repeatable) count = 1;
  }
  // Each command has its own count and cut mode, also inside a macro that is repeated.
  const QScopedValueRollback pass(impl.pass, 0);
  const QScopedValueRollback gathers(impl.gathersCuts, count > 1);
  const QScopedValueRollback cuts(impl.cuts, std::optional<Editor::Impl::Cuts>());
  const auto noted = qScopeGuard([&] { noteMove(e, command.how.move); });
  // Of each of several carets, or of the main one: then the others stay, unless it goes elsewhere.
  const auto runOnce = [&] {
    if (command.how.each && carets::several(e)) carets::atEach(e, [&] { command.run(e, argument); });
    else command.run(e, argument);
  };
  if (count == 1) return runOnce();
  // All repetitions are one undo step; undo itself cannot run inside a group.
  const bool travels = command.run == commandFunctions::undo || command.run == commandFunctions::redo;
  std::optional<UndoGroup> group;
  if (!travels) group.emplace(e.document());
  LongWork::Loop loop(e.host().widget(), QCoreApplication::translate("Editor", "Repeating..."));
  for (impl.pass = 0; impl.pass < count; ++impl.pass) {
    if (!loop.goesOn(static_cast<int>(std::int64_t(impl.pass) * 100 / count))) break;
    const auto state = [&] {
      return std::tuple(e.document().revision(), e.selection(), impl.others, e.host().topLine(), e.host().leftColumn());
    };
    const auto before = state();
    runOnce();
    if (impl.pass > 0 && state() == before) break;   // nothing changes any more; the first pass may have found its word done
  }
  if (!impl.cuts) return;
  pasteHistory().add({impl.cuts->text, impl.cuts->block});
  e.host().setClipboard(impl.cuts->text, impl.cuts->block);
}
