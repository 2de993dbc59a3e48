#include "control/CodeMax.h"

#include <QEvent>
#include <QVBoxLayout>
#include <algorithm>

#include "base/FixedFont.h"
#include "base/Program.h"
#include "base/Strings.h"
#include "bridge/LongWork.h"
#include "control/CodeMaxImpl.h"
#include "control/edit/EditorAccess.h"
#include "control/find/FindDialog.h"
#include "control/marks/ChangeMarks.h"
#include "control/marks/HitLines.h"
#include "control/marks/MarkedBar.h"
#include "text/line/LineReader.h"
#include "text/line/Utf8Stream.h"
#include "text/line/WordNear.h"
#include "text/store/SmallestEdit.h"

using text::ByteOffset;
using text::ByteRange;
using text::LineNo;

namespace {

QFont defaultFont() {
  QFont font = fixedFont();
  if (font.pointSizeF() < 10) font.setPointSizeF(10);
  return font;
}

}   // namespace

std::string CodeMax::Impl::incoming(const QString& text, LineNo line) { return EditorAccess::incoming(editor(), text, line); }

void CodeMax::Impl::apply(const std::vector<text::Edit>& edits) {
  const Pane::Action action(pane());
  EditorAccess::change(editor(), edits);
}

// --- Making ---------------------------------------------------------------------------------------------------------------------

CodeMax::CodeMax(QWidget* parent) : QWidget(parent) { setUp(std::make_shared<TextModel>()); }

CodeMax::CodeMax(CodeMax& sharedWith, QWidget* parent) : QWidget(parent) { setUp(sharedWith.model()); }

CodeMax::~CodeMax() {
  // Destroys the panes while the objects that they use still exist, without notifications.
  for (Pane* pane : impl_->grid->panes()) disconnect(pane, nullptr, this, nullptr);
  delete impl_->grid;
}

void CodeMax::setUp(std::shared_ptr<TextModel> model) {
  impl_ = std::make_unique<Impl>();
  ViewState& state = impl_->state;
  state.model = std::move(model);
  state.options = std::make_shared<EditOptions>();
  state.options->autoIndent = AutoIndent::language;
  state.options->aids = TypingAids::usual();
  state.font = defaultFont();
  state.scale = devicePixelRatioF();
  state.colors.follow(palette());
  state.remeasure();
  impl_->grid = new PaneGrid([this](QWidget* parent) { return addPane(parent); }, this);
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(impl_->grid);
  setFocusProxy(impl_->grid->active());

  // The panes share the measures of long lines, which must be notified of a change first.
  connect(state.model.get(), &TextModel::changed, this, [this](const text::Change& change) {
    impl_->state.widths.onChange(change, impl_->state.model->snapshot());
    for (Pane* pane : impl_->grid->panes()) pane->modelChanged(change);
  });
  connect(state.model.get(), &TextModel::appearanceChanged, this, [this] { impl_->repaint(); });
  connect(state.model.get(), &TextModel::modifiedChanged, this, [this] { emit ModifiedChange(); });
}

Pane* CodeMax::addPane(QWidget* parent) {
  auto* pane = new Pane(impl_->state, parent);
  pane->setPainting(impl_->painting);
  connect(pane, &Pane::selectionChanged, this, [this, pane] {
    if (pane == impl_->grid->active()) emit SelChange();
  });
  connect(pane, &Pane::focusChanged, this, [this, pane](bool in) {
    if (in) {
      const bool other = impl_->grid->active() != pane;
      impl_->grid->activate(pane);
      setFocusProxy(pane);
      if (impl_->focused && other) emit SelChange();
    }
    // Moving between panes keeps the focus in the control.
    const bool inside = in || (QApplication::focusWidget() && isAncestorOf(QApplication::focusWidget()));
    if (inside == impl_->focused) return;
    impl_->focused = inside;
    if (inside) emit GotFocus();
    else emit LostFocus();
  });
  connect(pane, &Pane::scrolled, this, [this, pane] {
    if (pane == impl_->grid->active()) emit Scrolled();
  });
  connect(pane, &Pane::heldEnded, this, [this] { impl_->release(); });
  connect(pane, &Pane::overtypeChanged, this, [this](bool on) {
    for (Pane* other : impl_->grid->panes()) other->editor().overtype = on;
    emit OvertypeChange(on);
  });
  connect(pane, &Pane::whiteSpaceToggled, this, [this] {
    impl_->repaint();
    if (!gBusy()) emit PropsChange();   // saved like the options of the dialog, unless a command string changed it
  });
  connect(pane, &Pane::stickyLineToggled, this, [this] {
    impl_->refit();
    if (!gBusy()) emit PropsChange();
  });
  connect(pane, &Pane::wordWrapToggled, this, [this] { impl_->refit(); });
  connect(pane, &Pane::zoomed, this, [this](int steps) { setZoom(impl_->state.zoom + 10 * steps); });
  connect(pane, &Pane::typed, this, &CodeMax::Typed);
  connect(pane, &Pane::returned, this, &CodeMax::Return);
  connect(pane, &Pane::rightClicked, this, &CodeMax::RClick);
  connect(pane, &Pane::doubleClicked, this, &CodeMax::DblClick);
  connect(pane, &Pane::filesDropped, this, &CodeMax::FilesDropped);
  connect(pane, &Pane::noted, this, &CodeMax::Note);
  connect(pane, &Pane::completionWanted, this, &CodeMax::CompletionWanted);
  connect(pane, &Pane::findWanted, this, [this](bool replace) { FindDialog::showFor(*this, replace); });
  connect(pane, &Pane::findUnwanted, this, [this] { FindDialog::hideFor(*this); });
  return pane;
}

void CodeMax::changeEvent(QEvent* event) {
  QWidget::changeEvent(event);
  if (event->type() == QEvent::PaletteChange && impl_ && impl_->grid && impl_->state.colors.follow(palette())) impl_->repaint();
}

std::shared_ptr<TextModel> CodeMax::model() const { return impl_->state.model; }
Editor& CodeMax::editor() { return impl_->editor(); }

// --- Files ----------------------------------------------------------------------------------------------------------------------

QString CodeMax::OpenFile(const QString& path) {
  const std::string name = fromQString(path);
  const auto loaded = std::make_shared<text::LoadedFile>();
  const auto load = [name, loaded](text::SearchControl& control) { *loaded = text::loadFile(name, {}, &control); };
  if (!LongWork::runOrLeave(*this, load, tr("Opening %1").arg(plainForDisplay(path, 80)))) return tr("Cancelled");
  if (!loaded->error.empty()) return toQString(loaded->error);
  TextModel& model = *impl_->state.model;
  model.stamp = std::move(loaded->stamp);
  model.path = path;
  model.replaceAll(std::move(loaded->text), loaded->format);
  return {};
}

text::SaveResult CodeMax::SaveFile(const QString& path, bool guardAgainstOthers) {
  TextModel& model = *impl_->state.model;
  text::SaveOptions options;
  options.format = model.format;
  if (guardAgainstOthers && path == model.path) options.expected = model.stamp;
  const std::uint64_t revision = model.document().revision();
  const text::Snapshot text = model.snapshot();
  text::SaveResult result;
  ChangeMarks& marks = ChangeMarks::of(model);
  marks.saving();
  const auto save = [&](text::SearchControl& control) { result = text::saveFile(fromQString(path), text, options, &control); };
  LongWork::run(*this, text.size().value, save, tr("Saving %1").arg(plainForDisplay(path, 80)), false);
  if (!result.ok()) return result;
  model.stamp = result.stamp;
  model.path = path;
  marks.saved(text);
  model.document().breakJoin();
  if (model.document().revision() == revision) model.setModified(false);
  return result;
}

text::FileFormat CodeMax::fileFormat() const { return impl_->state.model->format; }

void CodeMax::setFileFormat(const text::FileFormat& format) {
  TextModel& model = *impl_->state.model;
  if (model.format == format) return;
  model.format = format;
  model.setModified(true);
}

// --- Text -----------------------------------------------------------------------------------------------------------------------

QString CodeMax::Text() const {
  const text::Snapshot text = impl_->snapshot();
  const bool crText = text.lineMode() == text::LineMode::cr;
  const char breaker = crText ? '\r' : '\n';
  const std::string_view joint = EnableCRLF() ? "\r\n" : "\n";
  std::string bytes;
  bytes.reserve(static_cast<std::size_t>(text.size().value + (joint.size() > 1 ? text.lineCount() : 0)));
  for (ByteOffset at(0); at < text.size();) {
    const std::string_view chunk = text.chunkAt(at);
    for (std::size_t from = 0; from < chunk.size();) {
      const std::size_t next = std::min(chunk.find(breaker, from), chunk.size());
      bytes.append(chunk.substr(from, next - from));
      if (next < chunk.size()) {
        // the CR of CR LF, also when a chunk ends between them
        if (!crText && !bytes.empty() && bytes.back() == '\r') bytes.pop_back();
        bytes += joint;
      }
      from = next + 1;
    }
    at += static_cast<std::int64_t>(chunk.size());
  }
  return toQString(bytes);
}

qint64 CodeMax::TextLength() const {
  struct Counter {
    qint64 units = 0, pairs = 0;   // of UTF-16; CR LF
    bool afterCr = false;
    bool ascii(std::string_view run) {
      units += static_cast<qint64>(run.size());
      if (afterCr && run.front() == '\n') ++pairs;
      for (std::size_t at = 0; (at = run.find("\r\n", at)) != std::string_view::npos; at += 2) ++pairs;
      afterCr = run.back() == '\r';
      return true;
    }
    bool sequence(std::string_view character) {
      units += character.size() > 3 ? 2 : 1;
      return afterCr = false, true;
    }
    bool bad(unsigned char) {
      ++units;
      return afterCr = false, true;
    }
  } counter;
  const text::Snapshot text = impl_->snapshot();
  text::Utf8Stream stream;
  for (ByteOffset at(0); at < text.size();) {
    const std::string_view chunk = text.chunkAt(at);
    stream.add(chunk, counter);
    at += static_cast<std::int64_t>(chunk.size());
  }
  stream.finish(counter);
  const qint64 breaks = text.lineCount() - 1, joint = EnableCRLF() ? 2 : 1;
  return counter.units + breaks * (joint - 1) - (text.lineMode() == text::LineMode::cr ? 0 : counter.pairs);
}

void CodeMax::setText(const QString& text) {
  impl_->change([&](Editor& editor) {
    editor.replaceRange({ByteOffset(0), editor.snapshot().size()}, text);
    editor.moveCaret(ByteOffset(0), false);
  });
}

qint64 CodeMax::LineCount() const { return impl_->snapshot().lineCount(); }

QString CodeMax::GetLine(qint64 line) const {
  const text::Snapshot& text = impl_->snapshot();
  return line >= 0 && line < text.lineCount() ? toQString(text.line(LineNo(line))) : QString();
}

qint64 CodeMax::GetLineLength(qint64 line) const {
  const text::Snapshot& text = impl_->snapshot();
  if (line < 0 || line >= text.lineCount()) return 0;
  return impl_->editor().positionOf(text.lineEnd(LineNo(line))).ColNo;
}

void CodeMax::InsertText(const QString& text, CmPosition at) {
  Editor& editor = impl_->editor();
  const ByteOffset place = editor.offsetOf(at);
  // A caret at the end moves behind the text, as if it had been typed.
  if (!editor.hasSelection() && editor.selection().caret == place) ReplaceSel(text);
  else impl_->apply({{{place, place}, impl_->incoming(text, impl_->snapshot().lineAt(place))}});
}

void CodeMax::ReplaceLines(qint64 first, const QStringList& lines) {
  const text::Snapshot now = impl_->snapshot();
  std::vector<text::Edit> edits;
  const qsizetype skipped = static_cast<qsizetype>(std::max<qint64>(0, -first));
  if (skipped >= lines.size() || first + skipped >= now.lineCount()) return;
  text::LineReader reader(now, LineNo(first + skipped));
  std::string_view old;
  for (qsizetype i = skipped; i < lines.size() && reader.next(&old); ++i)
    if (auto edit = text::smallestEdit(reader.start(), old, impl_->incoming(lines[i], reader.line())))
      edits.push_back(std::move(*edit));
  impl_->apply(edits);
}

void CodeMax::ReplaceText(const QString& text, const CmRange& range) {
  impl_->change([&](Editor& editor) {
    const ByteOffset a = editor.offsetOf({range.StartLineNo, range.StartColNo}),
                     b = editor.offsetOf({range.EndLineNo, range.EndColNo});
    editor.replaceRange({std::min(a, b), std::max(a, b)}, text);
  });
}

void CodeMax::ReplaceSel(const QString& text) {
  impl_->change([&](Editor& editor) { editor.replaceSelection(text); });
}

void CodeMax::AppendText(const QString& text) {
  const text::Snapshot now = impl_->snapshot();
  const bool follows = !impl_->editor().hasSelection() && impl_->editor().selection().caret == now.size();
  impl_->apply({{{now.size(), now.size()}, impl_->incoming(text, LineNo(now.lineCount() - 1))}});
  if (!follows) return;
  const Pane::Action action(impl_->pane());
  impl_->editor().moveCaret(impl_->snapshot().size(), false);
  impl_->pane().showCaret();
}

// --- Selection ------------------------------------------------------------------------------------------------------------------

CmRange CodeMax::GetSel(bool normalised) const { return impl_->editor().range(normalised); }

void CodeMax::SetSel(const CmRange& range, bool makeVisible) {
  const Pane::Action action(impl_->pane());
  impl_->editor().setRange(range);
  if (makeVisible) impl_->pane().showCaret();
}

void CodeMax::SelectLine(qint64 line, bool makeVisible) {
  const text::Snapshot& text = impl_->snapshot();
  if (line < 0 || line >= text.lineCount()) return;
  const Pane::Action action(impl_->pane());
  impl_->editor().setSelection({text.lineStart(LineNo(line)), text.lineEnd(LineNo(line)), 0, 0, false});
  if (makeVisible) impl_->pane().showCaret();
}

QString CodeMax::SelText() const { return impl_->editor().selectedText(); }
bool CodeMax::HasSelection() const { return impl_->editor().hasSelection(); }
bool CodeMax::AnySelection() const { return carets::anySelection(impl_->editor()); }

CmRange CodeMax::CurrentWordRange() const {
  const Editor& editor = impl_->editor();
  const ByteRange word = text::wordNear(impl_->snapshot(), editor.selection().caret);
  const CmPosition from = editor.positionOf(word.begin), to = editor.positionOf(word.end);
  return {from.LineNo, from.ColNo, to.LineNo, to.ColNo, false};
}

QString CodeMax::CurrentWord() const {
  return toQString(impl_->snapshot().bytes(text::wordNear(impl_->snapshot(), impl_->editor().selection().caret)));
}

qint64 CodeMax::CurrentWordLength() const { return CurrentWord().size(); }
CmPosition CodeMax::CurrentPosition() const { return impl_->editor().positionOf(impl_->editor().selection().caret); }

// --- Finding and commands -----------------------------------------------------------------------------------------------------------

bool CodeMax::FindText(const QString& text, bool forward) {
  searchState().findText = text;
  const Command* command = commandByName(forward ? u"FINDNEXT" : u"FINDPREV");
  return command && ExecuteCmd(command->id) && !EditorAccess::searchFailed(impl_->editor());
}

QString CodeMax::findText() const { return searchState().findText; }
bool CodeMax::SearchCaseSensitive() const { return searchState().options.matchCase; }
void CodeMax::setSearchCaseSensitive(bool on) { searchState().options.matchCase = on; }

void CodeMax::showHits(const QString& text, const text::SearchOptions& options) {
  impl_->state.hits.reset();
  if (!text.isEmpty()) impl_->state.hits.emplace(fromQString(text), options);
  if (impl_->state.hits && !impl_->state.hits->error().empty()) impl_->state.hits.reset();
  impl_->state.hitLines.reset();
  if (impl_->state.hits) {
    impl_->state.hitLines = std::make_shared<HitLines>(*impl_->state.model, fromQString(text), options);
    connect(impl_->state.hitLines.get(), &HitLines::changed, this, [this] {
      for (Pane* each : impl_->grid->panes()) MarkedBar::of(*each).marksChanged();
    });
  }
  impl_->repaint();
}

bool CodeMax::ExecuteCmd(CommandNumber id, const QVariant& argument) { return impl_->pane().runCommand(id, argument); }

void CodeMax::beginEdit() {
  hold();
  impl_->state.model->document().beginGroup();
}

void CodeMax::endEdit() {
  impl_->state.model->document().endGroup();
  release();
}

void CodeMax::hold() { ++impl_->state.held; }

void CodeMax::release() {
  if (--impl_->state.held == 0) impl_->release();
}

// --- State ------------------------------------------------------------------------------------------------------------------------

bool CodeMax::Modified() const { return impl_->state.model->document().modified(); }
void CodeMax::setModified(bool on) { impl_->state.model->setModified(on); }
bool CodeMax::EnableCRLF() const { return impl_->state.model->enableCrlf(); }
void CodeMax::setEnableCRLF(bool on) { impl_->state.model->setEnableCrlf(on); }

void CodeMax::ConvertLineEnds(bool crlf) {
  const Pane::Action action(impl_->pane());
  TextModel& model = *impl_->state.model;
  const std::uint64_t revision = model.document().revision();
  model.convertLineEnds(crlf, editor().selection());
  if (model.document().revision() != revision) model.document().setSelectionAfter(editor().selection());
}

bool CodeMax::ReadOnly() const { return impl_->state.model->document().readOnly(); }
void CodeMax::setReadOnly(bool on) {
  TextModel& model = *impl_->state.model;
  if (model.document().readOnly() == on) return;
  model.document().setReadOnly(on);
  emit model.appearanceChanged();   // what is offered for the text
}
bool CodeMax::CanUndo() const { return impl_->state.model->document().canUndo(); }
bool CodeMax::CanRedo() const { return impl_->state.model->document().canRedo(); }
bool CodeMax::overtype() const { return impl_->editor().overtype; }
QString CodeMax::Language() const { return impl_->state.model->language(); }
bool CodeMax::setLanguage(const QString& name) { return impl_->state.model->setLanguage(name); }
bool CodeMax::Visible() const { return impl_->painting; }

void CodeMax::setVisibleText(bool on) {
  impl_->painting = on;
  for (Pane* pane : impl_->grid->panes()) pane->setPainting(on);
}

bool CodeMax::hasBookmark(qint64 line) const { return impl_->state.model->hasBookmark(LineNo(line)); }
void CodeMax::setBookmark(qint64 line, bool on) { impl_->state.model->setBookmark(LineNo(line), on); }
