// The dialog in which the user makes, edits, deletes and saves language definitions. It edits the languages of the manager
// in place: every field writes straight through to its property. Only Save writes the definition file.
//
// The caller registers the languages with the edit control again when LanguagesChanged is emitted. The dialog may be modal or
// stay open beside the documents.
#pragma once

#include <QDialog>
#include <functional>
#include <memory>

#include "language/LanguageProperties.h"
#include "language/editor/ListField.h"

class LanguagePreview;
class QCheckBox;
class QFrame;
class QGridLayout;
class QLabel;
class QLineEdit;
class QListWidget;
class QListWidgetItem;
class QPushButton;
class QStackedWidget;
class QTabBar;
class ucCM;

class frmDefinitions : public QDialog {
  Q_OBJECT
 public:
  // The manager must outlive the dialog. webHome is the base address of the web site's pages.
  explicit frmDefinitions(ucCM& manager, const QString& webHome = {}, QWidget* parent = nullptr);
  ~frmDefinitions() override;

  enum Tab { Structure, Macros, Templates, WordLists };

  void LoadDefiner();   // fills all fields from the manager and selects the current language
  // Selects a macro by the positions of language and macro (from 1). Shows why it failed; the report stays while the user edits.
  void ShowMacro(int lang, int macro, const QString& report);
  void SelectLanguage(int index);           // position from 1; 0 or out of range: none
  void SelectList(int index);               // the same for an item of the current tab
  QString GetSelectedDefinitions() const;   // the selected languages in the form of the definition file
  // Adds languages from such a text; ignores any other text. They count as foreign unless this program copied the text: then they
  // keep their mark.
  void PasteDefinitions(const QString& text);
  bool isChanged() const { return changed_; }

 public slots:
  void reject() override;   // like the close button: asks about unsaved changes

 signals:
  // The languages differ from those registered last. Emitted after Save and Apply, after another file was read, and when the dialog
  // closes after a change.
  void LanguagesChanged();

 protected:
  void closeEvent(QCloseEvent* event) override;

 private:
  // Layout (frmDefinitionsLayout.cpp).
  void layOut();
  void makeFields();
  void putFields(QGridLayout* grid, LanguageProperty::Box box);   // each below its label
  QWidget* fileRow();
  QWidget* languageFrame();
  QWidget* structureFrame();
  QWidget* listFrame();
  void connectAll();

  void LoadAny();         // fills lst for the current tab
  void LoadLanguages();   // fills lstLanguage
  void SetupLanguage();   // fills the fields of the language's properties
  void showHelpHint(const QString& language);
  void SetUpList();   // sets the two labels of the current tab
  void SetupItem();   // fills txtList and txtDesc from the selected item
  void LockText();    // disables fields without a language or item
  void ClearText();
  void FormisChanged(bool changed);
  void edited();
  bool AreYouSure();
  void BrowseIni();
  void ReloadIniFile();
  bool save();
  bool mayLeave();   // asks about unsaved changes; false: stay
  void showWarnings();
  void showHints();
  void showPreview();   // shows a template's text, else a sample of the language
  void filterLanguages();
  void openPage(const QString& page);

  void cmdAdd_Click();
  void cmdDuplicate_Click();
  void cmdDelete_Click();
  void cmdAddList_Click();
  void cmdDeleteList_Click();
  void lstLanguage_AfterLabelEdit(QListWidgetItem* item);
  void lst_AfterLabelEdit(QListWidgetItem* item);

  void insertLanguage(int index, const std::shared_ptr<clsLang>& language);
  // The texts of an item of the current tab, whatever its kind. Null when there is no item.
  struct Item {
    QString *name = nullptr, *body = nullptr, *desc = nullptr;
    std::shared_ptr<void> owner;   // of the three
  };
  Item item(int index) const;   // position from 1
  int itemCount() const;
  int selectedItem() const;   // position from 1; 0: none
  // Completes the last line in txtList before another item is shown, in case the field does not lose the focus.
  void finishItem();
  Tab tab() const;
  std::shared_ptr<clsLang> language() const;   // the selected one; null for none

  ucCM& manager_;
  QString webHome_;
  bool changed_ = false;
  bool handedOver_ = true;   // no change since LanguagesChanged
  bool filling_ = false;     // fields are being filled: changes are no edits
  bool leaving_ = false;
  Item shown_;   // the item shown in txtList, if its lines end with breaks

  // The field of one property: a line or several.
  struct PropertyField {
    const LanguageProperty* property;
    QLineEdit* line;
    ListField* lines;
    QWidget* widget() const;
    void show(const QString& value) const;
    QString value() const;   // as the property holds it
  };
  std::vector<PropertyField> propertyFields_;   // one for each row of languageProperties(), in its order
  QWidget* fieldOf(QString clsLang::*property) const;
  QList<QWidget*> fieldsIn(LanguageProperty::Box box) const;   // from the top

  QLineEdit *txtIni = nullptr, *txtFilter = nullptr, *txtDesc = nullptr;
  QPushButton *cmdBrowse = nullptr, *cmdDownload = nullptr, *cmdSubmit = nullptr, *cmdAdd = nullptr, *cmdDuplicate = nullptr,
              *cmdDelete = nullptr, *cmdApply = nullptr, *cmdSave = nullptr, *cmdClose = nullptr, *cmdAddList = nullptr,
              *cmdDeleteList = nullptr;
  QListWidget *lstLanguage = nullptr, *lst = nullptr;
  QTabBar* TabStrip1 = nullptr;
  QStackedWidget* pages = nullptr;
  QFrame *fraStructure = nullptr, *fraList = nullptr;
  QCheckBox* chkCase = nullptr;
  ListField* txtList = nullptr;
  QLabel *lblList = nullptr, *lblText = nullptr, *lblHint = nullptr, *lblWarning = nullptr, *lblReport = nullptr;
  LanguagePreview* preview = nullptr;
};
