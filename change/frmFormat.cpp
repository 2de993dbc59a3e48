#include "change/frmFormat.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include "base/Counted.h"
#include "base/Hourglass.h"
#include "base/Program.h"
#include "base/dialog/Dialogs.h"
#include "change/compare/frmCompare.h"
#include "control/code/BlockWords.h"
#include "document/Frame.h"
#include "document/Languages.h"
#include "document/frmDocument.h"
#include "language/ucCM.h"
#include "settings/modRegistry.h"

namespace {

constexpr int kGreatestCount = 16;   // maximum of blanks for a tab and for an indentation level

QComboBox* list(const char* name, const QStringList& entries) {
  auto* box = new QComboBox;
  box->setObjectName(QLatin1String(name));
  box->addItem(QStringLiteral("<Ignore>"));
  box->addItems(entries);
  return box;
}

QStringList counts() {
  QStringList entries;
  for (int i = 0; i <= kGreatestCount; ++i) entries << QString::number(i);
  return entries;
}

QStringList cases() { return {QStringLiteral("UpperCase"), QStringLiteral("LowerCase"), QStringLiteral("Capitalize")}; }

const clsLang* languageOf(const frmDocument& document) {
  const int index = document.LanguageIndex();
  const auto& all = languages().Languages();
  return index >= 1 && index <= all->Count() ? all->Item(index).get() : nullptr;
}

const QString kCareful = QStringLiteral("FORMATCAREFUL");   // the last choice, for languages with block words

}   // namespace

frmFormat::frmFormat(QWidget* parent) : QDialog(parent) {
  setObjectName(QStringLiteral("frmFormat"));
  setWindowTitle(tr("Format"));
  Form_Load();
}

void frmFormat::Form_Load() {
  cmbTab_ = list("cmbTab", counts());
  cmbText_ = list("cmbText", cases());
  cmbKeywords_ = list("cmbKeywords", cases());
  cmbIndent_ = list("cmbIndent", counts());
  cmbLine_ = list("cmbLine", {tr("Unix (LF)"), tr("Windows (CR LF)")});
  chkWholeLine_ = new QCheckBox(tr("&Careful: read whole lines, skip comments and strings"));
  chkWholeLine_->setObjectName(QStringLiteral("chkWholeLine"));
  chkWholeLine_->setToolTip(
      tr("Finds blocks that open or close behind other words, keeps one-line blocks and alignment in brackets.\n"
         "Otherwise only the first word of each line counts."));
  chkIndentTabs_ = new QCheckBox(tr("In&dent with tabs"));
  chkIndentTabs_->setObjectName(QStringLiteral("chkIndentTabs"));
  chkIndentTabs_->setToolTip(tr("Ticked if the text is indented with tabs now. Tabs as far as possible, blanks for the rest."));
  chkSelection_ = new QCheckBox(tr("Only the &selected lines"));
  chkSelection_->setObjectName(QStringLiteral("chkSelection"));
  lblResult_ = new QLabel;
  lblResult_->setObjectName(QStringLiteral("lblResult"));
  lblResult_->setTextFormat(Qt::PlainText);

  auto* form = new QFormLayout;
  form->addRow(tr("&Tabs to blanks"), cmbTab_);
  form->addRow(tr("Case of main te&xt"), cmbText_);
  form->addRow(tr("Case of &keywords"), cmbKeywords_);
  form->addRow(tr("&Indentation"), cmbIndent_);
  form->addRow(QString(), chkWholeLine_);
  form->addRow(QString(), chkIndentTabs_);
  form->addRow(tr("&Line ends"), cmbLine_);
  form->addRow(QString(), chkSelection_);

  auto* buttons = new QDialogButtonBox;
  cmdApply_ = buttons->addButton(tr("&Apply"), QDialogButtonBox::AcceptRole);
  cmdApply_->setObjectName(QStringLiteral("cmdApply"));
  cmdApply_->setDefault(true);
  cmdPreview_ = buttons->addButton(tr("&Preview..."), QDialogButtonBox::ActionRole);
  cmdPreview_->setObjectName(QStringLiteral("cmdPreview"));
  auto* cancel = buttons->addButton(QDialogButtonBox::Cancel);
  cancel->setObjectName(QStringLiteral("cmdCancel"));
  disconnect(buttons, nullptr, this, nullptr);
  connect(cmdApply_, &QPushButton::clicked, this, &frmFormat::cmdApply_Click);
  connect(cmdPreview_, &QPushButton::clicked, this, &frmFormat::cmdPreview_Click);
  connect(cancel, &QPushButton::clicked, this, &frmFormat::cmdCancel_Click);

  auto* layout = new QVBoxLayout(this);
  layout->addLayout(form);
  layout->addWidget(lblResult_);
  layout->addWidget(buttons);
  layout->setSizeConstraint(QLayout::SetFixedSize);
  for (auto* box : {cmbTab_, cmbText_, cmbKeywords_, cmbIndent_, cmbLine_})
    connect(box, &QComboBox::currentIndexChanged, this, &frmFormat::updateButtons);
  propose();
  connect(chkWholeLine_, &QCheckBox::clicked, this, [this](bool on) {
    modRegistry::SetFlag(modRegistry::kGlobalKey, kCareful, on);
    updateButtons();
  });
}

// Suggests values for the active document. Counts and letter cases keep the last choice.
void frmFormat::propose() {
  const auto* document = frame() ? frame()->activeDocument() : nullptr;
  about_ = document;
  chkSelection_->setChecked(document && document->isSelection() && document->cmx->editor().spansLines());
  chkSelection_->setEnabled(document && document->isSelection());
  const clsLang* language = document ? languageOf(*document) : nullptr;
  chkWholeLine_->setChecked(language && !blockWordsOf(*language).isEmpty() &&
                            modRegistry::Flag(modRegistry::kGlobalKey, kCareful, true));
  chkIndentTabs_->setChecked(document && indentStyleOf(*document->cmx).tabs);
  updateButtons();
}

// The dialog stays open while another document becomes active.
bool frmFormat::event(QEvent* event) {
  if (event->type() == QEvent::WindowActivate && frame() && frame()->activeDocument() != about_) propose();
  return QDialog::event(event);
}

void frmFormat::updateButtons() {
  const bool document = frame() && frame()->activeDocument();
  const bool some = cmbTab_->currentIndex() || cmbText_->currentIndex() || cmbKeywords_->currentIndex() ||
                    cmbIndent_->currentIndex() || cmbLine_->currentIndex();
  cmdApply_->setEnabled(document && some);
  cmdPreview_->setEnabled(document && some);
  chkWholeLine_->setEnabled(cmbIndent_->currentIndex() > 0);
  chkIndentTabs_->setEnabled(chkWholeLine_->isEnabled() && chkWholeLine_->isChecked());
}

FormatChoices frmFormat::choices() const {
  FormatChoices chosen;
  chosen.tabs = cmbTab_->currentIndex();
  chosen.mainCase = cmbText_->currentIndex();
  chosen.keywordCase = cmbKeywords_->currentIndex();
  chosen.indent = cmbIndent_->currentIndex();
  chosen.lineEnds = cmbLine_->currentIndex();
  chosen.wholeLine = chkWholeLine_->isChecked();
  chosen.indentTabs = chkIndentTabs_->isChecked();
  chosen.selectionOnly = chkSelection_->isEnabled() && chkSelection_->isChecked();
  return chosen;
}

bool frmFormat::agree(FormatChoices* chosen, const clsLang* language) {
  if (!caseMatters(*chosen, language)) return true;
  const auto answer = MsgBox(tr("%1 is case-sensitive: changing the letter case changes the meaning of the text.\n"
                                "Do you want to change it all the same?")
                                 .arg(language->Name),
                             windowTitle(), Icon::exclamation, Buttons::yesNoCancel);
  chosen->changeCaseAnyway = answer == Answer::yes;
  return answer != Answer::cancel;
}

void frmFormat::cmdApply_Click() {
  auto* document = frame() ? frame()->activeDocument() : nullptr;
  if (!document) return;
  const auto* language = languageOf(*document);
  FormatChoices chosen = choices();
  if (agree(&chosen, language)) apply(*document, chosen);
}

void frmFormat::apply(frmDocument& document, const FormatChoices& chosen) {
  FormatResult result;
  {
    const Hourglass hourglass(Qt::BusyCursor);
    result = FormatIt(*document.cmx, languageOf(document), chosen);
  }
  if (!result.error.isEmpty()) {
    MsgBox(result.error, windowTitle());
    return;
  }
  const QString changed =
      (QStringList(counted(static_cast<qint64>(result.linesChanged), tr("line changed"), tr("lines changed"))) + result.notes)
          .join(u'\n');
  lblResult_->setText(changed);
  SetStatusText(changed.section(u'\n', 0, 0));
}

void frmFormat::cmdPreview_Click() {
  auto* document = frame() ? frame()->activeDocument() : nullptr;
  if (!document) return;
  const auto* language = languageOf(*document);
  FormatChoices chosen = choices();
  if (!agree(&chosen, language)) return;
  frmCompare compare(*document->cmx, this);
  FormatResult result;
  {
    const Hourglass hourglass(Qt::BusyCursor);
    result = FormatIt(compare.after(), language, chosen);
  }
  if (!result.error.isEmpty()) {
    MsgBox(result.error, windowTitle());
    return;
  }
  compare.markChanges();
  const ModalGuard modal;
  if (compare.exec() == QDialog::Accepted) apply(*document, chosen);   // the user has confirmed it
}

void frmFormat::cmdCancel_Click() { reject(); }
