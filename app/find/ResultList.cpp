#include "app/find/ResultList.h"

#include <QApplication>
#include <QKeyEvent>
#include <algorithm>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "app/find/ResultHead.h"
#include "base/Program.h"
#include "base/Strings.h"
#include "bridge/FileNames.h"
#include "bridge/LongWork.h"
#include "control/commands/CommandTable.h"
#include "document/Frame.h"
#include "document/frmDocument.h"
#include "folder/Walk.h"
#include "text/line/Chars.h"
#include "text/line/LineReader.h"

using namespace Qt::StringLiterals;
using text::ByteOffset;
using text::ByteRange;
using text::LineNo;

namespace {

constexpr std::int64_t kMostHead = 100, kLongestRow = 8192;   // lines, bytes that are looked at
constexpr std::int64_t kResultLine = 3;                       // of the head: what came of the search
constexpr std::size_t kMostMarks = 5000;                      // of one file

std::int64_t byteOfCharacter(std::string_view line, std::int64_t column) {
  std::int64_t at = 0;
  for (; column > 1 && !line.empty(); --column) {
    const int bytes = text::decode(line).bytes;
    line.remove_prefix(static_cast<std::size_t>(bytes));
    at += bytes;
  }
  return at;
}

std::string rowBegin(const text::Snapshot& text, LineNo line) { return text::beginOfLine(text, line, kLongestRow); }

}   // namespace

ResultList::~ResultList() {
  const auto model = model_.lock();   // other windows on the text stay
  if (!model) return;
  model->plainSlot = {};
  for (const text::MarkId mark : {resultAt_, headEnd_}) model->document().removeMark(mark);
}

ResultList::ResultList(frmDocument* document) : QObject(document), document_(document), model_(document->cmx->model()) {
  setObjectName(u"resultList"_s);
  CodeMax* const cmx = document->cmx;
  connect(cmx, &CodeMax::DblClick, this, [this] { jump(); });
  cmx->model()->plainSlot = [this](LineNo line) {
    const auto end = markAt(headEnd_);
    const bool head = end ? line <= document_->cmx->model()->snapshot().lineAt(*end) : line.value < headLines_;
    return int(head ? ColorSlot::Comment : ColorSlot::Text);
  };
  listen();
  // Panes come and go with the splitters.
  connect(qApp, &QApplication::focusChanged, this, [this](QWidget*, QWidget* now) {
    if (now && document_->isAncestorOf(now)) listen();
  });
}

void ResultList::listen() {
  for (QWidget* pane : document_->cmx->findChildren<QWidget*>()) {
    pane->removeEventFilter(this);
    pane->installEventFilter(this);
  }
}

ResultList* ResultList::of(const frmDocument* document) {
  return document ? document->findChild<ResultList*>(QString(), Qt::FindDirectChildrenOnly) : nullptr;
}

ResultList* ResultList::adopt(frmDocument* document) {
  if (ResultList* list = of(document)) return list;
  const text::Snapshot text = document->cmx->model()->snapshot();
  if (text.lineCount() < 3) return nullptr;
  const std::string first = rowBegin(text, LineNo(0)), second = rowBegin(text, LineNo(1));
  if (std::ranges::none_of(kFirsts, [&](const char* begin) { return first.starts_with(begin); }) ||
      !second.starts_with(kHeadFolder))
    return nullptr;
  auto* const list = new ResultList(document);
  list->root_ = folder::pathOfShown(second.substr(sizeof kHeadFolder - 1));
  if (const std::string_view pairs = kFirsts[kPairs]; first.starts_with(pairs))
    list->second_ = folder::pathOfShown(std::string_view(first).substr(pairs.size()));
  while (list->headLines_ < std::min<std::int64_t>(kMostHead, text.lineCount()) &&
         text.lineEnd(LineNo(list->headLines_)) > text.lineStart(LineNo(list->headLines_)))
    ++list->headLines_;
  list->markHead();
  return list;
}

ResultList* ResultList::make(frmDocument* document, const FindTask& task) {
  auto* const list = new ResultList(document);
  list->root_ = task.root;
  list->what_ = task.what;
  document->beginFill();
  const QString text = head(task, tr("Searching..."));
  list->headLines_ = text.count(u'\n') - 1;
  list->filled_ = text::Snapshot(fromQString(text));
  document->cmx->model()->document().reset(list->filled_);
  list->markHead();
  document->cmx->showHits(toQString(task.what->what()), task.what->options());
  return list;
}

ResultList* ResultList::make(frmDocument* document, Whole whole) {
  auto* const list = new ResultList(document);
  list->root_ = whole.root;
  if (whole.first == QLatin1String(kFirsts[kPairs])) list->second_ = folder::pathOfShown(fromQString(whole.about));
  list->what_ = whole.what;
  const QString head =
      headOf(whole.first, whole.about + (whole.what ? optionsOf(*whole.what) : QString()), whole.root, whole.result);
  list->headLines_ = head.count(u'\n') - 1;
  text::SnapshotBuilder builder;
  builder.append(fromQString(head));
  builder.append(std::move(whole.rows));
  list->found_ = builder.finish();
  document->beginFill();
  document->cmx->model()->document().reset(*list->found_);
  list->markHead();
  if (whole.what) document->cmx->showHits(toQString(whole.what->what()), whole.what->options());
  else document->cmx->showHits({}, {});   // those of the list before
  document->endFill();
  return list;
}

QString ResultList::head(const FindTask& task, const QString& result) {
  return headOf(QLatin1String(kFirsts[0]),
                toQString(folder::shownPath(task.what->what())) + optionsOf(*task.what, task.mostHits > 0), task.root,
                filesOf(task) + u'\n' + result);
}

// The head keeps its colour, and its end the place where the result comes to stand, when the user writes above it.
void ResultList::markHead() {
  text::Document& document = document_->cmx->model()->document();
  const text::Snapshot& text = document.snapshot();
  for (const text::MarkId mark : {resultAt_, headEnd_}) document.removeMark(mark);
  const auto line = [&](std::int64_t number) { return LineNo(std::clamp<std::int64_t>(number, 0, text.lineCount() - 1)); };
  resultAt_ = document.addMark(text.lineStart(line(kResultLine)), text::Bias::right);
  headEnd_ = document.addMark(text.lineEnd(line(headLines_ - 1)), text::Bias::left);
}

std::optional<ByteOffset> ResultList::markAt(text::MarkId mark) const try {
  return document_->cmx->model()->document().markAt(mark);
} catch (const std::out_of_range&) { return std::nullopt; }   // the text was read anew

// What the user changes meanwhile is no part of what was found.
void ResultList::fill(const std::function<text::Edit(const text::Snapshot&)>& edit, std::optional<ByteRange> there) {
  text::Document& document = document_->cmx->model()->document();
  if (!unchanged_ && !document.snapshot().sameAs(filled_)) {
    unchanged_ = std::make_unique<text::Document>();
    unchanged_->setUndoLimit(0, 0);
    unchanged_->reset(filled_);
  }
  if (unchanged_) unchanged_->apply(edit(unchanged_->snapshot()), {});
  text::Edit inWindow = edit(document.snapshot());
  if (there) inWindow.range = *there;
  document.apply(inWindow, document_->cmx->editor().selection());
  filled_ = unchanged_ ? unchanged_->snapshot() : document.snapshot();
}

void ResultList::append(const std::string& rows) {
  fill([&](const text::Snapshot& text) { return text::Edit{{text.size(), text.size()}, rows}; });
  if (!unchanged_) document_->cmx->setModified(false);
}

void ResultList::end(const QString& result) {
  const auto begin = markAt(resultAt_), end = markAt(headEnd_);
  const bool changed = unchanged_ || !document_->cmx->model()->snapshot().sameAs(filled_);
  if (begin && end && *begin <= *end) {
    const std::string bytes = fromQString(result);
    const auto edit = [&](const text::Snapshot& text) {
      const LineNo line(std::min<std::int64_t>(kResultLine, text.lineCount() - 1));
      return text::Edit{{text.lineStart(line), text.lineEnd(line)}, bytes};
    };
    fill(edit, ByteRange{*begin, *end});
    headLines_ = kResultLine + 1 + result.count(u'\n');
    text::Document& document = document_->cmx->model()->document();
    document.removeMark(headEnd_);
    headEnd_ = document.addMark(*begin + std::int64_t(bytes.size()), text::Bias::left);
  }
  document_->endFill();
  if (changed) document_->cmx->setModified(true);
  found_ = std::exchange(filled_, {});
  unchanged_.reset();
}

// Places --------------------------------------------------------------------------------------------------------------

std::optional<ResultList::Row> ResultList::rowAt(const text::Snapshot& text, LineNo line) const {
  const std::string whole = rowBegin(text, line);
  const auto row = folder::rowOf(whole);
  if (!row) return std::nullopt;
  std::string path = folder::pathOfShown(row->path);
  const bool isWhole = path.starts_with('/') || path.substr(1, 1) == ":";
  if (!isWhole && !root_.empty()) path = folder::joined(root_, path);
  return Row{std::move(path), row->line, row->column, std::string(row->text)};
}

// Where the row's place is now. The first time all rows of its file are marked in the text.
std::optional<ByteOffset> ResultList::placeIn(frmDocument& target, const Row& row) {
  const std::shared_ptr<TextModel> model = target.cmx->model();
  text::Document& document = model->document();
  const text::Snapshot& there = document.snapshot();
  const auto offset = [&](std::int64_t line, std::int64_t column) -> std::optional<ByteOffset> {
    if (line < 1 || line > there.lineCount()) return std::nullopt;
    const LineNo at(line - 1);
    const ByteOffset start = there.lineStart(at);
    const std::string begin = text::beginOfLine(there, at, 4 * std::max<std::int64_t>(column, 1));
    return start + byteOfCharacter(begin, column);
  };
  Marks& marks = marks_[QByteArray::fromStdString(row.path)];
  if (marks.model.lock() != model) {
    marks.model = model;
    marks.at.clear();
    const text::Snapshot& list = document_->cmx->model()->snapshot();
    const LineNo here = list.lineAt(document_->cmx->editor().selection().caret);
    // The rows of a file stand together.
    for (const int step : {1, -1}) {
      for (LineNo line = step > 0 ? here : here - 1;
           line.value >= 0 && line.value < list.lineCount() && std::size_t(marks.at.size()) < kMostMarks; line += step) {
        const auto other = rowAt(list, line);
        if (!other || other->path != row.path) break;
        if (const auto at = offset(other->line, other->column))
          marks.at.insert({other->line, other->column}, document.addMark(*at, text::Bias::right));
      }
    }
  }
  if (const auto mark = marks.at.constFind({row.line, row.column}); mark != marks.at.cend()) try {
      return document.markAt(*mark);
    } catch (const std::out_of_range&) { marks.at.clear(); }   // the file was read anew
  return offset(row.line, row.column);
}

// The hits that begin there or behind, within that line.
std::vector<ByteRange> ResultList::hitsFrom(const text::Snapshot& text, ByteOffset from, ByteOffset lineEnd) const {
  constexpr std::int64_t kMost = 1 << 20, kBehind = 1 << 16;
  text::FindBudget budget(std::chrono::milliseconds(30));
  const ByteOffset end = std::min({text.size(), lineEnd + kBehind, from + kMost});   // one may go over line ends
  std::vector<ByteRange> hits = what_->finder().all(text, {from, end}, nullptr, &budget).ranges;
  std::erase_if(hits, [&](const ByteRange& hit) { return hit.begin > lineEnd; });
  return hits;
}

// The file of the same name in the other folder.
std::string ResultList::inSecond(const std::string& path) const {
  if (second_.empty()) return {};
  return folder::joined(second_, folder::belowRoot(root_, path));
}

bool ResultList::show(LineNo line, int direction) {
  if (!frame()) return false;
  auto row = rowAt(document_->cmx->model()->snapshot(), line);
  if (!row) return false;
  if (const std::string other = inSecond(row->path); !other.empty() && isRegularFile(toQString(other))) {
    if (isRegularFile(toQString(row->path))) {
      const ByteOffset start = document_->cmx->model()->snapshot().lineStart(line);
      document_->cmx->editor().setSelection({start, start, 0, 0, false});
      shown_ = Shown{nullptr, line, {}};
      emit used(this);
      emit pairAsked(toQString(row->path), toQString(other));
      return true;
    }
    row->path = other;
  }
  frmDocument* target = nullptr;
  const QString path = toQString(row->path);
  const QString bare = toQString(row->path.substr(row->path.rfind('/') + 1));
  for (frmDocument* each : frame()->documents())
    if (each != document_ && (each->DocumentHasName() ? each->CurrentFileName() == path : each->CurrentFileTitle() == bare))
      target = each;
  const QPointer<ResultList> self(this);
  const ByteOffset start = document_->cmx->model()->snapshot().lineStart(line);
  document_->cmx->editor().setSelection({start, start, 0, 0, false});
  if (target) frame()->activate(target);
  else if (fileIsThere(path)) target = frame()->openFile(path);
  else {
    SetStatusText(tr("%1 is not there").arg(plainForDisplay(path)));
    return true;
  }
  if (!target || !self) return true;
  emit used(this);
  const auto at = placeIn(*target, *row);
  if (!at) {
    SetStatusText(tr("%1 has no line %2 any more").arg(plainForDisplay(path)).arg(row->line));
    return true;
  }
  const text::Snapshot& text = target->cmx->model()->snapshot();
  ByteRange match{*at, *at};
  if (what_ && row->column > 0) {
    const ByteOffset lineEnd = text.lineEnd(text.lineAt(*at));
    for (const ByteRange& found : hitsFrom(text, *at, lineEnd)) {
      match = found;
      if (direction > 0) break;
    }
  }
  target->cmx->hold();
  target->cmx->editor().setSelection({match.begin, match.end, 0, 0, false});
  noteMove(target->cmx->editor(), CaretMove::jump);
  target->cmx->release();
  target->cmx->ExecuteCmd(Cmd::WINDOWSCROLLTOCENTER);
  target->cmx->setFocus();
  if (!target->isActiveWindow()) target->activateWindow();   // the key came from a window that compares
  shown_ = Shown{target, line, match};
  return true;
}

// From one hit to the next within the line that was shown last.
bool ResultList::stepInLine(int direction) {
  if (!shown_ || !shown_->target || !what_ || !frame() || !frame()->documents().contains(shown_->target)) return false;
  CodeMax* const cmx = shown_->target->cmx;
  const text::Snapshot& text = cmx->model()->snapshot();
  if (cmx->editor().selectedRange() != shown_->match || shown_->match.end > text.size()) return false;   // the user went elsewhere
  const text::SelectionState& list = document_->cmx->editor().selection();
  if (document_->cmx->model()->snapshot().lineAt(list.caret) != shown_->row) return false;
  const LineNo line = text.lineAt(shown_->match.begin);
  const ByteRange now = shown_->match;
  for (const ByteRange& found : hitsFrom(text, text.lineStart(line), text.lineEnd(line))) {
    if (direction > 0 && found.begin > now.begin && found.begin >= now.end) {
      shown_->match = found;
      break;
    }
    if (direction < 0 && found.end <= now.begin) shown_->match = found;
  }
  if (shown_->match == now) return false;
  frame()->activate(shown_->target);
  cmx->editor().setSelection({shown_->match.begin, shown_->match.end, 0, 0, false});
  cmx->setFocus();
  return true;
}

bool ResultList::jump() {
  const text::Snapshot& list = document_->cmx->model()->snapshot();
  return show(list.lineAt(document_->cmx->editor().selection().caret), 1);
}

bool ResultList::step(int direction) {
  if (stepInLine(direction)) return true;
  const text::Snapshot& list = document_->cmx->model()->snapshot();
  LineNo line = list.lineAt(document_->cmx->editor().selection().caret);
  if (shown_ && shown_->row == line) line += direction;
  else if (direction < 0) line += -1;
  for (; line.value >= 0 && line.value < list.lineCount(); line += direction) {
    const auto row = rowAt(list, line);
    if (row && row->column > 0) return show(line, direction);
  }
  SetStatusText(direction > 0 ? tr("No further place in the list") : tr("No earlier place in the list"));
  return false;
}

bool ResultList::eventFilter(QObject* object, QEvent* event) {
  if (event->type() == QEvent::KeyPress) {
    const auto* key = static_cast<QKeyEvent*>(event);
    const bool plain = (key->modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier;
    if (plain && key->key() == Qt::Key_Escape && filled_.size() > ByteOffset(0)) return emit cancelAsked(), true;
    if (plain && (key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter) && !document_->cmx->HasSelection() && jump())
      return true;
  }
  return QObject::eventFilter(object, event);
}

// Lines ---------------------------------------------------------------------------------------------------------------

std::vector<std::string> ResultList::paths(const text::Snapshot& text) const {
  std::vector<std::string> paths;
  std::unordered_set<std::string> known;
  for (LineNo line(0); line.value < text.lineCount(); ++line)
    if (auto row = rowAt(text, line); row && known.insert(row->path).second) paths.push_back(std::move(row->path));
  return paths;
}

std::vector<ResultList::Edited> ResultList::edited(const text::Snapshot& now, QString* error) const {
  std::vector<Edited> all;
  if (!second_.empty()) {
    *error = tr("The lines of this list say how files differ: they are no lines of the files.");
    return all;
  }
  if (!found_) {
    *error = tr("The lines as they were found are not known: this list was read from a file. Search again, and edit the new list.");
    return all;
  }
  const text::Snapshot was = *found_;
  if (now.sameAs(was)) return all;
  const std::string failed = [&]() -> std::string {
    // By path and line: what is there, and where the row stood.
    std::unordered_map<std::string, LineNo> stood;
    const auto keyOf = [](const Row& row) { return row.path + '\n' + std::to_string(row.line); };
    for (LineNo line(headLines_); line.value < was.lineCount(); ++line)
      if (const auto row = rowAt(was, line)) stood.emplace(keyOf(*row), line);
    std::unordered_map<std::string, std::string> seen;
    std::unordered_map<std::string, std::size_t> places;
    for (LineNo line(0); line.value < now.lineCount(); ++line) {
      const auto row = rowAt(now, line);
      if (!row) continue;
      const auto old = stood.find(keyOf(*row));
      if (old == stood.end()) continue;
      const auto [known, fresh] = seen.emplace(old->first, row->text);
      if (!fresh && known->second != row->text)
        return "Line " + std::to_string(row->line) + " of " + row->path + " stands in the list twice, and differs.";
      const auto before = rowAt(was, old->second);
      if (!fresh || before->text == row->text) continue;
      const auto [place, added] = places.emplace(row->path, all.size());
      if (added) all.push_back({row->path, {}});
      all[place->second].lines.push_back({row->line, {before->text, row->text}});
    }
    return {};
  }();
  if (!failed.empty()) {
    *error = toQString(failed);
    all.clear();
  }
  for (Edited& one : all) std::sort(one.lines.begin(), one.lines.end());
  return all;
}

#include "moc_ResultList.cpp"
