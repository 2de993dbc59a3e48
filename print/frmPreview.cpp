#include "print/frmPreview.h"

#include <QApplication>
#include <QComboBox>
#include <QElapsedTimer>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPainter>
#include <QProgressBar>
#include <QShortcut>
#include <QSpinBox>
#include <QSplitter>
#include <QTabWidget>
#include <QToolBar>
#include <QToolButton>
#include <QVBoxLayout>

#include "base/Dialogs.h"
#include "base/Program.h"
#include "base/Strings.h"
#include "control/CodeMax.h"
#include "document/frmDocument.h"
#include "print/PageView.h"
#include "print/frmPrintOptions.h"

CodeMax* PrintSource::control() const { return document ? document->cmx : cmx; }

frmPreview::frmPreview(const PrintSource& source, bool printSelection, QWidget* parent)
    : QDialog(parent), source_(source), selection_(printSelection), settings_(PrintSettings::load()), wrap_(new CWordWrap) {
  setObjectName(QStringLiteral("frmPreview"));
  setWindowTitle(tr("Print Preview") + QStringLiteral(" - ") + plainForDisplay(source.document ? source.document->CurrentFileTitle() : source.title));
  setWindowFlag(Qt::WindowMaximizeButtonHint);
  resize(1000, 760);

  view_ = new PageView;
  clipped_ = new QListWidget;
  clipped_->setToolTip(tr("Lines that took more than one printed line. Double-click goes to the line in the text."));
  thumbnails_ = new QListWidget;
  thumbnails_->setIconSize(QSize(110, 140));
  thumbnails_->setUniformItemSizes(true);
  auto* side = new QTabWidget;
  side->addTab(thumbnails_, tr("Pages"));
  side->addTab(clipped_, tr("Clipped Lines"));
  auto* splitter = new QSplitter;
  splitter->addWidget(side);
  splitter->addWidget(view_);
  splitter->setStretchFactor(1, 1);
  splitter->setSizes({190, 800});
  progress_ = new QProgressBar;
  progress_->setFormat(tr("Laying out: line %v of %m"));
  progress_->hide();

  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(4, 4, 4, 4);
  buildToolBar();
  layout->addWidget(findChild<QToolBar*>());
  layout->addWidget(splitter, 1);
  layout->addWidget(progress_);

  connect(view_, &PageView::currentPageChanged, this, [this](int page) {
    const QSignalBlocker a(page_), b(thumbnails_);
    page_->setValue(page + 1);
    thumbnails_->setCurrentRow(page);
  });
  connect(thumbnails_, &QListWidget::currentRowChanged, view_, &PageView::goTo);
  connect(view_, &PageView::zoomChanged, this, [this](double factor) {
    if (zoom_->currentIndex() < 2 && zoom_->currentIndex() >= 0) return;
    const QSignalBlocker block(zoom_);
    zoom_->setEditText(QStringLiteral("%1%").arg(qRound(factor * 100)));
  });
  connect(clipped_, &QListWidget::itemActivated, this, [this](QListWidgetItem* item) {
    lineToShow_ = item->data(Qt::UserRole).toLongLong();
    accept();
  });
}

frmPreview::~frmPreview() = default;

void frmPreview::buildToolBar() {
  auto* bar = new QToolBar(this);
  const auto add = [&](const QString& text, const char* theme, const QString& tip, auto slot) {
    QAction* action = bar->addAction(QIcon::fromTheme(QLatin1String(theme)), text, this, slot);
    action->setToolTip(tip);
    if (auto* button = qobject_cast<QToolButton*>(bar->widgetForAction(action))) button->setToolButtonStyle(Qt::ToolButtonTextOnly);
    return action;
  };
  print_ = add(tr("&Print..."), "document-print", tr("Print (Ctrl+P)"), [this] { PrintIt(); });
  print_->setShortcut(QKeySequence::Print);
  pdf_ = add(tr("PD&F..."), "document-save", tr("Save as a PDF file"), [this] { writePdf(); });
  add(tr("&Options..."), "configure", tr("What is printed, and how"), [this] { changeOptions(); });
  review_ = add(tr("&Review Sheet"), "edit-table", tr("A sheet for reviewers' notes instead of the text"), [this] { showReviewSheet(); });
  review_->setCheckable(true);
  bar->addSeparator();
  add(QStringLiteral("|<"), "go-first", tr("First page (Home)"), [this] { view_->goTo(0); });
  add(QStringLiteral("<"), "go-previous", tr("Previous page (Page Up)"), [this] { view_->goTo(view_->currentPage() - 1); });
  page_ = new QSpinBox;
  page_->setRange(1, 1);
  page_->setAccessibleName(tr("Page"));
  count_ = new QLabel;
  bar->addWidget(page_);
  bar->addWidget(count_);
  add(QStringLiteral(">"), "go-next", tr("Next page (Page Down)"), [this] { view_->goTo(view_->currentPage() + 1); });
  add(QStringLiteral(">|"), "go-last", tr("Last page (End)"), [this] { view_->goTo(page_->maximum() - 1); });
  bar->addSeparator();
  zoom_ = new QComboBox;
  zoom_->setEditable(true);
  zoom_->setInsertPolicy(QComboBox::NoInsert);
  zoom_->setAccessibleName(tr("Zoom"));
  zoom_->addItems({tr("Whole page"), tr("Page width"), QStringLiteral("50%"), QStringLiteral("75%"), QStringLiteral("100%"), QStringLiteral("150%"),
                   QStringLiteral("200%"), QStringLiteral("400%")});
  bar->addWidget(zoom_);
  QAction* two = add(tr("&Two pages"), "view-pages-facing", tr("Two pages side by side"), [] {});
  two->setCheckable(true);
  connect(two, &QAction::toggled, this, [this](bool on) { view_->setAcross(on ? 2 : 1); });
  bar->addSeparator();
  find_ = new QLineEdit;
  find_->setPlaceholderText(tr("Find in pages"));
  find_->setClearButtonEnabled(true);
  find_->setMaximumWidth(180);
  bar->addWidget(find_);
  add(tr("&Close"), "window-close", tr("Close (Esc)"), [this] { reject(); });
  new QShortcut(QKeySequence::Find, this, [this] { find_->setFocus(); });
  new QShortcut(QKeySequence::FindNext, this, [this] { find(true); });

  connect(page_, &QSpinBox::valueChanged, this, [this](int page) { view_->goTo(page - 1); });
  connect(find_, &QLineEdit::textChanged, this, [this] { find(false); });
  connect(find_, &QLineEdit::returnPressed, this, [this] { find(true); });
  const auto zoomTo = [this] {
    if (zoom_->currentIndex() == 0 && zoom_->currentText() == zoom_->itemText(0)) return view_->setFit(PageView::Fit::page);
    if (zoom_->currentIndex() == 1 && zoom_->currentText() == zoom_->itemText(1)) return view_->setFit(PageView::Fit::width);
    bool good = false;
    const double percent = zoom_->currentText().remove(u'%').trimmed().toDouble(&good);
    if (good) view_->setZoom(percent / 100);
  };
  connect(zoom_, &QComboBox::activated, this, zoomTo);
  connect(zoom_->lineEdit(), &QLineEdit::returnPressed, this, zoomTo);
}

int frmPreview::exec() {
  const ModalGuard modal;
  setModal(true);
  show();
  layOutText();
  if (closing_) return result();
  return QDialog::exec();
}

void frmPreview::reject() {
  cancel_ = true;
  closing_ = true;
  QDialog::reject();
}

// Lays out in slices: pages show as they come, and the window answers meanwhile.
void frmPreview::layOutText() {
  if (working_) return;
  working_ = true;
  cancel_ = reviewSheet_ = false;
  review_->setChecked(false);
  wrap_ = std::make_unique<CWordWrap>();
  wrap_->setPrintSelection(selection_);
  view_->setDocument(nullptr);
  print_->setEnabled(false);
  pdf_->setEnabled(false);
  QElapsedTimer clock;
  clock.start();
  qint64 shown = 0;
  const auto goOn = [&](qint64 done, qint64 all) {
    if (clock.elapsed() < 30) return true;
    clock.restart();
    if (all > 2000) {
      progress_->setRange(0, static_cast<int>(all));
      progress_->setValue(static_cast<int>(done));
      progress_->show();
    }
    if (static_cast<qint64>(vp_.document().pages.size()) > shown + (shown > 4 ? 50 : 0)) {
      shown = static_cast<qint64>(vp_.document().pages.size());
      pagesArrived();
    }
    QCoreApplication::processEvents();
    return !cancel_;
  };
  if (source_.document) laidOut_ = layOut(*source_.document, settings_, *wrap_, vp_, goOn);
  else laidOut_ = layOut(*source_.cmx, source_.title, settings_, *wrap_, vp_, goOn);
  working_ = false;
  progress_->hide();
  if (closing_) return;
  pagesArrived();
  fillClipped();
  print_->setEnabled(laidOut_);
  pdf_->setEnabled(laidOut_);
  view_->setFocus();
}

void frmPreview::showReviewSheet() {
  if (working_) return;
  if (reviewSheet_) return layOutText();
  reviewSheet_ = true;
  review_->setChecked(true);
  wrap_->PrintReviewTable(vp_);
  pagesArrived();
  fillClipped();
}

void frmPreview::pagesArrived() {
  const int count = static_cast<int>(vp_.document().pages.size());
  const int page = view_->currentPage();
  view_->setDocument(&vp_.document());
  {
    const QSignalBlocker block(page_);
    page_->setRange(1, std::max(1, count));
  }
  count_->setText(tr(" of %1 ").arg(count));
  const QSignalBlocker block(thumbnails_);
  constexpr int kPictures = 200;   // of more pages only the numbers are listed
  if (thumbnails_->count() > count || page == 0) thumbnails_->clear();
  for (int i = thumbnails_->count(); i < count; ++i) {
    auto* item = new QListWidgetItem(QString::number(i + 1), thumbnails_);
    if (i >= kPictures) continue;
    const QSizeF sheet(vp_.document().layout.fullRectPoints().size());
    const double scale = std::min(110 / sheet.width(), 140 / sheet.height());
    QPixmap picture((sheet * scale).toSize());
    picture.fill(Qt::white);
    QPainter painter(&picture);
    painter.scale(scale, scale);
    drawPage(painter, vp_.document(), i);
    item->setIcon(picture);
  }
}

void frmPreview::fillClipped() {
  clipped_->clear();
  if (reviewSheet_) return;
  for (const qint64 line : wrap_->ClippedLines()) {
    auto* item = new QListWidgetItem(QStringLiteral("%1: %2").arg(line + 1).arg(plainForDisplay(source_.control()->GetLine(line).trimmed(), 60)), clipped_);
    item->setData(Qt::UserRole, line);
  }
}

void frmPreview::find(bool again) {
  const QString what = find_->text();
  const auto& pages = vp_.document().pages;
  if (what.isEmpty() || pages.empty()) return view_->mark(-1, -1);
  int page = again ? foundPage_ : 0, run = again ? foundRun_ + 1 : 0;
  for (std::size_t tried = 0; tried <= pages.size(); ++tried) {
    page %= static_cast<int>(pages.size());
    const auto& data = *pages[static_cast<std::size_t>(page)];
    for (; run < static_cast<int>(data.runs.size()); ++run) {
      if (!data.runText(data.runs[static_cast<std::size_t>(run)]).contains(what, Qt::CaseInsensitive)) continue;
      foundPage_ = page;
      foundRun_ = run;
      return view_->mark(page, run);
    }
    ++page;
    run = 0;
  }
  view_->mark(-1, -1);
  QApplication::beep();
}

void frmPreview::PrintIt() {
  if (printPages(vp_.document(), this)) SetStatusText(tr("Printing Complete"));
}

void frmPreview::writePdf() {
  if (savePdf(vp_.document(), vp_.document().name, this)) SetStatusText(tr("Printing Complete"));
}

void frmPreview::changeOptions() {
  if (working_) return;
  frmPrintOptions options(settings_, this);
  if (options.exec() != QDialog::Accepted) return;
  settings_ = options.settings();
  layOutText();
}
