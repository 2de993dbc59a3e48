#include "control/find/FindFields.h"

#include <QComboBox>
#include <QLineEdit>
#include <QSignalBlocker>

#include "base/Workspace.h"

namespace {

constexpr int kHistory = 20;

struct Histories {
  QStringList found, replaced;
};
QStringList& historyOf(bool replace) {
  auto& histories = Workspace::current().part<Histories>();
  return replace ? histories.replaced : histories.found;
}

}   // namespace

QComboBox* makeFindField(QWidget* parent, const QString& name) {
  auto* field = new QComboBox(parent);
  field->setObjectName(name);
  field->setEditable(true);
  field->setInsertPolicy(QComboBox::NoInsert);
  field->setCompleter(nullptr);
  field->setMinimumContentsLength(24);
  field->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
  field->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
  field->setMinimumWidth(field->fontMetrics().averageCharWidth() * 14);   // else the bar would widen a narrow window
  field->lineEdit()->setClearButtonEnabled(true);
  return field;
}

void fillFindField(QComboBox* field, const QString& text, bool replace) {
  const QSignalBlocker quiet(field);
  const QStringList& history = historyOf(replace);
  if (field->count() != history.size() || field->itemText(0) != history.value(0)) {
    field->clear();
    field->addItems(history);
  }
  if (field->currentText() != text) field->setEditText(text);
}

void rememberFind(QComboBox* field, bool replace) {
  QStringList& history = historyOf(replace);
  const QString text = field->currentText();
  if (text.isEmpty() || history.value(0) == text) return;
  history.removeAll(text);
  history.prepend(text);
  while (history.size() > kHistory) history.removeLast();
  const QSignalBlocker quiet(field);
  field->clear();
  field->addItems(history);
  field->setEditText(text);
}
