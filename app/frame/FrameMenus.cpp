#include "app/frame/FrameMenus.h"

#include <QAction>
#include <QApplication>
#include <QDockWidget>
#include <QFocusEvent>
#include <QMenu>
#include <QMenuBar>
#include <QToolBar>
#include <QToolButton>
#include <algorithm>

#include "app/frame/KeyActions.h"
#include "app/frame/frmMain.h"
#include "app/look/Icons.h"
#include "base/dialog/Memory.h"
#include "control/keys/KeyCommands.h"
#include "control/keys/KeyMap.h"
#include "document/Languages.h"
#include "document/frmDocument.h"
#include "document/frmRegistry.h"
#include "language/ucCM.h"

namespace {

QString shown(const char* text) { return *text ? QCoreApplication::translate("frmMain", text) : QString(); }

const QString kByKey = QStringLiteral("byKey");

QString elementName(const QString& name, int index) { return index < 0 ? name : name + u'(' + QString::number(index) + u')'; }

// "&Open..." as plain text.
QString plainCaption(const char* caption) { return shown(caption).remove(u'&').remove(QLatin1String("...")); }

}   // namespace

FrameMenus::FrameMenus(frmMain& frame) : QObject(&frame), frame_(frame), toolBar_(new QToolBar(&frame)) {
  toolBar_->setObjectName(QStringLiteral("Toolbar"));
  toolBar_->setWindowTitle(shown(QT_TRANSLATE_NOOP("frmMain", "Toolbar")));
  toolBar_->setMovable(false);
  toolBar_->setContextMenuPolicy(Qt::PreventContextMenu);
  toolBar_->setIconSize(QSize(20, 20));
  for (const FrameCommand* row : frameCommands())
    if (row->elements > 0) makeArray(*row);
    else make(*row);
  for (auto it = placed_.cbegin(); it != placed_.cend(); ++it) {
    QWidget* to = it.key().isEmpty() ? static_cast<QWidget*>(frame_.menuBar()) : menus_.value(it.key());
    Q_ASSERT(to);
    addInGroups(*to, it.value());
  }
  addInGroups(*toolBar_, tools_);
  frame_.menuBar()->installEventFilter(this);
  // A frame destroyed while it is shown loses the focus when its menu bar does not exist any more.
  connect(qApp, &QApplication::focusChanged, this, [this, bar = QPointer(frame_.menuBar())](QWidget* old, QWidget* now) {
    if (old && now && now == bar && old->window() == &frame_) beforeBar_ = old;
  });
  keyMap().setNamedActions(keyactions::all());
  refreshKeys();
}

FrameMenus::~FrameMenus() = default;

// The menu bar holds the focus while keys move in it. A command run by a key meanwhile works on the text, and when another window
// has been closed, the text gets the keys again.
void FrameMenus::leaveBar() {
  if (!frame_.menuBar()->hasFocus()) return;
  if (beforeBar_ && beforeBar_->isVisible()) beforeBar_->setFocus(Qt::MenuBarFocusReason);
  else if (frmDocument* document = frame_.activeDocument()) document->focusWork();
}

bool FrameMenus::hidesDock(const QDockWidget& dock) const {
  return byKey_ ? dock.isAncestorOf(QApplication::focusWidget()) : !dock.isHidden();
}

void FrameMenus::hideDock(QDockWidget& dock) {
  // Before the dock goes: from a hidden widget the tool kit moves the keys to any other one, often in another document.
  const bool keys = dock.isAncestorOf(QApplication::focusWidget());
  if (frmDocument* document = keys ? frame_.activeDocument() : nullptr) document->cmx->setFocus();
  dock.hide();
}

bool FrameMenus::eventFilter(QObject* object, QEvent* event) {
  if (event->type() == QEvent::Shortcut) {
    byKey_ = true;
    QMetaObject::invokeMethod(
        this, [this] { byKey_ = false; }, Qt::QueuedConnection);
  }
  if (event->type() == QEvent::FocusIn && static_cast<QFocusEvent*>(event)->reason() == Qt::ActiveWindowFocusReason)
    QMetaObject::invokeMethod(this, &FrameMenus::leaveBar, Qt::QueuedConnection);
  return QObject::eventFilter(object, event);
}

void FrameMenus::run(const std::function<void()>& command) {
  leaveBar();
  withMemory(command);
}

void FrameMenus::make(const FrameCommand& row) {
  const QString name = QString::fromLatin1(row.name);
  QAction* action = nullptr;
  if (row.isMenu) {
    QMenu* menu = new QMenu(&frame_);
    menu->setObjectName(name);
    menu->setToolTipsVisible(false);
    menus_.insert(name, menu);
    action = menu->menuAction();
    connect(menu, &QMenu::aboutToShow, this, [this, &row] { refreshChecks(row.name); });
    if (row.fill)
      connect(menu, &QMenu::aboutToShow, this, [this, menu, &row] {
        // Removes the entries added last time; entries from rows stay.
        for (QAction* old : menu->actions())
          if (old->property("filled").toBool()) {
            menu->removeAction(old);
            old->deleteLater();
          }
        const QList<QAction*> fixed = menu->actions();
        row.fill(frame_, *menu);
        for (QAction* made : menu->actions())
          if (!fixed.contains(made)) made->setProperty("filled", true);
      });
  } else {
    action = new QAction(&frame_);
    action->setCheckable(row.checkable);
    if (row.checkable) action->installEventFilter(this);
    connect(action, &QAction::triggered, this, [this, &row] { trigger(row); });
    if (*row.icon) action->setIcon(icons::byName(QString::fromLatin1(row.icon)));
  }
  action->setObjectName(name);
  action->setText(shown(row.caption));
  action->setMenuRole(QAction::NoRole);
  action->setProperty(kNamedActionProperty, keyactions::ofCommand(row.name));
  if (row.needs & kOthers) action->setEnabled(false);
  actions_.insert(name, action);
  placed_[QString::fromLatin1(row.menu)].append({row.place, action});
  if (*row.tool) {
    action->setProperty("tool", QString::fromLatin1(row.tool));
    tools_.append({row.toolPlace, action});
  }
  if (row.popupPlace > 0) popup_.append({row.popupPlace, action});
}

void FrameMenus::makeArray(const FrameCommand& row) {
  for (int i = 0; i < row.elements; ++i) {
    auto* action = new QAction(&frame_);
    action->setObjectName(elementName(QString::fromLatin1(row.name), i));
    action->setVisible(false);
    connect(action, &QAction::triggered, this, [this, &row, i] { run([&] { row.runElement(frame_, i); }); });
    actions_.insert(action->objectName(), action);
    placed_[QString::fromLatin1(row.menu)].append({row.place, action});
  }
}

void FrameMenus::trigger(const FrameCommand& row) {
  run([&] {
    if (row.command) frame_.runEditCommand(row.command);
    else row.run(frame_);
  });
}

void FrameMenus::refreshChecks(const char* menuName) {
  for (const FrameCommand* row : frameCommands())
    if (row->checked && qstrcmp(row->menu, menuName) == 0)
      actions_.value(QString::fromLatin1(row->name))->setChecked(row->checked(frame_));
}

void FrameMenus::addInGroups(QWidget& to, QList<Placed> rows) {
  std::stable_sort(rows.begin(), rows.end(), [](const Placed& a, const Placed& b) { return a.place < b.place; });
  const bool bar = qobject_cast<QMenuBar*>(&to) != nullptr;
  for (qsizetype i = 0; i < rows.size(); ++i) {
    if (!bar && i > 0 && rows[i].place / 100 != rows[i - 1].place / 100) {
      auto* line = new QAction(&to);
      line->setSeparator(true);
      to.addAction(line);
    }
    to.addAction(rows[i].action);
  }
}

std::unique_ptr<QMenu> FrameMenus::makePopup(QWidget* parent) const {
  auto popup = std::make_unique<QMenu>(parent);
  popup->setObjectName(QStringLiteral("editPopup"));
  addInGroups(*popup, popup_);
  return popup;
}

QAction* FrameMenus::action(const QString& name, int index) const { return actions_.value(elementName(name, index)); }
QMenu* FrameMenus::menu(const QString& name) const { return menus_.value(name); }

void FrameMenus::setCaption(const QString& name, int index, const QString& caption, bool visible) {
  QAction* entry = action(name, index);
  if (!entry) return;
  entry->setSeparator(caption == QLatin1String("-"));
  if (!entry->isSeparator()) {
    const auto language = name == QLatin1String("mCustom") && index >= 0 ? languages().Language() : nullptr;
    QString keys;
    if (language && index < language->cMacros()->Count())
      keys = keyMap()
                 .keysOf({0, {}, keyactions::ofMacro(language->cMacros()->Item(index + 1)->Name)})
                 .value(0)
                 .toString(QKeySequence::NativeText);
    entry->setText(keys.isEmpty() ? caption : caption + u'\t' + keys);
  }
  entry->setVisible(visible);
}

void FrameMenus::refresh(unsigned facts) {
  for (const FrameCommand* row : frameCommands())   // buttons show their check marks at any time
    if (row->checked && *row->tool) actions_.value(QString::fromLatin1(row->name))->setChecked(row->checked(frame_));
  if (facts == facts_) return;
  facts_ = facts;
  for (const FrameCommand* row : frameCommands()) {
    if (row->elements > 0 || (row->needs & kOthers)) continue;
    const bool enabled = (facts & row->needs) == row->needs;
    QAction* action = actions_.value(QString::fromLatin1(row->name));
    if (action->isEnabled() != enabled) action->setEnabled(enabled);
    if (row->needs & kWeb) action->setVisible(enabled);   // without an address the command has no target
  }
}

void FrameMenus::refreshKeys() {
  for (const FrameCommand* row : frameCommands()) {
    if (row->isMenu || row->elements > 0) continue;
    QAction* action = actions_.value(QString::fromLatin1(row->name));
    QString keys;
    if (*row->keys || !row->command) {
      // The default keys first, if they still apply: the menu shows the first ones.
      QList<QKeySequence> now = keyMap().keysOf({0, {}, keyactions::ofCommand(row->name)}), sequences;
      for (const QString& key : QString::fromLatin1(row->keys).split(u';', Qt::SkipEmptyParts))
        if (now.removeOne(QKeySequence(key.trimmed()))) sequences << QKeySequence(key.trimmed());
      action->setShortcuts(sequences + now);
      keys = action->shortcut().toString();
    } else {
      // The edit control handles its keys itself; the menu only shows them.
      const Command* command = anyCommandById(row->command);
      const QList<QKeySequence> now = keyMap().keysOf({row->command, {}});
      const QStringList usual = QString::fromLatin1(command ? command->keys : "").split(u';');
      for (const QString& key : usual)   // the default if it still applies
        if (keys.isEmpty() && now.contains(QKeySequence(key.trimmed()))) keys = key.trimmed();
      if (keys.isEmpty() && !now.isEmpty()) keys = now.first().toString();
      const QString first = QKeySequence(keys).toString(QKeySequence::NativeText);
      action->setText(first.isEmpty() ? shown(row->caption) : shown(row->caption) + u'\t' + first);
    }
    const QString key = QKeySequence(keys).toString(QKeySequence::NativeText);
    const QString tip = *row->tip ? shown(row->tip) : plainCaption(row->caption);
    action->setToolTip(key.isEmpty() ? tip : tip + QLatin1String(" (") + key + u')');
  }
  // Macros and templates with keys are actions without a menu entry.
  qDeleteAll(findChildren<QAction*>(kByKey));
  for (const QString& name : keyMap().boundNames()) {
    if (keyactions::isCommand(name)) continue;
    auto* action = new QAction(this);
    action->setObjectName(kByKey);
    action->setProperty(kNamedActionProperty, name);
    action->setShortcuts(keyMap().keysOf({0, {}, name}));
    connect(action, &QAction::triggered, this, [this, name] { run([&] { keyactions::run(frame_, name); }); });
    frame_.addAction(action);
  }
  frmRegistry::instance().CommandstoMenu();   // which shows them
}
