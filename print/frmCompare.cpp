#include "print/frmCompare.h"

#include <QDialogButtonBox>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>
#include <QScrollBar>

#include "control/CodeMax.h"

namespace {
CodeMax* copyOf(const CodeMax& original, QWidget* parent) {
  auto* copy = new CodeMax(parent);
  copy->model()->document().reset(original.model()->snapshot());
  copy->setEnableCRLF(original.EnableCRLF());
  copy->setTabSize(original.TabSize());
  copy->setFontOf(original.Font());
  copy->setLanguage(original.Language());
  copy->setWhiteSpaceDisplay(original.WhiteSpaceDisplay());
  copy->SetSel(original.GetSel(false), false);
  return copy;
}
}  // namespace

frmCompare::frmCompare(const CodeMax& original, QWidget* parent) : QDialog(parent), before_(copyOf(original, this)), after_(copyOf(original, this)) {
  setWindowTitle(tr("Before and after"));
  before_->setReadOnly(true);
  summary_ = new QLabel;
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close);
  apply_ = buttons->addButton(tr("&Apply"), QDialogButtonBox::AcceptRole);
  auto* previous = buttons->addButton(tr("&Previous change"), QDialogButtonBox::ActionRole);
  auto* next = buttons->addButton(tr("&Next change"), QDialogButtonBox::ActionRole);
  connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  connect(previous, &QPushButton::clicked, this, [this] { goTo(-1); });
  connect(next, &QPushButton::clicked, this, [this] { goTo(1); });
  auto* grid = new QGridLayout(this);
  grid->addWidget(beforeName_ = new QLabel(tr("Before")), 0, 0);
  grid->addWidget(afterName_ = new QLabel(tr("After")), 0, 1);
  grid->addWidget(before_, 1, 0);
  grid->addWidget(after_, 1, 1);
  grid->addWidget(summary_, 2, 0);
  grid->addWidget(buttons, 2, 1);
  grid->setRowStretch(1, 1);
  resize(1000, 600);
}

void frmCompare::markChanges() {
  const qint64 count = std::max(before_->LineCount(), after_->LineCount());
  qint64 changed = 0;
  for (qint64 i = 0; i < count; ++i) {
    if (before_->GetLine(i) == after_->GetLine(i)) continue;
    ++changed;
    if (i < before_->LineCount()) before_->setBookmark(i, true);
    if (i < after_->LineCount()) after_->setBookmark(i, true);
  }
  after_->setReadOnly(true);
  summary_->setText(tr("%n line(s) differ", nullptr, static_cast<int>(changed)));
  apply_->setEnabled(changed > 0 || before_->EnableCRLF() != after_->EnableCRLF());
  before_->SetSel({}, true);
  after_->SetSel({}, true);
  if (changed > 0) goTo(1);
}

void frmCompare::showOnly(const QString& before, const QString& after) {
  setWindowTitle(tr("Compare"));
  beforeName_->setText(before);
  afterName_->setText(after);
  apply_->hide();
}

void frmCompare::goTo(int step) {
  const auto marks = after_->model()->bookmarks();
  if (marks.empty()) return;
  const auto count = static_cast<int>(marks.size());
  shown_ = (shown_ + step + count) % count;
  const qint64 line = marks[static_cast<std::size_t>(shown_)].value;
  after_->SelectLine(line);
  before_->SelectLine(std::min(line, before_->LineCount() - 1));
}
