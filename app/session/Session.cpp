#include "app/session/Session.h"

#include <QAction>
#include <QApplication>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QRegion>
#include <QScopedValueRollback>
#include <algorithm>

#include "app/folder/FolderParts.h"
#include "app/folder/WorkFolder.h"
#include "app/frame/DocumentTabs.h"
#include "app/frame/FrameMenus.h"
#include "app/frame/frmMain.h"
#include "app/session/SessionLate.h"
#include "base/Background.h"
#include "base/Program.h"
#include "base/Strings.h"
#include "bridge/FileNames.h"
#include "bridge/LongWork.h"
#include "bridge/QStringBytes.h"
#include "document/Recovery.h"
#include "document/frmDocument.h"
#include "document/frmLog.h"
#include "settings/modRegistry.h"

namespace {

constexpr int kChangedMs = 500, kMovedMs = 3000;   // until a change of the documents, or of a caret, is written
constexpr std::int64_t kAboveWaiting = 1 << 30;    // the windows that there are lie above the others
constexpr int kHeldLookMs = 500, kGoneMs = 100;
const QString kComesBack = QStringLiteral("SESSION"), kKeeps = QStringLiteral("KEEPUNSAVED");

}   // namespace

Session& Session::of(frmMain& frame) {
  auto* found = frame.findChild<Session*>(QString(), Qt::FindDirectChildrenOnly);
  return found ? *found : *new Session(frame);
}

Session::Session(frmMain& frame) : QObject(&frame), frame_(frame) {
  soon_.setSingleShot(true);
  connect(&soon_, &QTimer::timeout, this, &Session::write);
  heldLook_.setInterval(kHeldLookMs);
  connect(&heldLook_, &QTimer::timeout, this, [this] { dropHeld(false); });
  const auto changed = [this] { touch(kChangedMs); };
  const auto moved = [this] { touch(kMovedMs); };
  const auto atOnce = [this] { touch(0); };   // a journal has gone, which the file must not name for long
  connect(&frame, &frmMain::documentOpened, this, [this, changed, moved](frmDocument* document) {
    connect(document, &frmDocument::captionChanged, this,
            [this, document] { touch(document->DocumentModified() ? kChangedMs : 0); });
    connect(document->cmx, &CodeMax::SelChange, this, moved);
    changed();
  });
  connect(&frame, &frmMain::documentClosed, this, atOnce);
  connect(&frame, &frmMain::tabsChanged, this, changed);
  connect(&frame, &frmMain::activeChanged, this, changed);
  connect(&frame, &frmMain::fileNamed, this, atOnce);
  connect(&frame.tabs(), &QTabBar::tabMoved, this, changed);
  connect(&frame.folders().work(), &WorkFolder::changed, this, changed);
  connect(qApp, &QGuiApplication::applicationStateChanged, this, moved);
  connect(&frame, &frmMain::closing, this, [this](bool ends) {
    if (!ends && !quiet_) return;
    writeNow(true);
    dropHeld(ends);
    if (ends) ended_ = true;
  });
}

Session::~Session() = default;

// ---- files

std::shared_ptr<SessionFile> Session::fileOf(const QString& name) {
  const std::string folder = fromQString(userStateFolder());
  if (name.isEmpty()) return std::make_shared<SessionFile>(folder + "/session");
  text::makeFolders(folder + "/sessions", 0700);
  return std::make_shared<SessionFile>(folder + "/sessions/" + SessionFile::fileNameOf(fromQString(name)));
}

QStringList Session::names() {
  QStringList names;
  std::vector<std::string> files;
  text::fileSystem().listDir(fromQString(userStateFolder()) + "/sessions", &files);
  for (const std::string& file : files)
    if (const auto name = SessionFile::nameOf(file)) names << toQString(*name);
  names.removeDuplicates();
  names.sort(Qt::CaseInsensitive);
  return names;
}

bool Session::isKept() { return fileOf({})->exists(); }
bool Session::isThere(const QString& name) { return !name.isEmpty() && fileOf(name)->exists(); }

// ---- settings

bool Session::comesBack() const { return modRegistry::Flag(modRegistry::kGlobalKey, kComesBack, true); }
bool Session::keepsUnsaved() const { return modRegistry::Flag(modRegistry::kGlobalKey, kKeeps, false); }

void Session::setComesBack(bool on) {
  modRegistry::SetFlag(modRegistry::kGlobalKey, kComesBack, on);
  if (!on && file_ == last_) file_.reset();
  else if (on && !file_) file_ = last_;   // else from the next start on: what it will bring back is not overwritten
  applyKeeping();
  touch(0);
}

void Session::setKeepsUnsaved(bool on) {
  modRegistry::SetFlag(modRegistry::kGlobalKey, kKeeps, on);
  applyKeeping();
}

void Session::applyKeeping() {
  frame_.keepsUnsaved = file_ && keepsUnsaved();
  if (QAction* action = frame_.menus().action(QStringLiteral("mnuFileSessionClose"))) action->setEnabled(!name_.isEmpty());
}

// ---- beginning

void Session::beginLast() {
  if (!comesBack()) return;
  const auto file = fileOf({});
  if (!take(file, {})) return;
  last_ = file;
}

void Session::begin(const QString& name) { take(fileOf(name), name); }

bool Session::take(const std::shared_ptr<SessionFile>& file, const QString& name) {
  const QString shown = name.isEmpty() ? tr("The last session") : tr("The session %1").arg(plainForDisplay(name, 100));
  if (!file->own()) {
    if (!name.isEmpty()) tell(tr("%1 is open in another window of the program").arg(shown));
    return false;
  }
  SessionFile::Read read = file->read();
  if (!read.trouble.empty()) {
    const QString told = tr("%1 could not be read: %2").arg(shown, toQString(read.trouble));
    tell(read.isThere ? tr("%1. The state before it comes back").arg(told) : told);
  }
  if (read.isPartial)
    tell(tr("%1 names too many documents: only the first %2 come back").arg(shown).arg(SessionFile::kMostDocuments));
  if (!read.mayWrite) return false;
  if (name.isEmpty() && !read.state.continues.empty()) {
    last_ = file;
    const QString named = toQString(read.state.continues);
    if (isThere(named) && take(fileOf(named), named)) return true;
    read.state.continues.clear();
  }
  file_ = file;
  name_ = name;
  applyKeeping();
  if (read.isThere) apply(read.state);
  return true;
}

void Session::apply(SessionState state) {
  // At a start without a folder in its session the folder stays that a start with one opened since.
  if (!frame_.isVisible() && name_.isEmpty() && state.folder.empty() && state.list.empty()) keepFolder(frame_, &state);
  const QScopedValueRollback quiet(quiet_, true);
  texted_ = false;
  giveFrameBack(state, frame_);
  QList<LateDocument*> late;
  for (const KeptDocument& document : state.documents) late << new Late(*this, document);
  active_ = state.active >= 0 && state.active < late.size() ? late[qsizetype(state.active)] : late.value(0);
  if (active_)
    frame_.setCmxWindowState(static_cast<Late*>(active_.data())->kept.state == windowstate::kMaximised ? windowstate::kMaximised
                                                                                                       : windowstate::kNormal);
  frame_.addLate(late);
}

void Session::show() {
  const auto* active = qobject_cast<LateDocument*>(active_) ? static_cast<Late*>(active_.data()) : nullptr;
  if (!active) return;
  cancelled_ = false;
  std::vector<QPointer<LateDocument>> seen;
  if (active->kept.state != windowstate::kMaximised) {   // then the other windows are seen beside it, unless they are covered
    for (LateDocument* late : frame_.tabs().late())
      if (static_cast<Late*>(late)->kept.state == windowstate::kNormal && late != active_) seen.emplace_back(late);
    std::ranges::stable_sort(seen, {}, [](const auto& late) { return static_cast<const Late*>(late.data())->kept.level; });
    QRegion covered = active->place;
    for (auto late = seen.rbegin(); late != seen.rend(); ++late) {   // from the top
      const QRect place = (*late)->place;
      if (!place.isEmpty() && QRegion(place).subtracted(covered).isEmpty()) late->clear();
      else covered += place;
    }
  }
  for (const auto& late : seen)
    if (late && !late->isModified() && !cancelled_) frame_.openLate(*late);
  if (active->isModified()) return;   // shown when its text is there
  if (active_ && !cancelled_) frame_.showEntry(active_);
  showAnother();
}

// Instead of an active file that is gone.
void Session::showAnother() {
  const QList<LateDocument*> late = frame_.tabs().late();
  for (const auto& one : QList<QPointer<LateDocument>>(late.begin(), late.end()))
    if (one && !one->isModified() && frame_.documents().isEmpty() && !cancelled_) frame_.openLate(*one);
}

frmDocument* Session::openLate(Late& late) {
  const QPointer<LateDocument> alive = &late;
  KeptDocument kept = late.kept;
  kept.path = fromQString(late.path);
  if (late.found) {
    const auto found = late.found;
    frmDocument* document = openText(kept, found->text);
    if (!document) return nullptr;
    hold(*found, document);
    pile_.emplace_back(kept.level, document);
    return document;
  }
  if (late.isModified()) return nullptr;   // its text is being read
  frmDocument* document = nullptr;
  if (kept.text != 0)
    for (frmDocument* other : frame_.documents())
      if (const auto text = texts_.find(kept.text); text != texts_.end() && text->second.lock() == other->cmx->model())
        document = other;
  const bool sibling = document;
  if (sibling) {
    frame_.activate(document);
    frame_.newWindow();
    document = frame_.activeDocument();
  } else if (!late.path.isEmpty()) {
    const auto missing = std::make_shared<bool>(false);
    const auto look = [missing, path = late.path](text::SearchControl&) { *missing = fileIsMissing(path); };
    if (!LongWork::runOrLeave(frame_, look, tr("Opening %1").arg(plainForDisplay(late.path, 80)))) {
      cancelled_ = true;
      return nullptr;
    }
    if (alive) alive->isGone = *missing;
    if (*missing) {
      if (gone_.isEmpty()) QTimer::singleShot(kGoneMs, this, &Session::tellGone);
      if (!gone_.contains(toQString(kept.path))) gone_ << toQString(kept.path);
      return nullptr;
    }
    bool ok = false;
    document = frame_.mainOpenFile(toQString(kept.path), ok);
    if (!document) cancelled_ = true;
    if (!ok) return document;
  } else {
    document = frame_.LoadNewDoc();
    document->setUntitled(toQString(kept.title), currentFolder());
  }
  if (!document) return nullptr;
  if (kept.text != 0) texts_[kept.text] = document->cmx->model();
  giveBack(kept, frame_, *document, !sibling);
  if (!texted_) pile_.emplace_back(kept.level, document);
  return document;
}

frmDocument* Session::openText(const KeptDocument& kept, const text::RecoveredText& text) {
  frmDocument* document = frame_.restore(text);
  if (!document) return nullptr;
  if (kept.path.empty()) document->setUntitled(toQString(kept.title), currentFolder());
  if (kept.text != 0) texts_[kept.text] = document->cmx->model();
  giveBack(kept, frame_, *document, false);
  return document;
}

void Session::tellGone() {
  QStringList names;
  for (const QString& path : std::exchange(gone_, {})) names << plainForDisplay(path, 200);
  const QString text = names.size() == 1
                           ? tr("%1 is not there any more").arg(names[0])
                           : tr("%1 files are not there any more: %2").arg(names.size()).arg(names.join(QLatin1String(", ")));
  AppendReport(text);
  SetStatusText(text);
}

void Session::tell(const QString& text) {
  AppendReport(text);
  frame_.showLog();
  SetStatusText(text);
}

// ---- writing

void Session::touch(int ms) {
  if (!file_ || quiet_ || ended_) return;
  if (!soon_.isActive() || soon_.remainingTime() > ms) soon_.start(ms);
}

// Of several windows of one text.
std::int64_t Session::numberOf(const std::shared_ptr<TextModel>& text, bool several) {
  for (const auto& [number, known] : texts_)
    if (known.lock() == text) return number;
  if (!several) return 0;
  const std::int64_t number = texts_.empty() ? 1 : texts_.rbegin()->first + 1;
  texts_[number] = text;
  return number;
}

SessionState Session::state(bool ends) {
  SessionState state;
  keepFrame(frame_, &state);
  const QObject* active = active_ && frame_.tabs().tabOf(active_) >= 0 ? active_.data() : frame_.activeDocument();
  const QList<QMdiSubWindow*> pile = frame_.mdi().subWindowList(QMdiArea::StackingOrder);
  for (QObject* entry : frame_.tabs().entries()) {
    std::optional<KeptDocument> kept;
    if (auto* document = qobject_cast<frmDocument*>(entry)) {
      kept = keptOf(frame_, *document, ends);
      if (kept) kept->text = numberOf(document->cmx->model(), document->views() > 1);
      if (kept) kept->level = kAboveWaiting + pile.indexOf(frame_.windowOf(document));
    } else if (auto* late = dynamic_cast<Late*>(entry)) {
      kept = late->kept;
      kept->path = fromQString(late->path);
      if (kept->text != 0 && !texts_.contains(kept->text)) texts_[kept->text];
    }
    if (!kept) continue;
    if (entry == active) state.active = std::int64_t(state.documents.size());
    state.documents.push_back(std::move(*kept));
  }
  std::vector<KeptDocument*> levels;
  for (KeptDocument& one : state.documents) levels.push_back(&one);
  std::ranges::stable_sort(levels, {}, &KeptDocument::level);
  for (std::size_t i = 0; i < levels.size(); ++i) levels[i]->level = std::int64_t(i);
  return state;
}

void Session::write() {
  if (!file_ || ended_ || quiet_) return;
  if (writing_) {
    again_ = true;
    return;
  }
  SessionState now = state(false);
  const RecoverySession* recovery = RecoverySession::current();
  const bool waits = std::ranges::any_of(now.documents, [](const auto& one) { return one.modified && one.journal.empty(); });
  if (waits && recovery && recovery->failure().isEmpty()) touch(kChangedMs);
  if (now == known_) return;
  known_ = now;
  writing_ = true;
  inBackground(
      this, [file = file_, now = std::move(now), number = ++writes_] { return file->write(now, number); },
      [this](const std::string& error) {
        writing_ = false;
        const QString failed = toQString(error);
        if (!failed.isEmpty() && failed != failed_) tell(tr("The session cannot be written: %1").arg(failed));
        failed_ = failed;
        if (!failed.isEmpty()) known_ = {};
        if (std::exchange(again_, false) || !failed.isEmpty()) touch(failed.isEmpty() ? kChangedMs : 10 * kMovedMs);
      });
}

void Session::writeNow(bool ends) {
  soon_.stop();
  if (!file_ || ended_) return;
  file_->write(state(ends), ++writes_);
  known_ = {};
}

void Session::rememberName(Last documents) {
  if (!last_ || last_ == file_) return;
  SessionState last;
  if (documents == Last::waits) last = last_->read().state;
  last.continues = fromQString(name_);
  last_->write(last, ++writes_);
}
