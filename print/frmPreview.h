// The print preview: lays a document out and shows its pages while more are made. Prints them, writes them to a PDF file, or shows
// the review sheet instead.
#pragma once

#include <QDialog>
#include <memory>

#include "page/VSPrinter.h"
#include "print/PrintSettings.h"

class CodeMax;
class PageThumbnails;
class PageView;
class QAction;
class QComboBox;
class QLabel;
class QLineEdit;
class QListView;
class QListWidget;
class QProgressBar;
class QPushButton;
class QSpinBox;
class frmDocument;

// The printed text: a document, or another control with a title (the log).
struct PrintSource {
  frmDocument* document = nullptr;
  CodeMax* cmx = nullptr;
  QString title;
  CodeMax* control() const;
  QString folder() const;   // of the document's file; empty when there is none
};

class frmPreview : public QDialog {
  Q_OBJECT
 public:
  explicit frmPreview(const PrintSource& source, bool printSelection, QWidget* parent = nullptr);
  ~frmPreview() override;

  int exec() override;
  const PrintDocument& document() const { return vp_.document(); }
  const CWordWrap& wrap() const { return *wrap_; }
  qint64 lineToShow() const { return lineToShow_; }   // source line chosen in the list of clipped lines; -1: none
  bool isLaidOut() const { return laidOut_; }         // to the end

  // Lays the text out; returns when that is done or stopped. Pages are shown as they are made, and the window stays responsive.
  void layOutText();

 signals:
  void answered();   // the layout has let the event loop run once more

 public slots:
  void reject() override;

 protected:
  void keyPressEvent(QKeyEvent* event) override;

 private:
  QWidget* makeToolBar();
  void showReviewSheet();
  void pagesArrived();
  void PrintIt();
  void writePdf();
  void changeOptions(bool pageTab);
  void stopOrGoOn();
  void updateActions();
  void find(bool again);
  void fillClipped();

  PrintSource source_;
  bool selection_, laidOut_ = false, working_ = false, cancel_ = false, reviewSheet_ = false, closing_ = false;
  PrintSettings settings_;
  VSPrinter vp_;
  std::unique_ptr<CWordWrap> wrap_;
  qint64 lineToShow_ = -1;
  PageView* view_;
  QListWidget* clipped_;
  QListView* thumbnails_;
  PageThumbnails* pictures_;
  QSpinBox* page_;
  QLabel* count_;
  QLineEdit* find_;
  QLabel* notFound_;
  QComboBox* zoom_;
  QLabel* stopped_;
  QProgressBar* progress_;
  QPushButton* stop_;
  QAction *print_, *pdf_, *options_, *setup_, *review_;
  int foundPage_ = 0;
  qsizetype foundAt_ = -1;
};
