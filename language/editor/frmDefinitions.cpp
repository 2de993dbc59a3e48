#include "language/editor/frmDefinitions.h"

#include <QCheckBox>
#include <QClipboard>
#include <QCloseEvent>
#include <QGuiApplication>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QShortcut>
#include <QStackedWidget>
#include <QTabBar>

#include "base/Strings.h"
#include "base/Workspace.h"
#include "base/dialog/Dialogs.h"
#include "base/dialog/PageKeys.h"
#include "language/DefinitionText.h"
#include "language/Registration.h"
#include "language/editor/LanguageCheck.h"
#include "language/editor/LanguagePreview.h"
#include "language/ucCM.h"

namespace {

constexpr int kShownWarnings = 4;

// Tool tips and window titles interpret some texts; names of languages and items are shown literally.
QString toolTipOf(const QString& text) {
  return Qt::mightBeRichText(text) ? text.toHtmlEscaped().prepend(QStringLiteral("<qt>")) : text;
}
QString titleOf(QString text) { return text.replace(QStringLiteral("[*]"), QStringLiteral("[*][*]")); }

struct Copied {
  QString text;   // the definitions that this program put onto the clipboard last
};
QString& copied() { return Workspace::current().part<Copied>().text; }

QListWidgetItem* editableItem(const QString& name) {
  auto* item = new QListWidgetItem(name);
  item->setFlags(item->flags() | Qt::ItemIsEditable);
  return item;
}

QList<int> selectedRows(const QListWidget* list) {   // ascending; without rows that the filter hides
  QList<int> rows;
  for (int row = 0; row < list->count(); ++row)
    if (list->item(row)->isSelected() && !list->item(row)->isHidden()) rows += row;
  return rows;
}

}   // namespace

frmDefinitions::frmDefinitions(ucCM& manager, const QString& webHome, QWidget* parent)
    : QDialog(parent), manager_(manager), webHome_(webHome) {
  layOut();
  connectAll();
  LoadDefiner();
}

frmDefinitions::~frmDefinitions() {
  // Destroying the lists emits currentRowChanged, when the dialog does not exist any more.
  for (QObject* part : findChildren<QObject*>()) part->disconnect(this);
}

void frmDefinitions::connectAll() {
  for (const PropertyField& field : propertyFields_) {
    const auto write = [this, field] {
      const auto subject = language();
      if (filling_ || !subject) return;
      (*subject).*(field.property->value) = field.value();
      edited();
    };
    if (field.line) connect(field.line, &QLineEdit::textChanged, this, write);
    else connect(field.lines, &ListField::edited, this, write);
  }
  connect(chkCase, &QCheckBox::toggled, this, [this](bool on) {
    const auto subject = language();
    if (filling_ || !subject) return;
    subject->isCaseSensitive = on;
    edited();
  });
  connect(txtList, &ListField::edited, this, [this] {
    if (const Item subject = item(selectedItem()); subject.body) *subject.body = txtList->entries();
    edited();
  });
  connect(txtDesc, &QLineEdit::textChanged, this, [this](const QString& text) {
    if (filling_) return;
    if (const Item subject = item(selectedItem()); subject.desc) *subject.desc = definition::oneLine(text);
    edited();
  });

  connect(lstLanguage, &QListWidget::currentRowChanged, this, [this] {
    if (!filling_) SetupLanguage();
  });
  connect(lst, &QListWidget::currentRowChanged, this, [this] {
    if (!filling_) SetupItem();
  });
  connect(lstLanguage, &QListWidget::itemChanged, this, &frmDefinitions::lstLanguage_AfterLabelEdit);
  connect(lst, &QListWidget::itemChanged, this, &frmDefinitions::lst_AfterLabelEdit);
  walkPagesByKeys(*this, *TabStrip1);
  connect(TabStrip1, &QTabBar::currentChanged, this, [this] {
    SetUpList();
    LoadAny();
  });
  connect(txtFilter, &QLineEdit::textChanged, this, &frmDefinitions::filterLanguages);

  connect(cmdBrowse, &QPushButton::clicked, this, &frmDefinitions::BrowseIni);
  for (QPushButton* web : {cmdDownload, cmdSubmit}) web->setVisible(!webHome_.isEmpty());
  connect(cmdDownload, &QPushButton::clicked, this, [this] { openPage(QStringLiteral("Download_Language.html")); });
  connect(cmdSubmit, &QPushButton::clicked, this, [this] { openPage(QStringLiteral("Submit_Language.html")); });
  connect(cmdAdd, &QPushButton::clicked, this, &frmDefinitions::cmdAdd_Click);
  connect(cmdDuplicate, &QPushButton::clicked, this, &frmDefinitions::cmdDuplicate_Click);
  connect(cmdDelete, &QPushButton::clicked, this, &frmDefinitions::cmdDelete_Click);
  connect(cmdAddList, &QPushButton::clicked, this, &frmDefinitions::cmdAddList_Click);
  connect(cmdDeleteList, &QPushButton::clicked, this, &frmDefinitions::cmdDeleteList_Click);
  connect(cmdSave, &QPushButton::clicked, this, [this] { save(); });
  connect(cmdApply, &QPushButton::clicked, this, [this] {
    cmdApply->setEnabled(false);   // the edits are in the languages already
    handedOver_ = true;
    emit LanguagesChanged();
  });
  connect(cmdClose, &QPushButton::clicked, this, &QWidget::close);

  // A button pressed by its mnemonic or a short-cut does not take the focus. The field must complete its last line all the same.
  for (QPushButton* button : findChildren<QPushButton*>())
    connect(button, &QPushButton::pressed, this, [this] {
      if (auto* field = qobject_cast<ListField*>(focusWidget())) field->AddCRLFifNone();
    });
  const auto onKey = [this](QWidget* where, const QKeySequence& keys, auto what, Qt::ShortcutContext context) {
    auto* shortcut = new QShortcut(keys, where);
    shortcut->setContext(context);
    connect(shortcut, &QShortcut::activated, this, what);
  };
  onKey(
      lstLanguage, Qt::Key_Delete, [this] { cmdDelete->click(); }, Qt::WidgetShortcut);
  onKey(
      lstLanguage, Qt::Key_Insert, [this] { cmdAdd->click(); }, Qt::WidgetShortcut);
  onKey(
      lstLanguage, QKeySequence::Copy,
      [this] {
        if (const QString text = GetSelectedDefinitions(); !text.isEmpty()) QGuiApplication::clipboard()->setText(copied() = text);
      },
      Qt::WidgetShortcut);
  onKey(
      lstLanguage, QKeySequence::Paste, [this] { PasteDefinitions(QGuiApplication::clipboard()->text()); }, Qt::WidgetShortcut);
  onKey(
      lst, Qt::Key_Delete, [this] { cmdDeleteList->click(); }, Qt::WidgetShortcut);
  onKey(
      lst, Qt::Key_Insert, [this] { cmdAddList->click(); }, Qt::WidgetShortcut);
  onKey(
      this, QKeySequence::Find, [this] { txtFilter->setFocus(); }, Qt::WindowShortcut);
  onKey(
      this, QKeySequence::Save, [this] { cmdSave->click(); }, Qt::WindowShortcut);
}

frmDefinitions::Tab frmDefinitions::tab() const { return static_cast<Tab>(TabStrip1->currentIndex()); }

std::shared_ptr<clsLang> frmDefinitions::language() const {
  const int index = lstLanguage->currentRow() + 1;
  return index >= 1 && index <= manager_.Languages()->Count() ? manager_.Languages()->Item(index) : nullptr;
}

QWidget* frmDefinitions::PropertyField::widget() const { return line ? static_cast<QWidget*>(line) : lines; }

void frmDefinitions::PropertyField::show(const QString& value) const {
  if (line) line->setText(value);
  else lines->setEntries(property->form == LanguageProperty::prose && value.endsWith(kCrLf) ? value.chopped(2) : value);
}

QString frmDefinitions::PropertyField::value() const {
  if (line) return definition::oneLine(line->text());
  const QString text = lines->entries();
  return property->form == LanguageProperty::prose && !text.isEmpty() ? text + kCrLf : text;
}

QWidget* frmDefinitions::fieldOf(QString clsLang::*property) const {
  for (const PropertyField& field : propertyFields_)
    if (field.property->value == property) return field.widget();
  return nullptr;
}

// --- filling -----------------------------------------------------------------------------------------------------------

void frmDefinitions::LoadDefiner() {
  txtIni->setText(manager_.IniFile());
  LoadLanguages();
  SelectLanguage(manager_.ListLanguage() > 0 ? manager_.ListLanguage() : 1);
  SetUpList();
  FormisChanged(false);
}

void frmDefinitions::LoadLanguages() {
  filling_ = true;
  lstLanguage->clear();
  for (const auto& one : *manager_.Languages()) lstLanguage->addItem(editableItem(one->Name));
  filling_ = false;
  filterLanguages();
}

void frmDefinitions::SelectLanguage(int index) {
  const int row = index >= 1 && index <= lstLanguage->count() ? index - 1 : -1;
  if (row >= 0 && lstLanguage->item(row)->isHidden()) txtFilter->clear();
  filling_ = true;
  lstLanguage->setCurrentRow(row, QItemSelectionModel::ClearAndSelect);
  filling_ = false;
  SetupLanguage();
}

void frmDefinitions::SetupLanguage() {
  const auto subject = language();
  filling_ = true;
  if (subject) {
    setWindowTitle(titleOf(tr("Language Definition - ") + subject->Name));
    for (const PropertyField& field : propertyFields_) field.show((*subject).*(field.property->value));
    showHelpHint(subject->Name);
    chkCase->setChecked(subject->isCaseSensitive);
  } else {
    setWindowTitle(tr("Language Definition"));
    ClearText();
  }
  filling_ = false;
  LoadAny();
}

void frmDefinitions::showHelpHint(const QString& language) {
  fieldOf(&clsLang::HelpFile)->setToolTip(toolTipOf(tr("Set the help file associated with ") + language));
}

void frmDefinitions::ClearText() {
  for (const PropertyField& field : propertyFields_) field.show({});
  fieldOf(&clsLang::HelpFile)->setToolTip({});
  chkCase->setChecked(false);
}

void frmDefinitions::SetUpList() {
  static const struct {
    const char *list, *text;
  } labels[] = {{"", ""},
                {QT_TR_NOOP("Macro Nam&e"), QT_TR_NOOP("C&ommands")},
                {QT_TR_NOOP("&Hot Code"), QT_TR_NOOP("Definiti&on")},
                {QT_TR_NOOP("WordList Nam&e"), QT_TR_NOOP("W&ords")}};
  pages->setCurrentIndex(tab() == Structure ? 0 : 1);
  if (tab() == Structure) return;
  lblList->setText(tr(labels[tab()].list));
  lblText->setText(tr(labels[tab()].text));
  txtList->setEndsWithBreak(tab() != Templates);
}

void frmDefinitions::LoadAny() {
  filling_ = true;
  lst->clear();
  for (int i = 1; i <= itemCount(); ++i) lst->addItem(editableItem(*item(i).name));
  filling_ = false;
  SelectList(1);
}

void frmDefinitions::SelectList(int index) {
  const int row = index >= 1 && index <= lst->count() ? index - 1 : -1;
  filling_ = true;
  lst->setCurrentRow(row, QItemSelectionModel::ClearAndSelect);
  filling_ = false;
  SetupItem();
}

void frmDefinitions::finishItem() {
  if (shown_.body && !shown_.body->isEmpty() && !shown_.body->endsWith(kCrLf)) {
    *shown_.body += kCrLf;
    FormisChanged(true);
  }
  shown_ = {};
}

void frmDefinitions::SetupItem() {
  finishItem();
  const Item subject = item(selectedItem());
  if (tab() != Templates) shown_ = subject;
  filling_ = true;
  txtList->setEntries(subject.body ? *subject.body : QString());
  txtDesc->setText(subject.desc ? *subject.desc : QString());
  filling_ = false;
  LockText();
  showHints();
  showWarnings();
  showPreview();
}

void frmDefinitions::LockText() {
  const bool any = language() != nullptr, anyItem = selectedItem() > 0;
  for (QWidget* one : QList<QWidget*>{fraStructure, cmdDuplicate, cmdDelete, cmdAddList} + fieldsIn(LanguageProperty::languageBox))
    one->setEnabled(any);
  for (QWidget* one : std::initializer_list<QWidget*>{txtList, txtDesc, cmdDeleteList}) one->setEnabled(anyItem);
}

frmDefinitions::Item frmDefinitions::item(int index) const {
  const auto subject = language();
  if (!subject || index < 1 || index > itemCount()) return {};
  switch (tab()) {
    case Macros: {
      const auto& one = subject->cMacros()->Item(index);
      return {&one->Name, &one->CommandString, &one->Desc, one};
    }
    case Templates: {
      const auto& one = subject->cTemplate()->Item(index);
      return {&one->HotKey, &one->UserString, &one->Desc, one};   // Name keeps its value
    }
    case WordLists: {
      const auto& one = subject->cWordList()->Item(index);
      return {&one->Name, &one->WordList, &one->Desc, one};
    }
    case Structure: break;
  }
  return {};
}

int frmDefinitions::itemCount() const {
  const auto subject = language();
  if (!subject) return 0;
  switch (tab()) {
    case Macros: return subject->cMacros()->Count();
    case Templates: return subject->cTemplate()->Count();
    case WordLists: return subject->cWordList()->Count();
    case Structure: break;
  }
  return 0;
}

int frmDefinitions::selectedItem() const { return lst->currentRow() + 1; }

void frmDefinitions::showHints() {
  const Item subject = item(selectedItem());
  QString hint;
  if (subject.name) {
    switch (tab()) {
      case Macros: hint = tr("Commands to be run when [") + *subject.name + tr("] is selected from the 'Custom' menu"); break;
      case Templates: hint = tr("Code to be inserted when [") + *subject.name + tr("] is typed and SHIFT-F1 is pressed"); break;
      case WordLists: hint = tr("These words are cycled through when F5, F6 are pressed"); break;
      case Structure: break;
    }
  }
  lblHint->setText(plainForDisplay(hint));
  lst->setToolTip(toolTipOf(hint));
  txtList->setToolTip(toolTipOf(hint));
}

void frmDefinitions::showWarnings() {
  QStringList lines;
  if (const auto subject = language()) {
    lines = languagecheck::linesAtRisk(*subject);
    const qsizetype more = lines.size() - kShownWarnings;
    if (more > 0) lines = lines.first(kShownWarnings) << tr("and %n more", nullptr, static_cast<int>(more));
    if (!lines.isEmpty()) lines.prepend(tr("The definition file would read these lines as headers and lose them:"));
    const QString refusal = languagecheck::refusal(*subject);
    if (!refusal.isEmpty()) lines += refusal;
  }
  lblWarning->setText(lines.join(u'\n'));
  lblWarning->setVisible(!lines.isEmpty());
}

void frmDefinitions::showPreview() {
  const Item subject = item(selectedItem());
  preview->show(language(), tab() == Templates && subject.body ? *subject.body : QString());
}

void frmDefinitions::filterLanguages() {
  const QString wanted = txtFilter->text();
  for (int row = 0; row < lstLanguage->count(); ++row) {
    const clsLang& one = *manager_.Languages()->Item(row + 1);
    const bool fits = one.Name.contains(wanted, Qt::CaseInsensitive) || one.Extension.contains(wanted, Qt::CaseInsensitive);
    lstLanguage->item(row)->setHidden(!fits);
  }
}

// --- changes -----------------------------------------------------------------------------------------------------------

void frmDefinitions::FormisChanged(bool changed) {
  changed_ = changed;
  if (changed) handedOver_ = false;
  cmdSave->setEnabled(changed);
  cmdApply->setEnabled(changed);
}

void frmDefinitions::edited() {
  FormisChanged(true);
  showWarnings();
  showPreview();
}

void frmDefinitions::insertLanguage(int index, const std::shared_ptr<clsLang>& language) {
  manager_.Languages()->Insert(index, language);
  FormisChanged(true);
  LoadLanguages();
  SelectLanguage(index);
}

void frmDefinitions::cmdAdd_Click() {
  const int count = manager_.Languages()->Count();
  const QString name = QStringLiteral("Language") + QString::number(count);
  if (manager_.GetIndex(name) != 0) {
    MsgBox(tr("Language '") + name + tr("' already defined"));
    return;
  }
  manager_.Languages()->Add(name);
  FormisChanged(true);
  LoadLanguages();
  SelectLanguage(count + 1);
  lstLanguage->setFocus();
  lstLanguage->editItem(lstLanguage->currentItem());
}

void frmDefinitions::cmdDuplicate_Click() {
  const auto original = language();
  if (!original) return;
  const auto copy = original->copy();
  copy->Name = original->Name + tr(" copy");
  for (int n = 2; manager_.GetIndex(copy->Name) != 0; ++n) copy->Name = original->Name + tr(" copy %1").arg(n);
  insertLanguage(lstLanguage->currentRow() + 2, copy);
  lstLanguage->setFocus();
  lstLanguage->editItem(lstLanguage->currentItem());
}

bool frmDefinitions::AreYouSure() {
  return MsgBox(tr("Are you sure you want to delete these languages?"), tr("Confirm Deletion"), Icon::question,
                Buttons::okCancel) == Answer::ok;
}

void frmDefinitions::cmdDelete_Click() {
  const QList<int> rows = selectedRows(lstLanguage);
  if (rows.isEmpty() || !AreYouSure()) return;
  for (auto row = rows.rbegin(); row != rows.rend(); ++row) manager_.Languages()->Remove(*row + 1);
  FormisChanged(true);
  LoadLanguages();
  SelectLanguage(std::min(rows.first() + 1, manager_.Languages()->Count()));
  lstLanguage->setFocus();
}

void frmDefinitions::cmdAddList_Click() {
  const auto subject = language();
  if (!subject || tab() == Structure) return;
  switch (tab()) {
    case Macros: subject->cMacros()->Add()->Name = QStringLiteral("New Macro"); break;
    case Templates: subject->cTemplate()->Add(QStringLiteral("New Template")); break;
    case WordLists: subject->cWordList()->Add(QStringLiteral("New WordList")); break;
    case Structure: break;
  }
  FormisChanged(true);
  LoadAny();
  SelectList(itemCount());
  lst->setFocus();
  lst->editItem(lst->currentItem());
}

void frmDefinitions::cmdDeleteList_Click() {
  const auto subject = language();
  const QList<int> rows = selectedRows(lst);
  if (!subject || rows.isEmpty()) return;
  for (auto row = rows.rbegin(); row != rows.rend(); ++row) {
    switch (tab()) {
      case Macros: subject->cMacros()->Remove(*row + 1); break;
      case Templates: subject->cTemplate()->Remove(*row + 1); break;
      case WordLists: subject->cWordList()->Remove(*row + 1); break;
      case Structure: break;
    }
  }
  FormisChanged(true);
  LoadAny();
  SelectList(std::min(rows.first() + 1, itemCount()));
  lst->setFocus();
}

void frmDefinitions::lstLanguage_AfterLabelEdit(QListWidgetItem* entry) {
  const int index = lstLanguage->row(entry) + 1;
  if (filling_ || index < 1 || index > manager_.Languages()->Count()) return;
  const auto& renamed = manager_.Languages()->Item(index);
  const QString name = definition::oneLine(entry->text());
  if (name == renamed->Name) return;
  renamed->Name = name;
  if (renamed == language()) {
    setWindowTitle(titleOf(tr("Language Definition - ") + name));
    showHelpHint(name);
  }
  edited();
}

void frmDefinitions::lst_AfterLabelEdit(QListWidgetItem* entry) {
  const Item renamed = item(lst->row(entry) + 1);
  if (filling_ || !renamed.name) return;
  const QString name = definition::oneLine(entry->text());
  if (name == *renamed.name) return;
  *renamed.name = name;
  showHints();
  edited();
}

// --- languages as text -------------------------------------------------------------------------------------------------

QString frmDefinitions::GetSelectedDefinitions() const {
  QString text;
  for (const int row : selectedRows(lstLanguage)) text += definition::writeLanguage(*manager_.Languages()->Item(row + 1));
  return text;
}

void frmDefinitions::PasteDefinitions(const QString& text) {
  if (!text.startsWith(QLatin1String(definition::kLanguageMark))) return;
  const auto languages = definition::read(text);
  for (const auto& pasted : *languages) {
    if (text != copied()) pasted->isForeign = true;
    const int known = manager_.GetIndex(pasted->Name);
    if (known == 0) {
      insertLanguage(manager_.Languages()->Count() + 1, pasted);
      continue;
    }
    const QString question = tr("Language '") + plainForDisplay(pasted->Name, 80) + tr("' already defined") +
                             tr("\r\nYes replaces it, No adds the pasted one under another name.");
    switch (MsgBox(question, {}, Icon::exclamation, Buttons::yesNoCancel)) {
      case Answer::yes:
        manager_.Languages()->Remove(known);
        LowerRegisteredLanguageCount();
        insertLanguage(known, pasted);
        break;
      case Answer::no: {
        const QString name = pasted->Name;
        for (int n = 2; manager_.GetIndex(pasted->Name) != 0; ++n) pasted->Name = name + QStringLiteral(" %1").arg(n);
        insertLanguage(manager_.Languages()->Count() + 1, pasted);
        break;
      }
      default: return;
    }
  }
}

// --- file and end ------------------------------------------------------------------------------------------------------

bool frmDefinitions::save() {
  if (auto* field = qobject_cast<ListField*>(focusWidget())) field->AddCRLFifNone();   // closing asked for it
  QStringList lost = languagecheck::linesAtRisk(*manager_.Languages());
  if (!lost.isEmpty()) {
    if (lost.size() > 10) lost = lost.first(10) << QStringLiteral("...");
    const QString question = tr("The definition file would read these lines as headers and lose them:") + QStringLiteral("\r\n") +
                             lost.join(QLatin1String("\r\n")) + QStringLiteral("\r\n") + tr("Do you want to save all the same?");
    if (MsgBox(question, {}, Icon::exclamation, Buttons::yesNo) != Answer::yes) return false;
  }
  if (!manager_.SaveIniFile()) return false;
  txtIni->setText(manager_.IniFile());
  FormisChanged(false);
  handedOver_ = true;
  emit LanguagesChanged();
  return true;
}

bool frmDefinitions::mayLeave() {
  if (!changed_) return true;
  switch (MsgBox(tr("Languages defintion has changed. Do you want to save?"), {}, Icon::exclamation, Buttons::yesNoCancel)) {
    case Answer::yes: return save();
    case Answer::no: return true;
    default: return false;
  }
}

void frmDefinitions::BrowseIni() {
  if (!mayLeave() || !manager_.BrowseIniFile()) return;
  ReloadIniFile();
}

void frmDefinitions::ReloadIniFile() {
  manager_.Init();
  LoadDefiner();
  handedOver_ = true;
  emit LanguagesChanged();
}

void frmDefinitions::openPage(const QString& page) {
  QString address = webHome_;
  if (!address.isEmpty() && !address.endsWith(u'/')) address += u'/';
  address += page;
  if (!dialogs().openUrl(address)) MsgBox(tr("Cannot open the page %1").arg(plainForDisplay(address)));
}

void frmDefinitions::ShowMacro(int lang, int macro, const QString& report) {
  SelectLanguage(lang);
  TabStrip1->setCurrentIndex(Macros);
  SelectList(macro);
  lblReport->setText(plainForDisplay(report));
  lblReport->setVisible(!report.isEmpty());
  txtList->setFocus();
}

void frmDefinitions::reject() { close(); }

void frmDefinitions::closeEvent(QCloseEvent* event) {
  event->ignore();
  if (leaving_) return;   // the question is already shown
  leaving_ = true;
  const bool leave = mayLeave();
  leaving_ = false;
  event->setAccepted(leave);
  if (!leave) return;
  if (!handedOver_) {
    handedOver_ = true;
    emit LanguagesChanged();
  }
  QDialog::done(QDialog::Rejected);
}
