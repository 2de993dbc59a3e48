#include "settings/RegistryFile.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QThread>
#include <cerrno>
#include <cstdio>

#include "base/Program.h"
#include "base/Strings.h"
#include "bridge/QStringBytes.h"
#include "text/file/FileIo.h"

using namespace Qt::StringLiterals;
using namespace registry;

namespace {

constexpr int kQuietTime = 400, kRetryTime = 15000, kWindowTime = 500;   // milliseconds
constexpr std::size_t kSizeLimit = 32u << 20;                            // far above any real settings file
constexpr int kLongestName = 255;                                        // of one part of a key path, as in the registry

QString hiveName(quint32 hive) {
  switch (hive) {
    case kClassesRoot: return u"HKEY_CLASSES_ROOT"_s;
    case kCurrentUser: return u"HKEY_CURRENT_USER"_s;
    case kLocalMachine: return u"HKEY_LOCAL_MACHINE"_s;
    case kUsers: return u"HKEY_USERS"_s;
    case kCurrentConfig: return u"HKEY_CURRENT_CONFIG"_s;
    default: return {};
  }
}

bool printable(const QString& name) {
  for (const QChar c : name)
    if (c.unicode() < 0x20) return false;
  return true;
}

int codeOf(int error) {
  switch (-error) {
    case ENOENT: return kNotFound;
    case EACCES:
    case EPERM:
    case EROFS: return kAccessDenied;
    case ENOSPC:
    case EDQUOT: return kDiskFull;
    case EWOULDBLOCK: return kSharingViolation;
    default: return kWriteFault;
  }
}

}   // namespace

// The lock file is never removed: else two processes could each hold "the" lock.
class RegistryFile::Lock {
 public:
  Lock(const QString& path, int patience) {
    text::FileSystem& fs = text::fileSystem();
    fd_ = fs.openAt(text::FileSystem::kCwd, fromQString(path + ".lock"_L1), text::kRead | text::kWrite | text::kCreate, 0600);
    if (fd_ < 0) {
      error = fd_;
      return;
    }
    QElapsedTimer clock;
    clock.start();
    while ((error = fs.lock(fd_, true, false)) == -EWOULDBLOCK || error == -EINTR) {
      if (clock.elapsed() >= patience) return;
      QThread::msleep(3);
    }
  }
  ~Lock() {
    if (fd_ >= 0) text::fileSystem().close(fd_);
  }
  Lock(const Lock&) = delete;
  Lock& operator=(const Lock&) = delete;
  int error = 0;   // 0: held

 private:
  int fd_ = -1;
};

RegistryFile::RegistryFile(const QString& path, const QString& oldPath) : path_(path), oldPath_(oldPath) {
  timer_.setSingleShot(true);
  QObject::connect(&timer_, &QTimer::timeout, &timer_, [this] { flush(); });
}

RegistryFile::~RegistryFile() = default;

int RegistryFile::locate(quint32 hive, const QString& key, QString* path) {
  *path = hiveName(hive);
  if (path->isEmpty()) return kInvalidHandle;
  if (!key.isEmpty()) {
    const QString trimmed = key.endsWith(u'\\') ? key.chopped(1) : key;
    for (const QString& part : trimmed.split(u'\\'))
      if (part.isEmpty() || part.size() > kLongestName || !printable(part)) return kInvalidParameter;
    *path += u'\\' + trimmed;
  }
  if (!loaded_) load();
  return kSuccess;
}

RegistryFile::Found RegistryFile::readFile(RegistryText& text) {
  bytes_.clear();
  const std::string path = fromQString(path_);
  text::FileStatus status;
  const int found = text::fileSystem().statAt(text::FileSystem::kCwd, path, true, &status);
  if (found == -ENOENT || found == -ENOTDIR) return readOldFile(text);
  std::string error;
  if (found == 0 && status.isRegular() && status.size > std::int64_t(kSizeLimit)) return Found::damaged;
  const std::string bytes = text::readBytes(path, &error, kSizeLimit);
  if (!error.empty()) {
    reason_ = QString::fromStdString(error);
    return Found::unreadable;
  }
  bytes_ = QByteArray(bytes.data(), qsizetype(bytes.size()));
  return text.parse(bytes_) ? Found::whole : Found::damaged;
}

// A damaged old file is ignored and left where it is.
RegistryFile::Found RegistryFile::readOldFile(RegistryText& text) const {
  if (oldPath_.isEmpty()) return Found::missing;
  std::string error;
  const std::string bytes = text::readBytes(fromQString(oldPath_), &error, kSizeLimit);
  return error.empty() && text.parse(QByteArray(bytes.data(), qsizetype(bytes.size()))) ? Found::whole : Found::missing;
}

int RegistryFile::setAside() {
  const QFileInfo info(path_);
  text::FileSystem& fs = text::fileSystem();
  int result = -EEXIST;
  for (int n = 1; n < 1000 && result == -EEXIST; ++n) {
    const QString name = info.completeBaseName() + (n == 1 ? u".damaged."_s : u".damaged-%1."_s.arg(n)) + info.suffix();
    const QString aside = joinPath(info.path(), name);
    if (text::fileExists(fromQString(aside))) continue;
    result = fs.renameAt(text::FileSystem::kCwd, fromQString(path_), text::FileSystem::kCwd, fromQString(aside), text::kReplace);
    if (result == 0) keptAs_ = name;
  }
  return result == 0 ? int(kSuccess) : codeOf(result);
}

void RegistryFile::tellOfDamage() {
  if (keptAs_.isEmpty() || std::exchange(told_, true)) return;
  report(QCoreApplication::translate("RegistryFile",
                                     "The settings file %1 is damaged. It was kept as %2; the editor continues with the "
                                     "settings in memory and the defaults.")
             .arg(plainForDisplay(path_), plainForDisplay(keptAs_)));
}

// Settings are read before the first window exists. The message is shown again, and logged, after the window has appeared.
void RegistryFile::report(const QString& text) {
  SetStatusText(text);
  std::fprintf(stderr, "zelkor: %s\n", qPrintable(text));
  if (!QCoreApplication::instance()) return;
  QTimer::singleShot(kWindowTime, &timer_, [text] {
    AppendReport(text);
    SetStatusText(text);
  });
}

void RegistryFile::load() {
  loaded_ = true;
  Found found = readFile(text_);
  if (found == Found::damaged && !readOnly_) {
    // Reads the file again under the lock: the first read may have seen it while it was being overwritten in place.
    const Lock lock(path_, lockPatience_);
    if (lock.error == 0 && (found = readFile(text_)) == Found::damaged && setAside() == kSuccess) found = Found::missing;
  }
  tellOfDamage();
  if ((found == Found::damaged || found == Found::unreadable) && !told_) {
    told_ = true;
    const QString why = found == Found::damaged ? QCoreApplication::translate("RegistryFile", "it is damaged") : reason_;
    report(QCoreApplication::translate("RegistryFile",
                                       "The settings file %1 cannot be used (%2). The editor starts with its defaults.")
               .arg(plainForDisplay(path_), plainForDisplay(why)));
  }
}

int RegistryFile::open(quint32 hive, const QString& key) {
  QString path;
  if (const int code = locate(hive, key, &path)) return code;
  return key.isEmpty() || text_.hasKey(path) ? kSuccess : kNotFound;
}

int RegistryFile::read(quint32 hive, const QString& key, const QString& name, QVariant* value) {
  *value = {};
  QString path;
  if (const int code = locate(hive, key, &path)) return code;
  if (!text_.hasValue(path, name)) return kNotFound;
  *value = text_.value(path, name);
  return kSuccess;
}

int RegistryFile::write(quint32 hive, const QString& key, const QString& name, const QVariant& value) {
  if (const int code = open(hive, key)) return code;
  const int type = value.typeId();
  if ((type != QMetaType::Int && type != QMetaType::QString) || !printable(name)) return kInvalidParameter;
  QString path;
  locate(hive, key, &path);
  const QVariant old = text_.value(path, name);
  if (old == value && old.typeId() == type) return kSuccess;
  record({Kind::write, path, name, value});
  return kSuccess;
}

int RegistryFile::create(quint32 hive, const QString& key) {
  QString path;
  if (const int code = locate(hive, key, &path)) return code;
  if (!key.isEmpty() && !text_.hasKey(path)) record({Kind::create, path, {}, {}});
  return kSuccess;
}

int RegistryFile::remove(quint32 hive, const QString& key) {
  if (key.isEmpty()) return hiveName(hive).isEmpty() ? kInvalidHandle : kAccessDenied;
  if (const int code = open(hive, key)) return code;
  QString path;
  locate(hive, key, &path);
  if (text_.hasSubkeys(path)) return kAccessDenied;
  record({Kind::remove, path, {}, {}});
  return kSuccess;
}

void RegistryFile::apply(const Change& change, RegistryText& text) {
  switch (change.kind) {
    case Kind::create: text.addKey(change.key); break;
    case Kind::write: text.setValue(change.key, change.name, change.value); break;
    case Kind::remove:
      if (!text.hasSubkeys(change.key)) text.removeKey(change.key);
      break;
  }
}

void RegistryFile::record(Change change) {
  apply(change, text_);
  if (readOnly_) return;
  if (change.kind == Kind::write) {
    for (auto old = changes_.rbegin(); old != changes_.rend() && old->kind != Kind::remove; ++old) {
      if (old->kind != Kind::write || old->name.compare(change.name, Qt::CaseInsensitive) != 0 ||
          old->key.compare(change.key, Qt::CaseInsensitive) != 0)
        continue;
      old->value = change.value;
      schedule(kQuietTime);
      return;
    }
  }
  changes_.push_back(std::move(change));
  schedule(kQuietTime);
}

void RegistryFile::schedule(int milliseconds) {
  if (QCoreApplication::instance()) timer_.start(milliseconds);
}

int RegistryFile::flush() {
  timer_.stop();
  if (changes_.empty() || readOnly_) return kSuccess;
  int code = kSuccess;
  const std::string folder = fromQString(QFileInfo(path_).path());
  if (const std::string error = text::makeFolders(folder, 0700); !error.empty()) {
    reason_ = QString::fromStdString(error);
    code = kAccessDenied;
  } else {
    const Lock lock(path_, lockPatience_);
    if (lock.error != 0) {
      reason_ = QString::fromStdString(text::errorText(lock.error));
      code = codeOf(lock.error);
    } else {
      code = writeOut();
    }
  }
  tellOfDamage();
  if (code == kSuccess) {
    complained_ = false;
    return code;
  }
  if (!complained_) SetStatusText(QCoreApplication::translate("RegistryFile", "The settings could not be saved: %1").arg(reason_));
  complained_ = true;
  schedule(kRetryTime);
  return code;
}

int RegistryFile::writeOut() {
  RegistryText merged;
  switch (readFile(merged)) {
    case Found::unreadable: return kAccessDenied;
    case Found::damaged:
      if (const int code = setAside()) {
        reason_ = QCoreApplication::translate("RegistryFile", "the file is damaged and cannot be renamed");
        return code;
      }
      merged = text_;
      break;
    case Found::whole:
    case Found::missing: break;
  }
  for (const Change& change : changes_) apply(change, merged);
  const QByteArray bytes = merged.toBytes();
  if (bytes != bytes_) {
    const text::SaveResult result =
        text::saveBytes(fromQString(path_), std::string_view(bytes.data(), std::size_t(bytes.size())), 0600);
    if (!result.ok()) {
      reason_ = QString::fromStdString(result.error);
      return kWriteFault;
    }
  }
  text_ = std::move(merged);
  changes_.clear();
  return kSuccess;
}
