#include "document/Frame.h"

#include <algorithm>

#include "base/Strings.h"
#include "base/Workspace.h"
#include "bridge/FileNames.h"
#include "document/frmDocument.h"
#include "text/file/FileIo.h"

namespace {
struct FrameInForce {
  Frame* frame = nullptr;
};
}   // namespace

bool Frame::isInUse(const QString& path) { return documentOn(*this, path) != nullptr; }

frmDocument* documentOn(Frame& frame, const QString& path) {
  const auto open = frame.documents();
  const auto same = [&](const frmDocument* document) { return document->CurrentFileName() == path; };
  auto found = std::find_if(open.begin(), open.end(), same);
  // Finds the same file under another name (a link). Examines only files on the same device, because another device may hang.
  const text::FileStamp stamp = text::stampOf(fromQString(path), false);
  if (found == open.end() && stamp.exists)
    found = std::find_if(open.begin(), open.end(), [&](const frmDocument* document) {
      const auto& known = document->cmx->model()->stamp;
      return document->DocumentHasName() && known && known->status.device == stamp.status.device &&
             isSameFile(document->CurrentFileName(), path);
    });
  return found == open.end() ? nullptr : *found;
}

Frame* frame() { return Workspace::current().part<FrameInForce>().frame; }
void setFrame(Frame* frame) { Workspace::current().part<FrameInForce>().frame = frame; }
