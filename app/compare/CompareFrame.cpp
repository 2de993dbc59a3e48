#include "app/compare/CompareFrame.h"

#include <QAction>
#include <QMenu>
#include <QSet>
#include <algorithm>

#include "app/frame/DocumentTabs.h"
#include "app/frame/LateDocument.h"
#include "app/frame/frmMain.h"
#include "base/Program.h"
#include "base/Strings.h"
#include "base/dialog/Dialogs.h"
#include "bridge/FileNames.h"
#include "bridge/LongWork.h"
#include "document/FileErrors.h"
#include "document/Languages.h"
#include "document/frmDocument.h"
#include "document/frmRegistry.h"
#include "folder/GitVersion.h"
#include "language/ucCM.h"
#include "text/file/FileIo.h"

using compare::kLeft;
using compare::kRight;

CompareFrame& CompareFrame::of(frmMain& frame) {
  auto* found = frame.findChild<CompareFrame*>(QString(), Qt::FindDirectChildrenOnly);
  return found ? *found : *new CompareFrame(frame);
}

CompareFrame::CompareFrame(frmMain& frame) : QObject(&frame), frame_(frame) {
  connect(&frame, &frmMain::documentClosed, this, &CompareFrame::documentClosed);
}

CompareFrame::~CompareFrame() {
  for (const QPointer<CompareWindow>& window : windows_ + closed_) {
    if (!window) continue;
    window->disconnect(this);
    delete window;
  }
}

CompareSource CompareFrame::sourceOf(frmDocument* document) {
  CompareSource source;
  source.document = document;
  return source;
}

CompareWindow* CompareFrame::compare(const CompareSource& left, const CompareSource& right) {
  auto* window = new CompareWindow(frame_, left, right);
  windows_.removeAll(nullptr);
  closed_.removeAll(nullptr);
  windows_ << window;
  window->view().comparison().setIgnored(ignore_);
  connect(window, &CompareWindow::activated, this, [this, window] {
    current_ = window;
    enableActions();
  });
  connect(window, &CompareWindow::stateChanged, this, [this, window] {
    if (window == current_) enableActions();
  });
  connect(window, &CompareWindow::closed, this, [this, window] {
    windows_.removeAll(window);
    closed_ << window;   // it is deleted when the event loop comes to it, but not after the frame
    if (current_ == window) current_ = windows_.isEmpty() ? nullptr : windows_.last();
    enableActions();
  });
  current_ = window;
  window->show();
  window->activateWindow();
  enableActions();
  return window;
}

frmDocument* CompareFrame::opened(const QString& path) {
  frmDocument* open = documentOn(frame_, fullPath(path));
  return open ? open : frame_.openFile(path);
}

CompareWindow* CompareFrame::compareFiles(const QString& left, const QString& right) {
  const QPointer<frmDocument> one = opened(left);
  frmDocument* two = one ? opened(right) : nullptr;
  return one && two ? compare(sourceOf(one), sourceOf(two)) : nullptr;
}

void CompareFrame::withFile() {
  const QPointer<frmDocument> document = frame_.activeDocument();
  if (!document) return;
  int entry = 1;
  const QStringList names =
      frmRegistry::instance().stdOpenFile(tr("Compare With"), languages().GetFilterList(), entry, currentFolder(), {});
  if (names.isEmpty() || !document) return;
  frmDocument* other = opened(names.first());
  if (other && document) compare(sourceOf(document), sourceOf(other));
}

void CompareFrame::withText(const QString& whence, const Load& load) {
  const QPointer<frmDocument> document = frame_.activeDocument();
  if (!document || !document->DocumentHasName()) return;
  const QString path = document->CurrentFileName();
  const auto read = [this, path, load, format = document->cmx->fileFormat()]() -> std::optional<text::LoadedFile> {
    const auto found = std::make_shared<text::LoadedFile>();
    const auto work = [found, load, file = fromQString(path), format](text::SearchControl& control) {
      *found = load(file, format, control);
    };
    if (!LongWork::runOrLeave(frame_, work, tr("Reading %1").arg(plainForDisplay(path, 80)))) return std::nullopt;
    return std::move(*found);
  };
  const std::optional<text::LoadedFile> loaded = read();
  if (!loaded || !document) return;
  if (!loaded->error.empty()) return tellOpenError(path, toQString(loaded->error));
  CompareSource there;
  there.text = loaded->text;
  there.format = loaded->format;
  there.name = whence + QStringLiteral(": ") + nameForDisplay(document->CurrentFileTitle());
  there.language = document->cmx->Language();
  there.again = read;
  compare(there, sourceOf(document));
}

void CompareFrame::withDisk() {
  withText(tr("On disk"), [](const std::string& path, const text::FileFormat& format, text::SearchControl& control) {
    text::LoadOptions options;
    options.format = format;
    text::LoadedFile disk = text::loadFile(path, options, &control);
    const bool done = disk.error.empty() || control.cancel;
    return done ? disk : text::loadFile(path, {}, &control);   // others may have changed its encoding
  });
}

void CompareFrame::withVersion() {
  const frmDocument* document = frame_.activeDocument();
  if (!document || !document->DocumentHasName()) return;
  const auto version = InputBox(tr("Version: HEAD, a branch, a tag or a number (nothing: what is staged)"),
                                tr("Compare With Version Control"), QStringLiteral("HEAD"));
  if (!version) return;
  const QString shown = version->trimmed().isEmpty() ? tr("Staged") : plainForDisplay(version->trimmed(), 60);
  withText(shown, [name = fromQString(version->trimmed())](const std::string& path, const text::FileFormat& format,
                                                           text::SearchControl& control) {
    text::LoadOptions options;
    options.format = format;
    return folder::gitVersion(path, name, options, control);
  });
}

void CompareFrame::fillDocuments(QMenu& menu) {
  frmDocument* active = frame_.activeDocument();
  QSet<const TextModel*> listed;   // a text may have several windows
  if (active) listed << active->cmx->model().get();
  for (QObject* entry : frame_.tabs().entries()) {
    auto* document = qobject_cast<frmDocument*>(entry);
    if (!active || (document && listed.contains(document->cmx->model().get()))) continue;
    if (document) listed << document->cmx->model().get();
    const auto [path, title, caption] = DocumentTabs::namesOf(entry);
    const QString mark = caption.endsWith(u'*') ? QStringLiteral("*") : QString();
    const QString name = plainForDisplay(path.isEmpty() ? caption : path + mark, 120).replace(u'&', QLatin1String("&&"));
    connect(menu.addAction(name), &QAction::triggered, this, [this, entry = QPointer(entry), here = QPointer(active)] {
      auto* other = qobject_cast<frmDocument*>(entry);
      if (auto* late = qobject_cast<LateDocument*>(entry)) other = frame_.openLate(*late);
      if (here && other) compare(sourceOf(here), sourceOf(other));
    });
  }
  if (menu.isEmpty()) menu.addAction(tr("No other document is open"))->setEnabled(false);
}

void CompareFrame::documentClosed(const frmDocument* document) {
  for (const QPointer<CompareWindow>& window : QList(windows_)) {
    if (!window || !window->shows(document)) continue;
    window->mayClose = {};
    window->close();
  }
}

void CompareFrame::step(int direction) {
  if (current_) current_->view().step(direction);
}

void CompareFrame::takeOver(compare::Side from) {
  if (current_) current_->view().takeOver(from);
}

void CompareFrame::goToOtherSide() {
  if (!current_) return;
  current_->view().activate(compare::other(current_->view().active()));
  current_->activateWindow();
}

void CompareFrame::ignore(const Comparison::Ignore& what) {
  ignore_ = what;
  for (const QPointer<CompareWindow>& window : std::as_const(windows_))
    if (window) window->view().comparison().setIgnored(what);
}

void CompareFrame::swapSides() {
  if (current_) current_->swapSides();
}

void CompareFrame::refresh() {
  if (current_) current_->refresh();
}

void CompareFrame::enableActions() {
  const auto enable = [&](const char* name, bool on) { frame_.setMenuEnabled(QString::fromLatin1(name), on); };
  CompareView* view = current_ ? &current_->view() : nullptr;
  enable("mCompareNext", view && view->count() > 0);
  enable("mComparePrevious", view && view->count() > 0);
  enable("mCompareToLeft", view && view->canTakeOver(kRight));
  enable("mCompareToRight", view && view->canTakeOver(kLeft));
  for (const char* name :
       {"mCompareBlanks", "mCompareCase", "mCompareComments", "mCompareSwap", "mCompareRefresh", "mCompareOther"})
    enable(name, view != nullptr);
}
