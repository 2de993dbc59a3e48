// The actions of the buttons of the find dialog.
#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>

#include "control/CodeMax.h"
#include "control/find/FindJob.h"
#include "control/find/FindScope.h"
#include "control/keys/KeyCommands.h"
#include "control/keys/KeyMacro.h"

using namespace text;

// Everything that a search on another thread needs, and what to compare when it has ended.
struct FindDialog::Target {
  Snapshot text;
  std::uint64_t revision;
  std::shared_ptr<Finder> searcher;
  ByteRange selection;
  std::vector<ByteRange> within;

  std::int64_t extent() const { return within.back().end - within.front().begin; }
  std::int64_t bytes() const {
    std::int64_t sum = 0;
    for (const ByteRange& range : within) sum += range.length();
    return sum;
  }
};

namespace {

void noteForMacro(CodeMax& control, const char* command) {
  if (keyMacros().recording()) keyMacros().noteCommand(control.editor(), anyCommandByName(QString::fromLatin1(command))->id, {});
}

}   // namespace

// Text inserted at the edges of a row belongs to the row.
void FindDialog::Scope::moveRows(const Change& change) {
  if (change.reset) return rows.clear();
  for (ByteRange& row : rows) row = {change.map(row.begin, Bias::left), change.map(row.end, Bias::right)};
}

void FindDialog::takeScope() {
  dropScope();
  if (!control_) return;
  Editor& editor = control_->editor();
  if (!editor.hasSelection()) {
    inSelection_->setChecked(false);
    return tell(tr("Nothing is selected"));
  }
  scope_ = std::make_unique<Scope>();
  scope_->model = control_->model();
  const ByteRange range = editor.selectedRange();
  scope_->begin = editor.document().addMark(range.begin, Bias::left);
  scope_->end = editor.document().addMark(range.end, Bias::right);
  if (editor.selection().column) {
    scope_->rows = selectedRanges(editor);
    scope_->subscription = editor.document().subscribe([scope = scope_.get()](const Change& change) { scope->moveRows(change); });
  }
  inSelection_->setChecked(true);
}

void FindDialog::dropScope() {
  if (scope_) {
    scope_->model->document().removeMark(scope_->begin);
    scope_->model->document().removeMark(scope_->end);
  }
  scope_.reset();
  if (inSelection_) inSelection_->setChecked(false);
}

std::vector<ByteRange> FindDialog::scope() const {
  const Document& document = control_->editor().document();
  if (!scope_) return {{ByteOffset(0), document.snapshot().size()}};
  if (!scope_->rows.empty()) return scope_->rows;
  const ByteOffset begin = document.markAt(scope_->begin), end = document.markAt(scope_->end);
  return {{begin, std::max(begin, end)}};
}

std::unique_ptr<FindDialog::Target> FindDialog::target(const QString& findText) {
  if (!control_ || findText.isEmpty()) return nullptr;
  Editor& editor = control_->editor();
  auto searcher = std::make_shared<Finder>(findBytes(editor, searchState()), searchState().options);
  if (!searcher->error().empty()) {
    tell(QString::fromStdString(searcher->error()), true);
    return nullptr;
  }
  return std::make_unique<Target>(
      Target{editor.snapshot(), editor.document().revision(), std::move(searcher), editor.selectedRange(), scope()});
}

void FindDialog::select(ByteRange range, CaretMove move) {
  Editor& editor = control_->editor();
  const CmPosition begin = editor.positionOf(range.begin), end = editor.positionOf(range.end);
  control_->hold();
  control_->SetSel({begin.LineNo, begin.ColNo, end.LineNo, end.ColNo, false});
  noteMove(editor, move);
  control_->release();
}

void FindDialog::findNext(bool forward) {
  writeState();
  remember(find_);
  const QString findText = find_->currentText();
  std::shared_ptr<Target> t = target(findText);
  if (!t) return;
  noteForMacro(*control_, forward ? "FINDNEXT" : "FINDPREV");
  typingFrom_.reset();
  tell({});
  job_->start(t->extent(), [this, t, forward, findText](SearchControl& control) -> FindJob::Done {
    const FindOutcome outcome = findNear(t->text, *t->searcher, t->selection, t->within, forward, &control);
    return [this, t, outcome, forward, findText] {
      if (!control_ || control_->editor().document().revision() != t->revision) return;
      if (outcome.found) select(*outcome.found, CaretMove::jump);
      tell(noteOf(outcome, findText, forward), !outcome.found);
    };
  });
}

// From the selection at the start of typing, so that a longer text is not searched further on.
void FindDialog::findWhileTyping() {
  if (!control_ || !isVisible()) return;
  const QString findText = find_->currentText();
  if (!typingFrom_) typingFrom_ = control_->editor().selectedRange();
  const ByteRange from{typingFrom_->begin, typingFrom_->begin};
  job_->drop();
  tell({});
  std::shared_ptr<Target> t = target(findText);
  if (!t) {
    if (findText.isEmpty()) select(from, CaretMove::preview);
    return;
  }
  job_->start(t->extent(), [this, t, from, findText](SearchControl& control) -> FindJob::Done {
    const FindOutcome outcome = findNear(t->text, *t->searcher, from, t->within, true, &control);
    return [this, t, outcome, from, findText] {
      if (!control_ || outcome.cancelled || control_->editor().document().revision() != t->revision) return;
      select(outcome.found.value_or(from), CaretMove::preview);
      tell(outcome.found ? QString() : noteOf(outcome, findText, true), !outcome.found);
    };
  });
}

void FindDialog::count() {
  writeState();
  remember(find_);
  std::shared_ptr<Target> t = target(find_->currentText());
  if (!t) return;
  job_->start(t->bytes(), [this, t](SearchControl& control) -> FindJob::Done {
    std::size_t number = 0;
    SearchAllResult found;
    for (const ByteRange& range : t->within) {
      found = t->searcher->all(t->text, range, &control);
      number += found.ranges.size();
      if (!found.error.empty() || found.cancelled) break;
    }
    return [this, number, error = found.error, cancelled = found.cancelled] {
      if (!error.empty()) tell(QString::fromStdString(error), true);
      else tell(cancelled ? tr("Cancelled") : noteOfFinds(number), number == 0);
    };
  });
}

void FindDialog::markAll() {
  findAll("FINDMARKALL",
          [](Editor& editor, const Snapshot& text, const std::vector<ByteRange>& finds) { markFinds(editor, text, finds); });
}

void FindDialog::selectAll() {
  findAll("FINDSELECTALL", [this](Editor& editor, const Snapshot&, const std::vector<ByteRange>& finds) {
    control_->hold();
    selectFinds(editor, finds);
    noteMove(editor, CaretMove::jump);
    control_->release();
    if (!finds.empty()) backToText();
  });
}

void FindDialog::findAll(const char* command, const UseOfAll& use) {
  writeState();
  remember(find_);
  std::shared_ptr<Target> t = target(find_->currentText());
  if (!t) return;
  noteForMacro(*control_, command);
  job_->start(t->bytes(), [this, t, use](SearchControl& control) -> FindJob::Done {
    std::vector<ByteRange> finds;
    SearchAllResult found;
    for (const ByteRange& range : t->within) {
      found = t->searcher->all(t->text, range, &control);
      finds.insert(finds.end(), found.ranges.begin(), found.ranges.end());
      if (!found.error.empty() || found.cancelled) break;
    }
    return [this, t, use, finds = std::move(finds), error = found.error, cancelled = found.cancelled] {
      if (!error.empty() || cancelled) return tell(cancelled ? tr("Cancelled") : QString::fromStdString(error), true);
      if (!control_ || control_->editor().document().revision() != t->revision) return;
      use(control_->editor(), t->text, finds);
      tell(noteOfFinds(finds.size()), finds.empty());
    };
  });
}

void FindDialog::replaceOne() {
  writeState();
  remember(find_);
  remember(replace_);
  const std::shared_ptr<Target> t = target(find_->currentText());
  if (!t || control_->ReadOnly()) return;
  const bool forward = !backwards_->isChecked();
  noteForMacro(*control_, "REPLACE");
  QString error;
  {
    const EditBlock block(*control_);
    if (replaceSelectedFind(control_->editor(), *t->searcher, t->within, &error) && !forward) {
      // Backwards, the next match lies before the inserted text.
      const SelectionState s = control_->editor().selection();
      const ByteRange went = t->selection;
      control_->editor().setSelection({went.begin, s.caret, 0, 0, false});
    }
  }
  if (!error.isEmpty()) return tell(error, true);
  keyMacros().pause([&] { findNext(forward); });   // finding the next match is part of the replace command
}

void FindDialog::replaceAll() {
  writeState();
  remember(find_);
  remember(replace_);
  std::shared_ptr<Target> t = target(find_->currentText());
  if (!t || control_->ReadOnly()) return;
  noteForMacro(*control_, scope_ ? "REPLACEALLINSELECTION" : "REPLACEALLINBUFFER");
  Editor& editor = control_->editor();
  job_->start(t->bytes(), [this, t, replacement = replacementOf(editor, searchState())](SearchControl& control) -> FindJob::Done {
    auto plan = std::make_shared<ReplacePlan>(planReplacements(t->text, *t->searcher, t->within, replacement, &control));
    return [this, t, plan] {
      if (!control_) return;
      if (control_->editor().document().revision() != t->revision)
        return tell(tr("The text was changed meanwhile; nothing was replaced"), true);
      if (control_->ReadOnly()) return tell(tr("The text is read-only; nothing was replaced"), true);
      {
        const EditBlock block(*control_);
        applyReplacements(control_->editor(), *plan);
      }
      tell(noteOf(*plan), plan->finds.empty());
    };
  });
}
