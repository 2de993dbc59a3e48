#include "app/start/LeftoverLook.h"

#include "app/boxes/frmRecovered.h"
#include "app/frame/frmMain.h"
#include "base/Strings.h"
#include "document/frmDocument.h"

LeftoverLook::LeftoverLook(frmMain& frame) : frame_(frame) {
  soon_.setSingleShot(true);
  soon_.setInterval(0);
  connect(&soon_, &QTimer::timeout, this, &LeftoverLook::look);
  connect(&frame, &frmMain::fileNamed, this, &LeftoverLook::lookAt);
}

void LeftoverLook::begin() {
  for (const frmDocument* document : frame_.documents())
    if (document->DocumentHasName()) lookAt(document->CurrentFileName());
}

void LeftoverLook::lookAt(const QString& path) {
  paths_ << path;
  soon_.start();
}

void LeftoverLook::look() {
  std::vector<std::string> paths;
  for (const QString& path : std::exchange(paths_, {})) paths.push_back(fromQString(path));
  frmRecovered::offerWhenRead(frame_, [paths] { return text::leftCopies(paths); });
}
