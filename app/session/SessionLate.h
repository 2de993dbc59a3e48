// A document of a session that waits: it is opened when its tab is first shown, or when its unsaved text has been read.
#pragma once

#include "app/frame/LateDocument.h"
#include "app/session/KeptWindows.h"
#include "app/session/Session.h"
#include "base/Strings.h"
#include "bridge/FileNames.h"
#include "bridge/QStringBytes.h"

class Session::Late : public LateDocument {
 public:
  Late(Session& session, KeptDocument document)
      : LateDocument(toQString(document.path),
                     document.path.empty() ? toQString(document.title) : GetFileTitle(toQString(document.path))),
        kept(std::move(document)),
        session_(session) {
    place = placeOf(kept.place);
  }
  bool isModified() const override { return kept.modified; }
  frmDocument* open(frmMain&) override { return session_.openLate(*this); }

  KeptDocument kept;   // path: see LateDocument
  bool isRead = false;
  std::shared_ptr<Found> found;   // its unsaved text

 private:
  Session& session_;
};
