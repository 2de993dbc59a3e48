#include <QAction>
#include <QGridLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTreeWidget>

#include "base/dialog/Dialogs.h"
#include "control/keys/KeyCommands.h"
#include "control/keys/KeyField.h"
#include "control/keys/KeyMacro.h"
#include "control/options/PropertiesPages.h"

namespace {

enum Column { kName, kKeys, kHelp };
constexpr int kCommandRole = Qt::UserRole, kMacroRole = Qt::UserRole + 1, kNamedRole = Qt::UserRole + 2;

}   // namespace

KeysPage::KeysPage(const QWidget* frame, QWidget* parent)
    : QWidget(parent), frame_(frame), map_(keyMap()), macros_(keyMacros().names()) {
  auto* grid = new QGridLayout(this);
  const auto label = [&](const QString& text, QWidget* buddy, int row, int column) {
    auto* l = new QLabel(text, this);
    l->setBuddy(buddy);
    grid->addWidget(l, row, column);
    return l;
  };
  search_ = new QLineEdit(this);
  search_->setObjectName(QStringLiteral("searchName"));
  search_->setClearButtonEnabled(true);
  searchKeys_ = new KeyField(this);
  searchKeys_->setObjectName(QStringLiteral("searchKeys"));
  label(tr("Search by &name:"), search_, 0, 0);
  grid->addWidget(search_, 0, 1);
  label(tr("by &pressed key:"), searchKeys_, 0, 2);
  grid->addWidget(searchKeys_, 0, 3, 1, 2);

  tree_ = new QTreeWidget(this);
  tree_->setObjectName(QStringLiteral("commands"));
  tree_->setRootIsDecorated(false);
  tree_->setUniformRowHeights(true);
  tree_->setSortingEnabled(true);
  tree_->setHeaderLabels({tr("Command"), tr("Keys"), tr("What it does")});
  tree_->header()->setStretchLastSection(true);
  label(tr("Comm&ands:"), tree_, 1, 0);
  grid->addWidget(tree_, 2, 0, 1, 5);
  help_ = new QLabel(this);
  help_->setTextFormat(Qt::PlainText);
  help_->setWordWrap(true);
  grid->addWidget(help_, 3, 0, 1, 5);

  keys_ = new QListWidget(this);
  keys_->setObjectName(QStringLiteral("keysOfCommand"));
  keys_->setMaximumHeight(90);
  label(tr("Keys of the &command:"), keys_, 4, 0)->setAlignment(Qt::AlignTop);
  grid->addWidget(keys_, 4, 1, 3, 1);
  newKeys_ = new KeyField(this);
  newKeys_->setObjectName(QStringLiteral("newKeys"));
  label(tr("Ne&w keys:"), newKeys_, 4, 2);
  grid->addWidget(newKeys_, 4, 3);
  const auto button = [&](const QString& text, const char* name, auto slot) {
    auto* b = new QPushButton(text, this);
    b->setObjectName(QString::fromLatin1(name));
    b->setAutoDefault(false);
    connect(b, &QPushButton::clicked, this, slot);
    return b;
  };
  bind_ = button(tr("&Bind"), "bind", [this] { bind(); });
  grid->addWidget(bind_, 4, 4);
  conflicts_ = new QLabel(this);
  conflicts_->setObjectName(QStringLiteral("conflicts"));
  conflicts_->setTextFormat(Qt::PlainText);
  conflicts_->setWordWrap(true);
  conflicts_->setMinimumHeight(fontMetrics().lineSpacing() * 2);
  conflicts_->setAlignment(Qt::AlignTop);
  grid->addWidget(conflicts_, 5, 2, 1, 3);
  auto* row = new QHBoxLayout;
  unbind_ = button(tr("Take Key&s Away"), "unbind", [this] { unbind(); });
  rename_ = button(tr("Rename &Macro..."), "renameMacro", [this] { renameMacro(); });
  remove_ = button(tr("&Delete Macro"), "removeMacro", [this] { removeMacro(); });
  row->addWidget(unbind_);
  row->addWidget(rename_);
  row->addWidget(remove_);
  row->addStretch();
  row->addWidget(button(tr("&Restore Defaults"), "restoreDefaults", [this] {
    map_.restoreDefaults();
    fill();
  }));
  grid->addLayout(row, 7, 0, 1, 5);
  grid->setColumnStretch(1, 1);
  grid->setColumnStretch(3, 1);
  grid->setRowStretch(2, 1);

  connect(search_, &QLineEdit::textChanged, this, [this] { filter(); });
  connect(searchKeys_, &KeyField::keysChanged, this, [this] { filter(); });
  connect(newKeys_, &KeyField::keysChanged, this, [this] { showConflicts(); });
  connect(tree_, &QTreeWidget::currentItemChanged, this, [this] { showSelected(); });
  connect(keys_, &QListWidget::currentRowChanged, this, [this](int at) { unbind_->setEnabled(at >= 0); });
  tree_->sortByColumn(kName, Qt::AscendingOrder);
  fill();
  tree_->setCurrentItem(tree_->topLevelItem(0));
  tree_->resizeColumnToContents(kName);
  tree_->setColumnWidth(kKeys, 170);
}

void KeysPage::apply() const {
  for (const auto& [from, to] : changes_) {
    if (to.isEmpty()) keyMacros().remove(from);
    else keyMacros().rename(from, to);
  }
  keyMap() = map_;
}

QString KeysPage::nameOf(const KeyAction& action) const {
  const Command* command = anyCommandById(action.command);
  if (command) return QString::fromLatin1(command->name);
  for (const NamedAction& named : map_.namedActions())
    if (named.name == action.named) return named.shown;
  return action.named.isEmpty() ? tr("Macro: %1").arg(action.macro) : action.named;
}

QString KeysPage::keysTextOf(const KeyAction& action) const {
  QStringList texts;
  for (const QKeySequence& keys : map_.keysOf(action)) texts += keys.toString(QKeySequence::NativeText);
  return texts.join(QStringLiteral("; "));
}

KeyAction KeysPage::selected() const {
  const QTreeWidgetItem* item = tree_->currentItem();
  return item ? KeyAction{item->data(kName, kCommandRole).toInt(), item->data(kName, kMacroRole).toString(),
                          item->data(kName, kNamedRole).toString()}
              : KeyAction();
}

void KeysPage::fill() {
  const KeyAction before = selected();
  const QSignalBlocker quiet(tree_);
  tree_->clear();
  QTreeWidgetItem* current = nullptr;
  const auto add = [&](const KeyAction& action, const QString& help) {
    auto* item = new QTreeWidgetItem(tree_, {nameOf(action), keysTextOf(action), help});
    item->setData(kName, kCommandRole, action.command);
    item->setData(kName, kMacroRole, action.macro);
    item->setData(kName, kNamedRole, action.named);
    if (action == before) current = item;
  };
  for (std::span<const Command> table : {commands(), keyCommands()})
    for (const Command& command : table) add({command.id, {}}, QString::fromUtf8(command.help));
  for (const QString& macro : macros_) add({0, macro, {}}, tr("Recorded keystrokes."));
  for (const NamedAction& named : map_.namedActions()) add({0, {}, named.name}, named.help);
  if (!current) current = tree_->topLevelItem(0);
  tree_->setCurrentItem(current);
  filter();
  showSelected();
}

// Shows the commands whose name or description contains the text and that the pressed keys, so far, run. The current command is
// always a visible one.
void KeysPage::filter() {
  const QString text = search_->text().trimmed();
  const QString pressed = searchKeys_->keys().toString(QKeySequence::NativeText);
  QTreeWidgetItem* first = nullptr;
  for (int i = 0; i < tree_->topLevelItemCount(); ++i) {
    QTreeWidgetItem* item = tree_->topLevelItem(i);
    bool shown = text.isEmpty() || item->text(kName).contains(text, Qt::CaseInsensitive) ||
                 item->text(kHelp).contains(text, Qt::CaseInsensitive);
    if (shown && !pressed.isEmpty()) {
      shown = false;
      for (const QString& keys : item->text(kKeys).split(QStringLiteral("; ")))
        shown = shown || keys == pressed || keys.startsWith(pressed + QStringLiteral(", "));
    }
    item->setHidden(!shown);
    if (shown && !first) first = item;
  }
  if (!tree_->currentItem() || tree_->currentItem()->isHidden()) tree_->setCurrentItem(first);
}

void KeysPage::showSelected() {
  const KeyAction action = selected();
  keys_->clear();
  for (const QKeySequence& keys : map_.keysOf(action)) {
    auto* item = new QListWidgetItem(keys.toString(QKeySequence::NativeText), keys_);
    item->setData(Qt::UserRole, keys.toString(QKeySequence::PortableText));
  }
  if (keys_->count() > 0) keys_->setCurrentRow(0);
  help_->setText(tree_->currentItem() ? tree_->currentItem()->text(kHelp) : QString());
  unbind_->setEnabled(keys_->count() > 0);
  rename_->setEnabled(!action.macro.isEmpty());
  remove_->setEnabled(!action.macro.isEmpty());
  showConflicts();
}

void KeysPage::showConflicts() {
  const QKeySequence keys = newKeys_->keys();
  QStringList lines;
  for (const QKeySequence& other : map_.conflicts(keys)) {
    const KeyAction action = map_.actionOf(other);
    if (other == keys && action == selected()) continue;
    if (lines.size() == 3) {
      lines.last() += QStringLiteral(" ...");
      break;
    }
    const QString shown = other.toString(QKeySequence::NativeText);
    lines += other == keys ? tr("%1 is bound to %2; that binding will be removed.").arg(shown, nameOf(action))
                           : tr("In the way of %1 (%2).").arg(shown, nameOf(action));
  }
  for (const QAction* action : frame_->findChildren<QAction*>())
    if (!keys.isEmpty() && action->shortcuts().contains(keys) && map_.actionOf(keys).isNone() && keyMap().actionOf(keys).isNone())
      lines += tr("%1 is the short-cut of \"%2\"; in a text it would run this command instead.")
                   .arg(keys.toString(QKeySequence::NativeText), action->text().remove(u'&'));
  conflicts_->setText(lines.join(u'\n'));
  bind_->setEnabled(!keys.isEmpty() && !selected().isNone() && map_.actionOf(keys) != selected());
}

void KeysPage::bind() {
  if (!map_.bind(newKeys_->keys(), selected())) return;
  newKeys_->setKeys({});
  fill();
}

void KeysPage::unbind() {
  const QListWidgetItem* item = keys_->currentItem();
  if (!item) return;
  map_.bind(QKeySequence(item->data(Qt::UserRole).toString(), QKeySequence::PortableText), {});
  fill();
}

void KeysPage::renameMacro() {
  const QString from = selected().macro;
  if (from.isEmpty()) return;
  const auto to = InputBox(tr("New name of the macro"), tr("Rename Macro"), from);
  if (!to || *to == from) return;
  if (!KeyMacros::goodName(*to) || macros_.contains(*to)) {
    MsgBox(tr("This name is empty, in use, or contains an invalid character"), tr("Rename Macro"));
    return;
  }
  for (const QKeySequence& keys : map_.keysOf({0, from})) map_.bind(keys, {0, *to});
  macros_[macros_.indexOf(from)] = *to;
  changes_.emplace_back(from, *to);
  fill();
}

void KeysPage::removeMacro() {
  const QString name = selected().macro;
  if (name.isEmpty()) return;
  for (const QKeySequence& keys : map_.keysOf({0, name})) map_.bind(keys, {});
  macros_.removeAll(name);
  changes_.emplace_back(name, QString());
  fill();
}
