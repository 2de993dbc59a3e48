#include "app/compare/frmCompareFolders.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include "base/Strings.h"
#include "bridge/FileNames.h"
#include "bridge/FolderDialog.h"
#include "bridge/QStringBytes.h"

using namespace Qt::StringLiterals;

folder::WalkOptions frmCompareFolders::Choice::options() const {
  folder::WalkOptions all;
  all.ignored = ignored;
  all.hidden = hidden;
  all.masks = folder::Masks(fromQString(masks));
  return all;
}

frmCompareFolders::frmCompareFolders(QWidget& parent, const Choice& proposed)
    : QDialog(&parent),
      choice_(proposed),
      left_(new QLineEdit(this)),
      right_(new QLineEdit(this)),
      masks_(new QLineEdit(proposed.masks, this)),
      ignored_(new QCheckBox(tr("I&gnored"), this)),
      hidden_(new QCheckBox(tr("Hi&dden"), this)),
      note_(new QLabel(this)) {
  setWindowTitle(tr("Compare Folders"));
  auto* grid = new QGridLayout(this);
  const auto label = [&](const QString& text, QLineEdit* field, int row) {
    auto* name = new QLabel(text, this);
    name->setBuddy(field);
    grid->addWidget(name, row, 0);
    grid->addWidget(field, row, 1);
  };
  const auto folder = [&](const QString& text, QLineEdit* field, const char* name, const QString& path, const QString& search,
                          int row) {
    field->setObjectName(QLatin1String(name));
    field->setText(path);
    field->setMinimumWidth(fontMetrics().averageCharWidth() * 60);
    label(text, field, row);
    auto* browse = new QPushButton(search, this);
    grid->addWidget(browse, row, 2);
    setTabOrder(field, browse);
    setTabOrder(browse, field == left_ ? right_ : masks_);
    connect(browse, &QPushButton::clicked, this, [this, field] {
      const QString chosen = askForFolder(tr("Compare Folders"), field->text().isEmpty() ? left_->text() : field->text());
      if (!chosen.isEmpty()) field->setText(chosen);
    });
  };
  folder(tr("&First folder:"), left_, "compareLeft", proposed.left, tr("&Browse..."), 0);
  folder(tr("&Second folder:"), right_, "compareRight", proposed.right, tr("B&rowse..."), 1);
  label(tr("Mas&ks:"), masks_, 2);
  masks_->setObjectName(u"compareMasks"_s);
  masks_->setPlaceholderText(tr("All files; for example *.sv,*.svh;!*_tb.sv"));
  ignored_->setToolTip(tr("Also what version control ignores"));
  ignored_->setChecked(proposed.ignored);
  hidden_->setToolTip(tr("Also names that begin with a point"));
  hidden_->setChecked(proposed.hidden);
  auto* also = new QHBoxLayout;
  for (QWidget* part : std::initializer_list<QWidget*>{new QLabel(tr("Also:"), this), ignored_, hidden_}) also->addWidget(part);
  also->addStretch();
  grid->addLayout(also, 3, 1);
  note_->setTextFormat(Qt::PlainText);
  note_->setWordWrap(true);
  grid->addWidget(note_, 4, 0, 1, 3);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
  buttons->button(QDialogButtonBox::Ok)->setText(tr("&Compare"));
  grid->addWidget(buttons, 5, 0, 1, 3);
  connect(buttons, &QDialogButtonBox::accepted, this, &frmCompareFolders::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  (proposed.left.isEmpty() ? left_ : right_)->setFocus();
}

void frmCompareFolders::accept() {
  Choice chosen{left_->text(), right_->text(), masks_->text().trimmed(), ignored_->isChecked(), hidden_->isChecked()};
  for (QString* path : {&chosen.left, &chosen.right}) {
    if (path->isEmpty()) return note_->setText(tr("Which two folders should be compared?"));
    *path = fullPath(*path);
    if (!isFolder(*path)) return note_->setText(tr("There is no folder %1").arg(plainForDisplay(*path)));
  }
  if (isSameFile(chosen.left, chosen.right)) return note_->setText(tr("Both are the same folder"));
  choice_ = chosen;
  QDialog::accept();
}

#include "moc_frmCompareFolders.cpp"
