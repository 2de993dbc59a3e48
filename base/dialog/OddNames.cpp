#include "base/dialog/OddNames.h"

#include <QFileDialog>
#include <QGridLayout>
#include <QLabel>
#include <QListWidget>
#include <QVBoxLayout>
#include <algorithm>

#include "base/Strings.h"
#include "base/dialog/Dialogs.h"

namespace {
constexpr int kShownRows = 4;
}

bool isOddName(const QString& name) {
  for (qsizetype i = 0; i < name.size(); ++i) {
    if (!name[i].isSurrogate()) continue;
    if (!name[i].isHighSurrogate() || i + 1 == name.size() || !name[i + 1].isLowSurrogate()) return true;
    ++i;
  }
  return false;
}

QString plainPart(const QString& path) {
  QString part = path;
  while (isOddName(part)) part = part.left(part.lastIndexOf(u'/'));
  return part.isEmpty() && !path.isEmpty() ? QStringLiteral("/") : part;
}

OddNames::OddNames(QFileDialog& dialog, const FileLook& disk, const QString& folder)
    : QWidget(&dialog), dialog_(dialog), disk_(disk), list_(new QListWidget(this)) {
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins({});
  auto* label = new QLabel(tr("Names that are not &UTF-8 (Return or a double click opens one):"), this);
  label->setBuddy(list_);
  layout->addWidget(label);
  layout->addWidget(list_);
  list_->setObjectName(QStringLiteral("oddNames"));
  list_->setFixedHeight(list_->fontMetrics().height() * kShownRows + 2 * list_->frameWidth());
  connect(list_, &QListWidget::itemActivated, this,
          [this](const QListWidgetItem* item) { open(item->data(Qt::UserRole).toString()); });
  show(folder.isEmpty() ? dialog.directory().absolutePath() : folder);
  // A native dialog cannot hold the list.
  if (isVisibleTo(&dialog)) dialog.setOption(QFileDialog::DontUseNativeDialog);
  if (auto* grid = qobject_cast<QGridLayout*>(dialog.layout())) grid->addWidget(this, grid->rowCount(), 0, 1, -1);
  else hide();
  connect(&dialog, &QFileDialog::directoryEntered, this, [this](const QString& entered) { show(entered); });
}

void OddNames::show(const QString& folder) {
  folder_ = folder;
  QStringList names = disk_.names(folder);
  const bool all = isOddName(folder);
  if (!all) names.removeIf([](const QString& name) { return !isOddName(name); });
  std::ranges::sort(names);
  if (all) names.prepend(QStringLiteral(".."));
  list_->clear();
  for (const QString& name : std::as_const(names)) {
    auto* item = new QListWidgetItem(plainForDisplay(name), list_);
    item->setData(Qt::UserRole, name);
  }
  list_->setCurrentRow(0);
  setVisible(!names.isEmpty());
}

void OddNames::open(const QString& name) {
  const QString path = name == QLatin1String("..") ? folder_.left(folder_.lastIndexOf(u'/')) : folder_ + u'/' + name;
  if (!disk_.isFolder(path)) {
    chosen_ = path;
    return static_cast<QDialog&>(dialog_).done(QDialog::Accepted);
  }
  if (!isOddName(path)) dialog_.setDirectory(path);
  show(path);
}

#include "moc_OddNames.cpp"
