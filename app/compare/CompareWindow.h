// The window that compares two texts. A side is an open document, which is edited and saved as in its own window, or a text that is
// only looked at: what is on disk, or what version control has.
#pragma once

#include <QMainWindow>
#include <QPointer>
#include <functional>

#include "change/compare/CompareView.h"
#include "change/compare/MergeView.h"
#include "text/file/FileIo.h"

struct FrameCommand;
class QLabel;
class frmDocument;
class frmMain;

// One side of a comparison. Without a document: a text that cannot be changed.
struct CompareSource {
  QPointer<frmDocument> document;
  text::Snapshot text;
  text::FileFormat format;
  QString name, language;
  std::function<std::optional<text::LoadedFile>()> again;   // reads such a text again; null: it does not change. None: cancelled
};

class CompareWindow : public QMainWindow {
  Q_OBJECT
 public:
  CompareWindow(frmMain& frame, const CompareSource& left, const CompareSource& right);
  ~CompareWindow() override;

  CompareView& view() { return *view_; }
  frmDocument* document(compare::Side side) const;   // null: the side is only looked at
  bool shows(const frmDocument* document) const;
  void swapSides();
  void refresh();   // reads again what is no document, and compares again
  // Shows the result of merging the two texts below them. result: the document that holds merged.text.
  MergeView& merge(frmDocument* result, const std::vector<text::MergeRegion>& regions, const text::MergedText& merged);
  void save();   // the document of the active side, or the result of merging
  void saveAll();
  std::function<bool()> mayClose;   // null: always; the texts stay open

 signals:
  void activated();
  void stateChanged();
  void closed();

 protected:
  void closeEvent(QCloseEvent* event) override;
  void changeEvent(QEvent* event) override;

 private:
  CodeMax* makeText(const CompareSource& source);
  void useOptions();                      // those of the program, which may have changed
  void storeOptions(const CodeMax& of);   // the user has changed them in this window
  void makeMenus();
  QAction* mirror(const FrameCommand& row);   // the frame's command, for this window
  void showNames();
  void showState();
  CodeMax& active();   // the text that has or last had the focus
  frmDocument* activeDocument() const;

  frmMain& frame_;
  std::array<CompareSource, 2> sources_;
  CompareView* view_;
  QPointer<frmDocument> result_;   // of merging
  MergeView* merge_ = nullptr;
  QLabel* summary_;
  QList<std::pair<const FrameCommand*, QAction*>> actions_;
  bool met_ = false;   // the first difference was shown
};
