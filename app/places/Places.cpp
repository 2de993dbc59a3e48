#include "app/places/Places.h"

#include <QAction>
#include <QApplication>
#include <QMouseEvent>
#include <QScopedValueRollback>
#include <QTimer>
#include <algorithm>
#include <new>
#include <stdexcept>
#include <utility>

#include "app/frame/FrameMenus.h"
#include "app/frame/frmMain.h"
#include "base/Program.h"
#include "base/Strings.h"
#include "bridge/FileNames.h"
#include "bridge/LongWork.h"
#include "control/commands/CommandTable.h"
#include "document/frmDocument.h"

using text::ByteOffset;
using text::LineNo;

namespace {

constexpr std::size_t kMostPlaces = 200;               // in either direction
constexpr std::int64_t kNear = 1, kNearBytes = 4096;   // lines, bytes within which two places are one
constexpr std::int64_t kFar = 10;                      // lines from which on any move is a jump

const QString kBack = QStringLiteral("mnuViewBack"), kForward = QStringLiteral("mnuViewForward");

}   // namespace

Places::Places(frmMain& frame) : frame_(frame) {
  connect(&frame, &frmMain::documentOpened, this, &Places::opened);
  connect(&frame, &frmMain::documentClosed, this, &Places::closed);
  connect(&frame, &frmMain::activeChanged, this, [this] { moved(frame_.activeDocument()); });
  qApp->installEventFilter(this);
}

Places::~Places() {
  eachPlace([](Place& place) { drop(place); });
}

template <class Work>
void Places::eachPlace(Work work) {
  for (Trail* trail : {&back_, &forward_})
    for (Place& place : *trail) work(place);
  if (here_) work(*here_);
}

Places::Place Places::at(frmDocument& document) {
  const std::shared_ptr<TextModel> model = document.cmx->model();
  const ByteOffset caret = document.cmx->editor().selection().caret;
  const LineNo line = model->snapshot().lineAt(caret);
  return {model, model->document().addMark(caret), &document, {}, line.value, caret - model->snapshot().lineStart(line)};
}

std::optional<ByteOffset> Places::offsetOf(const Place& place) {
  const auto model = place.model.lock();
  if (!model) return std::nullopt;
  try {
    if (place.mark) return model->document().markAt(place.mark);
  } catch (const std::out_of_range&) {}   // the text was read anew: the line is all that is known
  const text::Snapshot& text = model->snapshot();
  const LineNo line(std::min(place.line, text.lineCount() - 1));
  return std::min(text.lineStart(line) + place.byte, text.lineEnd(line));
}

bool Places::areNear(const Place& a, const Place& b, std::int64_t lines) {
  const auto model = a.model.lock();
  if (model != b.model.lock()) return false;
  if (!model) return a.path == b.path && std::abs(a.line - b.line) <= lines;
  const ByteOffset one = *offsetOf(a), other = *offsetOf(b);
  const text::Snapshot& text = model->snapshot();
  return (lines > kNear || std::abs(one - other) <= kNearBytes) &&
         std::abs(text.lineAt(one).value - text.lineAt(other).value) <= lines;
}

void Places::drop(Place& place) {
  if (const auto model = place.model.lock()) model->document().removeMark(place.mark);
  place = {};
}

void Places::put(Trail& trail, Place place) {
  if (!trail.empty() && areNear(trail.back(), place, kNear)) {
    drop(trail.back());
    trail.pop_back();
  }
  trail.push_back(std::move(place));
  if (trail.size() <= kMostPlaces) return;
  drop(trail.front());
  trail.pop_front();
}

void Places::opened(frmDocument* document) {
  connect(document->cmx, &CodeMax::SelChange, this, [this, document] { moved(document); });
  if (!document->CurrentFileName().isEmpty())
    eachPlace([document](Place& place) {
      if (place.path != document->CurrentFileName()) return;
      place.model = document->cmx->model();
      place.window = document;
      place.path.clear();
      if (const auto now = offsetOf(place)) place.mark = document->cmx->model()->document().addMark(*now);
    });
  moved(frame_.activeDocument());
}

void Places::closed(frmDocument* document) {
  const std::shared_ptr<TextModel> model = document->cmx->model();
  const QList<frmDocument*> others = frame_.documents();
  if (std::ranges::any_of(others, [&](const frmDocument* other) { return other->cmx->model() == model; })) return;
  const QString& path = document->CurrentFileName();
  const auto close = [&](Place& place) {
    if (place.model.lock() != model) return;
    const ByteOffset offset = *offsetOf(place);
    drop(place);
    const LineNo line = model->snapshot().lineAt(offset);
    place.path = path;
    place.line = line.value;
    place.byte = offset - model->snapshot().lineStart(line);
  };
  eachPlace(close);
  const auto isGone = [](const Place& place) { return place.path.isEmpty() && place.model.expired(); };
  for (Trail* trail : {&back_, &forward_}) std::erase_if(*trail, isGone);
  if (here_ && isGone(*here_)) here_.reset();
  enableActions();
}

// While commands run, the places between are not where the user was.
void Places::moved(frmDocument* document) {
  if (travels_ || gBusy() || !document || document != frame_.activeDocument()) return;
  try {
    const std::shared_ptr<TextModel> model = document->cmx->model();
    Editor& editor = document->cmx->editor();
    const bool same = here_ && here_->model.lock() == model;
    if (same && *offsetOf(*here_) == editor.selection().caret) return;   // as behind each letter
    Place now = at(*document);
    bool jumps = here_ && !same;
    if (same && !arrives_) {
      const CaretMove how = lastMove(editor);
      jumps = how != CaretMove::page && !areNear(*here_, now, how == CaretMove::usual ? kFar : kNear);
      // What was shown while a text to find was typed is no place, but that from which it was looked for is.
      if (how != CaretMove::preview) previews_ = false;
      else if (previews_) jumps = false;
      else previews_ = jumps;
    }
    if (here_ && !same) {
      arrives_ = true;
      QTimer::singleShot(0, this, [this] { arrives_ = false; });
    }
    if (jumps) {
      put(back_, std::move(*here_));
      for (Place& place : forward_) drop(place);
      forward_.clear();
    } else if (here_) {
      drop(*here_);
    }
    here_ = std::move(now);
    enableActions();
  } catch (const std::bad_alloc&) { here_.reset(); }   // only the way back lacks a place
}

void Places::travel(Trail& from, Trail& to) {
  if (travels_) return;
  const QScopedValueRollback travels(travels_, true);
  std::optional<Place> now;
  if (frmDocument* document = frame_.activeDocument()) now = at(*document);
  Arrival arrival = Arrival::gone;
  while (!from.empty() && arrival == Arrival::gone) {
    Place next = std::move(from.back());
    from.pop_back();
    if (!now || !areNear(next, *now, kNear)) arrival = goTo(next);
    // A file that cannot be opened is tried once more when the user goes there again. After that its places are not in the way.
    if (arrival == Arrival::failed && failed_ != next.path) {
      failed_ = next.path;
      from.push_back(std::move(next));
      break;
    }
    failed_.clear();
    if (arrival != Arrival::there && !next.path.isEmpty())
      std::erase_if(from, [&next](const Place& place) { return place.path == next.path; });
    drop(next);
  }
  const bool found = arrival == Arrival::there;
  if (found && now) put(to, std::move(*now));
  else if (now) drop(*now);
  if (here_) drop(*here_);
  here_.reset();
  if (frmDocument* document = frame_.activeDocument()) here_ = at(*document);
  enableActions();
}

Places::Arrival Places::goTo(const Place& place) {
  frmDocument* target = nullptr;
  std::optional<ByteOffset> offset = offsetOf(place);
  if (offset) {
    for (frmDocument* each : frame_.documents())
      if (each->cmx->model() == place.model.lock() && (!target || each == place.window)) target = each;
    if (target) frame_.activate(target);
  } else {
    const QString shown = plainForDisplay(place.path);
    const auto isMissing = std::make_shared<bool>();
    const auto look = [path = place.path, isMissing](text::SearchControl&) { *isMissing = fileIsMissing(path); };
    if (!LongWork::runOrLeave(frame_, look, tr("Opening %1").arg(shown))) return Arrival::failed;
    if (*isMissing) {
      SetStatusText(tr("%1 is not there").arg(shown));
      return Arrival::gone;
    }
    target = frame_.openFile(place.path);
    if (!target) return Arrival::failed;
    Place there = place;
    there.model = target->cmx->model();
    offset = offsetOf(there);
  }
  if (!target) return Arrival::gone;
  CodeMax& text = *target->cmx;
  Editor& editor = text.editor();
  const qint64 line = text.model()->snapshot().lineAt(*offset).value, top = editor.host().topLine();
  const bool isShown = line >= top && line < top + editor.host().visibleLines();
  text.hold();
  editor.setSelection({*offset, *offset, 0, 0, false});
  text.release();
  if (!isShown) text.ExecuteCmd(Cmd::WINDOWSCROLLTOCENTER);
  text.setFocus();
  return Arrival::there;
}

void Places::enableActions() {
  for (const auto& [name, trail] : {std::pair(kBack, &back_), std::pair(kForward, &forward_)})
    if (QAction* action = frame_.menus().action(name); action && action->isEnabled() == trail->empty())
      action->setEnabled(!trail->empty());
}

bool Places::eventFilter(QObject* object, QEvent* event) {
  if (event->type() != QEvent::MouseButtonPress && event->type() != QEvent::MouseButtonDblClick) return false;
  const Qt::MouseButton button = static_cast<QMouseEvent*>(event)->button();
  if (button != Qt::BackButton && button != Qt::ForwardButton) return false;
  const auto* widget = qobject_cast<QWidget*>(object);
  if (!widget || widget->window() != &frame_) return false;
  if (QAction* action = frame_.menus().action(button == Qt::BackButton ? kBack : kForward)) action->trigger();
  return true;
}
