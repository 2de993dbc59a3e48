#include "control/options/PropertiesDialog.h"

#include <QDialogButtonBox>
#include <QPushButton>
#include <QTabBar>
#include <QTabWidget>
#include <QVBoxLayout>

#include "base/dialog/Dialogs.h"
#include "base/dialog/PageKeys.h"
#include "control/options/PropertiesPages.h"

PropertiesDialog::PropertiesDialog(CodeMax& control, QWidget* parent)
    : QDialog(parent), control_(control), options_(ControlOptions::of(control)) {
  setWindowTitle(tr("Editor Options"));
  setObjectName(QStringLiteral("propertiesDialog"));
  auto* layout = new QVBoxLayout(this);
  auto* tabs = new QTabWidget(this);
  tabs->setObjectName(QStringLiteral("pages"));
  keys_ = new KeysPage(control.window(), tabs);
  tabs->addTab(new DisplayPage(options_, tabs), tr("Displa&y"));
  tabs->addTab(new EditingPage(options_, tabs), tr("&Editing"));
  tabs->addTab(new ColorsPage(options_, tabs), tr("C&olours"));
  tabs->addTab(new FontPage(options_, tabs), tr("Fon&t"));
  tabs->addTab(keys_, tr("&Keyboard"));
  tabs->addTab(new LanguagePage(options_, tabs), tr("Lan&guage"));
  walkPagesByKeys(*this, *tabs->tabBar());
  layout->addWidget(tabs);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
  connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  layout->addWidget(buttons);
  resize(760, 620);
}

void PropertiesDialog::apply() {
  options_.applyTo(control_);
  keys_->apply();
}

void CodeMax::ExecuteProperties() {
  const ModalGuard guard;
  PropertiesDialog dialog(*this, window());   // not a child of the control: keys pressed in it would reach the documents
  if (dialog.exec() != QDialog::Accepted) return;
  dialog.apply();
  emit PropsChange();
}
