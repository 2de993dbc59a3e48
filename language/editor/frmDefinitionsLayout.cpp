// The controls of the definitions editor: names, texts, positions and tab order.
#include <QCheckBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QScrollArea>
#include <QSplitter>
#include <QStackedWidget>
#include <QTabBar>
#include <QVBoxLayout>
#include <map>

#include "language/editor/LanguagePreview.h"
#include "language/editor/frmDefinitions.h"

namespace {

template <class W>
W* named(W* widget, const char* name) {
  widget->setObjectName(QString::fromLatin1(name));
  return widget;
}

QPushButton* button(const char* name, const QString& caption, const QString& hint) {
  auto* made = named(new QPushButton(caption), name);
  made->setToolTip(hint);
  made->setAutoDefault(false);   // Return belongs to the line field
  return made;
}

QLineEdit* line(const char* name, const QString& hint = {}) {
  auto* made = named(new QLineEdit, name);
  made->setToolTip(hint);
  return made;
}

ListField* field(const char* name, const QString& hint, int lines) {
  auto* made = named(new ListField, name);
  made->setToolTip(hint);
  made->setMinimumHeight(made->fontMetrics().lineSpacing() * lines + 12);
  made->setMinimumWidth(90);
  return made;
}

// A label above its field. Assistive software takes the label as the name of the field.
QLabel* above(QGridLayout* grid, int row, int column, const QString& caption, QWidget* under) {
  auto* label = new QLabel(caption);
  label->setTextFormat(Qt::PlainText);
  label->setBuddy(under);
  grid->addWidget(label, row, column);
  grid->addWidget(under, row + 1, column);
  return label;
}

QLabel* plainLabel(const char* name) {
  auto* label = named(new QLabel, name);
  label->setTextFormat(Qt::PlainText);
  label->setWordWrap(true);
  return label;
}

// Fields that scroll when the screen is too small for all of them.
QScrollArea* scrolling(QWidget* fields) {
  auto* area = new QScrollArea;
  area->setWidget(fields);
  area->setWidgetResizable(true);
  area->setFrameShape(QFrame::NoFrame);
  area->setFocusPolicy(Qt::NoFocus);
  return area;
}

void colourBackground(QLabel* label, const QColor& back) {
  QPalette palette = label->palette();
  palette.setColor(QPalette::Window, back);
  palette.setColor(QPalette::WindowText, Qt::black);
  label->setPalette(palette);
  label->setAutoFillBackground(true);
  label->setMargin(5);
  label->setTextInteractionFlags(Qt::TextSelectableByMouse);
  label->hide();
}

}   // namespace

void frmDefinitions::makeFields() {
  for (const LanguageProperty& property : languageProperties()) {
    const QString hint = *property.hint ? tr(property.hint) : QString();
    PropertyField made{&property, nullptr, nullptr};
    if (property.form == LanguageProperty::line) made.line = line(property.field, hint);
    else made.lines = field(property.field, hint, property.lines);
    if (property.form == LanguageProperty::prose) {
      made.lines->setLineWrapMode(QPlainTextEdit::WidgetWidth);
      made.lines->setEndsWithBreak(false);
    }
    if (made.lines && property.box == LanguageProperty::languageBox)   // leave the space to the list of languages
      made.lines->setMaximumHeight(made.lines->fontMetrics().lineSpacing() * (property.lines + 2) + 12);
    propertyFields_.push_back(made);
  }
}

QList<QWidget*> frmDefinitions::fieldsIn(LanguageProperty::Box box) const {
  std::map<int, QWidget*> byPlace;
  for (const PropertyField& field : propertyFields_)
    if (field.property->box == box) byPlace[field.property->place] = field.widget();
  QList<QWidget*> fields;
  for (const auto& [place, widget] : byPlace) fields += widget;
  return fields;
}

void frmDefinitions::putFields(QGridLayout* grid, LanguageProperty::Box box) {
  for (const PropertyField& field : propertyFields_) {
    if (field.property->box != box) continue;
    const int row = 2 * field.property->place;
    above(grid, row, 0, tr(field.property->caption), field.widget());
    grid->setRowStretch(row + 1, field.property->lines > 2 ? 2 : 1);
  }
}

void frmDefinitions::layOut() {
  makeFields();
  setObjectName(QStringLiteral("frmDefinitions"));
  setWindowTitle(tr("Language Definition"));
  setSizeGripEnabled(true);

  lblReport = plainLabel("lblReport");
  colourBackground(lblReport, QColor(255, 205, 200));
  lblWarning = plainLabel("lblWarning");
  colourBackground(lblWarning, QColor(255, 232, 170));

  TabStrip1 = named(new QTabBar, "TabStrip1");
  TabStrip1->setExpanding(false);
  TabStrip1->addTab(tr("Structu&re"));
  TabStrip1->addTab(tr("&Macros"));
  TabStrip1->addTab(tr("&Templates"));
  TabStrip1->addTab(tr("&WordLists"));
  TabStrip1->setTabToolTip(Structure, tr("Language Structure"));
  TabStrip1->setTabToolTip(Macros, tr("Language macros"));
  TabStrip1->setTabToolTip(Templates, tr("Language Templates"));
  TabStrip1->setTabToolTip(WordLists, tr("WordLists Definitions"));

  auto* top = fileRow();
  auto* languages = languageFrame();
  pages = new QStackedWidget;
  pages->addWidget(scrolling(structureFrame()));
  pages->addWidget(scrolling(listFrame()));

  preview = named(new LanguagePreview, "preview");
  auto* previewFrame = new QGroupBox(tr("Preview"));
  auto* previewLayout = new QVBoxLayout(previewFrame);
  previewLayout->addWidget(preview);

  auto* tabs = new QWidget;
  auto* tabsLayout = new QVBoxLayout(tabs);
  tabsLayout->setContentsMargins(0, 0, 0, 0);
  tabsLayout->setSpacing(0);
  tabsLayout->addWidget(TabStrip1);
  tabsLayout->addWidget(pages, 1);
  tabsLayout->addWidget(lblWarning);

  auto* right = new QSplitter(Qt::Vertical);
  right->addWidget(tabs);
  right->addWidget(previewFrame);
  right->setStretchFactor(0, 2);
  right->setStretchFactor(1, 1);
  right->setSizes({460, 200});
  right->setChildrenCollapsible(false);
  auto* across = new QSplitter(Qt::Horizontal);
  across->addWidget(languages);
  across->addWidget(right);
  across->setStretchFactor(1, 1);
  across->setChildrenCollapsible(false);

  auto* all = new QVBoxLayout(this);
  all->addWidget(top);
  all->addWidget(lblReport);
  all->addWidget(across, 1);

  // Tab order: the file, the languages, their properties from left to right, then the buttons that end the work.
  QList<QWidget*> order{txtIni, cmdBrowse, cmdDownload, cmdSubmit, txtFilter, lstLanguage, cmdAdd, cmdDuplicate, cmdDelete};
  order << fieldsIn(LanguageProperty::languageBox) << TabStrip1 << chkCase;
  for (const auto box : {LanguageProperty::wordBox, LanguageProperty::signBox, LanguageProperty::commentBox,
                         LanguageProperty::indentBox, LanguageProperty::helpBox})
    order << fieldsIn(box);
  order << lst << cmdAddList << cmdDeleteList << txtDesc << txtList << cmdApply << cmdSave << cmdClose;
  for (qsizetype i = 1; i < order.size(); ++i) setTabOrder(order[i - 1], order[i]);
  lstLanguage->setFocus();
  resize(1040, 760);
}

QWidget* frmDefinitions::fileRow() {
  auto* row = new QWidget;
  auto* layout = new QHBoxLayout(row);
  layout->setContentsMargins(0, 0, 0, 0);
  txtIni = line("txtIni");
  txtIni->setReadOnly(true);
  auto* label = new QLabel(tr("Ini &File"));
  label->setBuddy(txtIni);
  cmdBrowse = button("cmdBrowse", tr("&Browse..."), tr("Reads the languages from another definition file"));
  cmdDownload = button("cmdDownload", tr("Dow&nload"), tr("Download new languages from WEB Site"));
  cmdSubmit = button("cmdSubmit", tr("S&ubmit"), tr("Submits the selected language"));
  layout->addWidget(label);
  layout->addWidget(txtIni, 1);
  for (QPushButton* one : {cmdBrowse, cmdDownload, cmdSubmit}) layout->addWidget(one);
  return row;
}

QWidget* frmDefinitions::languageFrame() {
  auto* frame = named(new QGroupBox(tr("Language")), "fraLanguage");
  txtFilter = line("txtFilter", tr("Shows only languages whose name or extensions contain this text"));
  txtFilter->setPlaceholderText(tr("Ctrl+F"));
  txtFilter->setClearButtonEnabled(true);
  lstLanguage = named(new QListWidget, "lstLanguage");
  lstLanguage->setAccessibleName(tr("Language"));
  lstLanguage->setSelectionMode(QAbstractItemView::ExtendedSelection);
  lstLanguage->setEditTriggers(QAbstractItemView::EditKeyPressed | QAbstractItemView::DoubleClicked |
                               QAbstractItemView::SelectedClicked);
  lstLanguage->setUniformItemSizes(true);
  cmdAdd = button("cmdAdd", tr("&Add"), tr("Adds a new language"));
  cmdDuplicate = button("cmdDuplicate", tr("Dupl&icate"), tr("Adds a copy of the selected language"));
  cmdDelete = button("cmdDelete", tr("&Delete"), tr("Delete the selected language"));
  cmdApply = button("cmdApply", tr("A&pply"), tr("Applies the definitions to the open documents"));
  cmdSave = button("cmdSave", tr("&Save"), tr("Writes the definition file"));
  cmdClose = button("cmdClose", tr("&Close"), {});

  auto* fields = new QWidget;
  auto* grid = new QGridLayout(fields);
  grid->setContentsMargins(0, 0, 0, 0);
  const auto labelled = [&](const QString& caption, QWidget* field, int row) {
    auto* label = new QLabel(caption);
    label->setBuddy(field);
    grid->addWidget(label, row, 0, Qt::AlignTop);
    grid->addWidget(field, row, 1, 1, 2);
  };
  labelled(tr("&Filter"), txtFilter, 0);
  labelled(tr("Lan&guages"), lstLanguage, 1);
  grid->addWidget(cmdAdd, 2, 0);
  grid->addWidget(cmdDuplicate, 2, 1);
  grid->addWidget(cmdDelete, 2, 2);
  auto* below = new QGridLayout;
  putFields(below, LanguageProperty::languageBox);
  grid->addLayout(below, 3, 0, 1, 3);
  grid->setRowStretch(1, 1);
  auto* buttons = new QHBoxLayout;   // in sight on any screen
  for (QPushButton* one : {cmdApply, cmdSave, cmdClose}) buttons->addWidget(one, 1);
  auto* all = new QVBoxLayout(frame);
  all->addWidget(scrolling(fields), 1);
  all->addLayout(buttons);
  return frame;
}

QWidget* frmDefinitions::structureFrame() {
  fraStructure = named(new QFrame, "fraStructure");
  fraStructure->setFrameShape(QFrame::StyledPanel);
  chkCase = named(new QCheckBox(tr("Language Case Sensiti&ve")), "chkCase");
  auto* indents = named(new QGroupBox(tr("Indents")), "fraIndents");
  auto* indentGrid = new QGridLayout(indents);
  putFields(indentGrid, LanguageProperty::indentBox);
  auto* comments = named(new QGroupBox(tr("Comments")), "fraComments");
  auto* commentGrid = new QGridLayout(comments);
  putFields(commentGrid, LanguageProperty::commentBox);

  auto* grid = new QGridLayout(fraStructure);
  grid->addWidget(chkCase, 0, 0, 1, 4);
  auto* words = new QGridLayout;
  putFields(words, LanguageProperty::wordBox);
  auto* signs = new QGridLayout;
  putFields(signs, LanguageProperty::signBox);
  grid->addLayout(words, 1, 0);
  grid->addLayout(signs, 1, 1);
  grid->addWidget(comments, 1, 2);
  grid->addWidget(indents, 1, 3);
  auto* help = new QHBoxLayout;
  for (const PropertyField& field : propertyFields_) {
    if (field.property->box != LanguageProperty::helpBox) continue;
    auto* label = new QLabel(tr(field.property->caption));
    label->setBuddy(field.widget());
    help->addWidget(label);
    help->addWidget(field.widget(), 1);
  }
  grid->addLayout(help, 2, 0, 1, 4);
  grid->setColumnStretch(0, 2);
  for (int column = 1; column < 4; ++column) grid->setColumnStretch(column, 1);
  grid->setRowStretch(1, 1);
  return fraStructure;
}

QWidget* frmDefinitions::listFrame() {
  fraList = named(new QFrame, "fraList");
  fraList->setFrameShape(QFrame::StyledPanel);
  lst = named(new QListWidget, "lst");
  lst->setSelectionMode(QAbstractItemView::ExtendedSelection);
  lst->setEditTriggers(lstLanguage->editTriggers());
  lst->setUniformItemSizes(true);
  cmdAddList = button("cmdAddList", tr("Add Entr&y"), tr("Adds a new entry"));
  cmdDeleteList = button("cmdDeleteList", tr("De&lete"), tr("Deletes the selected entries"));
  txtDesc = line("txtDesc");
  txtList = field("txtList", {}, 8);
  lblHint = plainLabel("lblHint");
  lblHint->setForegroundRole(QPalette::PlaceholderText);

  auto* grid = new QGridLayout(fraList);
  lblList = above(grid, 0, 0, {}, lst);
  lblList->setObjectName(QStringLiteral("lblList"));
  auto* buttons = new QHBoxLayout;
  buttons->addWidget(cmdAddList);
  buttons->addWidget(cmdDeleteList);
  grid->addLayout(buttons, 2, 0);
  auto* texts = new QGridLayout;
  above(texts, 0, 0, tr("Descripti&on"), txtDesc);
  lblText = above(texts, 2, 0, {}, txtList);
  lblText->setObjectName(QStringLiteral("lblText"));
  texts->addWidget(lblHint, 4, 0);
  texts->setRowStretch(3, 1);
  grid->addLayout(texts, 0, 1, 3, 1);
  grid->setRowStretch(1, 1);
  grid->setColumnStretch(0, 1);
  grid->setColumnStretch(1, 3);
  return fraList;
}
