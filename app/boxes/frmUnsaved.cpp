#include "app/boxes/frmUnsaved.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

#include "app/frame/frmMain.h"
#include "base/Program.h"
#include "base/Strings.h"
#include "document/frmDocument.h"

frmUnsaved::frmUnsaved(frmMain& frame, const QList<frmDocument*>& changed) : QDialog(&frame), list_(new QListWidget) {
  setObjectName(QStringLiteral("frmUnsaved"));
  setWindowTitle(QString::fromLatin1(kApplicationTitle));
  auto* heading =
      new QLabel(tr("%n texts have unsaved changes. The ticked ones are saved; the changes of the others are discarded.", nullptr,
                    int(changed.size())));
  heading->setWordWrap(true);
  list_->setAccessibleName(tr("Changed texts"));
  for (const frmDocument* document : changed) {
    const QString& path = document->CurrentFileName();
    auto* row = new QListWidgetItem(nameForDisplay(path.isEmpty() ? document->CurrentFileTitle() : path, 300), list_);
    row->setFlags(row->flags() | Qt::ItemIsUserCheckable);
    row->setCheckState(Qt::Checked);
  }
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Cancel);
  save_ = buttons->addButton(tr("&Save All"), QDialogButtonBox::AcceptRole);
  QPushButton* discard = buttons->addButton(tr("&Discard All"), QDialogButtonBox::DestructiveRole);
  save_->setDefault(true);
  discard->setAutoDefault(false);
  buttons->button(QDialogButtonBox::Cancel)->setAutoDefault(false);
  discard->setObjectName(QStringLiteral("discard"));
  connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  connect(discard, &QPushButton::clicked, this, [this] {
    for (int row = 0; row < list_->count(); ++row) list_->item(row)->setCheckState(Qt::Unchecked);
    accept();
  });
  connect(list_, &QListWidget::itemChanged, this, &frmUnsaved::showChoice);
  const QList<QPointer<frmDocument>> texts(changed.begin(), changed.end());
  connect(list_, &QListWidget::currentRowChanged, this, [this, &frame, texts](int row) {
    if (row < 0 || !texts[row]) return;
    frame.activate(texts[row]);
    list_->setFocus();   // the text took it
  });

  auto* layout = new QVBoxLayout(this);
  layout->addWidget(heading);
  layout->addWidget(list_, 1);
  layout->addWidget(buttons);
  resize(520, 320);
  list_->setCurrentRow(0);
  list_->setFocus();
}

bool frmUnsaved::isToBeSaved(int text) const { return list_->item(text)->checkState() == Qt::Checked; }

void frmUnsaved::showChoice() {
  int ticked = 0;
  for (int row = 0; row < list_->count(); ++row) ticked += isToBeSaved(row);
  save_->setText(ticked == list_->count() ? tr("&Save All") : tr("&Save Ticked"));
  save_->setEnabled(ticked > 0);
}
