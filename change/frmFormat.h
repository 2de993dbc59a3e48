// The format dialog: five lists, a preview, Apply and Cancel. Apply formats the active document and keeps the dialog open.
#pragma once

#include <QDialog>

#include "change/FormatText.h"

class QCheckBox;
class QComboBox;
class QLabel;
class QPushButton;
class frmDocument;

class frmFormat : public QDialog {
  Q_OBJECT
 public:
  explicit frmFormat(QWidget* parent = nullptr);

  FormatChoices choices() const;

 public slots:
  void cmdApply_Click();
  void cmdPreview_Click();
  void cmdCancel_Click();

 protected:
  bool event(QEvent* event) override;

 private:
  void Form_Load();
  void propose();
  bool agree(FormatChoices* chosen, const clsLang* language);   // asks before steps that may change the meaning of the text
  void apply(frmDocument& document, const FormatChoices& chosen);
  void updateButtons();

  QComboBox *cmbTab_, *cmbText_, *cmbKeywords_, *cmbIndent_, *cmbLine_;
  QCheckBox *chkWholeLine_, *chkIndentTabs_, *chkSelection_;
  QPushButton *cmdApply_, *cmdPreview_;
  QLabel* lblResult_;
  const void* about_ = nullptr;   // the document for which the values were suggested
};
