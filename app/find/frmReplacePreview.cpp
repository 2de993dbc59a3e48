#include "app/find/frmReplacePreview.h"

#include <QDialogButtonBox>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTreeView>
#include <QVBoxLayout>
#include <algorithm>

#include "app/find/ChangeDelegate.h"
#include "base/FixedFont.h"
#include "base/Strings.h"
#include "bridge/QStringBytes.h"
#include "script/FindTask.h"

using namespace Qt::StringLiterals;

namespace {
constexpr int kShown = 600;             // characters of a name, or of a change
constexpr std::int64_t kOpened = 500;   // changes up to which all files are opened
constexpr int kLeastPlace = 230, kMostPlace = 420;
enum PreviewColumn { place, before, after, columns };

// Of a change, in that column.
QStringList partsOf(const folder::Exchange& one, int column) {
  const auto shown = [](const std::string& text) { return plainForDisplay(toQString(text.substr(0, 4 * kShown)), kShown); };
  return {shown(one.before), shown(column == before ? one.now : one.then), shown(one.after)};
}
}   // namespace

ReplaceModel::ReplaceModel(std::vector<folder::FilePlan> files, QString root, QObject* parent)
    : QAbstractItemModel(parent), files_(std::move(files)), root_(std::move(root)) {
  for (const auto& file : files_) {
    count_.push_back(std::count_if(file.exchanges.begin(), file.exchanges.end(), [](const auto& e) { return e.ticked; }));
    ticked_ += count_.back();
  }
}

std::int64_t ReplaceModel::tickedFiles() const {
  return std::count_if(count_.begin(), count_.end(), [](std::int64_t n) { return n > 0; });
}

// A change's index carries the number of its file from 1, that of a file 0.
QModelIndex ReplaceModel::index(int row, int column, const QModelIndex& parent) const {
  if (row < 0 || row >= rowCount(parent) || column < 0 || column >= columns) return {};
  return createIndex(row, column, parent.isValid() ? quintptr(parent.row()) + 1 : quintptr(0));
}

QModelIndex ReplaceModel::parent(const QModelIndex& child) const {
  return child.isValid() && child.internalId() > 0 ? createIndex(int(child.internalId() - 1), 0, quintptr(0)) : QModelIndex();
}

int ReplaceModel::rowCount(const QModelIndex& parent) const {
  if (!parent.isValid()) return int(files_.size());
  return parent.internalId() == 0 && parent.column() == 0 ? int(files_[std::size_t(parent.row())].exchanges.size()) : 0;
}

int ReplaceModel::columnCount(const QModelIndex&) const { return columns; }

QVariant ReplaceModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid()) return {};
  if (index.internalId() == 0) {
    const folder::FilePlan& file = files_[std::size_t(index.row())];
    const std::int64_t on = count_[std::size_t(index.row())], all = std::int64_t(file.exchanges.size());
    if (role == Qt::CheckStateRole && index.column() == place)
      return int(on == 0 ? Qt::Unchecked : on == all ? Qt::Checked : Qt::PartiallyChecked);
    if (role == Qt::ToolTipRole && index.column() == place) return nameForDisplay(toQString(file.path));
    if (role != Qt::DisplayRole) return {};
    QString path = toQString(file.path);
    if (!root_.isEmpty() && path.startsWith(root_ + u'/')) path = path.mid(root_.size() + 1);
    if (index.column() == place) return nameForDisplay(path, kShown);
    if (index.column() == before)
      return file.open ? tr("%L1 of %L2, in its window").arg(on).arg(all) : tr("%L1 of %L2").arg(on).arg(all);
    return {};
  }
  const folder::Exchange& one = files_[std::size_t(index.internalId() - 1)].exchanges[std::size_t(index.row())];
  if (role == Qt::CheckStateRole && index.column() == place) return int(one.ticked ? Qt::Checked : Qt::Unchecked);
  if (role == Qt::FontRole && index.column() != place) return fixedFont();
  if (role == ChangeDelegate::kParts && index.column() != place) return partsOf(one, index.column());
  if (role != Qt::DisplayRole && role != Qt::ToolTipRole) return {};
  if (index.column() == place) return QString(QString::number(one.line) + u':' + QString::number(one.column));
  return partsOf(one, index.column()).join(QString());
}

bool ReplaceModel::setData(const QModelIndex& index, const QVariant& value, int role) {
  if (!index.isValid() || role != Qt::CheckStateRole) return false;
  const bool on = value.toInt() != Qt::Unchecked;
  const bool whole = index.internalId() == 0;
  const std::size_t at = whole ? std::size_t(index.row()) : std::size_t(index.internalId() - 1);
  folder::FilePlan& file = files_[at];
  const std::int64_t was = count_[at];
  if (whole) {
    for (auto& one : file.exchanges) one.ticked = on;
    count_[at] = on ? std::int64_t(file.exchanges.size()) : 0;
  } else {
    bool& ticked = file.exchanges[std::size_t(index.row())].ticked;
    count_[at] += int(on) - int(ticked);
    ticked = on;
  }
  ticked_ += count_[at] - was;
  const QModelIndex top = this->index(int(at), 0);
  emit dataChanged(top, this->index(int(at), columns - 1));
  if (const int rows = rowCount(top); rows > 0) emit dataChanged(this->index(0, 0, top), this->index(rows - 1, 0, top));
  emit tickedChanged();
  return true;
}

void ReplaceModel::tickAll(bool on) {
  beginResetModel();
  ticked_ = 0;
  for (std::size_t i = 0; i < files_.size(); ++i) {
    for (auto& one : files_[i].exchanges) one.ticked = on;
    count_[i] = on ? std::int64_t(files_[i].exchanges.size()) : 0;
    ticked_ += count_[i];
  }
  endResetModel();
  emit tickedChanged();
}

Qt::ItemFlags ReplaceModel::flags(const QModelIndex& index) const {
  Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
  if (index.column() == place) flags |= Qt::ItemIsUserCheckable;
  return flags;
}

QVariant ReplaceModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (role != Qt::DisplayRole || orientation != Qt::Horizontal) return {};
  return section == place ? tr("Place") : section == before ? tr("Now") : tr("Then");
}

frmReplacePreview::frmReplacePreview(std::vector<folder::FilePlan> files, const QString& root, const QString& about,
                                     const QString& note, QWidget* parent)
    : QDialog(parent),
      model_(new ReplaceModel(std::move(files), root, this)),
      tree_(new QTreeView(this)),
      count_(new QLabel(this)) {
  setObjectName(u"replacePreview"_s);
  setWindowTitle(about);
  setSizeGripEnabled(true);
  tree_->setObjectName(u"changes"_s);
  tree_->setModel(model_);
  tree_->setUniformRowHeights(true);
  tree_->setAlternatingRowColors(true);
  tree_->header()->setStretchLastSection(true);
  tree_->setTextElideMode(Qt::ElideMiddle);   // the end of a path says most
  tree_->setItemDelegateForColumn(before, new ChangeDelegate(ChangeDelegate::Side::now, this));
  tree_->setItemDelegateForColumn(after, new ChangeDelegate(ChangeDelegate::Side::then, this));
  tree_->setAccessibleName(tr("Changes"));
  std::int64_t changes = model_->ticked();
  if (changes <= kOpened) tree_->expandAll();
  tree_->setCurrentIndex(model_->index(0, 0));

  auto* const layout = new QVBoxLayout(this);
  if (!note.isEmpty()) {
    auto* const left = new QLabel(note, this);
    left->setObjectName(u"note"_s);
    left->setTextFormat(Qt::PlainText);
    left->setWordWrap(true);
    layout->addWidget(left);
  }
  layout->addWidget(tree_, 1);
  count_->setObjectName(u"count"_s);
  count_->setTextFormat(Qt::PlainText);
  layout->addWidget(count_);
  auto* const buttons = new QDialogButtonBox(this);
  replace_ = buttons->addButton(tr("&Replace"), QDialogButtonBox::AcceptRole);
  replace_->setObjectName(u"replace"_s);
  replace_->setDefault(true);
  auto* const all = buttons->addButton(tr("&All"), QDialogButtonBox::ActionRole);
  auto* const none = buttons->addButton(tr("&None"), QDialogButtonBox::ActionRole);
  for (QPushButton* button : {all, none}) button->setAutoDefault(false);
  buttons->addButton(QDialogButtonBox::Cancel);
  layout->addWidget(buttons);
  const auto tick = [this](bool on) {
    const bool open = tree_->isExpanded(model_->index(0, 0));
    model_->tickAll(on);
    if (open && model_->rowCount() < kOpened) tree_->expandAll();
  };
  connect(all, &QPushButton::clicked, this, [tick] { tick(true); });
  connect(none, &QPushButton::clicked, this, [tick] { tick(false); });
  connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  connect(model_, &ReplaceModel::tickedChanged, this, &frmReplacePreview::showCount);
  showCount();
  resize(1000, 520);
  tree_->resizeColumnToContents(place);
  tree_->setColumnWidth(place, std::clamp(tree_->columnWidth(place), kLeastPlace, kMostPlace));
  tree_->setColumnWidth(before, (width() - tree_->columnWidth(place)) / 2 - 20);
  tree_->setFocus();
}

void frmReplacePreview::showCount() {
  count_->setText(tr("Ticked: %1 in %2").arg(countedChanges(model_->ticked()), countedFiles(model_->tickedFiles())));
  replace_->setEnabled(model_->ticked() > 0);
}

#include "moc_frmReplacePreview.cpp"
