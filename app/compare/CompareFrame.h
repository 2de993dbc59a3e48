// Comparing for the main frame: what is compared with what, the windows that show it, and the commands of its menu, which work in the
// window that was used last. One for each frame, its child.
#pragma once

#include <QObject>
#include <QPointer>

#include "app/compare/CompareWindow.h"

class QMenu;

class CompareFrame : public QObject {
  Q_OBJECT
 public:
  static CompareFrame& of(frmMain& frame);
  ~CompareFrame() override;

  CompareWindow* compare(const CompareSource& left, const CompareSource& right);
  // Opens the files that are not open yet. Null: one could not be read, and the user has been told.
  CompareWindow* compareFiles(const QString& left, const QString& right);
  static CompareSource sourceOf(frmDocument* document);

  // The active document with another text.
  void withFile();      // that the user chooses
  void withDisk();      // its file as it is now
  void withVersion();   // its file in a version that the user chooses
  void fillDocuments(QMenu& menu);

  CompareWindow* current() const { return current_; }   // used last; null: none is open
  void step(int direction);
  void takeOver(compare::Side from);
  void goToOtherSide();
  const Comparison::Ignore& ignored() const { return ignore_; }
  void ignore(const Comparison::Ignore& what);   // in all windows
  void swapSides();
  void refresh();

 private:
  explicit CompareFrame(frmMain& frame);
  // A text that `load` reads for the active document, on a thread, beside it.
  using Load =
      std::function<text::LoadedFile(const std::string& path, const text::FileFormat& format, text::SearchControl& control)>;
  void withText(const QString& whence, const Load& load);
  frmDocument* opened(const QString& path);
  void enableActions();
  void documentClosed(const frmDocument* document);

  frmMain& frame_;
  QList<QPointer<CompareWindow>> windows_, closed_;
  QPointer<CompareWindow> current_;
  Comparison::Ignore ignore_;
};
