#include "control/options/PropertiesPages.h"

#include <QCheckBox>
#include <QComboBox>
#include <QCoreApplication>
#include <QDoubleSpinBox>
#include <QFontComboBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QSpinBox>
#include <QVBoxLayout>

#include "control/code/LanguageTable.h"
#include "control/view/ViewState.h"

namespace {

QCheckBox* addCheck(QVBoxLayout* to, const QString& text, const char* name, bool& value) {
  auto* box = new QCheckBox(text, to->parentWidget());
  box->setObjectName(QString::fromLatin1(name));
  box->setChecked(value);
  QObject::connect(box, &QCheckBox::toggled, box, [&value](bool on) { value = on; });
  to->addWidget(box);
  return box;
}

// The switches that stand on the page of editing, or those on the page of the display.
void addAids(QVBoxLayout* to, ControlOptions& o, bool typing) {
  for (const TypingAids::Switch& row : TypingAids::switches())
    if (row.typing == typing) addCheck(to, QCoreApplication::translate("TypingAids", row.label), row.field, o.aids.*row.value);
}

QVBoxLayout* addGroup(QVBoxLayout* to, const QString& title) {
  auto* group = new QGroupBox(title, to->parentWidget());
  to->addWidget(group);
  return new QVBoxLayout(group);
}

}   // namespace

CodeMax* makeSample(QWidget* parent) {
  auto* sample = new CodeMax(parent);
  // The sample has its own language, because the user may have changed or removed all others.
  const QString language = QStringLiteral("\nSample");
  if (!LanguageTable::contains(language))
    LanguageTable::registerLanguage(
        language, {true, QStringLiteral("static\nconst\nint\nchar\nif\nreturn"),
                   QStringLiteral("=\n==\n+\n-\n*\n<\n?\n:\n(\n)\n[\n]\n{\n}\n,\n;"), QStringLiteral("//"), QStringLiteral("/*"),
                   QStringLiteral("*/"), QStringLiteral("\"\n'")});
  sample->setLanguage(language);
  sample->setText(
      QStringLiteral("// A comment stands before the code.\n"
                     "static int count(const char* text, int limit) {\n"
                     "  int found = 0x1F + 42;\n"
                     "\tif (text[0] == 'a') return found;   /* selected: */\n"
                     "  return limit < 10 ? found : -1;\n"
                     "}\n"
                     "const char* greeting = \"Hello, world\";\n"));
  sample->setReadOnly(true);
  sample->setBookmark(2, true);
  sample->SetSel({4, 9, 4, 19, false}, false);   // the sample is visible as a whole; without a size nothing would be
  sample->setMinimumHeight(150);
  sample->setFocusPolicy(Qt::NoFocus);
  return sample;
}

DisplayPage::DisplayPage(ControlOptions& o, QWidget* parent) : QWidget(parent) {
  auto* layout = new QVBoxLayout(this);
  auto* text = addGroup(layout, tr("Text"));
  addCheck(text, tr("&Colour by the language"), "colorSyntax", o.colorSyntax);
  addCheck(text, tr("Show &blanks, tabs and line ends"), "whiteSpace", o.whiteSpace);
  addCheck(text, tr("&Left margin with bookmarks, line numbers and handles"), "leftMargin", o.leftMargin);
  addCheck(text, tr("Line with the beginning of the block above the &window"), "stickyLine", o.stickyLine);
  addAids(text, o, false);
  auto* rulers = new QLineEdit(o.aids.rulersText(), this);
  rulers->setObjectName(QStringLiteral("rulers"));
  rulers->setPlaceholderText(tr("none; for example 80, 120"));
  connect(rulers, &QLineEdit::textChanged, this, [&o](const QString& columns) { o.aids.setRulers(columns); });
  auto* lines = new QFormLayout;
  lines->addRow(tr("Rulers at colu&mns:"), rulers);
  text->addLayout(lines);
  auto* wrapping = addGroup(layout, tr("Long lines"));
  auto* form = new QFormLayout;
  wrapping->addLayout(form);
  auto* wrap = new QComboBox(this);
  wrap->setObjectName(QStringLiteral("wordWrap"));
  wrap->addItems({tr("One row"), tr("Wrapped at the window's edge"), tr("Wrapped at a column")});   // in the order of WordWrap
  wrap->setCurrentIndex(o.wordWrap);
  auto* column = new QSpinBox(this);
  column->setObjectName(QStringLiteral("wrapColumn"));
  column->setRange(kLeastWrapColumn, kMostWrapColumn);
  column->setValue(o.wrapColumn);
  connect(wrap, &QComboBox::currentIndexChanged, this, [&o, column](int mode) {
    o.wordWrap = mode;
    column->setEnabled(mode == static_cast<int>(WordWrap::column));
  });
  column->setEnabled(o.wordWrap == static_cast<int>(WordWrap::column));
  connect(column, &QSpinBox::valueChanged, this, [&o](int value) { o.wrapColumn = value; });
  for (QWidget* field : {static_cast<QWidget*>(wrap), static_cast<QWidget*>(column)})
    field->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
  form->addRow(tr("Long l&ines take:"), wrap);
  form->addRow(tr("Colu&mn:"), column);
  auto* scrolling = addGroup(layout, tr("Scrolling"));
  addCheck(scrolling, tr("&Horizontal scroll bar"), "hScrollBar", o.hScrollBar);
  addCheck(scrolling, tr("&Vertical scroll bar"), "vScrollBar", o.vScrollBar);
  addCheck(scrolling, tr("&Smooth scrolling"), "smoothScrolling", o.smoothScrolling);
  addCheck(scrolling, tr("Line &number while the scroll bar is dragged"), "lineToolTips", o.lineToolTips);
  auto* panes = addGroup(layout, tr("Splitting into panes"));
  addCheck(panes, tr("&Upper and lower panes"), "hSplitter", o.hSplitter);
  addCheck(panes, tr("Left and &right panes"), "vSplitter", o.vSplitter);
  layout->addStretch();
}

EditingPage::EditingPage(ControlOptions& o, QWidget* parent) : QWidget(parent) {
  auto* layout = new QVBoxLayout(this);
  auto* tabs = addGroup(layout, tr("Tabs and indents"));
  auto* form = new QFormLayout;
  tabs->addLayout(form);
  auto* size = new QSpinBox(this);
  size->setObjectName(QStringLiteral("tabSize"));
  size->setRange(1, 32);
  size->setValue(o.tabSize);
  size->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
  connect(size, &QSpinBox::valueChanged, this, [&o](int value) { o.tabSize = value; });
  form->addRow(tr("&Width of a tab:"), size);
  auto* indent = new QComboBox(this);
  indent->setObjectName(QStringLiteral("autoIndent"));
  indent->addItems({tr("None"), tr("As the previous line"), tr("As the language wants it")});   // in the order of AutoIndent
  indent->setCurrentIndex(o.autoIndentMode);
  indent->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
  connect(indent, &QComboBox::currentIndexChanged, this, [&o](int mode) { o.autoIndentMode = mode; });
  form->addRow(tr("&Indent of a new line:"), indent);
  addCheck(tabs, tr("Insert &blanks instead of tabs"), "tabExpand", o.tabExpand);
  auto* selecting = addGroup(layout, tr("Selecting and replacing"));
  addCheck(selecting, tr("&Column selections with the Alt key"), "columnSel", o.columnSel);
  addCheck(selecting, tr("&Drag and drop of text"), "dragDrop", o.dragDrop);
  addCheck(selecting, tr("&Preserve case when replacing"), "preserveCase", o.preserveCase);
  auto* typing = addGroup(layout, tr("While typing"));
  addAids(typing, o, true);
  auto* keys = new QComboBox(this);
  keys->setObjectName(QStringLiteral("completionKeys"));
  keys->addItems(
      {tr("Tab and Return, after Up or Down"), tr("Tab at once, Return after Up or Down"), tr("Tab and Return at once")});
  keys->setCurrentIndex(o.aids.completionKeys);   // in the order of CompletionKeys
  keys->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
  connect(keys, &QComboBox::currentIndexChanged, this, [&o](int mode) { o.aids.completionKeys = mode; });
  auto* taking = new QFormLayout;
  taking->addRow(tr("Wo&rds are taken by:"), keys);
  typing->addLayout(taking);
  layout->addStretch();
}

FontPage::FontPage(ControlOptions& o, QWidget* parent) : QWidget(parent) {
  auto* layout = new QVBoxLayout(this);
  auto* form = new QFormLayout;
  layout->addLayout(form);
  auto* sample = makeSample(this);
  sample->setFontOf(o.font);
  const auto changed = [&o, sample] { sample->setFontOf(o.font); };

  auto* family = new QFontComboBox(this);
  family->setObjectName(QStringLiteral("fontFamily"));
  family->setFontFilters(QFontComboBox::MonospacedFonts);
  family->setCurrentFont(o.font);
  connect(family, &QFontComboBox::currentFontChanged, this, [&o, changed](const QFont& font) {
    o.font.setFamilies({font.family()});
    changed();
  });
  form->addRow(tr("&Font:"), family);
  auto* every = new QCheckBox(tr("Show fonts of &any width"), this);
  connect(every, &QCheckBox::toggled, this, [family, &o](bool on) {
    const QSignalBlocker quiet(family);   // the list changes, not the choice
    family->setFontFilters(on ? QFontComboBox::AllFonts : QFontComboBox::MonospacedFonts);
    family->setCurrentFont(o.font);
  });
  form->addRow(QString(), every);
  auto* size = new QDoubleSpinBox(this);
  size->setObjectName(QStringLiteral("fontSize"));
  size->setRange(4, 72);
  size->setDecimals(1);
  size->setSuffix(tr(" pt"));
  size->setValue(o.font.pointSizeF() > 0 ? o.font.pointSizeF() : QFontInfo(o.font).pointSizeF());
  size->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
  connect(size, &QDoubleSpinBox::valueChanged, this, [&o, changed](double points) {
    o.font.setPointSizeF(points);
    changed();
  });
  form->addRow(tr("&Size:"), size);
  const auto style = [&](const QString& text, const char* name, bool on, void (QFont::*setter)(bool)) {
    auto* box = new QCheckBox(text, this);
    box->setObjectName(QString::fromLatin1(name));
    box->setChecked(on);
    connect(box, &QCheckBox::toggled, this, [&o, changed, setter](bool checked) {
      (o.font.*setter)(checked);
      changed();
    });
    form->addRow(QString(), box);
  };
  style(tr("&Bold"), "fontBold", o.font.bold(), &QFont::setBold);
  style(tr("&Italic"), "fontItalic", o.font.italic(), &QFont::setItalic);
  layout->addWidget(sample, 1);
}

LanguagePage::LanguagePage(ControlOptions& o, QWidget* parent) : QWidget(parent) {
  auto* layout = new QVBoxLayout(this);
  auto* label = new QLabel(tr("The text is &coloured as:"), this);
  auto* list = new QListWidget(this);
  list->setObjectName(QStringLiteral("languages"));
  label->setBuddy(list);
  list->addItem(tr("None"));
  for (const QString& name : LanguageTable::names()) list->addItem(name);
  list->setCurrentRow(0);
  for (int row = 1; row < list->count(); ++row)
    if (list->item(row)->text() == o.language) list->setCurrentRow(row);
  connect(list, &QListWidget::currentRowChanged, this,
          [list, &o](int row) { o.language = row <= 0 ? QString() : list->item(row)->text(); });
  layout->addWidget(label);
  layout->addWidget(list, 1);
}
