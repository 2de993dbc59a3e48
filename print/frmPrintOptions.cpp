#include "print/frmPrintOptions.h"

#include <QCheckBox>
#include <QColorDialog>
#include <QComboBox>
#include <QDate>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QFontComboBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QMenu>
#include <QPushButton>
#include <QSpinBox>
#include <QTabBar>
#include <QTabWidget>
#include <QToolButton>

#include "base/dialog/PageKeys.h"
#include "script/Statements.h"

namespace {

constexpr double kPointsPerMillimetre = 72 / 25.4;

QCheckBox* check(const QString& text, bool on, const char* name) {
  auto* box = new QCheckBox(text);
  box->setChecked(on);
  box->setObjectName(QLatin1String(name));
  return box;
}

QDoubleSpinBox* millimetres(double points) {
  auto* box = new QDoubleSpinBox;
  box->setRange(0, 500);
  box->setDecimals(2);
  box->setSuffix(QStringLiteral(" mm"));
  box->setValue(points / kPointsPerMillimetre);
  return box;
}

void setColor(QToolButton* button, const QColor& color) {
  button->setProperty("color", color);
  QPixmap swatch(32, 14);
  swatch.fill(color);
  button->setIcon(swatch);
  button->setIconSize(swatch.size());
}

QWidget* row(std::initializer_list<QWidget*> widgets) {
  auto* holder = new QWidget;
  auto* layout = new QHBoxLayout(holder);
  layout->setContentsMargins(0, 0, 0, 0);
  for (auto* widget : widgets) layout->addWidget(widget);
  return holder;
}

}   // namespace

QWidget* frmPrintOptions::edgeRow(QLineEdit* edit, const QString& insertText, QLabel* example) {
  auto* insert = new QToolButton;
  insert->setText(insertText);
  insert->setPopupMode(QToolButton::InstantPopup);
  auto* menu = new QMenu(insert);
  const auto add = [&](const QString& text, const QString& help) {
    connect(menu->addAction(text + u'\t' + help), &QAction::triggered, edit, [edit, text] {
      edit->insert(text);
      edit->setFocus();
    });
  };
  for (const auto& variable : statements::variables())
    if (variable.value != statements::Value::output) add(QLatin1String(variable.name), QLatin1String(variable.help));
  menu->addSeparator();
  add(QStringLiteral("%d"), tr("the page number"));
  add(QStringLiteral("%n"), tr("the number of pages"));
  add(QStringLiteral("%f"), tr("the date of the file's last change"));
  add(QStringLiteral("|"), tr("the next part: left, centre, right"));
  insert->setMenu(menu);
  example->setTextFormat(Qt::PlainText);
  example->setMinimumWidth(360);
  example->setForegroundRole(QPalette::PlaceholderText);
  auto* holder = new QWidget;
  auto* layout = new QVBoxLayout(holder);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(row({edit, insert}));
  layout->addWidget(example);
  connect(edit, &QLineEdit::textChanged, this, &frmPrintOptions::showExamples);
  return holder;
}

QWidget* frmPrintOptions::colorRow(QCheckBox* use, QToolButton* button, const QColor& color, const QColor& otherwise) {
  use->setChecked(color.isValid());
  setColor(button, color.isValid() ? color : otherwise);
  button->setAccessibleName(use->text());
  button->setEnabled(use->isChecked());
  connect(use, &QCheckBox::toggled, button, &QWidget::setEnabled);
  connect(button, &QToolButton::clicked, this, [this, button] {
    const QColor chosen = QColorDialog::getColor(button->property("color").value<QColor>(), this);
    if (chosen.isValid()) setColor(button, chosen);
  });
  return row({use, button});
}

frmPrintOptions::frmPrintOptions(const PrintSettings& s, QWidget* parent) : QDialog(parent), settings_(s) {
  setWindowTitle(tr("Print Options"));
  setObjectName(QStringLiteral("frmPrintOptions"));
  const CWordWrap& t = s.text;

  txtHeader_ = new QLineEdit(t.HeaderText);
  txtFooter_ = new QLineEdit(t.FooterText);
  txtHeader_->setObjectName(QStringLiteral("txtHeader"));
  txtFooter_->setObjectName(QStringLiteral("txtFooter"));
  lblHeader_ = new QLabel;
  lblFooter_ = new QLabel;
  chkHeader_ = check(tr("&Header"), t.HeaderEnabled, "chkHeader");
  chkFooter_ = check(tr("&Footer"), t.FooterEnabled, "chkFooter");
  chkLineNumbers_ = check(tr("Line &numbers"), t.LineNumbers, "chkLineNumbers");
  chkWrapMark_ = check(tr("&Mark where a line goes on below"), t.WrapMark, "chkWrapMark");
  chkKeywordBold_ = check(tr("&bold"), t.Keywordsbold, "chkKeywordBold");
  chkKeywordItalic_ = check(tr("&italic"), t.KeywordsItalic, "chkKeywordItalic");
  chkCommentBold_ = check(tr("b&old"), t.CommentsBold, "chkCommentBold");
  chkCommentItalic_ = check(tr("i&talic"), t.CommentsItalic, "chkCommentItalic");

  auto* text = new QWidget;
  auto* textForm = new QFormLayout(text);
  textForm->addRow(chkHeader_, edgeRow(txtHeader_, tr("Inse&rt"), lblHeader_));
  textForm->addRow(chkFooter_, edgeRow(txtFooter_, tr("Ins&ert"), lblFooter_));
  textForm->addRow(QString(), chkLineNumbers_);
  textForm->addRow(QString(), chkWrapMark_);
  textForm->addRow(tr("Keywords"), row({chkKeywordBold_, chkKeywordItalic_}));
  textForm->addRow(tr("Comments"), row({chkCommentBold_, chkCommentItalic_}));
  keywordColor_ = new QToolButton;
  commentColor_ = new QToolButton;
  stringColor_ = new QToolButton;
  chkKeywordColor_ = new QCheckBox(tr("&Keywords"));
  chkCommentColor_ = new QCheckBox(tr("&Comments"));
  chkStringColor_ = new QCheckBox(tr("&Strings"));
  textForm->addRow(tr("Colours"), row({colorRow(chkKeywordColor_, keywordColor_, t.keywordColor, QColor(0, 0, 160)),
                                       colorRow(chkCommentColor_, commentColor_, t.commentColor, QColor(0, 110, 0)),
                                       colorRow(chkStringColor_, stringColor_, t.stringColor, QColor(150, 30, 30))}));

  font_ = new QFontComboBox;
  font_->setCurrentFont(s.font);
  fontSize_ = new QDoubleSpinBox;
  fontSize_->setRange(3, 72);
  fontSize_->setDecimals(1);
  fontSize_->setValue(s.font.pointSizeF());
  paper_ = new QComboBox;
  for (const auto id :
       {QPageSize::A3, QPageSize::A4, QPageSize::A5, QPageSize::Letter, QPageSize::Legal, QPageSize::Ledger, QPageSize::Tabloid})
    paper_->addItem(QPageSize::name(id), int(id));
  if (paper_->findData(int(s.layout.pageSize().id())) < 0)
    paper_->addItem(s.layout.pageSize().name(), int(s.layout.pageSize().id()));
  paper_->setCurrentIndex(paper_->findData(int(s.layout.pageSize().id())));
  orientation_ = new QComboBox;
  orientation_->addItems({tr("Portrait"), tr("Landscape")});
  orientation_->setCurrentIndex(s.layout.orientation() == QPageLayout::Landscape ? 1 : 0);
  columns_ = new QSpinBox;
  columns_->setRange(1, 2);
  columns_->setValue(s.columns);
  const QMarginsF margins = s.layout.margins(QPageLayout::Point);
  left_ = millimetres(margins.left());
  right_ = millimetres(margins.right());
  top_ = millimetres(margins.top());
  bottom_ = millimetres(margins.bottom());
  auto* page = new QWidget;
  auto* pageForm = new QFormLayout(page);
  const auto label = [](const QString& caption, QWidget* buddy) {   // for a field that shares its row
    auto* made = new QLabel(caption);
    made->setBuddy(buddy);
    return made;
  };
  pageForm->addRow(label(tr("F&ont"), font_), row({font_, label(tr("Si&ze"), fontSize_), fontSize_}));
  pageForm->addRow(label(tr("&Paper"), paper_), row({paper_, label(tr("Or&ientation"), orientation_), orientation_}));
  pageForm->addRow(tr("&Columns on a page"), columns_);
  pageForm->addRow(tr("&Left margin"), left_);
  pageForm->addRow(tr("&Right margin"), right_);
  pageForm->addRow(tr("&Top margin"), top_);
  pageForm->addRow(tr("&Bottom margin"), bottom_);

  tabs_ = new QTabWidget;
  tabs_->addTab(text, tr("Te&xt"));
  tabs_->addTab(page, tr("Pa&ge"));
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
  connect(buttons, &QDialogButtonBox::accepted, this, &frmPrintOptions::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  walkPagesByKeys(*this, *tabs_->tabBar());
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(tabs_);
  layout->addWidget(buttons);
  // Tab order: each text field behind its check box.
  const QList<QWidget*> order{chkHeader_,      txtHeader_,        chkFooter_,      txtFooter_,        chkLineNumbers_,
                              chkKeywordBold_, chkKeywordItalic_, chkCommentBold_, chkCommentItalic_, chkKeywordColor_,
                              keywordColor_,   chkCommentColor_,  commentColor_,   chkStringColor_,   stringColor_};
  for (qsizetype i = 1; i < order.size(); ++i) setTabOrder(order[i - 1], order[i]);
  showExamples();
}

void frmPrintOptions::showExamples() {
  const auto show = [](QLabel* label, const QString& text) {
    const PrintEdge edge = GenerateHandF(text, true, QLocale().toString(QDate::currentDate(), QLocale::ShortFormat));
    QStringList parts;
    for (QString part : {edge.left, edge.centre, edge.right})
      parts << part.replace(QLatin1String("%d"), QLatin1String("1"))
                   .replace(QLatin1String("%n"), QLatin1String("9"))
                   .remove(kNoField);
    label->setText(label->fontMetrics().elidedText(parts.join(QStringLiteral("   |   ")), Qt::ElideRight, 420));
  };
  show(lblHeader_, txtHeader_->text());
  show(lblFooter_, txtFooter_->text());
}

void frmPrintOptions::showPageTab() { tabs_->setCurrentIndex(1); }

PrintSettings frmPrintOptions::settings() const {
  PrintSettings s = settings_;
  CWordWrap& t = s.text;
  t.HeaderText = txtHeader_->text();
  t.FooterText = txtFooter_->text();
  t.HeaderEnabled = chkHeader_->isChecked();
  t.FooterEnabled = chkFooter_->isChecked();
  t.LineNumbers = chkLineNumbers_->isChecked();
  t.WrapMark = chkWrapMark_->isChecked();
  t.Keywordsbold = chkKeywordBold_->isChecked();
  t.KeywordsItalic = chkKeywordItalic_->isChecked();
  t.CommentsBold = chkCommentBold_->isChecked();
  t.CommentsItalic = chkCommentItalic_->isChecked();
  const auto color = [](const QCheckBox* use, const QToolButton* button) {
    return use->isChecked() ? button->property("color").value<QColor>() : QColor();
  };
  t.keywordColor = color(chkKeywordColor_, keywordColor_);
  t.commentColor = color(chkCommentColor_, commentColor_);
  t.stringColor = color(chkStringColor_, stringColor_);
  s.font = font_->currentFont();
  s.font.setPointSizeF(fontSize_->value());
  s.columns = columns_->value();
  s.layout.setPageSize(QPageSize(QPageSize::PageSizeId(paper_->currentData().toInt())));
  s.layout.setOrientation(orientation_->currentIndex() == 1 ? QPageLayout::Landscape : QPageLayout::Portrait);
  s.layout.setUnits(QPageLayout::Point);
  s.layout.setMinimumMargins(QMarginsF());
  s.layout.setMargins(QMarginsF(left_->value(), top_->value(), right_->value(), bottom_->value()) * kPointsPerMillimetre);
  return s;
}

void frmPrintOptions::accept() {
  settings_ = settings();
  settings_.save();
  QDialog::accept();
}
