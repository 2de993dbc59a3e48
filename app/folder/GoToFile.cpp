#include "app/folder/GoToFile.h"

#include <QCoreApplication>
#include <QDialogButtonBox>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QLocale>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QPushButton>
#include <QStandardItemModel>
#include <QVBoxLayout>
#include <algorithm>

#include "app/folder/WorkFolder.h"
#include "app/frame/DocumentTabs.h"
#include "app/frame/LateDocument.h"
#include "app/frame/frmMain.h"
#include "app/look/Tips.h"
#include "base/Background.h"
#include "base/Strings.h"
#include "base/dialog/Dialogs.h"
#include "base/dialog/MarkedRows.h"
#include "bridge/QStringBytes.h"
#include "document/frmDocument.h"
#include "document/frmRegistry.h"

namespace {

constexpr std::size_t kMostShown = 200;
constexpr int kColumns = 90, kRows = 18;

std::uint64_t keyOf(std::uint32_t table, std::uint32_t index) { return std::uint64_t{table} << 32 | index; }

// The table is in the order of its paths.
std::optional<std::uint32_t> indexOf(const folder::NameTable& table, std::string_view path) {
  std::size_t from = 0, end = table.size();
  while (from < end) {
    const std::size_t middle = (from + end) / 2;
    if (table.path(middle) < path) from = middle + 1;
    else end = middle;
  }
  return from < table.size() && table.path(from) == path ? std::optional(std::uint32_t(from)) : std::nullopt;
}

}   // namespace

std::vector<folder::RankedName> GoToFile::Offer::rank(const folder::NameQuery& query, std::size_t* total,
                                                      const std::atomic<bool>* cancel) const {
  folder::NameTies ties;
  ties.near = near;
  ties.recency = [this](std::uint32_t table, std::uint32_t index) {
    const auto at = recency.find(keyOf(table, index));
    return at == recency.end() ? 0xfffeu : at->second;
  };
  return folder::rankNames({files.get(), &open}, query, ties, kMostShown, total, cancel);
}

GoToFile::GoToFile(frmMain& frame, WorkFolder& work)
    : QDialog(&frame),
      frame_(frame),
      work_(work),
      typed_(new QLineEdit(this)),
      list_(new QListView(this)),
      rows_(new QStandardItemModel(this)),
      note_(new QLabel(this)),
      cancel_(std::make_shared<std::atomic<bool>>(false)) {
  setWindowTitle(tr("Go to File"));
  typed_->setPlaceholderText(tr("Parts of the name, in any order; name:120 goes to line 120"));
  typed_->installEventFilter(this);
  list_->setModel(rows_);
  list_->setItemDelegate(new MarkedRows(list_));
  list_->setUniformItemSizes(true);
  list_->setEditTriggers(QAbstractItemView::NoEditTriggers);
  list_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  list_->setMinimumSize(fontMetrics().averageCharWidth() * kColumns, fontMetrics().lineSpacing() * kRows);
  note_->setTextFormat(Qt::PlainText);
  note_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
  auto* layout = new QVBoxLayout(this);
  for (const auto& [text, field] : {std::pair<QString, QWidget*>{tr("Part of the &name:"), typed_}, {tr("&Files:"), list_}}) {
    auto* label = new QLabel(text, this);
    label->setBuddy(field);
    layout->addWidget(label);
    layout->addWidget(field, field == list_ ? 1 : 0);
  }
  layout->addWidget(note_);
  layout->addWidget(buttons);
  connect(typed_, &QLineEdit::textChanged, this, &GoToFile::ask);
  connect(list_, &QListView::activated, this, &GoToFile::choose);
  connect(buttons, &QDialogButtonBox::accepted, this, &GoToFile::choose);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  connect(&work_, &WorkFolder::namesChanged, this, [this] {
    makeOffer();
    ask();
  });
  work_.use();
  makeOffer();
  ask();
  work_.refresh();
}

GoToFile::~GoToFile() { *cancel_ = true; }

int GoToFile::exec() {
  const ModalGuard guard;
  return QDialog::exec();
}

void GoToFile::makeOffer() {
  auto offer = std::make_shared<Offer>();
  offer->files = work_.names();
  const QString root = work_.root().endsWith(u'/') ? work_.root() : work_.root() + u'/';
  const auto inTable = [&](const QString& path) -> std::optional<std::uint32_t> {
    if (const auto at = indexOf(*offer->files, fromQString(path))) return at;   // one that lies elsewhere
    return path.startsWith(root) ? indexOf(*offer->files, fromQString(path.mid(root.size()))) : std::nullopt;
  };
  frmDocument* active = frame_.activeDocument();
  // Documents as they were used last, then the files of the recent list; the one that is worked on is hardly asked for.
  QList<QMdiSubWindow*> windows = frame_.mdi().subWindowList(QMdiArea::ActivationHistoryOrder);
  std::reverse(windows.begin(), windows.end());
  std::uint32_t next = 0;
  QList<QObject*> entries;
  for (QMdiSubWindow* window : windows)
    if (auto* document = qobject_cast<frmDocument*>(window->widget())) entries << document;
  for (LateDocument* late : frame_.tabs().late()) entries << late;
  for (QObject* document : entries) {
    const auto [name, title, caption] = DocumentTabs::namesOf(document);
    std::uint64_t key = 0;
    if (const auto at = name.isEmpty() ? std::nullopt : inTable(name)) {
      key = keyOf(0, *at);
    } else {
      key = keyOf(1, std::uint32_t(offer->open.size()));
      offer->open.add(fromQString(name.isEmpty() ? title : name));
      offer->documents.push_back(document);
    }
    offer->recency.emplace(key, document == active ? 0xffffu : next++);
  }
  for (const QString& name : frmRegistry::instance().mruFile.items())
    if (const auto at = inTable(name)) offer->recency.emplace(keyOf(0, *at), next++);
  if (active && active->CurrentFileName().startsWith(root))
    offer->near = fromQString(GetFileDir(active->CurrentFileName().mid(root.size())));
  offer_ = std::move(offer);
}

void GoToFile::ask() {
  *cancel_ = true;
  cancel_ = std::make_shared<std::atomic<bool>>(false);
  asked_ = true;
  struct Found {
    std::vector<folder::RankedName> names;
    std::size_t total = 0;
  };
  const auto work = [offer = offer_, query = folder::parseNameQuery(fromQString(typed_->text())), cancel = cancel_] {
    Found found;
    found.names = offer->rank(query, &found.total, cancel.get());
    return found;
  };
  inBackground(this, work, [this, cancel = cancel_](const Found& found) {
    if (!*cancel) showFound(found.names, found.total);
  });
}

void GoToFile::showFound(const std::vector<folder::RankedName>& found, std::size_t total) {
  const folder::NameQuery query = folder::parseNameQuery(fromQString(typed_->text()));
  asked_ = false;
  shown_ = found;
  rows_->clear();
  for (const folder::RankedName& one : found) {
    const folder::NameTable& table = one.table == 0 ? *offer_->files : offer_->open;
    const std::string_view path = table.path(one.index), folded = table.folded(one.index);
    const std::size_t nameAt = path.rfind('/') + 1;
    const QString name = nameForDisplay(toQString(path.substr(nameAt))),
                  folder = plainForDisplay(toQString(path.substr(0, nameAt ? nameAt - 1 : 0)));
    const QString text = folder.isEmpty() ? name : name + QLatin1String("   ") + folder;
    auto* row = new QStandardItem(text);
    row->setToolTip(plainTip(toQString(table.fullPath(one.index))));
    const int folderAt = int(name.size());
    QList<QVariant> marks;
    // Only where a byte is a character as it is shown.
    if (qsizetype(path.size()) == name.size() + folder.size() + (nameAt ? 1 : 0) && folded.size() == path.size())
      for (const auto& [at, length] : folder::namePlaces(folded, query)) {
        const int shift = at >= nameAt ? -int(nameAt) : folderAt + 3;
        marks << int(at) + shift << int(length);
      }
    row->setData(marks, MarkedRows::kMarks);
    row->setData(folderAt, MarkedRows::kGreyFrom);
    rows_->appendRow(row);
  }
  list_->setCurrentIndex(rows_->index(0, 0));
  QString note =
      tr("%1 of %2 files")
          .arg(QLocale().toString(qulonglong(total)), QLocale().toString(qulonglong(offer_->files->size() + offer_->open.size())));
  if (work_.isReading()) note += tr("; the folder is being read");
  else if (!work_.trouble().isEmpty()) note += QLatin1String("; ") + work_.trouble().section(u'\n', 0, 0);
  note_->setText(note);
  if (std::exchange(chooseWhenShown_, false)) choose();
}

bool GoToFile::eventFilter(QObject* object, QEvent* event) {
  if (event->type() != QEvent::KeyPress) return QDialog::eventFilter(object, event);
  const int key = static_cast<QKeyEvent*>(event)->key();
  if (key != Qt::Key_Up && key != Qt::Key_Down && key != Qt::Key_PageUp && key != Qt::Key_PageDown) return false;
  QCoreApplication::sendEvent(list_, event);   // they walk the list while the field has the focus
  return true;
}

void GoToFile::choose() {
  if (asked_) {
    chooseWhenShown_ = true;
    return;
  }
  const folder::NameQuery query = folder::parseNameQuery(fromQString(typed_->text()));
  frmDocument* active = frame_.activeDocument();
  if (query.parts.empty() && query.line > 0 && active) {   // ":120" alone
    accept();
    frame_.goTo(active, query.line, query.column);
    return;
  }
  const int row = list_->currentIndex().row();
  if (row < 0 || std::size_t(row) >= shown_.size()) return;
  const folder::RankedName one = shown_[std::size_t(row)];
  accept();
  if (one.table == 1) {
    const auto go = [frame = &frame_, entry = offer_->documents[one.index], query] {
      if (entry && frame->showEntry(entry) && query.line > 0) frame->goTo(frame->activeDocument(), query.line, query.column);
    };
    QMetaObject::invokeMethod(&frame_, go, Qt::QueuedConnection);
    return;
  }
  const QString path = toQString(offer_->files->fullPath(one.index));
  QMetaObject::invokeMethod(
      &frame_, [frame = &frame_, path, query] { frame->goToFile(path, query.line, query.column); }, Qt::QueuedConnection);
}
