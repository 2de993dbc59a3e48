#include "app/folder/FolderParts.h"

#include <QApplication>
#include <QDockWidget>
#include <QMenu>
#include <QTimer>
#include <algorithm>

#include "app/folder/FilesView.h"
#include "app/folder/GoToFile.h"
#include "app/folder/WorkFolder.h"
#include "app/frame/FrameMenus.h"
#include "app/frame/frmMain.h"
#include "base/Strings.h"
#include "bridge/FileNames.h"
#include "bridge/FolderDialog.h"
#include "document/frmDocument.h"
#include "document/frmRegistry.h"
#include "settings/modRegistry.h"

using modRegistry::kGlobalKey;

namespace {
const QString kFilesShown = QStringLiteral("FILESSHOWN"), kArea = QStringLiteral("FILESAREA"),
              kFloats = QStringLiteral("FILESFLOATS"), kWidth = QStringLiteral("FILESWIDTH"), kPlace = QStringLiteral("FILESPLACE"),
              kFilter = QStringLiteral("FILESFILTER");
constexpr int kUsualWidth = 32;   // characters
}   // namespace

FolderParts::FolderParts(frmMain& frame) : QObject(&frame), frame_(frame), work_(new WorkFolder(frame)) {}

FilesView& FolderParts::files() {
  if (files_) return *files_;
  using namespace modRegistry;
  dock_ = new QDockWidget(tr("Files"), &frame_);
  dock_->setObjectName(QStringLiteral("filesDock"));
  files_ = new FilesView(frame_, *work_, dock_);
  dock_->setWidget(files_);
  const int area = Number(kGlobalKey, kArea, Qt::LeftDockWidgetArea);
  const bool known = area == Qt::RightDockWidgetArea || area == Qt::TopDockWidgetArea || area == Qt::BottomDockWidgetArea;
  frame_.addDockWidget(known ? Qt::DockWidgetArea(area) : Qt::LeftDockWidgetArea, dock_);
  dock_->hide();
  if (Flag(kGlobalKey, kFloats, false)) {
    dock_->setFloating(true);
    const QStringList numbers = Text(kGlobalKey, kPlace).split(u' ');
    if (numbers.size() == 4) dock_->setGeometry(numbers[0].toInt(), numbers[1].toInt(), numbers[2].toInt(), numbers[3].toInt());
  }
  // Only a dock that is laid out takes a size, so it is given when it shows first.
  connect(dock_, &QDockWidget::visibilityChanged, files_, [this](bool visible) {
    if (!visible) return;
    files_->lookAtDisk();
    if (dock_->isFloating() || dock_->property("placed").toBool()) return;
    dock_->setProperty("placed", true);
    QTimer::singleShot(0, files_, [this] {
      const int width = Number(kGlobalKey, kWidth, files_->fontMetrics().averageCharWidth() * kUsualWidth);
      frame_.resizeDocks({dock_}, {std::clamp(width, 80, std::max(80, frame_.width() / 2))}, Qt::Horizontal);
    });
  });
  connect(qApp, &QGuiApplication::applicationStateChanged, files_, [this](Qt::ApplicationState state) {
    if (state == Qt::ApplicationActive && dock_->isVisible()) files_->lookAtDisk();
  });
  files_->setFilter(Text(kGlobalKey, kFilter));
  return *files_;
}

void FolderParts::showFiles() {
  files();
  dock_->show();
  dock_->raise();
}

void FolderParts::toggleFiles() {
  files();
  if (frame_.menus().hidesDock(*dock_)) {
    frame_.menus().hideDock(*dock_);
  } else {
    showFiles();
    files_->focusTree();
  }
}

bool FolderParts::filesAreShown() const { return dock_ && !dock_->isHidden(); }

void FolderParts::open(const QString& folder) {
  work_->openFolder(folder);
  showFiles();
}

void FolderParts::askForFolder() {
  const QString folder = ::askForFolder(tr("Open Folder"), work_->root().isEmpty() ? currentFolder() : work_->root());
  if (!folder.isEmpty()) open(folder);
}

void FolderParts::askForList() {
  int entry = 1;
  const QString filter = tr("File lists (*.f;*.vc;*.flist)|*.f;*.vc;*.flist|All files (*.*)|*.*");
  const QString start = work_->root().isEmpty() ? currentFolder() : work_->root();
  const QString list = frmRegistry::instance().stdOpenFile(tr("Open File List"), filter, entry, start, {}).value(0);
  if (list.isEmpty()) return;
  work_->openList(fullPath(list), false);
  showFiles();
}

void FolderParts::askForWorkingFolder() {
  if (work_->kind() != WorkFolder::Kind::list) return;
  const QString list = work_->list();
  const QString folder = ::askForFolder(tr("Working Folder of the List"), work_->root());
  if (!folder.isEmpty() && list == work_->list()) work_->openList(list, false, fullPath(folder));
}

void FolderParts::fillRecent(QMenu& menu) {
  menu.addSeparator();
  int number = 0;
  for (const QString& folder : work_->recent()) {
    const QString digit = ++number < 10 ? u'&' + QString::number(number) : QString::number(number);
    QAction* entry = menu.addAction(digit + u' ' + plainForDisplay(folder, 120).replace(u'&', QLatin1String("&&")));
    connect(entry, &QAction::triggered, this, [this, folder] { open(folder); });
  }
}

void FolderParts::goToFile() { GoToFile(frame_, *work_).exec(); }

void FolderParts::restore() {
  work_->restore();
  if (modRegistry::Flag(kGlobalKey, kFilesShown, false)) showFiles();
}

void FolderParts::save() {
  using namespace modRegistry;
  if (!dock_) return;
  SetFlag(kGlobalKey, kFilesShown, filesAreShown());
  SetFlag(kGlobalKey, kFloats, dock_->isFloating());
  const Qt::DockWidgetArea area = frame_.dockWidgetArea(dock_);
  if (area != Qt::NoDockWidgetArea) SetNumber(kGlobalKey, kArea, area);
  const QRect place = dock_->geometry();
  if (dock_->isFloating())
    SetText(kGlobalKey, kPlace, QStringLiteral("%1 %2 %3 %4").arg(place.x()).arg(place.y()).arg(place.width()).arg(place.height()));
  else if (dock_->property("placed").toBool()) SetNumber(kGlobalKey, kWidth, dock_->width());
  SetText(kGlobalKey, kFilter, files_->filter());
}
