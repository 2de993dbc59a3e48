// The unsaved texts of a session: they come back from their recovery journals.
#include <QMdiSubWindow>
#include <algorithm>
#include <chrono>
#include <functional>
#include <future>
#include <set>
#include <thread>
#include <utility>

#include "app/boxes/frmRecovered.h"
#include "app/frame/DocumentTabs.h"
#include "app/frame/frmMain.h"
#include "app/session/SessionLate.h"
#include "base/Background.h"
#include "base/Program.h"
#include "base/dialog/Dialogs.h"
#include "bridge/LongWork.h"
#include "document/Recovery.h"
#include "document/frmDocument.h"
#include "text/store/CommonEnds.h"

namespace {

constexpr int kBusyMs = 50;
constexpr std::chrono::seconds kDiskPatience(2), kOwnerPatience(5);
constexpr std::chrono::milliseconds kOwnerLook(50);
constexpr std::chrono::milliseconds kRemoveBudget(20);

std::string recoveryFolder() {
  const RecoverySession* recovery = RecoverySession::current();
  return fromQString(recovery ? recovery->folder() : RecoverySession::usualFolder());
}

// The journals of texts that these sessions will bring back.
std::set<std::string> journalsOf(const std::vector<std::string>& sessions) {
  std::set<std::string> journals;
  for (const std::string& path : sessions)
    for (const KeptDocument& document : SessionFile(path).read().state.documents)
      if (document.modified) journals.insert(document.journal);
  return journals;
}

bool isWhole(const text::RecoveredText& text) { return text.error.empty() && text.whole && text.baseWhole; }
bool beganAs(const text::RecoveredText& text, const text::Snapshot& old) {
  return std::ranges::any_of(text.began, [&](const text::Snapshot& began) { return text::sameText(began, old); });
}

}   // namespace

// What is looked for in the recovery folder, and what was found.
struct Session::Looked {
  std::vector<KeptDocument> wanted;            // after find: modified if a text was expected, and neither found nor saved
  std::vector<QPointer<LateDocument>> tabs;    // of each
  std::vector<std::shared_ptr<Found>> found;   // the same; null: none
  std::shared_ptr<std::vector<text::LeftText>> rest = std::make_shared<std::vector<text::LeftText>>();

  void find(const std::string& folder, const std::vector<std::string>& otherSessions);   // may take long

 private:
  void waitForOwners(const std::string& folder) const;
  bool answers(const std::string& path);
  void match(const std::function<bool(const KeptDocument&, const Found&)>& fits);
  void takeNewer(Found& found);
  void takeOlder(const std::string& folder, Found& found);
  bool dropSaved(const Found& found);

  std::vector<Found> read_;   // newest first; without a journal: taken
  bool diskHangs_ = false;
};

void Session::Looked::find(const std::string& folder, const std::vector<std::string>& otherSessions) {
  found.resize(wanted.size());
  waitForOwners(folder);
  for (text::LeftText& one : text::leftJournals(folder)) {
    auto journal = std::make_shared<text::LeftText>(std::move(one));
    read_.push_back({journal, journal->recover([this](const std::string& path) { return answers(path); }), {}});
  }
  match(
      [](const KeptDocument& document, const Found& one) { return document.modified && document.journal == one.journal->name(); });
  // What another session will bring back is neither taken nor offered.
  const std::set<std::string> kept = journalsOf(otherSessions);
  std::erase_if(read_, [&](const Found& one) { return one.journal && kept.contains(one.journal->name()); });
  match([](const KeptDocument& document, const Found& one) {
    const text::JournalAbout& about = one.text.about;
    return about.path == document.path && (!about.path.empty() || (document.modified && about.title == document.title));
  });
  for (std::size_t i = 0; i < wanted.size(); ++i) {
    if (!found[i]) continue;
    takeNewer(*found[i]);
    takeOlder(folder, *found[i]);
    for (KeptDocument& document : wanted)   // the other windows of this text
      if (&document == &wanted[i] || (document.text != 0 && document.text == wanted[i].text)) document.modified = false;
    if (dropSaved(*found[i])) found[i].reset();
  }
  for (Found& one : read_)
    if (one.journal) rest->push_back(std::move(*one.journal));
  read_.clear();
}

// Another copy of the program that looks through the folder has a journal for a moment.
void Session::Looked::waitForOwners(const std::string& folder) const {
  const auto until = std::chrono::steady_clock::now() + kOwnerPatience;
  const auto isOwned = [&folder](const KeptDocument& one) {
    return one.modified && !one.journal.empty() && text::fileExists(folder + "/" + one.journal) &&
           !text::LeftText::claim(folder, one.journal);
  };
  while (std::ranges::any_of(wanted, isOwned) && std::chrono::steady_clock::now() < until) std::this_thread::sleep_for(kOwnerLook);
}

// A disk that hangs must not keep the texts that do not need it.
bool Session::Looked::answers(const std::string& path) {
  if (diskHangs_) return false;
  std::packaged_task<void()> look([path] { text::stampOf(path, false); });
  const std::future<void> looked = look.get_future();
  std::thread(std::move(look)).detach();
  diskHangs_ = looked.wait_for(kDiskPatience) != std::future_status::ready;
  return !diskHangs_;
}

void Session::Looked::match(const std::function<bool(const KeptDocument&, const Found&)>& fits) {
  std::set<std::int64_t> texts;
  std::set<std::string> paths;
  const auto known = [&](const KeptDocument& document) { return texts.contains(document.text) || paths.contains(document.path); };
  const auto learn = [&](const KeptDocument& document) {
    if (document.text != 0) texts.insert(document.text);
    if (!document.path.empty()) paths.insert(document.path);
  };
  for (std::size_t i = 0; i < wanted.size(); ++i)
    if (found[i]) learn(wanted[i]);
  for (std::size_t i = 0; i < wanted.size(); ++i) {
    if (found[i] || known(wanted[i])) continue;
    for (Found& one : read_)
      if (!found[i] && isWhole(one.text) && one.journal && fits(wanted[i], one))
        found[i] = std::make_shared<Found>(std::exchange(one, {}));
    if (found[i]) learn(wanted[i]);
  }
}

// After a program that was killed before its session named the new journal: what was typed last is in that one. The new journal of a
// text without a file must begin with the text of the old one, because other texts may have had the same title.
void Session::Looked::takeNewer(Found& found) {
  const auto continues = [&found](const Found& one) {
    if (!one.journal || !isWhole(one.text) || one.journal->changedNs() <= found.journal->changedNs()) return false;
    const text::JournalAbout &about = one.text.about, &old = found.text.about;
    return about.path == old.path && (!about.path.empty() || (about.title == old.title && beganAs(one.text, found.text.text)));
  };
  for (auto newer = read_.begin(); (newer = std::ranges::find_if(read_, continues)) != read_.end();)
    std::swap(found, *newer);   // newer than all, or one step on
}

// Journals that say nothing more: their text is this one, or this one began with it. Those with the same text go now, else a program that
// is killed soon after each start leaves one more each time.
void Session::Looked::takeOlder(const std::string& folder, Found& found) {
  std::vector<text::RecoveredText> line{found.text};
  for (std::size_t i = 0; i < line.size(); ++i)
    for (Found& one : read_) {
      if (!one.journal || !isWhole(one.text) || one.journal->changedNs() > found.journal->changedNs()) continue;
      if (one.text.about.path != line[i].about.path || one.text.about.title != line[i].about.title) continue;
      if (!text::sameText(one.text.text, line[i].text) && !beganAs(line[i], one.text.text)) continue;
      found.older.push_back(std::move(one.journal));
      line.push_back(std::move(one.text));
    }
  if (found.older.empty()) return;
  const auto kept = text::files::open(text::FileSystem::kCwd, folder + "/" + found.journal->name(), text::kRead | text::kNoFollow);
  if (!kept.ok() || text::files::sync(kept.get()) < 0) return;
  for (std::size_t i = found.older.size(); i-- > 0;)
    if (text::sameText(line[i + 1].text, found.text.text) && found.older[i]->remove() == 0)
      found.older.erase(found.older.begin() + std::ptrdiff_t(i));
}

// A program that was killed between saving a file and removing the journal leaves a text that is in its file. A disk that hangs must not
// keep the other texts.
bool Session::Looked::dropSaved(const Found& found) {
  if (found.text.about.path.empty() || diskHangs_) return false;
  std::packaged_task<bool()> look([about = found.text.about, text = found.text.text] { return text::fileHolds(about, text); });
  std::future<bool> holds = look.get_future();
  std::thread(std::move(look)).detach();
  diskHangs_ = holds.wait_for(kDiskPatience) != std::future_status::ready;
  if (diskHangs_ || !holds.get() || found.journal->remove() < 0) return false;
  for (const auto& journal : found.older) journal->remove();
  return true;
}

void Session::restoreTexts() {
  const auto looked = std::make_shared<Looked>();
  for (LateDocument* tab : frame_.tabs().late()) {
    auto* late = dynamic_cast<Late*>(tab);
    if (!late || late->isRead) continue;
    late->isRead = true;
    KeptDocument kept = late->kept;
    kept.path = fromQString(late->path);
    looked->wanted.push_back(std::move(kept));
    looked->tabs.emplace_back(late);
  }
  // Of documents that are open by now.
  for (const frmDocument* document : frame_.documents()) {
    if (!document->DocumentHasName() || document->DocumentModified()) continue;
    KeptDocument kept;
    kept.path = fromQString(document->CurrentFileName());
    if (!isInForce()) continue;
    looked->wanted.push_back(std::move(kept));
    looked->tabs.emplace_back();
  }
  const std::string folder = recoveryFolder();
  const auto work = [looked, folder, others = otherFiles()] {
    looked->find(folder, others);
    return true;
  };
  inBackground(this, work, [this, looked](bool) { takeTexts(looked); });
}

std::vector<std::string> Session::otherFiles() const {
  std::vector<std::string> others;
  if (comesBack()) others.push_back(fileOf({})->path());   // else its texts would never be offered
  for (const QString& name : names()) others.push_back(fileOf(name)->path());
  std::erase(others, file_ ? file_->path() : std::string());
  return others;
}

void Session::offerTexts() {
  const auto look = [left = frmRecovered::leftIn(toQString(recoveryFolder())), others = otherFiles()] {
    std::vector<text::LeftText> all = left();
    std::erase_if(all, [kept = journalsOf(others)](const text::LeftText& one) { return kept.contains(one.name()); });
    return all;
  };
  frmRecovered::offerAgain(frame_, look);
}

void Session::takeTexts(const std::shared_ptr<Looked>& looked) {
  if (ended_) return;
  if (isDialogUp() || gBusy()) {
    QTimer::singleShot(kBusyMs, this, [this, looked] { takeTexts(looked); });
    return;
  }
  const QPointer<frmDocument> before = frame_.activeDocument();
  const bool activeWaits = qobject_cast<LateDocument*>(active_) && static_cast<Late*>(active_.data())->isModified();
  QPointer<frmDocument> activeText;
  QStringList lost;
  for (std::size_t i = 0; i < looked->wanted.size(); ++i) {
    auto* late = static_cast<Late*>(looked->tabs[i].data());
    const auto& found = looked->found[i];
    frmDocument* document = nullptr;
    if (found && late) {
      const bool isActive = late == active_;
      late->found = found;
      document = frame_.openLate(*late);
      if (isActive) activeText = document;
      if (!document && looked->tabs[i]) late->found.reset();
    } else if (found) {   // its file was opened meanwhile
      document = openText(looked->wanted[i], found->text);
      if (document) hold(*found, document);
    }
    if (document) looked->tabs[i] = nullptr;
    if (!found || document) continue;
    looked->rest->push_back(std::move(*found->journal));   // offered instead
    for (const auto& journal : found->older) looked->rest->push_back(std::move(*journal));
  }
  for (std::size_t i = 0; i < looked->wanted.size(); ++i) {
    auto* late = static_cast<Late*>(looked->tabs[i].data());
    if (!late || !late->kept.modified) continue;
    late->kept.modified = false;
    late->kept.journal.clear();
    if (!looked->wanted[i].modified && !looked->found[i]) {   // saved, or another window of a text that came back
      const bool isActive = late == active_;
      frmDocument* document = nullptr;
      if (isActive || texts_.contains(late->kept.text)) document = frame_.openLate(*late);
      if (isActive) activeText = document;
      if (document || !looked->tabs[i]) continue;
      if (!late->path.isEmpty()) {
        frame_.tabs().showAgain(late);
        continue;
      }
    }
    lost << plainForDisplay(late->path.isEmpty() ? late->title : late->path, 200);
    if (late->path.isEmpty()) frame_.closeEntry(late);
    else frame_.tabs().showAgain(late);
  }
  if (!lost.isEmpty()) tell(tr("No unsaved text was found of: %1").arg(lost.join(QLatin1String(", "))));
  frmDocument* shown = activeWaits && activeText ? activeText : before;
  if (!shown) showAnother();
  // When the windows that came last have settled.
  QTimer::singleShot(0, this, [this, shown = QPointer(shown ? shown : frame_.activeDocument())] {
    if (shown) frame_.activate(shown);   // first: it moves the window that was in front
    std::ranges::stable_sort(pile_, {}, [](const auto& one) { return one.first; });
    pile_.emplace_back(0, shown);
    for (const auto& [level, document] : std::exchange(pile_, {}))
      if (QMdiSubWindow* window = frame_.windowOf(document)) window->raise();
  });
  active_ = nullptr;
  texted_ = true;
  touch(0);
  frmRecovered::offerWhenRead(frame_, [rest = looked->rest, folder = recoveryFolder()] {
    std::vector<text::LeftText> all = text::leftCopiesElsewhere(folder);
    std::ranges::move(*rest, std::back_inserter(all));
    return all;
  });
}

void Session::hold(const Found& found, frmDocument* document) {
  Held held{found.older, document->cmx->model()};
  held.journals.push_back(found.journal);   // last: until then the others are not needed
  held_.push_back(std::move(held));
  heldLook_.start();
}

// An old journal goes when the text is safe elsewhere: in a new one, in its file, or given up by the user. Each waits for the disk.
void Session::dropHeld(bool all) {
  const auto until = std::chrono::steady_clock::now() + kRemoveBudget;
  const QList<frmDocument*> documents = frame_.documents();
  std::erase_if(held_, [&](const Held& one) {
    const auto shows = [text = one.text.lock()](const frmDocument* document) { return document->cmx->model() == text; };
    const auto document = std::ranges::find_if(documents, shows);
    if (!all && document != documents.end() && (*document)->cmx->Modified() && !(*document)->isHeldInJournal()) return false;
    if (!all && std::chrono::steady_clock::now() > until) return false;   // at the next look
    return std::ranges::all_of(one.journals, [](const auto& journal) { return journal->remove() >= 0; });
  });
  if (held_.empty()) heldLook_.stop();
}
