#include "change/LineDialogs.h"

#include <QCheckBox>
#include <QComboBox>
#include <QCoreApplication>
#include <QDialog>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QVBoxLayout>

#include "base/Program.h"
#include "base/dialog/Dialogs.h"
#include "change/AddIns.h"
#include "change/LineTools.h"

namespace {

struct T {
  Q_DECLARE_TR_FUNCTIONS(LineDialogs)
};

// A dialog of labelled fields with OK and Cancel.
class Fields : public QDialog {
 public:
  Fields(const QString& title, const char* name, QWidget* parent) : QDialog(parent), form(new QFormLayout) {
    setWindowTitle(title);
    setObjectName(QLatin1String(name));
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    ok = buttons->button(QDialogButtonBox::Ok);
    QObject::connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    QObject::connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(buttons);
  }
  QCheckBox* check(const QString& text, bool on) {
    auto* box = new QCheckBox(text);
    box->setChecked(on);
    form->addRow(QString(), box);
    return box;
  }
  bool ask() {
    const ModalGuard modal;
    return exec() == QDialog::Accepted;
  }
  QFormLayout* form;
  QPushButton* ok;
};

QSpinBox* number(int low, int high, int value) {
  auto* box = new QSpinBox;
  box->setRange(low, high);
  box->setValue(value);
  return box;
}

}   // namespace

bool ColumnizeWithOptions(CodeMax& cmx, QWidget* parent) {
  static ColumnizeOptions kept;
  const CmRange range = cmx.GetSel(true);
  Fields dialog(T::tr("Columnize"), "frmColumnize", parent);
  auto* delimiter = new QLineEdit(lastColumnDelimiter());
  delimiter->selectAll();
  dialog.form->addRow(T::tr("&Delimiter"), delimiter);
  auto* groups = dialog.check(T::tr("Lines between &blank lines each for themselves"), kept.groupsApart);
  auto* code = dialog.check(T::tr("Leave &strings and comments alone"), kept.codeOnly);
  auto* block = dialog.check(T::tr("Only within the selected b&lock"), kept.withinBlock && range.ColumnSel);
  block->setEnabled(range.ColumnSel);
  if (!dialog.ask() || delimiter->text().isEmpty()) return false;
  kept = {groups->isChecked(), code->isChecked(), block->isChecked()};
  rememberColumnDelimiter(delimiter->text());
  const qint64 changed = Columnize(cmx, range, delimiter->text(), kept);
  SetStatusText(T::tr("%n line(s) changed", nullptr, static_cast<int>(changed)));
  return true;
}

bool InsertSeriesDialog(CodeMax& cmx, QWidget* parent) {
  static NumberSeries kept;
  Fields dialog(T::tr("Insert Number Series"), "frmSeries", parent);
  auto* start = new QLineEdit(QString::number(kept.start));
  auto* step = new QLineEdit(QString::number(kept.step));
  auto* repeat = number(1, 1000000, kept.repeat);
  auto* base = new QComboBox;
  for (const auto& [text, value] :
       {std::pair{T::tr("Decimal"), 10}, {T::tr("Hexadecimal"), 16}, {T::tr("Binary"), 2}, {T::tr("Octal"), 8}})
    base->addItem(text, value);
  base->setCurrentIndex(base->findData(kept.base));
  auto* width = number(0, 64, kept.width);
  auto* prefix = new QLineEdit(kept.prefix);
  prefix->setPlaceholderText(QStringLiteral("8'h"));
  auto* suffix = new QLineEdit(kept.suffix);
  dialog.form->addRow(T::tr("&Start"), start);
  dialog.form->addRow(T::tr("S&tep"), step);
  dialog.form->addRow(T::tr("&Repeat each"), repeat);
  dialog.form->addRow(T::tr("&Base"), base);
  dialog.form->addRow(T::tr("&Width"), width);
  dialog.form->addRow(T::tr("&Prefix"), prefix);
  dialog.form->addRow(T::tr("Su&ffix"), suffix);
  auto* zero = dialog.check(T::tr("Fill with &zeros"), kept.zeroFill);
  auto* upper = dialog.check(T::tr("&Upper case digits"), kept.upperCase);
  auto* example = new QLabel;
  example->setTextFormat(Qt::PlainText);
  dialog.form->addRow(T::tr("Example"), example);
  NumberSeries series;
  const auto read = [&] {
    bool startOk = false, stepOk = false;
    series = {start->text().toLongLong(&startOk, 0),
              step->text().toLongLong(&stepOk, 0),
              repeat->value(),
              base->currentData().toInt(),
              width->value(),
              zero->isChecked(),
              upper->isChecked(),
              prefix->text(),
              suffix->text()};
    QStringList items;
    for (int i = 0; i < 4; ++i) items << seriesItem(series, i);
    const bool good = startOk && stepOk;
    example->setText(good ? items.join(QStringLiteral("  ")) + QStringLiteral("  ...")
                          : T::tr("Start and step are whole numbers (0x for hexadecimal)."));
    dialog.ok->setEnabled(good);
  };
  for (auto* edit : {start, step, prefix, suffix}) QObject::connect(edit, &QLineEdit::textChanged, &dialog, read);
  for (auto* spin : {repeat, width}) QObject::connect(spin, &QSpinBox::valueChanged, &dialog, read);
  for (auto* box : {zero, upper}) QObject::connect(box, &QCheckBox::toggled, &dialog, read);
  QObject::connect(base, &QComboBox::currentIndexChanged, &dialog, read);
  read();
  if (!dialog.ask()) return false;
  kept = series;
  const qint64 changed = InsertSeries(cmx, series);
  SetStatusText(changed < 0 ? T::tr("The numbers become too large")
                            : T::tr("%n line(s) changed", nullptr, static_cast<int>(changed)));
  return true;
}

bool SortLinesDialog(CodeMax& cmx, QWidget* parent) {
  static SortOptions kept;
  Fields dialog(T::tr("Sort Lines"), "frmSort", parent);
  auto* descending = dialog.check(T::tr("&Descending"), kept.descending);
  auto* matchCase = dialog.check(T::tr("&Match case"), kept.matchCase);
  auto* numeric = dialog.check(T::tr("By the first &number of a line"), kept.numeric);
  auto* dropEqual = dialog.check(T::tr("D&rop equal lines"), kept.dropEqual);
  if (!dialog.ask()) return false;
  kept = {descending->isChecked(), matchCase->isChecked(), numeric->isChecked(), dropEqual->isChecked()};
  SetStatusText(T::tr("%n line(s) changed", nullptr, static_cast<int>(SortLines(cmx, kept))));
  return true;
}
