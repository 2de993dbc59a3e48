#include "app/frame/DocumentTabs.h"

#include <QContextMenuEvent>
#include <QMouseEvent>
#include <algorithm>
#include <utility>

#include "app/look/Tips.h"
#include "base/Strings.h"
#include "document/frmDocument.h"

namespace {
constexpr int kWidest = 32;   // characters; longer names are cut in the middle
}

DocumentTabs::DocumentTabs(QWidget* parent) : QTabBar(parent) {
  setObjectName(QStringLiteral("documentTabs"));
  setAccessibleName(tr("Open documents"));
  setDocumentMode(true);
  setTabsClosable(true);
  setMovable(true);
  setExpanding(false);
  setUsesScrollButtons(true);
  setElideMode(Qt::ElideMiddle);
  setFocusPolicy(Qt::NoFocus);   // keys belong to the text; Ctrl+Tab changes tabs
  connect(this, &QTabBar::currentChanged, this, [this](int tab) {
    if (frmDocument* document = documentAt(tab)) emit chosen(document);
  });
  connect(this, &QTabBar::tabCloseRequested, this, [this](int tab) {
    if (frmDocument* document = documentAt(tab)) emit closeWanted(document);
  });
}

void DocumentTabs::add(frmDocument* document) {
  const QSignalBlocker quiet(this);
  const int tab = addTab(QString());
  setTabData(tab, QVariant::fromValue<QObject*>(document));
  showCaption(document);
  connect(document, &frmDocument::captionChanged, this, [this, document] { showCaption(document); });
}

void DocumentTabs::remove(frmDocument* document) {
  const QSignalBlocker quiet(this);
  if (const int tab = tabOf(document); tab >= 0) removeTab(tab);
  disconnect(document, nullptr, this, nullptr);
  showNames(titles_.take(document));
}

void DocumentTabs::setActive(frmDocument* document) {
  const QSignalBlocker quiet(this);
  if (const int tab = tabOf(document); tab >= 0) setCurrentIndex(tab);
}

frmDocument* DocumentTabs::documentAt(int tab) const { return static_cast<frmDocument*>(tabData(tab).value<QObject*>()); }

int DocumentTabs::tabOf(const frmDocument* document) const {
  for (int tab = 0; tab < count(); ++tab)
    if (documentAt(tab) == document) return tab;
  return -1;
}

QList<frmDocument*> DocumentTabs::inOrder() const {
  QList<frmDocument*> documents;
  for (int tab = 0; tab < count(); ++tab) documents << documentAt(tab);
  return documents;
}

void DocumentTabs::showCaption(frmDocument* document) {
  const int tab = tabOf(document);
  if (tab < 0) return;
  const QString& name = document->CurrentFileName();
  setTabToolTip(tab, plainTip(name.isEmpty() ? document->CurrentFileTitle() : name));
  const QString was = std::exchange(titles_[document], document->CurrentFileTitle());
  if (!was.isEmpty() && was != document->CurrentFileTitle()) showNames(was);
  showNames(document->CurrentFileTitle());
}

void DocumentTabs::showNames(const QString& title) {
  for (int tab = 0; tab < count(); ++tab)
    if (const frmDocument* document = documentAt(tab); document->CurrentFileTitle() == title)
      setTabText(tab, nameOf(document).replace(u'&', QLatin1String("&&")));
}

QString DocumentTabs::nameOf(const frmDocument* document) const {
  const QString& path = document->CurrentFileName();
  const QString& title = document->CurrentFileTitle();
  qsizetype alike = 0;   // characters at the end of the path that another one has too
  for (int tab = 0; tab < count() && !path.isEmpty(); ++tab) {
    const frmDocument* other = documentAt(tab);
    if (other->CurrentFileTitle() != title || other->CurrentFileName() == path) continue;
    const auto differs =
        std::mismatch(path.crbegin(), path.crend(), other->CurrentFileName().crbegin(), other->CurrentFileName().crend());
    alike = std::max<qsizetype>(alike, differs.first - path.crbegin());
  }
  if (alike == 0) return document->Caption();
  const qsizetype from = GetFileDir(path.left(path.size() - alike)).size() + 1, folder = path.size() - title.size() - from;
  return nameForDisplay(path.mid(from, folder), 200) + document->Caption();
}

void DocumentTabs::mousePressEvent(QMouseEvent* event) {
  pressed_ = event->button() == Qt::MiddleButton ? tabAt(event->pos()) : -1;
  if (event->button() == Qt::MiddleButton) return;
  // The window of the current tab may be minimised or behind others.
  frmDocument* again =
      event->button() == Qt::LeftButton && tabAt(event->pos()) == currentIndex() ? documentAt(currentIndex()) : nullptr;
  QTabBar::mousePressEvent(event);
  if (again) emit chosen(again);
}

void DocumentTabs::mouseReleaseEvent(QMouseEvent* event) {
  if (event->button() != Qt::MiddleButton) return QTabBar::mouseReleaseEvent(event);
  frmDocument* document = pressed_ >= 0 && tabAt(event->pos()) == pressed_ ? documentAt(pressed_) : nullptr;
  pressed_ = -1;
  if (document) emit closeWanted(document);
}

void DocumentTabs::mouseDoubleClickEvent(QMouseEvent* event) {
  if (event->button() == Qt::LeftButton && tabAt(event->pos()) < 0) emit newWanted();
  else QTabBar::mouseDoubleClickEvent(event);
}

void DocumentTabs::contextMenuEvent(QContextMenuEvent* event) {
  if (frmDocument* document = documentAt(tabAt(event->pos()))) emit menuWanted(document, event->globalPos());
}

QSize DocumentTabs::tabSizeHint(int tab) const {
  const QSize size = QTabBar::tabSizeHint(tab);
  return {std::min(size.width(), fontMetrics().averageCharWidth() * kWidest), size.height()};
}

QSize DocumentTabs::minimumTabSizeHint(int tab) const { return tabSizeHint(tab); }
