#include "app/frame/DocumentTabs.h"

#include <QAbstractButton>
#include <QContextMenuEvent>
#include <QHoverEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QSet>
#include <QStyleOption>
#include <algorithm>
#include <utility>

#include "app/frame/LateDocument.h"
#include "app/look/Tips.h"
#include "base/Strings.h"
#include "document/frmDocument.h"

namespace {

constexpr int kWidest = 32;        // characters; longer names are cut in the middle
constexpr int kBesideButton = 4;   // pixels that the tab bar leaves

// As the tab bar's own one, which lays all tabs out with each tab that comes.
class CloseButton : public QAbstractButton {
 public:
  explicit CloseButton(QTabBar* bar) : QAbstractButton(bar), bar_(bar) {
    setFocusPolicy(Qt::NoFocus);
    setCursor(Qt::ArrowCursor);
    setToolTip(DocumentTabs::tr("Close Tab"));
    setAttribute(Qt::WA_Hover);
    resize(sizeHint());
  }
  QSize sizeHint() const override {
    ensurePolished();
    return {style()->pixelMetric(QStyle::PM_TabCloseIndicatorWidth, nullptr, this),
            style()->pixelMetric(QStyle::PM_TabCloseIndicatorHeight, nullptr, this)};
  }
  static QTabBar::ButtonPosition side(const QTabBar& bar) {
    return QTabBar::ButtonPosition(bar.style()->styleHint(QStyle::SH_TabBar_CloseButtonPosition, nullptr, &bar));
  }

 protected:
  void paintEvent(QPaintEvent*) override {
    QStyleOption option;
    option.initFrom(this);
    option.state |= QStyle::State_AutoRaise;
    if (underMouse() && !isDown()) option.state |= QStyle::State_Raised;
    if (isDown()) option.state |= QStyle::State_Sunken;
    if (bar_->tabButton(bar_->currentIndex(), side(*bar_)) == this) option.state |= QStyle::State_Selected;
    QPainter painter(this);
    style()->drawPrimitive(QStyle::PE_IndicatorTabClose, &option, &painter, this);
  }

 private:
  QTabBar* bar_;
};

}   // namespace

DocumentTabs::DocumentTabs(QWidget* parent) : QTabBar(parent) {
  setObjectName(QStringLiteral("documentTabs"));
  setAccessibleName(tr("Open documents"));
  setDocumentMode(true);
  setMovable(true);
  setExpanding(false);
  setUsesScrollButtons(true);
  setElideMode(Qt::ElideMiddle);
  setFocusPolicy(Qt::NoFocus);   // keys belong to the text; Ctrl+Tab changes tabs
  setAttribute(Qt::WA_Hover);
  connect(this, &QTabBar::currentChanged, this, [this](int tab) {
    if (QObject* entry = entryAt(tab)) emit chosen(entry);
  });
}

DocumentTabs::Named DocumentTabs::namesOf(const QObject* entry) {
  if (const auto* document = qobject_cast<const frmDocument*>(entry))
    return {document->CurrentFileName(), document->CurrentFileTitle(), document->Caption()};
  const auto* late = static_cast<const LateDocument*>(entry);
  const QString caption = nameForDisplay(late->title, 200);
  return {late->path, late->title, late->isModified() ? caption + u'*' : caption};
}

void DocumentTabs::makeClosable(int tab) {
  const ButtonPosition side = CloseButton::side(*this);
  if (tab < 0 || tabButton(tab, side)) return;
  auto* button = new CloseButton(this);
  setTabButton(tab, side, button);
  connect(button, &QAbstractButton::clicked, this, [this, button, side] {
    for (int i = 0; i < count(); ++i)
      if (tabButton(i, side) == button) return emit closeWanted(entryAt(i));
  });
}

// The tab of a late document gets its button under the mouse: with each button the bar lays out all tabs.
bool DocumentTabs::event(QEvent* event) {
  if (event->type() == QEvent::HoverMove || event->type() == QEvent::HoverEnter)
    makeClosable(tabAt(static_cast<QHoverEvent*>(event)->position().toPoint()));
  return QTabBar::event(event);
}

void DocumentTabs::changeEvent(QEvent* event) {
  sizes_.clear();
  QTabBar::changeEvent(event);
}

void DocumentTabs::add(frmDocument* document) {
  const QSignalBlocker quiet(this);
  const int tab = addTab(QString());
  setTabData(tab, QVariant::fromValue<QObject*>(document));
  makeClosable(tab);
  showCaption(document, tab);
  connect(document, &frmDocument::captionChanged, this, [this, document] { showCaption(document, tabOf(document)); });
}

// The bar measures all tabs with each one that comes, goes or is renamed: meanwhile it is hidden, and captions are shown at the end.
void DocumentTabs::changeMany(const std::function<void()>& change) {
  const QSignalBlocker quiet(this);
  const bool shown = !isHidden();
  hide();
  fills_ = true;
  change();
  fills_ = false;
  const QSet<QString> titles = std::exchange(waiting_, {});
  for (int tab = 0; tab < count(); ++tab)
    if (QObject* entry = entryAt(tab); titles.contains(titles_.value(entry))) showName(entry, tab);
  setVisible(shown);
}

void DocumentTabs::add(const QList<LateDocument*>& late) {
  changeMany([&] {
    for (LateDocument* one : late) {
      one->setParent(this);
      const int tab = addTab(QString());
      setTabData(tab, QVariant::fromValue<QObject*>(one));
      showCaption(one, tab);
    }
  });
}

void DocumentTabs::remove(const QList<LateDocument*>& late) {
  const QSet<const QObject*> going(late.begin(), late.end());
  changeMany([&] {
    for (int tab = count() - 1; tab >= 0; --tab)
      if (QObject* entry = entryAt(tab); going.contains(entry)) {
        removeTab(tab);
        forget(entry);
      }
  });
}

void DocumentTabs::remove(QObject* entry) {
  const QSignalBlocker quiet(this);
  if (const int tab = tabOf(entry); tab >= 0) removeTab(tab);
  forget(entry);
}

void DocumentTabs::forget(QObject* entry) {
  disconnect(entry, nullptr, this, nullptr);
  const QString was = titles_.take(entry);
  byTitle_[was].removeOne(entry);
  if (byTitle_[was].isEmpty()) byTitle_.remove(was);
  showNames(was);
  if (qobject_cast<LateDocument*>(entry)) entry->deleteLater();
}

void DocumentTabs::replace(LateDocument* late, frmDocument* document) {
  const QSignalBlocker quiet(this);
  const int from = tabOf(document), to = tabOf(late);
  if (from < 0 || to < 0) return;
  moveTab(from, to);
  remove(late);
}

void DocumentTabs::rename(const QHash<LateDocument*, QString>& paths) {
  changeMany([&] {
    for (int tab = 0; tab < count(); ++tab) {
      auto* late = qobject_cast<LateDocument*>(entryAt(tab));
      if (const auto path = paths.find(late); late && path != paths.end()) {
        late->path = *path;
        late->title = GetFileTitle(*path);
        showCaption(late, tab);
      }
    }
  });
}

void DocumentTabs::showAgain(LateDocument* late) { showCaption(late, tabOf(late)); }

void DocumentTabs::setActive(frmDocument* document) {
  const QSignalBlocker quiet(this);
  if (const int tab = tabOf(document); tab >= 0) setCurrentIndex(tab);
}

QObject* DocumentTabs::entryAt(int tab) const { return tabData(tab).value<QObject*>(); }
frmDocument* DocumentTabs::documentAt(int tab) const { return qobject_cast<frmDocument*>(entryAt(tab)); }

int DocumentTabs::tabOf(const QObject* entry) const {
  for (int tab = 0; tab < count(); ++tab)
    if (entryAt(tab) == entry) return tab;
  return -1;
}

QList<QObject*> DocumentTabs::entries() const {
  QList<QObject*> all;
  for (int tab = 0; tab < count(); ++tab) all << entryAt(tab);
  return all;
}

QList<frmDocument*> DocumentTabs::inOrder() const {
  QList<frmDocument*> documents;
  for (int tab = 0; tab < count(); ++tab)
    if (frmDocument* document = documentAt(tab)) documents << document;
  return documents;
}

QList<LateDocument*> DocumentTabs::late() const {
  QList<LateDocument*> all;
  for (int tab = 0; tab < count(); ++tab)
    if (auto* late = qobject_cast<LateDocument*>(entryAt(tab))) all << late;
  return all;
}

LateDocument* DocumentTabs::lateOn(const QString& path) const {
  if (path.isEmpty()) return nullptr;
  for (LateDocument* late : this->late())
    if (late->path == path) return late;
  return nullptr;
}

void DocumentTabs::showCaption(QObject* entry, int tab) {
  if (tab < 0) return;
  const Named named = namesOf(entry);
  setTabToolTip(tab, plainTip(named.path.isEmpty() ? named.title : named.path));
  const QString was = std::exchange(titles_[entry], named.title);
  if (was != named.title || !byTitle_.contains(was)) {
    byTitle_[was].removeOne(entry);
    if (byTitle_[was].isEmpty()) byTitle_.remove(was);
    else showNames(was);
    byTitle_[named.title] << entry;
  }
  if (byTitle_[named.title].size() > 1) showNames(named.title);
  else if (fills_) waiting_ << named.title;
  else showName(entry, tab);
}

void DocumentTabs::showName(const QObject* entry, int tab) { setTabText(tab, nameOf(entry).replace(u'&', QLatin1String("&&"))); }

void DocumentTabs::showNames(const QString& title) {
  if (fills_) {
    waiting_ << title;
    return;
  }
  for (const QObject* entry : byTitle_.value(title))
    if (const int tab = tabOf(entry); tab >= 0) showName(entry, tab);
}

QString DocumentTabs::nameOf(const QObject* entry) const {
  const Named named = namesOf(entry);
  const QString& path = named.path;
  qsizetype alike = 0;   // characters at the end of the path that another one has too
  for (const QObject* other : path.isEmpty() ? QList<QObject*>() : byTitle_.value(named.title)) {
    const auto* document = qobject_cast<const frmDocument*>(other);
    const QString otherPath = document ? document->CurrentFileName() : static_cast<const LateDocument*>(other)->path;
    if (otherPath == path) continue;
    const auto differs = std::mismatch(path.crbegin(), path.crend(), otherPath.crbegin(), otherPath.crend());
    alike = std::max<qsizetype>(alike, differs.first - path.crbegin());
  }
  if (alike == 0) return named.caption;
  const qsizetype from = GetFileDir(path.left(path.size() - alike)).size() + 1, folder = path.size() - named.title.size() - from;
  return nameForDisplay(path.mid(from, folder), 200) + named.caption;
}

void DocumentTabs::mousePressEvent(QMouseEvent* event) {
  pressed_ = event->button() == Qt::MiddleButton ? tabAt(event->pos()) : -1;
  if (event->button() == Qt::MiddleButton) return;
  // The window of the current tab may be minimised or behind others.
  QObject* again = event->button() == Qt::LeftButton && tabAt(event->pos()) == currentIndex() ? entryAt(currentIndex()) : nullptr;
  QTabBar::mousePressEvent(event);
  if (again) emit chosen(again);
}

void DocumentTabs::mouseReleaseEvent(QMouseEvent* event) {
  if (event->button() != Qt::MiddleButton) return QTabBar::mouseReleaseEvent(event);
  QObject* entry = pressed_ >= 0 && tabAt(event->pos()) == pressed_ ? entryAt(pressed_) : nullptr;
  pressed_ = -1;
  if (entry) emit closeWanted(entry);
}

void DocumentTabs::mouseDoubleClickEvent(QMouseEvent* event) {
  if (event->button() == Qt::LeftButton && tabAt(event->pos()) < 0) emit newWanted();
  else QTabBar::mouseDoubleClickEvent(event);
}

void DocumentTabs::contextMenuEvent(QContextMenuEvent* event) {
  if (QObject* entry = entryAt(tabAt(event->pos()))) emit menuWanted(entry, event->globalPos());
}

// Of a late document, which has no picture and no button yet, it is measured once for each name.
QSize DocumentTabs::tabSizeHint(int tab) const {
  if (fills_) return {1, 1};
  const bool hasButton = tabButton(tab, CloseButton::side(*this));
  QSize size = hasButton ? QSize() : sizes_.value(tabText(tab));
  if (!size.isValid()) {
    size = QTabBar::tabSizeHint(tab);
    if (!hasButton) {
      size.rwidth() += style()->pixelMetric(QStyle::PM_TabCloseIndicatorWidth, nullptr, this) + kBesideButton;
      sizes_.insert(tabText(tab), size);
    }
  }
  return {std::min(size.width(), fontMetrics().averageCharWidth() * kWidest), size.height()};
}

QSize DocumentTabs::minimumTabSizeHint(int tab) const { return tabSizeHint(tab); }
