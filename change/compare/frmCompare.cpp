#include "change/compare/frmCompare.h"

#include <QAbstractScrollArea>
#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QShortcut>
#include <tuple>

#include "control/CodeMax.h"

using compare::kLeft;
using compare::kRight;

namespace {
CodeMax* copyOf(const CodeMax& original) {
  auto* copy = new CodeMax;
  copy->model()->document().reset(original.model()->snapshot());
  copy->setEnableCRLF(original.EnableCRLF());
  copy->setTabSize(original.TabSize());
  copy->setFontOf(original.Font());
  for (int slot = 0; slot < kColorSlots; ++slot) copy->SetColor(slot, original.GetColor(slot));
  copy->setLanguage(original.Language());
  copy->setWhiteSpaceDisplay(original.WhiteSpaceDisplay());
  copy->SetSel(original.GetSel(false), false);
  return copy;
}
}   // namespace

frmCompare::frmCompare(const CodeMax& original, QWidget* parent)
    : QDialog(parent), view_(new CompareView(copyOf(original), copyOf(original), this)), summary_(new QLabel) {
  setWindowTitle(tr("Before and after"));
  view_->text(kLeft).setReadOnly(true);
  view_->setName(kLeft, tr("Before"));
  view_->setName(kRight, tr("After"));
  summary_->setTextFormat(Qt::PlainText);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close);
  apply_ = buttons->addButton(tr("&Apply"), QDialogButtonBox::AcceptRole);
  previous_ = buttons->addButton(tr("&Previous change"), QDialogButtonBox::ActionRole);
  next_ = buttons->addButton(tr("&Next change"), QDialogButtonBox::ActionRole);
  connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  for (const auto& [button, key, direction] : {std::tuple{previous_, "Shift+F7", -1}, std::tuple{next_, "F7", 1}}) {
    const auto step = [this, direction = direction] { view_->step(direction); };
    connect(button, &QPushButton::clicked, this, step);
    connect(new QShortcut(QKeySequence(QLatin1String(key)), this), &QShortcut::activated, this, step);
    button->setToolTip(QString::fromLatin1(key));
  }
  buttons->button(QDialogButtonBox::Close)->setText(tr("&Close"));
  for (auto* pane : view_->findChildren<QAbstractScrollArea*>()) pane->installEventFilter(this);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(view_, 1);
  auto* below = new QHBoxLayout;
  below->addWidget(summary_);
  below->addWidget(buttons, 1);
  layout->addLayout(below);
  connect(view_, &CompareView::stateChanged, this, &frmCompare::showState);
  resize(1000, 600);
}

void frmCompare::markChanges() {
  after().setReadOnly(true);
  for (const auto side : {kLeft, kRight}) view_->text(side).SetSel({}, true);
  view_->comparison().refresh();
  showState();
}

void frmCompare::showState() {
  const Comparison& comparison = view_->comparison();
  summary_->setText(view_->summary());
  previous_->setEnabled(view_->count() > 0);
  next_->setEnabled(view_->count() > 0);
  const bool compared = comparison.compared();
  apply_->setEnabled(compared && comparison.equal() != Comparison::Equal::wholly);
  if (met_ || !isVisible() || !compared || view_->count() == 0) return;
  met_ = true;
  view_->showDifference(0);
  next_->setFocus();
}

void frmCompare::showOnly(const QString& before, const QString& after) {
  setWindowTitle(tr("Compare"));
  view_->setName(kLeft, before);
  view_->setName(kRight, after);
  apply_->hide();
}

// In a text Escape ends the selection first.
bool frmCompare::eventFilter(QObject* object, QEvent* event) {
  if (event->type() != QEvent::KeyPress || static_cast<QKeyEvent*>(event)->key() != Qt::Key_Escape) return false;
  if (view_->text(view_->active()).HasSelection()) return false;
  reject();
  return object != nullptr;
}

void frmCompare::showEvent(QShowEvent* event) {
  QDialog::showEvent(event);
  findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Close)->setFocus();
  showState();   // the fields have their sizes only now
}
