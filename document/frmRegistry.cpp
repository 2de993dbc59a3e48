#include "document/frmRegistry.h"

#include <QGuiApplication>
#include <QScreen>
#include <algorithm>

#include "base/Program.h"
#include "base/Strings.h"
#include "base/Workspace.h"
#include "base/dialog/Dialogs.h"
#include "base/dialog/FitScreen.h"
#include "bridge/FileNames.h"
#include "document/Frame.h"
#include "document/Languages.h"
#include "document/frmDocument.h"
#include "language/ucCM.h"
#include "settings/modRegistry.h"

using namespace modRegistry;

namespace {

constexpr int kMruEntries = 10, kMacroEntries = 20;
constexpr int kMinimised = 1, kMaximised = 2;

// The key of a profile's values; the log window has its own key.
struct ProfileNames {
  QString top, left, width, height, state, scale;
};
const ProfileNames& frameNames() {
  static const ProfileNames names{QStringLiteral("winTop"),    QStringLiteral("winleft"),  QStringLiteral("winwidth"),
                                  QStringLiteral("winheight"), QStringLiteral("winstate"), QStringLiteral("winscale")};
  return names;
}
const ProfileNames& logNames() {
  static const ProfileNames names{QStringLiteral("logTop"),    QStringLiteral("logleft"),  QStringLiteral("logwidth"),
                                  QStringLiteral("logheight"), QStringLiteral("logstate"), QStringLiteral("logscale")};
  return names;
}

int stateOf(const QWidget& window) { return window.isMinimized() ? kMinimised : window.isMaximized() ? kMaximised : 0; }

// The nearest position at which a window is visible and can be reached: on the screen that shows most of it, else on the first one.
QRect onScreen(QRect wanted) {
  const QScreen* best = QGuiApplication::primaryScreen();
  qint64 most = 0;
  for (const QScreen* screen : QGuiApplication::screens()) {
    const QRect seen = screen->availableGeometry() & wanted;
    const qint64 area = qint64(seen.width()) * seen.height();
    if (seen.isValid() && area > most) {
      most = area;
      best = screen;
    }
  }
  if (!best) return wanted;
  const QRect room = FitScreen::room(*best);
  wanted.setSize(wanted.size().boundedTo(room.size()));
  wanted.moveLeft(std::clamp(wanted.left(), room.left(), room.right() + 1 - wanted.width()));
  wanted.moveTop(std::clamp(wanted.top(), room.top(), room.bottom() + 1 - wanted.height()));
  return wanted;
}

double storedScale(const QWidget& window, const ProfileNames& names) {
  const double scale = Real(kGlobalKey, names.scale, window.devicePixelRatioF());
  return scale >= 0.25 && scale <= 16 ? scale : window.devicePixelRatioF();
}

// The stored position of a window. Missing values are taken from the current position. Invalid: the stored values are senseless.
// The scale is the number of device pixels for one pixel of the desktop, which may have been another when the position was stored.
// The window then covers at least the same part of the screen and has room for at least the same text.
QRect storedPlace(const QWidget& window, const ProfileNames& names) {
  // The normal position of a minimised or maximised window. Before it is first shown, its current geometry.
  const QRect now = window.normalGeometry().isValid() ? window.normalGeometry() : window.geometry();
  const auto read = [](const QString& name, int otherwise) { return qRound(Real(kGlobalKey, name, otherwise)); };
  constexpr int kSmallest = 100, kLargest = 100'000;   // larger rectangles overflow
  const int top = std::clamp(read(names.top, now.top()), -kLargest, kLargest);
  const int left = std::clamp(read(names.left, now.left()), -kLargest, kLargest);
  const QSize size(read(names.width, now.width()), read(names.height, now.height()));
  if (size.width() < kSmallest || size.height() < kSmallest || size.width() >= kLargest || size.height() >= kLargest) return {};
  const double change = storedScale(window, names) / window.devicePixelRatioF();
  return {QPoint(qRound(left * change), qRound(top * change)), size.expandedTo(size * change)};
}

void readProfile(QWidget& window, const ProfileNames& names) {
  if (const QRect stored = storedPlace(window, names); stored.isValid()) {
    const QRect place = onScreen(stored);
    if (GetValue(kGlobalKey, names.left).isValid()) window.setGeometry(place);
    else window.resize(place.size());
  }
  const int state = Number(kGlobalKey, names.state, stateOf(window));
  Qt::WindowStates states = window.windowState() & ~(Qt::WindowMinimized | Qt::WindowMaximized);
  // A window that was left minimised starts normal.
  if (state == kMaximised) states |= Qt::WindowMaximized;
  window.setWindowState(states);
}

// The position when the window is not minimised, maximised or full screen. Invalid: not known yet.
QRect normalPlace(const QWidget& window) {
  return window.isMinimized() || window.isMaximized() || window.isFullScreen() ? window.normalGeometry() : window.geometry();
}

// The stored position was adjusted for this screen, and the user did not move the window: keep the stored one for a larger screen
// or another scale.
bool showsStored(const QWidget& window, const ProfileNames& names) {
  if (!GetValue(kGlobalKey, names.width).isValid()) return false;
  const QRect stored = storedPlace(window, names);
  const bool changed = storedScale(window, names) != window.devicePixelRatioF() || onScreen(stored).size() != stored.size();
  return stored.isValid() && changed && onScreen(stored).size() == normalPlace(window).size();
}

void writeProfile(const QWidget& window, const ProfileNames& names) {
  const QRect place = normalPlace(window);
  if (place.isValid() && !showsStored(window, names)) {
    SetText(kGlobalKey, names.top, QString::number(place.top()));
    SetText(kGlobalKey, names.left, QString::number(place.left()));
    SetText(kGlobalKey, names.width, QString::number(place.width()));
    SetText(kGlobalKey, names.height, QString::number(place.height()));
    SetText(kGlobalKey, names.scale, QString::number(window.devicePixelRatioF()));
  }
  SetNumber(kGlobalKey, names.state, stateOf(window));
}

const QString kLogArea = QStringLiteral("logdock"), kLogFloats = QStringLiteral("logfloat"), kLogShown = QStringLiteral("logshown");
const QString kStatusBar = QStringLiteral("StatusBar"), kToolBar = QStringLiteral("ToolBar"), kTabs = QStringLiteral("Tabs"),
              kDocumentState = QStringLiteral("ewinstate");
const QString kViewStatusBar = QStringLiteral("mnuViewStatusBar"), kViewToolbar = QStringLiteral("mnuViewToolbar"),
              kViewTabs = QStringLiteral("mnuViewTabs"), kCustom = QStringLiteral("mCustom"), kSeparator = QStringLiteral("-");

// "&" starts a mnemonic in a caption, so it is doubled in a name.
QString inMenu(QString name) { return nameForDisplay(name, 200).replace(u'&', QLatin1String("&&")); }

}   // namespace

bool isInstalled(const QString& folder) {
  const QString ours = foldersRealPath(applicationFolder()), place = foldersRealPath(folder);
  return !ours.isEmpty() && (place == ours || place.startsWith(ours + u'/'));
}

frmRegistry& frmRegistry::instance() { return Workspace::current().part<frmRegistry>(); }

frmRegistry::frmRegistry() : manager_(std::make_unique<ucCM>()) {
  connect(&mruFile, &ucMRULst::Changed, this, &frmRegistry::mruFile_Changed);
}
frmRegistry::~frmRegistry() = default;

ucCM& frmRegistry::ucCM1() { return *manager_; }

// ---- file dialogs

void frmRegistry::followFolder(const QString& folder) {
  if (!isInstalled(folder)) setCurrentFolder(folder);
}

QStringList frmRegistry::stdOpenFile(const QString& title, const QString& filter, int& filterIndex, const QString& folder,
                                     const QString& name, bool multiple) {
  FileDialogRequest request{title, filter, filterIndex, folder, name, {}, multiple, &exactFiles()};
  QStringList chosen = dialogs().openFile(request);
  filterIndex = request.filterIndex;
  if (!chosen.isEmpty()) followFolder(GetFileDir(chosen.first()));
  return chosen;
}

QString frmRegistry::stdSaveFile(const QString& title, const QString& filter, int& filterIndex, const QString& folder,
                                 const QString& name, bool giveExtension) {
  FileDialogRequest request{title, filter, filterIndex, folder, name, {}, false, &exactFiles()};
  // The extension must be known before the dialog asks about overwriting.
  const QString pattern = filter.split(u'|').value(filterIndex * 2 - 1).section(u';', 0, 0);
  if (giveExtension && pattern.startsWith(QLatin1String("*.")) && pattern != QLatin1String("*.*"))
    request.defaultExtension = pattern.mid(2);
  const QString chosen = dialogs().saveFile(request);
  filterIndex = request.filterIndex;
  if (!chosen.isEmpty()) followFolder(GetFileDir(chosen));
  return chosen;
}

QString frmRegistry::stdHelpFile(const QString& folder) {
  FileDialogRequest request;
  request.disk = &exactFiles();
  request.title = tr("Help File");
  request.filter = tr("Help files") + QLatin1String(" (*.html;*.htm;*.pdf;*.txt;*.md)|*.html;*.htm;*.pdf;*.txt;*.md|(*.*)|*.*|");
  request.folder = folder;
  return dialogs().openFile(request).value(0);
}

// ---- window profiles

void frmRegistry::SaveLogWindowProfile(const QWidget& window) { writeProfile(window, logNames()); }
void frmRegistry::GetLogWindowProfile(QWidget& window) { readProfile(window, logNames()); }

void frmRegistry::SaveLogDock(const LogDock& dock) {
  if (dock.area != Qt::NoDockWidgetArea) SetNumber(kGlobalKey, kLogArea, dock.area);
  SetFlag(kGlobalKey, kLogFloats, dock.floating);
  SetFlag(kGlobalKey, kLogShown, dock.shown);
}

frmRegistry::LogDock frmRegistry::GetLogDock() const {
  LogDock dock;
  const int area = Number(kGlobalKey, kLogArea, dock.area);
  for (const auto known : {Qt::LeftDockWidgetArea, Qt::RightDockWidgetArea, Qt::TopDockWidgetArea})
    if (area == known) dock.area = known;
  dock.floating = Flag(kGlobalKey, kLogFloats, dock.floating);
  dock.shown = Flag(kGlobalKey, kLogShown, dock.shown);
  return dock;
}

void frmRegistry::SaveMDIWindowProfile(ProfiledFrame& frame) {
  writeProfile(*frame.profileWindow(), frameNames());
  SetFlag(kGlobalKey, kStatusBar, frame.isChecked(kViewStatusBar));
  SetFlag(kGlobalKey, kToolBar, frame.isChecked(kViewToolbar));
  SetFlag(kGlobalKey, kTabs, frame.isChecked(kViewTabs));
  SetNumber(kGlobalKey, kDocumentState, frame.cmxWindowState());
}

void frmRegistry::getFormWindowProfile(ProfiledFrame& frame) {
  readProfile(*frame.profileWindow(), frameNames());
  frame.setChecked(kViewStatusBar, Flag(kGlobalKey, kStatusBar, frame.isChecked(kViewStatusBar)));
  frame.setChecked(kViewToolbar, Flag(kGlobalKey, kToolBar, frame.isChecked(kViewToolbar)));
  frame.setChecked(kViewTabs, Flag(kGlobalKey, kTabs, frame.isChecked(kViewTabs)));
  frame.setCmxWindowState(Number(kGlobalKey, kDocumentState, frame.cmxWindowState()));
}

void frmRegistry::GetProfile(ProfiledFrame& frame, const QString& mruMenu) {
  frame_ = &frame;
  mruMenu_ = mruMenu;
  GetMRUList();
  MRUtoMenu();
  getFormWindowProfile(frame);
}

void frmRegistry::SetProfile() {
  SaveMRUList();
  if (frame_) SaveMDIWindowProfile(*frame_);
}

void frmRegistry::forgetFrame() { frame_ = nullptr; }

// ---- recently-used list

void frmRegistry::SaveMRUList() {
  if (!listWasRead_) return;   // the stored list has not been read
  for (int i = 0; i < kMruEntries; ++i) SetText(kGlobalKey, QStringLiteral("MRU%1").arg(i), mruFile.Item(i));
}

void frmRegistry::GetMRUList() {
  const QStringList seeded = mruFile.items();
  listWasRead_ = false;   // a list just read need not be written
  QStringList names;
  for (int i = 0; i < kMruEntries; ++i) names << Text(kGlobalKey, QStringLiteral("MRU%1").arg(i));
  names.removeAll(QString());
  if (!names.isEmpty() || seeded.isEmpty()) mruFile.setItems(names);
  listWasRead_ = true;
}

void frmRegistry::SetupMRUList() {
  for (const char* name : {"wave.do", "viewdrawsch.1", "trnscrpt.log", "control.abl", "palasm.pds", "timspec.ucf", "report.scr",
                           "sample.v", "sample1.vhd"}) {
    const QString folder = joinPath(applicationFolder(), QStringLiteral("Samples"));
    mruFile.AddItem(joinPath(folder, QString::fromLatin1(name)));
  }
}

void frmRegistry::MRUtoMenu() {
  for (int i = 0; i < kMruEntries; ++i) {
    const bool used = i < mruFile.Count();
    QString number = QString::number(i + 1);
    number.insert(number.size() - 1, u'&');   // "&1" and, as that has the 1, "1&0"
    const QString caption = used ? number + u' ' + inMenu(mruFile.Item(i)) : QString();
    SetMDIMenu(mruMenu_, caption, used, i);
  }
  SetMDIMenu(mruMenu_, kSeparator, mruFile.Count() > 0, kMruEntries);
}

void frmRegistry::mruFile_Changed() {
  SaveMRUList();
  if (frame_) MRUtoMenu();
}

// ---- menus that depend on data

void frmRegistry::SetMDIMenu(const QString& menuName, const QString& caption, bool visible, int index) {
  if (frame_) frame_->setMenu(menuName, index, caption, visible);
}

bool frmRegistry::anyModified() {
  Frame* main = ::frame();
  if (!main) return false;
  const QList<frmDocument*> documents = main->documents();
  return std::any_of(documents.begin(), documents.end(), [](const frmDocument* d) { return d->DocumentModified(); });
}

void frmRegistry::SetupMenusModified(bool modified) {
  if (frame_) frame_->setModifiedFacts(modified, anyModified());
}

void frmRegistry::CommandstoMenu() {
  const auto language = languages().Language();
  const int macros = language ? language->cMacros()->Count() : 0;
  if (macros > 0) {
    for (int i = 0; i < kMacroEntries; ++i) {
      const bool used = i < macros;
      SetMDIMenu(kCustom, used ? inMenu(language->cMacros()->Item(i + 1)->Name) : QString(), used, i);
    }
    SetMDIMenu(kCustom, kSeparator, true, kMacroEntries);
  }
  SetMDIMenu(kCustom, tr("C&ustom"), macros > 0, -1);
}

void frmRegistry::SetHelpMenu() {
  if (!frame_) return;
  const bool has = !languages().GetHelp().isEmpty();
  frame_->setMenuEnabled(QStringLiteral("mHelpContents"), has);
  frame_->setMenuEnabled(QStringLiteral("mHelpWord"), has);
  SetMDIMenu(QStringLiteral("mHelp"), has ? tr("&Help*") : tr("&Help"), true, -1);
}
