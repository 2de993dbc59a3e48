#include "change/frmCompare.h"

#include <QDialogButtonBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QScrollBar>
#include <algorithm>

#include "base/Counted.h"
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
}   // namespace

frmCompare::frmCompare(const CodeMax& original, QWidget* parent)
    : QDialog(parent), before_(copyOf(original, this)), after_(copyOf(original, this)) {
  setWindowTitle(tr("Before and after"));
  before_->setReadOnly(true);
  summary_ = new QLabel;
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close);
  apply_ = buttons->addButton(tr("&Apply"), QDialogButtonBox::AcceptRole);
  auto* previous = buttons->addButton(tr("&Previous change"), QDialogButtonBox::ActionRole);
  next_ = buttons->addButton(tr("&Next change"), QDialogButtonBox::ActionRole);
  connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  connect(previous, &QPushButton::clicked, this, [this] { goTo(-1); });
  connect(next_, &QPushButton::clicked, this, [this] { goTo(1); });
  auto* grid = new QGridLayout(this);
  grid->addWidget(beforeName_ = new QLabel(tr("Before")), 0, 0);
  grid->addWidget(afterName_ = new QLabel(tr("After")), 0, 1);
  grid->addWidget(before_, 1, 0);
  grid->addWidget(after_, 1, 1);
  auto* below = new QHBoxLayout;   // else the buttons would widen one of the columns
  below->addWidget(summary_);
  below->addWidget(buttons, 1);
  grid->addLayout(below, 2, 0, 1, 2);
  grid->setRowStretch(1, 1);
  grid->setColumnStretch(0, 1);
  grid->setColumnStretch(1, 1);
  resize(1000, 600);
}

void frmCompare::markChanges() {
  hunks_ = text::diffLines(before_->model()->snapshot(), after_->model()->snapshot());
  std::vector<text::LineNo> gone, fresh;
  qint64 changed = 0;
  for (const text::LineHunk& hunk : hunks_) {
    for (text::LineNo line = hunk.beforeBegin; line < hunk.beforeEnd; ++line) gone.push_back(line);
    for (text::LineNo line = hunk.afterBegin; line < hunk.afterEnd; ++line) fresh.push_back(line);
    changed += std::max(hunk.beforeEnd - hunk.beforeBegin, hunk.afterEnd - hunk.afterBegin);
  }
  before_->model()->setBookmarks(gone, true);
  after_->model()->setBookmarks(fresh, true);
  after_->setReadOnly(true);
  const bool ends = before_->EnableCRLF() != after_->EnableCRLF() ||
                    (changed == 0 && !before_->model()->snapshot().sameAs(after_->model()->snapshot()));
  const QString differ = counted(static_cast<qint64>(changed), tr("line differs"), tr("lines differ"));
  summary_->setText(ends ? differ + tr(", line ends differ") : differ);
  apply_->setEnabled(changed > 0 || ends);
  before_->SetSel({}, true);
  after_->SetSel({}, true);
}

void frmCompare::showOnly(const QString& before, const QString& after) {
  setWindowTitle(tr("Compare"));
  beforeName_->setText(before);
  afterName_->setText(after);
  apply_->hide();
}

void frmCompare::showEvent(QShowEvent* event) {
  QDialog::showEvent(event);
  if (shown_ >= 0) return;
  next_->setFocus();   // in a text field Escape has its own meaning
  goTo(1);             // the fields have their sizes only now
}

void frmCompare::goTo(int step) {
  if (hunks_.empty()) return;
  shown_ = (shown_ + step + changes()) % changes();
  const text::LineHunk& hunk = hunks_[static_cast<std::size_t>(shown_)];
  const auto show = [](CodeMax& text, text::LineNo begin, text::LineNo end) {
    const qint64 first = std::min<qint64>(begin.value, text.LineCount() - 1);
    const qint64 last = std::max<qint64>(first, end.value - 1);   // an empty hunk: the line after which lines are missing
    text.SetSel({last, end > begin ? text.GetLineLength(last) : 0, first, 0, false},
                true);   // caret at the start, so that long lines are not scrolled
  };
  show(*before_, hunk.beforeBegin, hunk.beforeEnd);
  show(*after_, hunk.afterBegin, hunk.afterEnd);
}
