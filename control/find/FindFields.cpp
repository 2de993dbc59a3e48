#include "control/find/FindFields.h"

#include <QCheckBox>
#include <QComboBox>
#include <QCoreApplication>
#include <QDockWidget>
#include <QEvent>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QHideEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QProgressBar>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QSignalBlocker>
#include <QTimer>

#include "base/Strings.h"
#include "base/Workspace.h"
#include "control/view/ColorScheme.h"

namespace {

constexpr int kHistory = 20;
constexpr int kLowScreen = 600;   // below that a window may not take all the height it wants

struct Histories {
  QStringList found, replaced;
};
QStringList& historyOf(bool replace) {
  auto& histories = Workspace::current().part<Histories>();
  return replace ? histories.replaced : histories.found;
}

// The window comes or goes: the docks of its side keep their heights, as far as there is room; else one of them would take the change.
void keepHeightsBeside(QDockWidget* window) {
  auto* main = qobject_cast<QMainWindow*>(window->parentWidget());
  if (!main || !main->isVisible() || window->isFloating()) return;
  QList<QDockWidget*> others;
  QList<int> heights;
  for (QDockWidget* dock : main->findChildren<QDockWidget*>(QString(), Qt::FindDirectChildrenOnly))
    if (dock != window && dock->isVisible() && !dock->isFloating() && main->dockWidgetArea(dock) == main->dockWidgetArea(window)) {
      others << dock;
      heights << dock->height();
    }
  // Only docks that are laid out take a size.
  if (!others.isEmpty()) QTimer::singleShot(0, main, [=] { main->resizeDocks(others, heights, Qt::Vertical); });
}

bool isLow(const QWidget& widget) { return widget.screen() && widget.screen()->availableGeometry().height() < kLowScreen; }

// As high as its content, and at least two rows of it on a low screen.
class FindArea : public QScrollArea {
 public:
  explicit FindArea(QDockWidget* parent) : QScrollArea(parent) {
    setFrameShape(QFrame::NoFrame);
    setWidgetResizable(true);
    setFocusPolicy(Qt::NoFocus);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Preferred);
  }
  QSize sizeHint() const override { return widget() ? widget()->sizeHint() : QScrollArea::sizeHint(); }
  QSize minimumSizeHint() const override {
    const int two = 2 * fontMetrics().lineSpacing() * 2;
    return {fontMetrics().averageCharWidth() * 30, isLow(*this) ? std::min(two, sizeHint().height()) : sizeHint().height()};
  }

 protected:
  void hideEvent(QHideEvent* event) override {
    QScrollArea::hideEvent(event);
    auto* dock = qobject_cast<QDockWidget*>(parentWidget());
    if (dock && !event->spontaneous()) keepHeightsBeside(dock);
  }
  bool eventFilter(QObject* object, QEvent* event) override {
    const bool handled = QScrollArea::eventFilter(object, event);
    if (object == widget() && event->type() == QEvent::LayoutRequest) {
      setMaximumHeight(sizeHint().height());
      updateGeometry();
    }
    return handled;
  }
};

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

void putFirst(QComboBox* field) {
  const QString text = field->currentText();
  if (text.isEmpty() || field->itemText(0) == text) return;
  if (const int old = field->findText(text, Qt::MatchExactly | Qt::MatchCaseSensitive); old >= 0) field->removeItem(old);
  field->insertItem(0, text);
  while (field->count() > kHistory) field->removeItem(field->count() - 1);
  field->setEditText(text);
}

FindGrid::FindGrid(QDockWidget* window) {
  auto* area = new FindArea(window);
  content = new QWidget(area);
  content->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);   // the height is left to the texts
  area->setWidget(content);
  grid = new QGridLayout(content);
  grid->setContentsMargins(8, 6, 8, 6);
  grid->setHorizontalSpacing(6);
  grid->setVerticalSpacing(4);
  grid->setColumnStretch(1, 1);
  window->setWidget(area);
  status = new QLabel(content);
  status->setTextFormat(Qt::PlainText);
  status->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
  progress = new QProgressBar(content);
  progress->setMaximumWidth(120);
  cancel = button(QCoreApplication::translate("FindGrid", "&Cancel"), "");
  progress->hide();
  cancel->hide();
}

QComboBox* FindGrid::field(const QString& caption, const char* name, int row) {
  QComboBox* made = makeFindField(content, QString::fromLatin1(name));
  grid->addWidget(made, row, 1);
  if (!caption.isEmpty()) label(caption, made, row);
  return made;
}

QLabel* FindGrid::label(const QString& caption, QWidget* buddy, int row) {
  auto* made = new QLabel(caption, content);
  made->setBuddy(buddy);
  grid->addWidget(made, row, 0);
  return made;
}

QPushButton* FindGrid::button(const QString& caption, const char* name, int row, int column) {
  auto* made = new QPushButton(caption, content);
  made->setObjectName(QString::fromLatin1(name));
  made->setAutoDefault(false);
  if (column > 0) grid->addWidget(made, row, column);
  return made;
}

QCheckBox* FindGrid::box(const QString& caption, const char* name, const QString& tip) {
  auto* made = new QCheckBox(caption, content);
  made->setObjectName(QString::fromLatin1(name));
  made->setToolTip(tip);
  return made;
}

void FindGrid::setSwitches(int row, std::initializer_list<QCheckBox*> boxes) {
  auto* switches = new QHBoxLayout;
  switches->setSpacing(12);
  for (QCheckBox* each : boxes) switches->addWidget(each);
  switches->addWidget(status, 1);
  switches->addWidget(progress);
  if (grid->indexOf(cancel) < 0) switches->addWidget(cancel);
  grid->addLayout(switches, row, 0, 1, -1);
}

void FindGrid::setTabOrder(std::initializer_list<QWidget*> parts) {
  QWidget* last = nullptr;
  for (QWidget* part : parts) {
    if (last) QWidget::setTabOrder(last, part);
    last = part;
  }
}

QColor badTextColor(const QPalette& palette) {
  return ColorScheme::isDark(palette) ? QColor(0xFF, 0x8A, 0x80) : QColor(0xB3, 0x26, 0x1E);
}

void tellFind(QLabel* status, const QString& text, bool bad) {
  status->setText(plainForDisplay(text));
  status->setToolTip(plainForDisplay(text));
  const QPalette usual = status->parentWidget()->palette();
  QPalette colors = usual;
  if (bad) colors.setColor(QPalette::WindowText, badTextColor(usual));
  status->setPalette(colors);
}

void showFindWindow(QDockWidget* window) {
  if (isLow(*window) && !window->isFloating())   // there is room for one
    for (QDockWidget* dock : window->window()->findChildren<QDockWidget*>(QString(), Qt::FindDirectChildrenOnly))
      if (dock != window && !dock->isFloating() && dynamic_cast<FindArea*>(dock->widget())) dock->close();
  if (window->isHidden()) keepHeightsBeside(window);
  window->show();
  window->raise();
  if (window->isFloating()) window->activateWindow();
}
