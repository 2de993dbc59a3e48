// Named sessions, as the menu offers them.
#include <QMenu>
#include <QScopedValueRollback>

#include "app/boxes/frmRecovered.h"
#include "app/frame/DocumentTabs.h"
#include "app/frame/frmMain.h"
#include "app/session/Session.h"
#include "base/Program.h"
#include "base/Strings.h"
#include "base/dialog/Dialogs.h"
#include "bridge/QStringBytes.h"
#include "document/Recovery.h"
#include "text/file/FileSystem.h"

namespace {

constexpr qsizetype kLongestName = 80;   // characters

QString shownSession(const QString& name) { return plainForDisplay(name, kLongestName); }

bool ownOrTell(SessionFile& file, const QString& name) {
  if (file.own()) return true;
  MsgBox(Session::tr("The session %1 is open in another window of the program").arg(shownSession(name)));
  return false;
}

}   // namespace

// Asks as closing all documents does. What was answered goes into the session before it is left.
bool Session::leave() {
  if (!texted_) {
    MsgBox(tr("The unsaved texts of this session are still being read. Please try again when they are there"));
    return false;
  }
  const QScopedValueRollback quiet(quiet_, true);
  frame_.keepTexts();
  frame_.closeOthers(nullptr);
  if (frame_.tabs().count() > 0) return false;
  if (file_ && file_ != last_) file_->release();
  file_.reset();
  name_.clear();
  known_ = {};
  texts_.clear();
  if (RecoverySession* recovery = RecoverySession::current()) recovery->flush();   // what was given up is gone now
  return true;
}

void Session::open(const QString& name) {
  if (name == name_) return;
  const auto file = fileOf(name);
  if (!ownOrTell(*file, name)) return;
  if (const SessionFile::Read there = file->read(); !there.mayWrite) {
    MsgBox(tr("The session %1 cannot be opened: %2").arg(shownSession(name), toQString(there.trouble)));
    return;
  }
  for (const auto* window : frame_.findChildren<frmRecovered*>())
    if (window->isVisible()) {
      MsgBox(tr("Please close the window with the recovered texts first: texts of the session may be among them"));
      return;
    }
  if (!leave()) return touch(0);
  if (!take(file, name)) goOnWithLast();
  rememberName(Last::waits);
  show();
  restoreTexts();
}

void Session::close() {
  if (name_.isEmpty()) return;
  if (!leave()) return touch(0);
  goOnWithLast();
  show();
  restoreTexts();
  touch(0);
}

void Session::goOnWithLast() {
  if (comesBack()) file_ = last_;
  applyKeeping();
  if (!file_) return;
  if (const SessionFile::Read read = file_->read(); read.isThere) apply(read.state);
}

void Session::askForName() {
  const auto answer = InputBox(tr("Name of the session:"), tr("Save Session"), name_);
  const QString name = answer ? answer->trimmed() : QString();
  if (name.isEmpty()) return;
  if (name.size() > kLongestName) {
    MsgBox(tr("The name is too long: at most %1 characters").arg(kLongestName));
    return;
  }
  if (name == name_) return touch(0);   // it is written by itself
  const auto file = fileOf(name);
  if (!ownOrTell(*file, name)) return;
  const QString question = tr("There is a session %1.\r\nDo you want to replace it?").arg(shownSession(name));
  if (file->exists() && MsgBox(question, {}, Icon::question, Buttons::yesNo) != Answer::yes) return;
  if (const SessionFile::Read old = file->read(); !old.mayWrite) {
    MsgBox(tr("The session %1 cannot be replaced: %2").arg(shownSession(name), toQString(old.trouble)));
    return;
  }
  const Last last = name_.isEmpty() ? Last::goesOnHere : Last::waits;
  SessionState now = state(false);
  if (const std::string error = file->write(now, ++writes_); !error.empty()) {
    MsgBox(tr("The session cannot be written: %1").arg(toQString(error)));
    return;
  }
  if (!name_.isEmpty()) {   // the unsaved texts go on in the new one
    std::erase_if(now.documents, [](const KeptDocument& one) { return one.modified && one.path.empty(); });
    for (KeptDocument& one : now.documents) {
      one.modified = false;
      one.journal.clear();
    }
    now.active = -1;
    file_->write(now, ++writes_);
    file_->release();
  }
  file_ = file;
  name_ = name;
  known_ = {};
  applyKeeping();
  rememberName(last);
  SetStatusText(tr("The session %1 is saved from now on").arg(shownSession(name)));
}

void Session::askToRemove(const QString& name) {
  const QString question = tr("Do you want to delete the session %1?\r\nIts files stay as they are.").arg(shownSession(name));
  if (MsgBox(question, {}, Icon::question, Buttons::yesNo) != Answer::yes) return;
  const auto file = fileOf(name);
  if (!ownOrTell(*file, name)) return;
  if (const int error = file->remove(); error < 0) MsgBox(toQString(text::errorText(error)));
}

void Session::fillOpen(QMenu& menu) {
  for (const QString& name : names()) {
    QAction* entry = menu.addAction(shownSession(name).replace(u'&', QLatin1String("&&")));
    entry->setCheckable(true);
    entry->setChecked(name == name_);
    connect(entry, &QAction::triggered, this, [this, name] { open(name); });
  }
  if (menu.isEmpty()) menu.addAction(tr("No session is saved"))->setEnabled(false);
}

void Session::fillRemove(QMenu& menu) {
  for (const QString& name : names()) {
    if (name == name_) continue;
    QAction* entry = menu.addAction(shownSession(name).replace(u'&', QLatin1String("&&")));
    connect(entry, &QAction::triggered, this, [this, name] { askToRemove(name); });
  }
  if (menu.isEmpty()) menu.addAction(tr("There is no other session"))->setEnabled(false);
}
