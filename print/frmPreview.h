// The print preview: lays a document out, shows its pages while more come, and prints them, writes them to a PDF file or shows the
// review sheet instead.
#pragma once

#include <QDialog>
#include <memory>

#include "control/VSPrinter.h"
#include "print/PrintSettings.h"

class CodeMax;
class PageView;
class QAction;
class QComboBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QProgressBar;
class QSpinBox;
class frmDocument;

// The text that is printed: a document, or another control with a title (the log).
struct PrintSource {
  frmDocument* document = nullptr;
  CodeMax* cmx = nullptr;
  QString title;
  CodeMax* control() const;
};

class frmPreview : public QDialog {
  Q_OBJECT
 public:
  explicit frmPreview(const PrintSource& source, bool printSelection, QWidget* parent = nullptr);
  ~frmPreview() override;

  int exec() override;
  const PrintDocument& document() const { return vp_.document(); }
  const CWordWrap& wrap() const { return *wrap_; }
  qint64 lineToShow() const { return lineToShow_; }   // of the source, chosen in the list of clipped lines; -1 none

 public slots:
  void reject() override;

 private:
  void buildToolBar();
  void layOutText();
  void showReviewSheet();
  void pagesArrived();
  void PrintIt();
  void writePdf();
  void changeOptions();
  void find(bool again);
  void fillClipped();

  PrintSource source_;
  bool selection_, laidOut_ = false, working_ = false, cancel_ = false, reviewSheet_ = false, closing_ = false;
  PrintSettings settings_;
  VSPrinter vp_;
  std::unique_ptr<CWordWrap> wrap_;
  qint64 lineToShow_ = -1;
  PageView* view_;
  QListWidget *clipped_, *thumbnails_;
  QSpinBox* page_;
  QLabel* count_;
  QLineEdit* find_;
  QComboBox* zoom_;
  QProgressBar* progress_;
  QAction *print_, *pdf_, *review_;
  int foundPage_ = 0, foundRun_ = -1;
};

// The ways in: each asks about a selection first. Print shows the desktop's print dialog.
void PrintPreview(const PrintSource& source, QWidget* parent);
void PrintText(const PrintSource& source, QWidget* parent);
// Prints pages on a printer that the desktop's dialog chooses; false: cancelled or failed (the person has been told).
bool printPages(const PrintDocument& document, QWidget* parent);
// Writes bytes to a PDF file chosen in a dialog; false: cancelled or failed (told).
bool savePdf(const PrintDocument& document, const QString& proposedName, QWidget* parent);
