// The main frame's windows, tabs, and the menus whose entries are made when they open.
#include <QAction>
#include <QActionGroup>
#include <QApplication>
#include <QClipboard>
#include <QDialog>
#include <QDialogButtonBox>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenu>
#include <QRegularExpression>
#include <QScreen>
#include <QScrollBar>
#include <QStyle>
#include <QVBoxLayout>

#include "app/frame/DocumentTabs.h"
#include "app/frame/FrameMenus.h"
#include "app/frame/LateDocument.h"
#include "app/frame/frmMain.h"
#include "base/Strings.h"
#include "base/dialog/Dialogs.h"
#include "control/keys/KeyMacro.h"
#include "document/Languages.h"
#include "document/frmDocument.h"
#include "language/ucCM.h"

namespace {

constexpr int kPlayMacro = 1010;
constexpr int kListedWindows = 20;

QString inMenu(const QString& name) { return plainForDisplay(name, 120).replace(u'&', QLatin1String("&&")); }

QAction* addChoice(QMenu& menu, const QString& caption, bool checked) {
  QAction* action = menu.addAction(caption);
  action->setCheckable(true);
  action->setChecked(checked);
  return action;
}

// Keys that move in the list work while the field above it has the focus.
class ListKeys : public QObject {
 public:
  explicit ListKeys(QListWidget* list) : QObject(list), list_(list) {}
  bool eventFilter(QObject*, QEvent* event) override {
    if (event->type() != QEvent::KeyPress) return false;
    const int key = static_cast<QKeyEvent*>(event)->key();
    if (key != Qt::Key_Up && key != Qt::Key_Down && key != Qt::Key_PageUp && key != Qt::Key_PageDown) return false;
    QApplication::sendEvent(list_, event);
    return true;
  }

 private:
  QListWidget* list_;
};

}   // namespace

QPoint frmMain::scrolledBy() const { return {mdi_->horizontalScrollBar()->value(), mdi_->verticalScrollBar()->value()}; }

// ---- documents that are opened when they are first shown

void frmMain::addLate(const QList<LateDocument*>& late) {
  tabs_->add(late);
  if (active_) tabs_->setActive(active_);
  SetupMenus();
  emit tabsChanged();
}

frmDocument* frmMain::openLate(LateDocument& late) {
  if (opening_) return nullptr;
  const QPointer<LateDocument> alive = &late;
  opening_ = &late;
  frmDocument* document = late.open(*this);
  opening_ = nullptr;
  if (document && alive && tabs_->tabOf(alive) >= 0) tabs_->remove(alive);   // it was open already, by another name
  if (active_) tabs_->setActive(active_);
  emit tabsChanged();
  return document;
}

bool frmMain::showEntry(QObject* entry) {
  if (auto* late = qobject_cast<LateDocument*>(entry)) return openLate(*late);
  if (auto* document = qobject_cast<frmDocument*>(entry)) activate(document);
  return entry;
}

void frmMain::closeEntry(QObject* entry) {
  if (auto* late = qobject_cast<LateDocument*>(entry)) {
    if (late->isModified() || late == opening_) return;   // its text is on its way
    tabs_->remove(late);
    if (active_) tabs_->setActive(active_);
    SetupMenus();
    emit tabsChanged();
  } else if (QMdiSubWindow* window = windowOf(qobject_cast<frmDocument*>(entry))) {
    window->close();
  }
}

void frmMain::dropLate() {
  QList<LateDocument*> going;
  for (LateDocument* late : tabs_->late())
    if (!late->isModified() && late != opening_) going << late;
  if (going.isEmpty()) return;
  tabs_->remove(going);
  if (active_) tabs_->setActive(active_);
  SetupMenus();
  emit tabsChanged();
}

void frmMain::showTabFrom(int tab) {
  if (unloaded_ || !documents_.isEmpty()) return;
  QList<QPointer<QObject>> order;
  for (int i = tab; i < tabs_->count(); ++i) order << tabs_->entryAt(i);
  for (int i = std::min(tab, tabs_->count()) - 1; i >= 0; --i) order << tabs_->entryAt(i);
  // Only what is gone is passed over: about another failure the user has been told.
  for (const auto& entry : order) {
    if (!entry || showEntry(entry)) return;
    const auto* late = qobject_cast<const LateDocument*>(entry);
    if (!late || !late->isGone) return;
  }
}

void frmMain::followRenamed(const QString& from, const QString& to) {
  QHash<LateDocument*, QString> paths;
  for (LateDocument* late : tabs_->late())
    if (!to.isEmpty() && (late->path == from || late->path.startsWith(from + u'/'))) paths[late] = to + late->path.mid(from.size());
  if (!paths.isEmpty()) tabs_->rename(paths);
  emit tabsChanged();
}

void frmMain::newWindow() {
  frmDocument* document = activeDocument();
  if (!document) return;
  adopt(new frmDocument(*document));
  SetupMenus();
}

// The position of the index-th normal window: completely inside the room, each one step right of and below the previous one, so
// that every title is visible; again from the corner at the end of the room.
QRect frmMain::normalPlace(qsizetype index) const {
  const QSize room = windowRoom();
  const QSize size = (room * 7 / 10).expandedTo({400, 240}).boundedTo(room);
  const int step = style()->pixelMetric(QStyle::PM_TitleBarHeight) + 4;
  const int steps = std::max(1, std::min(room.width() - size.width(), room.height() - size.height()) / step + 1);
  const int shift = int(index % steps) * step;
  return {QPoint(shift, shift), size};
}

// The room for such windows: above the row of minimised ones, if there are any.
QSize frmMain::windowRoom() const {
  QSize room = mdi_->viewport()->size();
  const int row = style()->pixelMetric(QStyle::PM_TitleBarHeight) + 8;
  for (const QMdiSubWindow* window : mdi_->subWindowList())
    if (window->isMinimized()) return {room.width(), std::max(row, room.height() - row)};
  return room;
}

// A restored window may have been placed while the frame was larger.
void frmMain::keepInside(QMdiSubWindow& window) {
  const QSize room = windowRoom(), size = window.size().boundedTo(room);
  const QPoint corner(std::clamp(window.x(), 0, room.width() - size.width()),
                      std::clamp(window.y(), 0, room.height() - size.height()));
  if (QRect(corner, size) != window.geometry()) window.setGeometry({corner, size});
}

void frmMain::showBeside(frmDocument* left, frmDocument* right) {
  const QSize room = windowRoom(), half(room.width() / 2, room.height());
  documentState_ = 0;
  int x = 0;
  for (frmDocument* document : {left, right}) {
    QMdiSubWindow* window = windowOf(document);
    if (!window) continue;
    window->showNormal();
    window->setGeometry({QPoint(x, 0), half});
    x += half.width();
  }
  activate(right);
}

// The windows that are not minimised, in the order of the tabs; none of them is maximised afterwards.
QList<QMdiSubWindow*> frmMain::normalWindows() {
  QList<QMdiSubWindow*> windows;
  for (frmDocument* document : tabs_->inOrder()) {
    QMdiSubWindow* window = windowOf(document);
    if (!window || window->isMinimized()) continue;
    if (window->isMaximized()) window->showNormal();
    windows << window;
  }
  documentState_ = windowstate::kNormal;
  return windows;
}

void frmMain::cascade() {
  QMdiSubWindow* active = mdi_->currentSubWindow();
  QList<QMdiSubWindow*> windows = normalWindows();
  if (windows.removeOne(active)) windows << active;   // on top and completely visible
  for (qsizetype i = 0; i < windows.size(); ++i) {
    windows[i]->setGeometry(normalPlace(i));
    windows[i]->raise();
  }
  mdi_->setActiveSubWindow(active);
}

void frmMain::scrollTo(const QMdiSubWindow& window) {
  if (window.isMaximized()) return;
  const QRect place = window.geometry(), seen = mdi_->viewport()->rect();
  const auto by = [](int from, int end, int room) { return end > room ? std::min(from, end - room) : std::min(from, 0); };
  QScrollBar* across = mdi_->horizontalScrollBar();
  QScrollBar* down = mdi_->verticalScrollBar();
  across->setValue(across->value() + by(place.left(), place.right() + 1, seen.width()));
  down->setValue(down->value() + by(place.top(), place.bottom() + 1, seen.height()));
}

// Minimum size of a tile: some lines and columns of text inside its frame.
QSize frmMain::leastTile() const {
  constexpr int kLines = 4, kColumns = 20, kMarginColumns = 7;
  const frmDocument* document = active_ ? active_.data() : documents_.first();
  const QFontMetrics metrics(document->cmx->Font());
  const int bar = style()->pixelMetric(QStyle::PM_ScrollBarExtent),
            frame = 2 * style()->pixelMetric(QStyle::PM_MdiSubWindowFrameWidth);
  return {metrics.horizontalAdvance(u'0') * (kColumns + kMarginColumns) + bar + frame,
          metrics.lineSpacing() * kLines + bar + frame + style()->pixelMetric(QStyle::PM_TitleBarHeight)};
}

// Without gaps, in strips of equal size. If these became too narrow, in several rows. If the room is too small for all, in a larger
// area that scrolls.
void frmMain::tile(Qt::Orientation rows) {
  QMdiSubWindow* active = mdi_->currentSubWindow();
  const QList<QMdiSubWindow*> windows = normalWindows();
  const int count = int(windows.size());
  if (count == 0) return;
  const auto turned = [rows](QSize size) {
    return rows == Qt::Vertical ? size : size.transposed();
  };   // strips lie one above the other
  const QSize least = turned(leastTile());
  QSize room = turned(windowRoom());
  int lanes = 1;
  const auto inLane = [&] { return (count + lanes - 1) / lanes; };
  while (inLane() * least.height() > room.height() && (lanes + 1) * least.width() <= room.width()) ++lanes;
  if (inLane() * least.height() > room.height())
    room = {std::max(least.width(), room.width() - style()->pixelMetric(QStyle::PM_ScrollBarExtent)), inLane() * least.height()};
  for (int lane = 0, i = 0; lane < lanes; ++lane) {
    const int from = i, end = count * (lane + 1) / lanes, left = room.width() * lane / lanes,
              right = room.width() * (lane + 1) / lanes;
    for (; i < end; ++i) {
      const int top = room.height() * (i - from) / (end - from), bottom = room.height() * (i - from + 1) / (end - from);
      const QRect place(left, top, right - left, bottom - top);
      windows[i]->setGeometry(rows == Qt::Vertical ? place : QRect(place.y(), place.x(), place.height(), place.width()));
    }
  }
  mdi_->setActiveSubWindow(active);
  if (active) scrollTo(*active);
}

void frmMain::nextWindow(int step) {
  const QList<QPointer<QObject>> order = [all = tabs_->entries()] { return QList<QPointer<QObject>>(all.begin(), all.end()); }();
  const qsizetype count = order.size(), at = order.indexOf(activeDocument());
  // One that cannot be opened does not stand in the way of those behind it.
  for (qsizetype i = 1; i <= count; ++i)
    if (QObject* entry = order[((at + i * step) % count + count) % count]; entry && showEntry(entry)) return;
}

void frmMain::fillWindowList(QMenu& menu) {
  menu.addSeparator();
  int number = 0;
  for (QObject* entry : tabs_->entries()) {
    if (++number > kListedWindows) break;   // the list of all has a command of its own
    const QString digit = number < 10 ? u'&' + QString::number(number) : QString::number(number);
    QAction* action = addChoice(menu, digit + u' ' + inMenu(tabs_->nameOf(entry)), entry == activeDocument());
    connect(action, &QAction::triggered, this, [this, entry = QPointer(entry)] { showEntry(entry); });
  }
}

void frmMain::chooseWindow() {
  QDialog box(this);
  box.setWindowTitle(tr("Windows"));
  auto* filter = new QLineEdit(&box);
  auto* list = new QListWidget(&box);
  filter->installEventFilter(new ListKeys(list));
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, &box);
  auto* layout = new QVBoxLayout(&box);
  for (const auto& [text, field] : {std::pair<QString, QWidget*>{tr("Part of the &name:"), filter}, {tr("&Windows:"), list}}) {
    auto* label = new QLabel(text, &box);
    label->setBuddy(field);
    layout->addWidget(label);
    layout->addWidget(field);
  }
  layout->addWidget(buttons);
  const QList<QObject*> order = tabs_->entries();
  for (const QObject* entry : order) {
    const auto [name, title, caption] = DocumentTabs::namesOf(entry);
    list->addItem(name.isEmpty() ? caption : caption + QLatin1String("  ") + nameForDisplay(name));
  }
  list->setCurrentRow(int(std::max<qsizetype>(0, order.indexOf(activeDocument()))));
  connect(filter, &QLineEdit::textChanged, list, [list](const QString& part) {
    int first = -1;
    for (int row = 0; row < list->count(); ++row) {
      const bool fits = list->item(row)->text().contains(part, Qt::CaseInsensitive);
      list->setRowHidden(row, !fits);
      if (fits && first < 0) first = row;
    }
    list->setCurrentRow(first);
  });
  connect(list, &QListWidget::itemActivated, &box, &QDialog::accept);
  connect(buttons, &QDialogButtonBox::accepted, &box, &QDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, &box, &QDialog::reject);
  box.resize(QSize(600, 420).boundedTo(screen()->availableSize() * 9 / 10));
  const ModalGuard guard;
  const QList<QPointer<QObject>> entries(order.begin(), order.end());
  if (box.exec() == QDialog::Accepted && list->currentRow() >= 0) showEntry(entries.at(list->currentRow()));
}

void frmMain::fillLanguages(QMenu& menu) {
  frmDocument* document = activeDocument();
  if (!document) return;
  const auto bind = [this](int index) {
    frmDocument* target = activeDocument();
    if (!target) return;
    target->chooseLanguage(index);
    target->focusWork();
  };
  connect(addChoice(menu, tr("&None"), document->cmx->Language().isEmpty()), &QAction::triggered, this, [bind] { bind(0); });
  int index = 0;
  for (const auto& language : *languages().Languages()) {
    const int position = ++index;
    QAction* entry = addChoice(menu, inMenu(language->Name), document->LanguageIndex() == position);
    connect(entry, &QAction::triggered, this, [bind, position] { bind(position); });
  }
}

void frmMain::fillEncodings(QMenu& menu) {
  frmDocument* document = activeDocument();
  if (!document) return;
  const text::FileFormat now = document->cmx->fileFormat();
  const auto add = [&](QMenu& to, const QString& caption, text::FileFormat format, bool reopen) {
    QAction* entry = addChoice(to, caption, format == now);
    connect(entry, &QAction::triggered, this, [this, format, reopen] {
      frmDocument* target = activeDocument();
      if (!target) return;
      if (reopen) target->ReopenAs(format);
      else target->cmx->setFileFormat(format);
      refreshToolbar();
    });
  };
  const auto addAll = [&](QMenu& to, bool reopen) {
    for (const text::Encoding encoding : text::encodings()) {
      const QString caption = QString::fromLatin1(text::name(encoding));
      const bool unicode = text::isUnicode(encoding);
      add(to, caption, {encoding, false}, reopen);
      if (unicode) add(to, caption + tr(" with BOM"), {encoding, true}, reopen);
    }
  };
  menu.addSection(tr("Save as"));
  addAll(menu, false);
  menu.addSeparator();
  QMenu* again = menu.addMenu(tr("&Read the file again as"));
  again->setEnabled(document->DocumentHasName());
  addAll(*again, true);
}

void frmMain::fillLineEnds(QMenu& menu) {
  frmDocument* document = activeDocument();
  if (!document) return;
  const auto refresh = [this] {
    if (frmDocument* target = activeDocument()) target->focusWork();
  };
  menu.addSection(tr("New lines"));
  for (const bool crlf : {false, true}) {
    QAction* entry = addChoice(menu, crlf ? tr("&Win (CR LF)") : tr("&Unix (LF)"), document->cmx->EnableCRLF() == crlf);
    connect(entry, &QAction::triggered, this, [this, crlf, refresh] {
      if (frmDocument* target = activeDocument()) target->cmx->setEnableCRLF(crlf);
      refresh();
    });
  }
  menu.addSection(tr("The whole text"));
  for (const bool crlf : {false, true}) {
    QAction* entry = menu.addAction(crlf ? tr("Convert to W&in (CR LF)") : tr("Convert to U&nix (LF)"));
    entry->setEnabled(!document->cmx->ReadOnly());
    connect(entry, &QAction::triggered, this, [this, crlf, refresh] {
      if (frmDocument* target = activeDocument()) target->cmx->ConvertLineEnds(crlf);
      refresh();
    });
  }
}

void frmMain::fillKeyMacros(QMenu& menu) {
  for (const QString& name : keyMacros().names())
    connect(menu.addAction(inMenu(name)), &QAction::triggered, this, [this, name] {
      if (frmDocument* target = activeDocument()) keyMacros().play(target->cmx->editor(), name);
    });
  if (menu.isEmpty()) menu.addAction(tr("No macro is recorded"))->setEnabled(false);
}

void frmMain::goToLine() {
  frmDocument* document = activeDocument();
  if (!document) return;
  const CmPosition now = document->CurrentPosition();
  const QString prompt =
      tr("Line number, 1 to %1 (or line:column with columns from 1, +lines, -lines)").arg(document->cmx->LineCount());
  const auto answer = InputBox(prompt, tr("Go To Line"), QString::number(now.LineNo + 1));
  if (!answer || !activeDocument()) return;
  static const QRegularExpression form(QStringLiteral("^\\s*([+-]?)(\\d{1,15})(?:\\s*[:,]\\s*(\\d{1,15}))?\\s*$"));
  const auto match = form.match(*answer);
  if (!match.hasMatch()) {
    MsgBox(tr("%1 is not a line number").arg(plainForDisplay(*answer, 60)));
    return;
  }
  qint64 line = match.captured(2).toLongLong() - 1;
  if (match.captured(1) == QLatin1String("+")) line = now.LineNo + line + 1;
  else if (match.captured(1) == QLatin1String("-")) line = now.LineNo - line - 1;
  line = std::clamp<qint64>(line, 0, document->cmx->LineCount() - 1);
  document->cmx->ExecuteCmd(Cmd::GOTOLINE, line);
  if (!match.captured(3).isEmpty()) {
    const qint64 column = std::clamp<qint64>(match.captured(3).toLongLong() - 1, 0, document->cmx->GetLineLength(line));
    document->cmx->SetSel({line, column, line, column, false});
  }
  document->cmx->setFocus();
}

void frmMain::playKeystrokesTimes() {
  const auto answer = InputBox(tr("How many times?"), tr("Play Keystrokes"), QStringLiteral("10"));
  if (!answer || !activeDocument()) return;
  bool isNumber = false;
  const qint64 times = answer->trimmed().toLongLong(&isNumber);
  if (!isNumber || times < 1) {
    MsgBox(tr("%1 is not a number of times").arg(plainForDisplay(*answer, 60)));
    return;
  }
  runEditCommand(Cmd::SETREPEATCOUNT, times);
  runEditCommand(kPlayMacro);
}

void frmMain::showTabMenu(QObject* entry, const QPoint& globalPosition) {
  const QPointer<QObject> tab = entry;
  const QPointer<frmDocument> target = qobject_cast<frmDocument*>(entry);
  const QString path = DocumentTabs::namesOf(entry).path;
  const bool hasName = target ? target->DocumentHasName() : !path.isEmpty();
  QMenu menu(this);
  connect(menu.addAction(tr("&Close")), &QAction::triggered, this, [this, tab] {
    if (tab) closeEntry(tab);
  });
  QAction* others = menu.addAction(tr("Close &Others"));
  others->setEnabled(tabs_->count() > 1);
  connect(others, &QAction::triggered, this, [this, tab, target] {
    if (tab && showEntry(tab)) closeOthers(target ? target.data() : activeDocument());
  });
  connect(menu.addAction(tr("Close &All")), &QAction::triggered, this, &frmMain::mnuFileCloseAll_Click);
  menu.addSeparator();
  QAction* save = menu.addAction(tr("&Save"));
  save->setEnabled(target && isUnsaved(*target));
  connect(save, &QAction::triggered, this, [this, target] {
    bool ok = false;
    if (target) mainFileSave(*target, ok);
  });
  menu.addSeparator();
  QAction* copy = menu.addAction(tr("Copy &Path"));
  QAction* folder = menu.addAction(tr("Open &Folder"));
  copy->setEnabled(hasName);
  folder->setEnabled(hasName);
  connect(copy, &QAction::triggered, this, [path] { QApplication::clipboard()->setText(path); });
  connect(folder, &QAction::triggered, this, [path] {
    if (!dialogs().openUrl(GetFileDir(path))) MsgBox(tr("The folder cannot be shown"));
  });
  menu.exec(globalPosition);
}
