#include "app/boxes/frmRecovered.h"

#include <QCryptographicHash>
#include <QDateTime>
#include <QDialogButtonBox>
#include <QHeaderView>
#include <QLabel>
#include <QLocale>
#include <QPushButton>
#include <QSignalBlocker>
#include <QTimer>
#include <QTreeWidget>
#include <QVBoxLayout>
#include <algorithm>
#include <chrono>
#include <future>
#include <iterator>
#include <thread>

#include "app/frame/frmMain.h"
#include "base/Counted.h"
#include "base/Program.h"
#include "base/Strings.h"
#include "base/dialog/Dialogs.h"
#include "bridge/FileNames.h"
#include "bridge/LongWork.h"
#include "change/compare/frmCompare.h"
#include "control/CodeMax.h"
#include "document/CMXRegistry.h"
#include "document/FileErrors.h"
#include "document/Languages.h"
#include "document/Recovery.h"
#include "document/frmDocument.h"
#include "language/ucCM.h"

namespace {

constexpr int kReadyPeriodMs = 20;

enum Column { kName, kTime, kSize, kState };

QByteArray digestOf(const text::Snapshot& text) {
  QCryptographicHash hash(QCryptographicHash::Sha256);
  for (text::ByteOffset at(0); at < text.size();) {
    const std::string_view chunk = text.chunkAt(at);
    hash.addData(QByteArray::fromRawData(chunk.data(), qsizetype(chunk.size())));
    at += std::int64_t(chunk.size());
  }
  return hash.result();
}

text::LoadedFile fileOnDisk(const text::JournalAbout& about) {
  text::LoadOptions options;
  options.format = about.format;
  return text::loadFile(about.path, options);
}

// Describes how the file on disk differs from what the recovered text knew; empty: unchanged.
QString fileState(const text::JournalAbout& about) {
  const text::FileStamp now = text::stampOf(about.path, false);
  if (!now.exists) return frmRecovered::tr("the file does not exist any more");
  const bool changed = about.stamp && (!about.stamp->exists || about.stamp->status != now.status) &&
                       !about.stamp->sameContent(text::stampOf(about.path, true));
  return changed ? frmRecovered::tr("the file on disk was changed since") : QString();
}

}   // namespace

std::optional<std::vector<frmRecovered::Entry>> frmRecovered::readNow(frmMain& frame, const Look& look) {
  const auto entries = std::make_shared<std::vector<Entry>>();
  const auto work = [entries, look](text::SearchControl&) { *entries = entriesOf(look()); };
  if (!LongWork::runOrLeave(frame, work, tr("Reading recovered texts"))) return std::nullopt;
  return std::move(*entries);
}

frmRecovered* frmRecovered::offer(frmMain& frame, const Look& look) {
  auto entries = readNow(frame, look);
  return entries ? present(frame, std::move(*entries)) : nullptr;
}

frmRecovered* frmRecovered::present(frmMain& frame, std::vector<Entry> entries) {
  if (entries.empty()) return nullptr;
  frmRecovered* window = nullptr;
  for (auto* one : frame.findChildren<frmRecovered*>())
    if (one->isVisible()) window = one;
  if (!window) window = new frmRecovered(frame);
  std::ranges::move(entries, std::back_inserter(window->entries_));
  window->arrange();
  window->refresh(0);
  window->show();
  return window;
}

frmRecovered::Look frmRecovered::leftIn(const QString& folder) {
  return [folder = fromQString(folder)] {
    std::vector<text::LeftText> left = text::leftJournals(folder);
    std::ranges::move(text::leftCopiesElsewhere(folder), std::back_inserter(left));
    return left;
  };
}

void frmRecovered::offerWhenRead(frmMain& frame, Look look) {
  // The disk may hang: nobody waits for the thread. Its result is freed by the last user.
  std::packaged_task<std::vector<Entry>()> task([look = std::move(look)] { return entriesOf(look()); });
  const auto read = std::make_shared<std::future<std::vector<Entry>>>(task.get_future());
  std::thread(std::move(task)).detach();
  auto* poll = new QTimer(&frame);
  connect(poll, &QTimer::timeout, &frame, [&frame, poll, read] {
    if (read->wait_for(std::chrono::seconds(0)) != std::future_status::ready || isDialogUp() || gBusy()) return;
    poll->stop();
    poll->deleteLater();
    present(frame, read->get());
  });
  poll->start(kReadyPeriodMs);
}

void frmRecovered::offerAgain(frmMain& frame, const Look& look) {
  std::vector<std::string> files;
  for (const frmDocument* document : frame.documents())
    if (document->DocumentHasName()) files.push_back(fromQString(document->CurrentFileName()));
  auto entries = readNow(frame, [files, look] {
    std::vector<text::LeftText> left = look();
    std::ranges::move(text::leftCopies(files), std::back_inserter(left));
    return left;
  });
  if (!entries) return;
  present(frame, std::move(*entries));
  for (auto* window : frame.findChildren<frmRecovered*>()) {
    if (!window->isVisible()) continue;
    window->raise();
    window->activateWindow();
    return;
  }
  MsgBox(tr("There is nothing to recover."), tr("Recovered texts"), Icon::information);
}

frmRecovered::frmRecovered(frmMain& frame) : QDialog(&frame), frame_(frame), list_(new QTreeWidget), state_(new QLabel) {
  setAttribute(Qt::WA_DeleteOnClose);
  setWindowTitle(tr("Recovered texts"));
  setObjectName(QStringLiteral("frmRecovered"));
  auto* heading =
      new QLabel(tr("The editor ended before these texts were saved. Nothing is discarded unless you say so: what you leave "
                    "here is offered again at the next start, and by File, Recovered Texts."));
  heading->setWordWrap(true);
  list_->setHeaderLabels({tr("Name"), tr("Last change"), tr("Size"), tr("What came back")});
  list_->setRootIsDecorated(false);
  list_->setUniformRowHeights(true);
  list_->setAllColumnsShowFocus(true);
  list_->setSelectionMode(QAbstractItemView::ExtendedSelection);
  list_->setAccessibleName(windowTitle());
  state_->setTextFormat(Qt::PlainText);
  state_->setWordWrap(true);

  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close);
  const auto add = [&](const QString& caption, void (frmRecovered::*run)()) {
    QPushButton* button = buttons->addButton(caption, QDialogButtonBox::ActionRole);
    button->setAutoDefault(false);
    connect(button, &QPushButton::clicked, this, run);
    return button;
  };
  restore_ = add(tr("&Restore"), &frmRecovered::Restore);
  restoreAll_ = add(tr("Restore A&ll"), &frmRecovered::RestoreAll);
  saveAs_ = add(tr("Save &As..."), &frmRecovered::SaveAs);
  compare_ = add(tr("&Compare..."), &frmRecovered::Compare);
  discard_ = add(tr("&Discard..."), &frmRecovered::Discard);
  buttons->button(QDialogButtonBox::Close)->setAutoDefault(false);   // Enter in the list restores
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::close);
  connect(list_, &QTreeWidget::itemSelectionChanged, this, &frmRecovered::showButtons);
  connect(list_, &QTreeWidget::itemActivated, this, &frmRecovered::Restore);

  auto* layout = new QVBoxLayout(this);
  layout->addWidget(heading);
  layout->addWidget(list_, 1);
  layout->addWidget(state_);
  layout->addWidget(buttons);

  resize(760, 360);
}

std::vector<frmRecovered::Entry> frmRecovered::entriesOf(std::vector<text::LeftText> left) {
  std::vector<Entry> entries;
  for (text::LeftText& journal : left) {
    text::RecoveredText facts = journal.recover();
    const text::Snapshot found = std::exchange(facts.text, text::Snapshot());
    const bool named = facts.error.empty() && !facts.about.path.empty();
    if (named && facts.whole && facts.baseWhole && text::fileHolds(facts.about, found) && journal.remove() == 0) continue;
    Entry entry{
        std::make_shared<text::LeftText>(std::move(journal)), std::move(facts), found.size().value, digestOf(found), {}, {}};
    if (named) entry.file = fileState(entry.facts.about);
    entries.push_back(std::move(entry));
  }
  return entries;
}

bool frmRecovered::takeTwin(Entry& newer, Entry& entry) {
  const auto whole = [](const Entry& one) { return one.facts.error.empty() && one.facts.whole && one.facts.baseWhole; };
  if (newer.digest != entry.digest || newer.facts.about.title != entry.facts.about.title || !whole(newer) || !whole(entry))
    return false;
  newer.twins.push_back(std::move(entry.journal));
  std::ranges::move(entry.twins, std::back_inserter(newer.twins));
  return true;
}

void frmRecovered::arrange() {
  std::ranges::stable_sort(entries_, std::greater(), [](const Entry& entry) { return entry.journal->changedNs(); });
  std::vector<Entry> arranged;
  for (Entry& entry : entries_) {
    const std::string& path = entry.facts.about.path;
    auto below = arranged.end();
    bool twin = false;
    for (auto it = arranged.begin(); it != arranged.end() && !twin; ++it) {
      if (it->facts.about.path != path) continue;
      twin = takeTwin(*it, entry);
      if (!path.empty()) below = std::next(it);
    }
    if (twin) continue;
    arranged.insert(below, std::move(entry));
  }
  entries_ = std::move(arranged);
}

QString frmRecovered::titleOf(const Entry& entry) const {
  const QString title = toQString(entry.facts.about.title), path = toQString(entry.facts.about.path);
  return !path.isEmpty() ? path : title.isEmpty() ? tr("(unknown)") : title;
}

bool frmRecovered::isOlder(const Entry& entry) const {
  const std::string& path = entry.facts.about.path;
  return !path.empty() && &entry != entries_.data() && (&entry)[-1].facts.about.path == path;
}

QString frmRecovered::stateOf(const Entry& entry) const {
  const text::RecoveredText& facts = entry.facts;
  if (!facts.error.empty()) return tr("Nothing: %1").arg(toQString(facts.error));
  if (!facts.baseWhole) return tr("Only the beginning of the text: the rest was not written yet");
  QString state = entry.journal->isCopy() ? tr("A complete copy that an interrupted save left") : tr("All of it");
  if (!facts.whole)
    state = tr("%1; the end of the journal is damaged (%2 of %3 bytes are good)")
                .arg(counted(qint64(facts.changes), tr("change"), tr("changes")))
                .arg(QLocale().toString(facts.read), QLocale().toString(facts.size));
  if (isOlder(entry)) state = tr("An older state of the text above: %1").arg(state);
  return entry.file.isEmpty() ? state : tr("%1; %2", "what came back; how the file stands").arg(state, entry.file);
}

void frmRecovered::refresh(int at) {
  if (entries_.empty()) {
    close();
    return;
  }
  fill();
  select(std::min(at, count() - 1));
}

void frmRecovered::fill() {
  const QSignalBlocker quiet(list_);
  list_->clear();
  for (const Entry& entry : entries_) {
    auto* row = new QTreeWidgetItem(list_);
    row->setText(kName, nameForDisplay(titleOf(entry), 300));
    row->setText(kTime,
                 QLocale().toString(QDateTime::fromMSecsSinceEpoch(entry.journal->changedNs() / 1'000'000), QLocale::ShortFormat));
    row->setText(kSize, entry.facts.error.empty() ? QLocale().formattedDataSize(entry.bytes) : QString());
    row->setText(kState, plainForDisplay(stateOf(entry), 200));
    row->setToolTip(kName, plainForDisplay(titleOf(entry)).toHtmlEscaped());
  }
  for (const int column : {kName, kTime, kSize}) {
    list_->resizeColumnToContents(column);
    list_->setColumnWidth(column, std::min(list_->columnWidth(column), 360));
  }
}

void frmRecovered::select(int entry) {
  list_->setCurrentItem(list_->topLevelItem(entry));
  showButtons();
}

std::vector<int> frmRecovered::selected() const {
  std::vector<int> all;
  for (QTreeWidgetItem* row : list_->selectedItems()) all.push_back(list_->indexOfTopLevelItem(row));
  std::ranges::sort(all);
  return all;
}

int frmRecovered::only() const {
  const std::vector<int> all = selected();
  return all.size() == 1 ? all[0] : -1;
}

void frmRecovered::showButtons() {
  const std::vector<int> all = selected();
  const Entry* one = all.size() == 1 ? &entries_[std::size_t(all[0])] : nullptr;
  const auto hasText = [&](int at) { return entries_[std::size_t(at)].facts.error.empty(); };
  restore_->setEnabled(std::ranges::any_of(all, hasText));
  restoreAll_->setVisible(count() > 1);
  saveAs_->setEnabled(one && hasText(all[0]));
  compare_->setEnabled(one && hasText(all[0]));
  discard_->setEnabled(!all.empty());
  state_->setText(one           ? plainForDisplay(stateOf(*one))
                  : all.empty() ? QString()
                                : counted(all.size(), tr("text selected"), tr("texts selected")));
}

text::RecoveredText frmRecovered::textOf(const Entry& entry) {
  struct Read {
    text::RecoveredText found;
    bool cancelled = false;
  };
  const auto read = std::make_shared<Read>();
  const auto work = [read, journal = entry.journal](text::SearchControl& control) {
    read->found = journal->recover();
    read->cancelled = control.cancel;
  };
  const bool done = LongWork::runOrLeave(*this, work, tr("Reading %1").arg(plainForDisplay(titleOf(entry), 80)));
  if (!done || read->cancelled) {
    text::RecoveredText none;
    none.error = "cancelled";
    return none;
  }
  if (!read->found.error.empty()) MsgBox(plainForDisplay(toQString(read->found.error)), tr("Recovered texts"));
  return std::move(read->found);
}

void frmRecovered::drop(int at) {
  Entry& gone = entries_[std::size_t(at)];
  int error = gone.journal->remove();
  for (const auto& twin : gone.twins) error = std::min(error, twin->remove());
  if (error < 0) MsgBox(toQString(text::errorText(error)), tr("Recovered texts"));
  entries_.erase(entries_.begin() + at);
}

void frmRecovered::Restore() {
  const std::vector<int> all = selected();
  // last to first, so that the top entry of the list becomes the active window
  std::vector<std::pair<int, frmDocument*>> restored;
  for (auto at = all.rbegin(); at != all.rend(); ++at) {
    const Entry& entry = entries_[std::size_t(*at)];
    if (!entry.facts.error.empty()) continue;
    const text::RecoveredText found = textOf(entry);
    if (!found.error.empty()) continue;
    if (frmDocument* document = frame_.restore(found)) restored.emplace_back(*at, document);
  }
  if (restored.empty()) return;
  if (RecoverySession* session = RecoverySession::current()) session->holdAll();
  bool kept = false;
  for (const auto& [at, document] : restored) {
    if (document->holdInJournal()) drop(at);
    else kept = true;   // the old journal is the only copy
  }
  if (kept)
    MsgBox(tr("The text is open again, but no new journal could be written for it. The old one is kept."), tr("Recovered texts"));
  refresh(all[0]);
}

void frmRecovered::RestoreAll() {
  list_->clearSelection();
  for (int at = 0; at < count(); ++at)
    if (!isOlder(entries_[std::size_t(at)])) list_->topLevelItem(at)->setSelected(true);
  Restore();
}

void frmRecovered::SaveAs() {
  const int at = only();
  if (at < 0 || !saveAs_->isEnabled()) return;
  const text::RecoveredText found = textOf(entries_[std::size_t(at)]);
  if (!found.error.empty()) return;
  FileDialogRequest request;
  request.disk = &exactFiles();
  request.title = tr("Save recovered text");
  request.filter = tr("All files (*)|*");
  request.folder = GetFileDir(toQString(found.about.path));
  request.name = toQString(found.about.title);
  const QString path = dialogs().saveFile(request);
  if (path.isEmpty()) return;
  text::SaveOptions options;
  options.format = found.about.format;
  text::SaveResult saved;
  const auto save = [&](text::SearchControl& control) { saved = text::saveFile(fromQString(path), found.text, options, &control); };
  LongWork::run(*this, found.text.size().value, save, tr("Saving %1").arg(plainForDisplay(path, 80)), false);
  if (!saved.ok()) {
    tellSaveError(path, toQString(saved.error));
    return;
  }
  drop(at);
  refresh(at);
}

void frmRecovered::Compare() {
  const int at = only();
  if (at < 0 || !compare_->isEnabled()) return;
  const text::RecoveredText found = textOf(entries_[std::size_t(at)]);
  if (!found.error.empty()) return;
  const bool named = !found.about.path.empty();
  const auto disk = std::make_shared<text::LoadedFile>();
  const auto load = [disk, about = found.about](text::SearchControl&) { *disk = fileOnDisk(about); };
  if (named && !LongWork::runOrLeave(*this, load, tr("Reading %1").arg(plainForDisplay(titleOf(entries_[std::size_t(at)]), 80))))
    return;
  CodeMax onDisk;
  CMXRegistry::applyTo(onDisk);
  onDisk.model()->document().reset(disk->text);   // empty when there is no file
  frmCompare compare(onDisk, this);
  compare.after().model()->document().reset(found.text);
  const int language = languageOfFile(toQString(found.about.path), compare.after());
  if (named && language > 0)
    for (const auto side : {compare::kLeft, compare::kRight})
      compare.view().text(side).setLanguage(languages().Languages()->Item(language)->Name);
  compare.markChanges();
  QString before = named ? tr("File on disk (read only)") : tr("No file: the text had no name yet");
  if (!disk->error.empty()) before = tr("File on disk: %1").arg(plainForDisplay(toQString(disk->error)));
  compare.showOnly(before, tr("Recovered (read only)"));
  const ModalGuard guard;
  compare.exec();
}

void frmRecovered::Discard() {
  const std::vector<int> all = selected();
  if (all.empty()) return;
  QString question = tr("%n recovered texts will be lost.\r\nDo you want to discard them?", nullptr, int(all.size()));
  if (all.size() == 1)
    question = tr("The recovered text of %1 will be lost.\r\nDo you want to discard it?")
                   .arg(plainForDisplay(titleOf(entries_[std::size_t(all[0])])));
  if (MsgBox(question, tr("Recovered texts"), Icon::question, Buttons::yesNo) != Answer::yes) return;
  for (auto at = all.rbegin(); at != all.rend(); ++at) drop(*at);
  refresh(all[0]);
}
