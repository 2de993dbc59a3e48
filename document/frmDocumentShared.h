// What the files of frmDocument share and nobody else sees.
#pragma once

#include <QPointer>
#include <QTimer>
#include <memory>
#include <vector>

#include "document/Recovery.h"
#include "document/frmDocument.h"

// What all windows of one text share.
struct frmDocument::Shared {
  static constexpr std::int64_t kBreaksLook = 8 << 20;   // bytes; reading them takes some milliseconds
  QString name, title, folder;
  bool hasName = false;
  bool modified = false;
  bool leftInJournal = false;                    // closing keeps the journal
  bool protectedFile = false, guarded = false;   // the file is write-protected; the text is read-only because of that
  int language = 0;
  bool languageIsChosen = false;
  bool encodingIsChosen = false;
  std::optional<text::FileFormat> detected;   // format that loading the file chose; empty: it was not loaded
  QString lineComment, blockStart, blockEnd;
  std::int64_t stampTakenNs = 0;   // time of the last complete check of the file
  bool mixedBreaks = false;        // as far as was looked
  QTimer breaksLook;               // runs shortly after line ends were added or removed
  std::vector<frmDocument*> windows;
  std::unique_ptr<Recovery> recovery;   // null when there are no journals
};

// While a box of the document is open, the file is not watched, and the focus that returns when the box closes does not trigger a
// check.
class frmDocument::OwnBox {
 public:
  explicit OwnBox(frmDocument& document) : document_(&document), watched_(document.Timer1->isActive()) {
    document.Timer1->stop();
    ++document.ownBoxes_;
  }
  ~OwnBox() {
    if (!document_) return;
    --document_->ownBoxes_;
    if (watched_) document_->Timer1->start();
  }
  bool documentIsGone() const { return document_.isNull(); }

 private:
  QPointer<frmDocument> document_;
  bool watched_;
};
