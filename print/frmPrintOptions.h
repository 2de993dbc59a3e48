// The print options dialog: the options of CWordWrap, paper, margins, font and colours, with a live example of header and footer.
// OK saves them.
#pragma once

#include <QDialog>

#include "print/PrintSettings.h"

class QCheckBox;
class QComboBox;
class QDoubleSpinBox;
class QFontComboBox;
class QLabel;
class QLineEdit;
class QSpinBox;
class QTabWidget;
class QToolButton;

class frmPrintOptions : public QDialog {
  Q_OBJECT
 public:
  explicit frmPrintOptions(const PrintSettings& settings, QWidget* parent = nullptr);
  PrintSettings settings() const;
  void showPageTab();   // paper, margins, font

 public slots:
  void accept() override;

 private:
  QWidget* edgeRow(QLineEdit* edit, const QString& insertText, QLabel* example);
  QWidget* colorRow(QCheckBox* use, QToolButton* button, const QColor& color, const QColor& otherwise);
  void showExamples();

  PrintSettings settings_;
  QTabWidget* tabs_;
  QLineEdit *txtHeader_, *txtFooter_;
  QLabel *lblHeader_, *lblFooter_;
  QCheckBox *chkHeader_, *chkFooter_, *chkLineNumbers_, *chkWrapMark_, *chkKeywordBold_, *chkKeywordItalic_, *chkCommentBold_,
      *chkCommentItalic_;
  QCheckBox *chkKeywordColor_, *chkCommentColor_, *chkStringColor_;
  QToolButton *keywordColor_, *commentColor_, *stringColor_;
  QFontComboBox* font_;
  QDoubleSpinBox *fontSize_, *left_, *top_, *right_, *bottom_;
  QComboBox *paper_, *orientation_;
  QSpinBox* columns_;
};
