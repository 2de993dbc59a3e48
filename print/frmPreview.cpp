#include "print/frmPreview.h"

#include <QApplication>
#include <QComboBox>
#include <QElapsedTimer>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QListWidget>
#include <QPointer>
#include <QProgressBar>
#include <QPushButton>
#include <QShortcut>
#include <QSpinBox>
#include <QSplitter>
#include <QTabBar>
#include <QTabWidget>
#include <QToolButton>
#include <QVBoxLayout>

#include "base/ArrowIcon.h"
#include "base/Hourglass.h"
#include "base/Program.h"
#include "base/Strings.h"
#include "base/dialog/Dialogs.h"
#include "base/dialog/FlowLayout.h"
#include "base/dialog/PageKeys.h"
#include "control/CodeMax.h"
#include "document/frmDocument.h"
#include "print/PageThumbnails.h"
#include "print/PageView.h"
#include "print/PrintJob.h"
#include "print/frmPrintOptions.h"

CodeMax* PrintSource::control() const { return document ? document->cmx : cmx; }
QString PrintSource::folder() const { return document ? document->CurrentFileDir() : QString(); }

frmPreview::frmPreview(const PrintSource& source, bool printSelection, QWidget* parent)
    : QDialog(parent), source_(source), selection_(printSelection), settings_(PrintSettings::load()), wrap_(new CWordWrap) {
  setObjectName(QStringLiteral("frmPreview"));
  setWindowTitle(tr("Print Preview") + QStringLiteral(" - ") +
                 plainForDisplay(source.document ? source.document->CurrentFileTitle() : source.title));
  setWindowFlag(Qt::WindowMaximizeButtonHint);
  resize(1000, 760);

  view_ = new PageView;
  clipped_ = new QListWidget;
  clipped_->setToolTip(tr("Lines that took more than one printed line. Double-click goes to the line in the text."));
  thumbnails_ = new QListView;
  thumbnails_->setObjectName(QStringLiteral("thumbnails"));
  thumbnails_->setAccessibleName(tr("Pages"));
  pictures_ = new PageThumbnails(this);
  thumbnails_->setModel(pictures_);
  thumbnails_->setIconSize(PageThumbnails::kSize);
  thumbnails_->setUniformItemSizes(true);
  thumbnails_->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
  clipped_->setObjectName(QStringLiteral("clipped"));
  auto* side = new QTabWidget;
  side->addTab(thumbnails_, tr("Pa&ges"));
  side->addTab(clipped_, tr("Clipped &Lines"));
  walkPagesByKeys(*this, *side->tabBar());
  auto* splitter = new QSplitter;
  splitter->addWidget(side);
  splitter->addWidget(view_);
  splitter->setStretchFactor(1, 1);
  splitter->setSizes({190, 800});
  progress_ = new QProgressBar;
  progress_->setFormat(tr("Laying out: line %v of %m"));
  stop_ = new QPushButton(tr("&Stop"));
  stop_->setObjectName(QStringLiteral("stop"));
  stop_->setAutoDefault(false);
  stopped_ = new QLabel(tr("Stopped: these are not all pages."));
  auto* work = new QHBoxLayout;
  work->addWidget(progress_, 1);
  work->addWidget(stopped_, 1);
  work->addWidget(stop_);
  for (QWidget* widget : {static_cast<QWidget*>(progress_), static_cast<QWidget*>(stop_), static_cast<QWidget*>(stopped_)})
    widget->hide();

  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(4, 4, 4, 4);
  layout->addWidget(makeToolBar());
  layout->addWidget(splitter, 1);
  layout->addLayout(work);

  connect(view_, &PageView::currentPageChanged, this, [this](int page) {
    const QSignalBlocker a(page_), b(thumbnails_);
    page_->setValue(page + 1);
    thumbnails_->setCurrentIndex(pictures_->index(page));
  });
  connect(thumbnails_->selectionModel(), &QItemSelectionModel::currentChanged, this, [this](const QModelIndex& index) {
    if (index.isValid() && index.row() != view_->currentPage()) view_->goTo(index.row());
  });
  connect(stop_, &QPushButton::clicked, this, &frmPreview::stopOrGoOn);
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

// The rows of the tool bar wrap, so that all of it can be reached at any width and font size.
QWidget* frmPreview::makeToolBar() {
  auto* bar = new QWidget(this);
  auto* row = new FlowLayout(bar);
  const auto button = [&](const QString& text, const char* name, const QString& tip, auto slot) {
    auto* action = new QAction(text, this);
    action->setIconText(text);   // the button's text; with the action's text alone the mnemonic would be lost
    action->setToolTip(tip);
    action->setObjectName(QLatin1String(name));
    connect(action, &QAction::triggered, this, slot);
    addAction(action);
    auto* made = new QToolButton(bar);
    made->setDefaultAction(action);
    made->setAutoRaise(true);
    made->setFocusPolicy(Qt::TabFocus);
    return made;
  };
  const auto add = [&](const QString& text, const char* name, const QString& tip, auto slot) {
    QToolButton* made = button(text, name, tip, slot);
    row->addWidget(made);
    return made->defaultAction();
  };
  const auto arrow = [&](const QString& text, Arrow which, const QString& tip, auto slot) {
    QToolButton* made = button(text, "", tip, slot);
    made->defaultAction()->setIcon(arrowIcon(which));
    return made;
  };
  const auto label = [bar](const QString& text, QWidget* buddy) {
    auto* made = new QLabel(text, bar);
    made->setBuddy(buddy);
    return made;
  };
  print_ = add(tr("&Print..."), "print", tr("Print (Ctrl+P)"), [this] { PrintIt(); });
  print_->setShortcut(QKeySequence::Print);
  pdf_ = add(tr("PD&F..."), "pdf", tr("Save as a PDF file"), [this] { writePdf(); });
  options_ = add(tr("&Options..."), "options", tr("What is printed, and how"), [this] { changeOptions(false); });
  setup_ = add(tr("Page Set-&up..."), "setup", tr("Paper, margins, font and columns"), [this] { changeOptions(true); });
  review_ =
      add(tr("&Review Sheet"), "review", tr("A sheet for reviewers' notes instead of the text"), [this] { showReviewSheet(); });
  review_->setCheckable(true);
  page_ = new QSpinBox(bar);
  page_->setRange(1, 1);
  page_->setAccessibleName(tr("Page"));
  page_->setObjectName(QStringLiteral("page"));
  count_ = new QLabel(bar);
  row->addGroup(
      {arrow(tr("First"), Arrow::first, tr("First page (Home)"), [this] { view_->goTo(0); }),
       arrow(tr("Previous"), Arrow::left, tr("Previous page (Page Up)"), [this] { view_->goTo(view_->currentPage() - 1); }),
       label(tr("P&age"), page_), page_, count_,
       arrow(tr("Next"), Arrow::right, tr("Next page (Page Down)"), [this] { view_->goTo(view_->currentPage() + 1); }),
       arrow(tr("Last"), Arrow::last, tr("Last page (End)"), [this] { view_->goTo(page_->maximum() - 1); })});
  zoom_ = new QComboBox(bar);
  zoom_->setEditable(true);
  zoom_->setInsertPolicy(QComboBox::NoInsert);
  zoom_->setAccessibleName(tr("Zoom"));
  zoom_->setObjectName(QStringLiteral("zoom"));
  zoom_->addItems({tr("Whole page"), tr("Page width"), QStringLiteral("50%"), QStringLiteral("75%"), QStringLiteral("100%"),
                   QStringLiteral("150%"), QStringLiteral("200%"), QStringLiteral("400%")});
  row->addGroup({label(tr("&Zoom"), zoom_), zoom_});
  QAction* two = add(tr("&Two pages"), "two", tr("Two pages side by side"), [] {});
  two->setCheckable(true);
  connect(two, &QAction::toggled, this, [this](bool on) { view_->setAcross(on ? 2 : 1); });
  find_ = new QLineEdit(bar);
  find_->setPlaceholderText(tr("Find in pages (Ctrl+F)"));
  find_->setClearButtonEnabled(true);
  find_->setMinimumWidth(180);
  find_->setObjectName(QStringLiteral("find"));
  notFound_ = new QLabel(tr("Not found"), bar);
  notFound_->setObjectName(QStringLiteral("notFound"));
  QSizePolicy kept = notFound_->sizePolicy();
  kept.setRetainSizeWhenHidden(true);   // nothing moves while the user types
  notFound_->setSizePolicy(kept);
  notFound_->hide();
  row->addGroup({label(tr("F&ind"), find_), find_, notFound_});
  add(tr("&Close"), "close", tr("Close (Esc)"), [this] { reject(); });
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
  return bar;
}

int frmPreview::exec() {
  const ModalGuard modal;
  setModal(true);
  show();
  layOutText();
  if (closing_) return result();
  return QDialog::exec();
}

// Esc ends the search first: the pages have the keys again. Then it closes.
void frmPreview::keyPressEvent(QKeyEvent* event) {
  if (event->key() != Qt::Key_Escape || !find_->hasFocus()) return QDialog::keyPressEvent(event);
  find_->clear();
  view_->setFocus();
}

void frmPreview::reject() {
  cancel_ = true;
  closing_ = true;
  QDialog::reject();
}

void frmPreview::layOutText() {
  if (working_) return;
  working_ = true;
  cancel_ = reviewSheet_ = laidOut_ = false;
  wrap_ = std::make_unique<CWordWrap>();
  wrap_->setPrintSelection(selection_);
  view_->setDocument(nullptr);
  pictures_->setDocument(nullptr, devicePixelRatioF());
  updateActions();
  const QPointer<CodeMax> text(source_.control());
  QElapsedTimer clock;
  clock.start();
  std::size_t shown = 0;
  const auto goOn = [&](qint64 done, qint64 all) {
    const std::size_t count = vp_.document().pages.size();
    if (clock.elapsed() < 30 && !(shown == 0 && count > 0)) return true;
    clock.restart();
    if (all > 2000) {
      progress_->setRange(0, static_cast<int>(all));
      progress_->setValue(static_cast<int>(done));
      if (!progress_->isVisible()) updateActions(), progress_->show(), stop_->show();
    }
    if (count > shown + (shown > 4 ? 50 : 0)) {
      shown = count;
      pagesArrived();
    }
    QCoreApplication::processEvents();
    emit answered();
    if (!text) reject();   // a signal has ended the program
    return !cancel_;
  };
  {
    const Hourglass hourglass;
    if (source_.document) laidOut_ = layOut(*source_.document, settings_, *wrap_, vp_, goOn);
    else laidOut_ = layOut(*source_.cmx, source_.title, settings_, *wrap_, vp_, goOn);
  }
  working_ = false;
  if (closing_) return;
  pagesArrived();
  fillClipped();
  updateActions();
  if (!find_->hasFocus()) view_->setFocus();
}

// What is enabled and shown while the layout runs.
void frmPreview::updateActions() {
  for (QAction* action : {print_, pdf_}) action->setEnabled(laidOut_ || reviewSheet_);
  for (QAction* action : {options_, setup_, review_}) action->setEnabled(!working_);
  review_->setChecked(reviewSheet_);
  const bool stoppedShort = !working_ && !laidOut_ && !reviewSheet_;
  progress_->setVisible(working_ && progress_->isVisible());
  stopped_->setVisible(stoppedShort);
  stop_->setVisible(stoppedShort || progress_->isVisible());
  stop_->setText(working_ ? tr("&Stop") : tr("&Lay Out All"));
}

void frmPreview::stopOrGoOn() {
  if (working_) cancel_ = true;
  else layOutText();
}

void frmPreview::showReviewSheet() {
  if (working_) return;
  if (reviewSheet_) return layOutText();
  reviewSheet_ = true;
  wrap_->PrintReviewTable(vp_);
  view_->setDocument(nullptr);
  pictures_->setDocument(nullptr, devicePixelRatioF());
  pagesArrived();
  fillClipped();
  updateActions();
}

void frmPreview::pagesArrived() {
  const int count = static_cast<int>(vp_.document().pages.size());
  view_->setDocument(&vp_.document());
  pictures_->setDocument(&vp_.document(), devicePixelRatioF());
  const QSignalBlocker block(page_);
  page_->setRange(1, std::max(1, count));
  count_->setText(tr(" of %1 ").arg(count));
  if (count > 0 && !thumbnails_->currentIndex().isValid()) thumbnails_->setCurrentIndex(pictures_->index(view_->currentPage()));
}

void frmPreview::fillClipped() {
  clipped_->clear();
  if (reviewSheet_) return;
  for (const qint64 line : wrap_->ClippedLines()) {
    auto* item = new QListWidgetItem(
        QStringLiteral("%1: %2").arg(line + 1).arg(plainForDisplay(source_.control()->GetLine(line).trimmed(), 60)), clipped_);
    item->setData(Qt::UserRole, line);
  }
}

void frmPreview::find(bool again) {
  const QString what = find_->text();
  const auto& pages = vp_.document().pages;
  notFound_->hide();
  if (what.isEmpty() || pages.empty()) return view_->mark(-1, 0, 0);
  // The text of a page has no line ends: a match counts only when it lies within one printed line.
  const auto inOneLine = [](const PrintPage& page, qsizetype start, qsizetype length) {
    const PrintRun* first = nullptr;
    for (const PrintRun& run : page.runs) {
      if (run.start + run.length <= start || run.start >= start + length) continue;
      if (first && (run.baseline != first->baseline || run.x < first->x)) return false;
      first = &run;
    }
    return first != nullptr;
  };
  const int count = static_cast<int>(pages.size());
  int page = again ? foundPage_ % count : 0;
  qsizetype from = again ? foundAt_ + 1 : 0;
  for (int tried = 0; tried <= count; ++tried, page = (page + 1) % count, from = 0) {
    const PrintPage& data = *pages[static_cast<std::size_t>(page)];
    for (qsizetype at = data.text.indexOf(what, from, Qt::CaseInsensitive); at >= 0;
         at = data.text.indexOf(what, at + 1, Qt::CaseInsensitive)) {
      if (!inOneLine(data, at, what.size())) continue;
      foundPage_ = page;
      foundAt_ = at;
      return view_->mark(page, static_cast<qint32>(at), static_cast<qint32>(what.size()));
    }
  }
  foundAt_ = -1;
  view_->mark(-1, 0, 0);
  notFound_->show();
}

void frmPreview::PrintIt() {
  if (printPages(vp_.document(), this, source_.folder())) SetStatusText(tr("Printing Complete"));
}

void frmPreview::writePdf() {
  if (savePdf(vp_.document(), vp_.document().name, this, source_.folder())) SetStatusText(tr("Printing Complete"));
}

void frmPreview::changeOptions(bool pageTab) {
  if (working_) return;
  frmPrintOptions options(settings_, this);
  if (pageTab) options.showPageTab();
  if (options.exec() != QDialog::Accepted) return;
  settings_ = options.settings();
  layOutText();
}
