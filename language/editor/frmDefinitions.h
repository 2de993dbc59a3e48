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
  // The manager must outlive the dialog. webHome is the address below which the pages of the web site lie.
  explicit frmDefinitions(ucCM& manager, const QString& webHome = {}, QWidget* parent = nullptr);
  ~frmDefinitions() override;

  enum Tab { Structure, Macros, Templates, WordLists };

  void LoadDefiner();   // fills everything from the manager, the current language selected
  // Selects a macro by the positions of language and macro (from 1) and shows why it failed, in sight while it is mended.
  void ShowMacro(int lang, int macro, const QString& report);
  void SelectLanguage(int index);           // position from 1; 0 or out of range: none
  void SelectList(int index);               // the same for an item of the present tab
  QString GetSelectedDefinitions() const;   // the selected languages as they would stand in the definition file
  // Languages from such a text; anything else is not taken. They count as foreign unless this program copied them last, which
  // leaves them what they were.
  void PasteDefinitions(const QString& text);
  bool isChanged() const { return changed_; }

 public slots:
  void reject() override;   // as the close button: asks when something is not saved

 signals:
  // Languages differ from what was last handed over: after Save and Apply, after another file was read, and when the dialog
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

  void LoadAny();         // fills lst for the present tab
  void LoadLanguages();   // fills lstLanguage
  void SetupLanguage();   // fills the fields of the language's properties
  void showHelpHint(const QString& language);
  void SetUpList();   // the two labels of the present tab
  void SetupItem();   // fills txtList and txtDesc from the selected item
  void LockText();    // fields without a subject take no input
  void ClearText();
  void FormisChanged(bool changed);
  void edited();
  bool AreYouSure();
  void BrowseIni();
  void ReloadIniFile();
  bool save();
  bool mayLeave();   // asks about changes; false: stay
  void showWarnings();
  void showHints();
  void showPreview();   // a template's text, else a sample of the language
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
  // The present tab's item in the language: its texts, whatever its kind. Null without one.
  struct Item {
    QString *name = nullptr, *body = nullptr, *desc = nullptr;
    std::shared_ptr<void> owner;   // of the three
  };
  Item item(int index) const;   // position from 1
  int itemCount() const;
  int selectedItem() const;   // position from 1, 0 none
  // Ends the last line of what txtList showed, where it is exchanged for another item without losing the focus.
  void finishItem();
  Tab tab() const;
  std::shared_ptr<clsLang> language() const;   // the selected one; null for none

  ucCM& manager_;
  QString webHome_;
  bool changed_ = false;
  bool handedOver_ = true;   // nothing changed since LanguagesChanged
  bool filling_ = false;     // fields are being filled: no edits
  bool leaving_ = false;
  Item shown_;   // in txtList, when its lines end with breaks

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
