#include "app/folder/WorkFolder.h"

#include <QApplication>
#include <algorithm>
#include <utility>

#include "app/frame/frmMain.h"
#include "base/Background.h"
#include "base/Strings.h"
#include "bridge/FileNames.h"
#include "bridge/QStringBytes.h"
#include "document/frmDocument.h"
#include "document/frmLog.h"
#include "folder/Walk.h"
#include "settings/modRegistry.h"
#include "text/file/FileIo.h"

using modRegistry::kGlobalKey;

namespace {

constexpr int kRefreshMs = 300, kFollowMs = 50, kRecentFolders = 10, kProblemsShown = 3;
constexpr int kPause = 5;   // a look that is asked for again begins after so many times what the last one took

const QString kFolder = QStringLiteral("FOLDER"), kList = QStringLiteral("FOLDERLIST"),
              kRelative = QStringLiteral("FOLDERLISTRELATIVE"), kAll = QStringLiteral("FOLDERALL"),
              kRecent = QStringLiteral("FOLDERRECENT");

// The nearest folder from this one up that version control begins at; else this one.
std::string topFor(const std::string& folder) {
  for (std::string at = folder; at.size() > 1;) {
    for (const char* sign : {"/.git", "/.hg"})
      if (text::fileExists(at + sign)) return at;
    const std::size_t slash = at.rfind('/');
    if (slash == std::string::npos) break;
    at.resize(slash);
  }
  return folder;
}

}   // namespace

struct WorkFolder::Found {
  int generation = 0;
  folder::NameTable names;
  std::shared_ptr<folder::FileList> list;
  std::string workingFolder, error;
  folder::WalkReport report;
  std::chrono::milliseconds took{0};
};

WorkFolder::WorkFolder(frmMain& frame)
    : QObject(&frame),
      frame_(frame),
      cancel_(std::make_shared<std::atomic<bool>>(false)),
      names_(std::make_shared<folder::NameTable>()) {
  soon_.setSingleShot(true);
  soon_.setInterval(kRefreshMs);
  connect(&soon_, &QTimer::timeout, this, &WorkFolder::read);
  follow_.setSingleShot(true);
  follow_.setInterval(kFollowMs);
  connect(&follow_, &QTimer::timeout, this, &WorkFolder::followDocument);
  connect(&frame, &frmMain::activeChanged, &follow_, qOverload<>(&QTimer::start));
  connect(&frame, &frmMain::fileNamed, &follow_, qOverload<>(&QTimer::start));
  connect(qApp, &QGuiApplication::applicationStateChanged, this, [this](Qt::ApplicationState state) {
    if (state == Qt::ApplicationActive) refresh();
  });
}

WorkFolder::~WorkFolder() { *cancel_ = true; }

void WorkFolder::use() {
  if (std::exchange(inUse_, true)) return;
  if (kind_ == Kind::none) followDocument();
  else read();
}

QString WorkFolder::title() const {
  const QString name = GetFileTitle(kind_ == Kind::list ? list_ : root_);
  return name.isEmpty() ? root_ : name;
}

void WorkFolder::openFolder(const QString& path) {
  QString folder = GetFileDir(fullPath(path + QLatin1String("/file")));   // "." and ".." at the end are worked off too
  while (folder.size() > 1 && folder.endsWith(u'/')) folder.chop(1);
  remember(folder);
  set(Kind::folder, folder, {});
  save();
}

void WorkFolder::openList(const QString& path, bool relativeToList, const QString& workingFolder) {
  relativeToList_ = relativeToList;
  set(Kind::list, workingFolder.isEmpty() && relativeToList ? GetFileDir(path) : workingFolder, path);
  save();
}

void WorkFolder::close() {
  set(Kind::none, {}, {});
  save();
  followDocument();
}

void WorkFolder::setShowsAll(bool on) {
  if (on == showsAll_) return;
  showsAll_ = on;
  save();
  emit changed();
  refresh();
}

void WorkFolder::set(Kind kind, const QString& root, const QString& list) {
  kind_ = kind;
  root_ = root;
  list_ = list;
  ++generation_;
  *cancel_ = true;
  cancel_ = std::make_shared<std::atomic<bool>>(false);
  reading_ = again_ = false;
  names_ = std::make_shared<folder::NameTable>(fromQString(root));
  fileList_ = nullptr;
  trouble_.clear();
  took_ = {};
  emit changed();
  emit namesChanged();
  read();
}

void WorkFolder::followDocument() {
  if (!inUse_ || kind_ == Kind::folder || kind_ == Kind::list) return;
  const frmDocument* document = frame_.activeDocument();
  if (!document || (document->CurrentFileName().isEmpty() && kind_ != Kind::none)) return;   // what was there stays
  const QString folder = document->CurrentFileDir();
  if (folder.isEmpty()) return;
  inBackground(
      this, [folder = fromQString(folder)] { return topFor(folder); },
      [this, folder](const std::string& top) {
        const frmDocument* now = frame_.activeDocument();
        if (kind_ == Kind::folder || kind_ == Kind::list || !now || now->CurrentFileDir() != folder) return;
        if (toQString(top) != root_) set(Kind::document, toQString(top), {});
        else refresh();
      });
}

void WorkFolder::refresh() {
  if (!inUse_ || kind_ == Kind::none || soon_.isActive()) return;
  soon_.start(std::max<int>(kRefreshMs, int(took_.count()) * kPause));
}

void WorkFolder::read() {
  if (!inUse_ || kind_ == Kind::none || (root_.isEmpty() && list_.isEmpty())) return;
  if (reading_) {
    again_ = true;
    return;
  }
  reading_ = true;
  const auto work = [cancel = cancel_, generation = generation_, root = fromQString(root_), list = fromQString(list_),
                     relative = relativeToList_, all = showsAll_] {
    const auto begin = std::chrono::steady_clock::now();
    auto found = std::make_shared<Found>();
    found->generation = generation;
    if (!list.empty()) {
      found->workingFolder = root.empty() ? folder::likelyWorkingFolder(list) : root;
      found->names = folder::NameTable(found->workingFolder);
      found->list = std::make_shared<folder::FileList>(folder::readFileList(list, found->workingFolder, relative, cancel.get()));
      std::vector<std::string> files = found->list->files;
      const std::string inside = found->workingFolder + '/';
      for (std::string& file : files)
        if (file.starts_with(inside)) file.erase(0, inside.size());
      std::sort(files.begin(), files.end());   // as they stand in the table
      for (const std::string& file : files) found->names.add(file);
    } else {
      found->names = folder::NameTable(root);
      folder::WalkOptions options;
      options.ignored = options.hidden = all;
      options.textOnly = !all;
      found->report = folder::walk(
          root, options,
          [&](const std::string& path) {
            found->names.add(folder::belowRoot(root, path));
            return true;
          },
          cancel.get());
    }
    found->took = std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - begin);
    return found;
  };
  inBackground(this, work, [this](const std::shared_ptr<Found>& found) { take(found); });
}

void WorkFolder::take(const std::shared_ptr<Found>& found) {
  if (found->generation != generation_) return;
  reading_ = false;
  took_ = found->took;
  names_ = std::shared_ptr<const folder::NameTable>(found, &found->names);
  trouble_.clear();
  if (found->list) {
    fileList_ = found->list;
    QStringList problems;
    for (const folder::FileListProblem& problem : found->list->problems)
      problems << plainForDisplay(toQString(problem.list)) + u':' + QString::number(problem.line) + QLatin1String(": ") +
                      plainForDisplay(toQString(problem.text));
    trouble_ = problems.mid(0, kProblemsShown).join(u'\n');
    if (problems.size() > kProblemsShown)
      trouble_ += u'\n' + tr("and %1 more, all in the log").arg(problems.size() - kProblemsShown);
    if (const QString all = problems.join(QLatin1String("\r\n")); all != logged_) {   // where a double click goes to the place
      logged_ = all;
      if (!all.isEmpty()) frame_.log()->AppendLog(all + QLatin1String("\r\n"));
    }
    if (const QString working = toQString(found->workingFolder); working != root_) {
      root_ = working;
      save();
      emit changed();
    }
  } else if (!found->report.error.empty()) {
    trouble_ = tr("%1: %2").arg(plainForDisplay(root_), toQString(found->report.error));
  } else if (found->report.unreadable > 0) {
    const folder::WalkTrouble& first = found->report.troubles.front();
    trouble_ = tr("%1 of the folders and files cannot be read, first %2: %3")
                   .arg(QString::number(found->report.unreadable), plainForDisplay(toQString(first.path)), toQString(first.reason));
  }
  emit namesChanged();
  if (std::exchange(again_, false)) refresh();
}

void WorkFolder::remember(const QString& folder) {
  recent_.removeAll(folder);
  recent_.prepend(folder);
  while (recent_.size() > kRecentFolders) recent_.removeLast();
}

void WorkFolder::save() const {
  using namespace modRegistry;
  SetText(kGlobalKey, kFolder, kind_ == Kind::folder || kind_ == Kind::list ? root_ : QString());
  SetText(kGlobalKey, kList, list_);
  SetFlag(kGlobalKey, kRelative, relativeToList_);
  SetFlag(kGlobalKey, kAll, showsAll_);
  for (int i = 0; i < kRecentFolders; ++i) SetText(kGlobalKey, kRecent + QString::number(i), recent_.value(i));
}

void WorkFolder::restore() {
  using namespace modRegistry;
  showsAll_ = Flag(kGlobalKey, kAll, false);
  for (int i = 0; i < kRecentFolders; ++i)
    if (const QString one = Text(kGlobalKey, kRecent + QString::number(i)); !one.isEmpty()) recent_ << one;
  const QString list = Text(kGlobalKey, kList), folder = Text(kGlobalKey, kFolder);
  relativeToList_ = Flag(kGlobalKey, kRelative, false);
  if (!list.isEmpty()) set(Kind::list, folder, list);
  else if (!folder.isEmpty()) set(Kind::folder, folder, {});
}
