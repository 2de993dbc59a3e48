#include "app/start/StandardInput.h"

#include <QCoreApplication>
#include <cerrno>

#include "app/frame/frmMain.h"
#include "base/Program.h"
#include "base/Strings.h"
#include "bridge/FileNames.h"
#include "control/edit/TextModel.h"
#include "text/file/FileIo.h"

namespace {

const QString kPrefix = QStringLiteral("input-");

text::files::Descriptor lockSpooled(const QString& path) {
  using namespace text;
  files::Descriptor file = files::open(FileSystem::kCwd, fromQString(path), kRead | kNoFollow | kNonBlock);
  if (file.ok() && fileSystem().lock(file.get(), true, false) < 0) file = files::Descriptor();
  return file;
}

}   // namespace

StandardInput spoolStandardInput() {
  StandardInput input;
  std::string bytes;
  char block[65536];
  std::int64_t got;
  while ((got = text::files::readSome(0, block, sizeof block)) > 0) bytes.append(block, std::size_t(got));
  if (got < 0) {
    input.error = toQString(text::errorText(int(got)));
    return input;
  }
  const QString path = userStateFolder() + u'/' + kPrefix + QString::number(QCoreApplication::applicationPid());
  const text::SaveResult saved = text::saveBytes(fromQString(path), bytes, 0600);
  input.error = toQString(saved.error);
  if (!saved.ok()) return input;
  input.path = path;
  input.lock = lockSpooled(path);
  return input;
}

bool isSpooledInput(const QString& path) {
  return path.startsWith(userStateFolder() + u'/' + kPrefix) && !path.contains(QLatin1String("/../"));
}

void takeInLeftInput(frmMain& frame) {
  const QString folder = userStateFolder();
  QStringList names = folderNames(folder);
  names.sort();
  for (const QString& name : std::as_const(names)) {
    const QString path = folder + u'/' + name;
    if (!name.startsWith(kPrefix) || !isRegularFile(path)) continue;
    const text::files::Descriptor lock = lockSpooled(path);
    if (lock.ok() && text::fileExists(fromQString(path))) frame.takeIn(path);   // unless another copy has taken it meanwhile
  }
}
