#include "app/find/frmListLines.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QVBoxLayout>

#include "bridge/QStringBytes.h"
#include "control/find/Finding.h"
#include "control/find/UsersSearch.h"

using namespace Qt::StringLiterals;

frmListLines::frmListLines(QWidget& parent, Editor& editor)
    : QDialog(&parent),
      text_(new QLineEdit(this)),
      matchCase_(new QCheckBox(tr("Match &case"), this)),
      wholeWord_(new QCheckBox(tr("Whole &word"), this)),
      regex_(new QCheckBox(tr("Regular e&xpression"), this)),
      note_(new QLabel(this)) {
  setWindowTitle(tr("List Lines With"));
  const SearchState& search = usersSearch();
  const QString word = wordToFind(editor);
  text_->setObjectName(u"linesText"_s);
  text_->setText(word.isEmpty() ? search.findText : word);
  text_->selectAll();
  text_->setMinimumWidth(fontMetrics().averageCharWidth() * 50);
  matchCase_->setChecked(search.options.matchCase);
  wholeWord_->setChecked(search.options.wholeWord);
  regex_->setObjectName(u"linesRegex"_s);
  regex_->setChecked(search.options.regex && word.isEmpty());
  note_->setTextFormat(Qt::PlainText);
  note_->setWordWrap(true);
  auto* label = new QLabel(tr("&Text:"), this);
  label->setBuddy(text_);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
  auto* layout = new QVBoxLayout(this);
  for (QWidget* part : std::initializer_list<QWidget*>{label, text_, matchCase_, wholeWord_, regex_, note_, buttons})
    layout->addWidget(part);
  connect(buttons, &QDialogButtonBox::accepted, this, &frmListLines::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

void frmListLines::accept() {
  if (text_->text().isEmpty()) return note_->setText(tr("What should the lines hold?"));
  text::SearchOptions options;
  options.matchCase = matchCase_->isChecked();
  options.wholeWord = wholeWord_->isChecked();
  options.regex = regex_->isChecked();
  what_ = std::make_shared<const folder::FindText>(fromQString(text_->text()), options);
  if (!what_->error().empty()) return note_->setText(toQString(what_->error()));
  QDialog::accept();
}
