#include <QColorDialog>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPainter>
#include <QPushButton>
#include <QRegularExpressionValidator>

#include "base/dialog/Dialogs.h"
#include "control/options/PropertiesPages.h"

namespace {

QIcon swatch(const QColor& color, const QPalette& palette) {
  QPixmap pixmap(32, 16);
  pixmap.fill(color);
  QPainter painter(&pixmap);
  painter.setPen(palette.color(QPalette::Mid));
  painter.drawRect(0, 0, pixmap.width() - 1, pixmap.height() - 1);
  QIcon icon(pixmap);
  icon.addPixmap(pixmap, QIcon::Selected);   // the style would tint it
  return icon;
}

}   // namespace

ColorsPage::ColorsPage(ControlOptions& options, QWidget* parent) : QWidget(parent), options_(options) {
  auto* grid = new QGridLayout(this);
  list_ = new QListWidget(this);
  list_->setObjectName(QStringLiteral("slots"));
  list_->setIconSize({32, 16});
  // In the order of ColorSlot.
  for (const QString& name : {tr("Window"),
                              tr("Text"),
                              tr("Selection"),
                              tr("Selected text"),
                              tr("Selection without focus"),
                              tr("Selected text without focus"),
                              tr("Left margin"),
                              tr("Keywords"),
                              tr("Operators"),
                              tr("Comments"),
                              tr("Strings"),
                              tr("Numbers"),
                              tr("Bookmarks"),
                              tr("Line of the caret"),
                              tr("Line numbers"),
                              tr("Dividers"),
                              tr("Marks in the text (blanks, control characters)"),
                              tr("Matching bracket"),
                              tr("Added lines"),
                              tr("Changed lines"),
                              tr("Removed lines"),
                              tr("Matches in the scroll bar")})
    list_->addItem(name);
  auto* label = new QLabel(tr("&Part:"), this);
  label->setBuddy(list_);
  grid->addWidget(label, 0, 0);
  grid->addWidget(list_, 1, 0, 7, 1);

  code_ = new QLineEdit(this);
  code_->setObjectName(QStringLiteral("colorCode"));
  code_->setValidator(new QRegularExpressionValidator(QRegularExpression(QStringLiteral("#?[0-9a-fA-F]{0,6}")), code_));
  auto* codeLabel = new QLabel(tr("&Colour:"), this);
  codeLabel->setBuddy(code_);
  grid->addWidget(codeLabel, 0, 1);
  grid->addWidget(code_, 1, 1);
  int row = 2;
  const auto button = [&](const QString& text, const char* name, auto slotOf) {
    auto* b = new QPushButton(text, this);
    b->setObjectName(QString::fromLatin1(name));
    b->setAutoDefault(false);
    connect(b, &QPushButton::clicked, this, slotOf);
    grid->addWidget(b, row++, 1);
    return b;
  };
  choose_ = button(tr("C&hoose..."), "chooseColor", [this] {
    const ModalGuard guard;
    const QColor color = QColorDialog::getColor(options_.colors[static_cast<std::size_t>(slot())], this);
    if (color.isValid()) set(slot(), color);
  });
  button(tr("Colour of the &scheme"), "schemeColor", [this] { set(slot(), {}); });
  auto* all = new QLabel(tr("All colours:"), this);
  grid->addWidget(all, row++, 1);
  button(tr("&Follow the desktop"), "followDesktop", [this] { setAll([](int) { return QColor(); }); });
  button(tr("Always &light"), "alwaysLight", [this] { setAll([](int s) { return ControlOptions::alwaysColor(s, false); }); });
  button(tr("Always &dark"), "alwaysDark", [this] { setAll([](int s) { return ControlOptions::alwaysColor(s, true); }); });
  preview_ = makeSample(this);
  preview_->setFontOf(options.font);
  preview_->setObjectName(QStringLiteral("colorPreview"));
  grid->addWidget(preview_, 8, 0, 1, 2);
  grid->setColumnStretch(0, 1);
  grid->setRowStretch(8, 1);

  connect(list_, &QListWidget::currentRowChanged, this, [this] { showSlot(); });
  connect(code_, &QLineEdit::textEdited, this, [this](QString text) {
    if (!text.startsWith(u'#')) text.prepend(u'#');
    const QColor color(text);
    if (text.size() == 7 && color.isValid()) set(slot(), color);
  });
  setAll([this](int s) { return options_.colors[static_cast<std::size_t>(s)]; });
  list_->setCurrentRow(0);
}

int ColorsPage::slot() const { return std::max(0, list_->currentRow()); }

void ColorsPage::set(int slot, const QColor& color) {
  preview_->SetColor(slot, color);
  // The preview follows the same desktop, so that it shows what the control will show.
  const QColor shown = preview_->GetColor(slot);
  options_.colors[static_cast<std::size_t>(slot)] = color.isValid() ? color : shown;
  list_->item(slot)->setIcon(swatch(shown, palette()));
  if (slot == this->slot()) showSlot();
}

void ColorsPage::setAll(const std::function<QColor(int slot)>& colorOf) {
  for (int s = 0; s < kColorSlots; ++s) set(s, colorOf(s));
}

void ColorsPage::showSlot() {
  const QString code = options_.colors[static_cast<std::size_t>(slot())].name();
  if (!code_->hasFocus() || QColor(code_->text()) != QColor(code)) code_->setText(code);
  // The sample shows what the selected colour is used for.
  const auto part = static_cast<ColorSlot>(slot());
  const bool unfocused = part == ColorSlot::InactiveSelectionBack || part == ColorSlot::InactiveSelectionText;
  const bool caret = part == ColorSlot::MatchingBrace || part == ColorSlot::HighlightedLine;
  preview_->setWhiteSpaceDisplay(part == ColorSlot::TagText);
  // finds nothing, but shows the selection as with the focus
  preview_->showHits(unfocused ? QString() : QStringLiteral("\n\n"), {});
  if (caret) preview_->SetSel({3, 10, 3, 10, false}, false);
  else preview_->SetSel({4, 9, 4, 19, false}, false);
}
