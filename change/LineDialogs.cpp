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

#include "base/Counted.h"
#include "base/Program.h"
#include "base/dialog/Dialogs.h"

namespace {

struct DialogText {
  Q_DECLARE_TR_FUNCTIONS(LineDialogs)
};

QString linesChanged(qint64 number) { return counted(number, DialogText::tr("line changed"), DialogText::tr("lines changed")); }

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

bool LineDialogs::columnize(CodeMax& cmx, QWidget* parent) {
  const bool isBlock = cmx.GetSel(true).ColumnSel;
  Fields dialog(DialogText::tr("Columnize"), "frmColumnize", parent);
  auto* delimiter = new QLineEdit(delimiter_);
  delimiter->selectAll();
  dialog.form->addRow(DialogText::tr("&Delimiter"), delimiter);
  auto* groups = dialog.check(DialogText::tr("Align groups between &blank lines separately"), columnize_.groupsApart);
  auto* code = dialog.check(DialogText::tr("Leave &strings and comments alone"), columnize_.codeOnly);
  auto* block = dialog.check(DialogText::tr("Only within the selected b&lock"), columnize_.withinBlock && isBlock);
  block->setEnabled(isBlock);
  if (!dialog.ask() || delimiter->text().isEmpty()) return false;
  columnize_ = {groups->isChecked(), code->isChecked(), block->isChecked()};
  delimiter_ = delimiter->text();
  const qint64 changed = Columnize(cmx, linesToColumnize(cmx), delimiter_, columnize_);
  SetStatusText(linesChanged(changed));
  return true;
}

bool LineDialogs::insertSeries(CodeMax& cmx, QWidget* parent) {
  Fields dialog(DialogText::tr("Insert Number Series"), "frmSeries", parent);
  auto* start = new QLineEdit(QString::number(series_.start));
  auto* step = new QLineEdit(QString::number(series_.step));
  auto* repeat = number(1, NumberSeries::kMostRepeats, series_.repeat);
  auto* base = new QComboBox;
  for (const auto& [text, value] : {std::pair{DialogText::tr("Decimal"), 10},
                                    {DialogText::tr("Hexadecimal"), 16},
                                    {DialogText::tr("Binary"), 2},
                                    {DialogText::tr("Octal"), 8}})
    base->addItem(text, value);
  base->setCurrentIndex(base->findData(series_.base));
  auto* width = number(0, 64, series_.width);
  auto* prefix = new QLineEdit(series_.prefix);
  prefix->setPlaceholderText(QStringLiteral("8'h"));
  auto* suffix = new QLineEdit(series_.suffix);
  dialog.form->addRow(DialogText::tr("&Start"), start);
  dialog.form->addRow(DialogText::tr("S&tep"), step);
  dialog.form->addRow(DialogText::tr("&Repeat each"), repeat);
  dialog.form->addRow(DialogText::tr("&Base"), base);
  dialog.form->addRow(DialogText::tr("&Width"), width);
  dialog.form->addRow(DialogText::tr("&Prefix"), prefix);
  dialog.form->addRow(DialogText::tr("Su&ffix"), suffix);
  auto* zero = dialog.check(DialogText::tr("Fill with &zeros"), series_.zeroFill);
  auto* upper = dialog.check(DialogText::tr("&Upper case digits"), series_.upperCase);
  auto* example = new QLabel;
  example->setTextFormat(Qt::PlainText);
  dialog.form->addRow(DialogText::tr("Example"), example);
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
                          : DialogText::tr("Start and step are whole numbers (0x for hexadecimal)."));
    dialog.ok->setEnabled(good);
  };
  for (auto* edit : {start, step, prefix, suffix}) QObject::connect(edit, &QLineEdit::textChanged, &dialog, read);
  for (auto* spin : {repeat, width}) QObject::connect(spin, &QSpinBox::valueChanged, &dialog, read);
  for (auto* box : {zero, upper}) QObject::connect(box, &QCheckBox::toggled, &dialog, read);
  QObject::connect(base, &QComboBox::currentIndexChanged, &dialog, read);
  read();
  if (!dialog.ask()) return false;
  series_ = series;
  const qint64 changed = InsertSeries(cmx, series);
  SetStatusText(changed < 0 ? DialogText::tr("The numbers become too large") : linesChanged(changed));
  return true;
}

bool LineDialogs::sortLines(CodeMax& cmx, QWidget* parent) {
  Fields dialog(DialogText::tr("Sort Lines"), "frmSort", parent);
  auto* descending = dialog.check(DialogText::tr("&Descending"), sort_.descending);
  auto* matchCase = dialog.check(DialogText::tr("&Match case"), sort_.matchCase);
  auto* numeric = dialog.check(DialogText::tr("By the first &number of a line"), sort_.numeric);
  auto* dropEqual = dialog.check(DialogText::tr("D&rop equal lines"), sort_.dropEqual);
  if (!dialog.ask()) return false;
  sort_ = {descending->isChecked(), matchCase->isChecked(), numeric->isChecked(), dropEqual->isChecked()};
  SetStatusText(linesChanged(SortLines(cmx, sort_)));
  return true;
}
