#include "language/editor/LanguagePreview.h"

#include <QVBoxLayout>

#include "base/Strings.h"
#include "control/CodeMax.h"
#include "language/LanguageProperties.h"
#include "language/Registration.h"

namespace {

// A language in a definition file cannot have this name.
const QString kName = QStringLiteral("\nPreview");

constexpr int kWords = 60, kWordsInLine = 8;

QString first(const QString& list) { return splitCrLf(list).value(0); }

// The first entries of a list, a few in each line.
QStringList inLines(const QString& list) {
  QStringList words;
  qsizetype from = 0;
  while (words.size() < kWords && from < list.size()) {   // a list may be very long
    qsizetype end = list.indexOf(QLatin1String("\r\n"), from);
    if (end < 0) end = list.size();
    if (end > from) words += list.mid(from, end - from);
    from = end + 2;
  }
  QStringList lines;
  for (qsizetype i = 0; i < words.size(); i += kWordsInLine) lines += words.mid(i, kWordsInLine).join(u' ');
  return lines;
}

}   // namespace

LanguagePreview::LanguagePreview(QWidget* parent) : QWidget(parent), cmx_(new CodeMax(this)) {
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(cmx_);
  cmx_->setReadOnly(true);
  cmx_->setLeftMargin(false);
  cmx_->setHScrollBar(false);
  cmx_->setColorSyntax(true);
  cmx_->setMinimumHeight(90);
  cmx_->setFocusPolicy(Qt::NoFocus);   // for display only: Tab skips it
  for (QWidget* part : cmx_->findChildren<QWidget*>()) part->setFocusPolicy(Qt::NoFocus);
  soon_.setSingleShot(true);
  soon_.setInterval(150);
  connect(&soon_, &QTimer::timeout, this, &LanguagePreview::refreshNow);
}

LanguagePreview::~LanguagePreview() { LanguageTable::unregisterLanguage(kName); }

void LanguagePreview::show(std::shared_ptr<clsLang> language, const QString& text) {
  language_ = std::move(language);
  text_ = text;
  soon_.start();
}

void LanguagePreview::refreshNow() {
  soon_.stop();
  const QString text = !language_ ? QString() : text_.isEmpty() ? sampleOf(*language_) : text_;
  if (language_) LanguageTable::registerLanguage(kName, handedOver(*language_));
  cmx_->setReadOnly(false);
  if (cmx_->Text() != text) cmx_->setText(text);
  cmx_->setReadOnly(true);
  cmx_->setLanguage(language_ ? kName : QString());
}

QString LanguagePreview::sampleOf(const clsLang& language) {
  QStringList lines;
  const QString single = first(language.SingleComments), open = first(language.MultiCommentStart),
                close = first(language.MultiCommentEnd), quote = first(language.StringDelims);
  if (!single.isEmpty()) lines << single + QStringLiteral(" a comment to the end of the line");
  if (!open.isEmpty() && !close.isEmpty())
    lines << open + QStringLiteral(" a comment over") << QStringLiteral("   two lines ") + close;
  for (const LanguageProperty& property : languageProperties())
    if (property.registered == &CmLanguage::Keywords) lines << inLines(language.*(property.value));
  QString mixed = QStringLiteral("name = 42");
  if (!quote.isEmpty()) mixed += QStringLiteral("   ") + quote + QStringLiteral("a text 1.5") + quote;
  lines << mixed << inLines(language.Operators);
  if (!language.BlockStart.isEmpty()) lines << first(language.BlockStart) << QStringLiteral("    name") << first(language.BlockEnd);
  return lines.join(u'\n');
}
