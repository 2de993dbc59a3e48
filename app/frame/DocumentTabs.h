// The tab bar above the document windows: one tab for each window, and one for each document that is opened when it is first shown
// (LateDocument.h); the user may drag tabs into another order. Closing and activating are requested from the frame by signals.
//
// What a tab stands for is a frmDocument or a LateDocument.
#pragma once

#include <QHash>
#include <QSet>
#include <QTabBar>
#include <functional>

class LateDocument;
class frmDocument;

class DocumentTabs : public QTabBar {
  Q_OBJECT
 public:
  explicit DocumentTabs(QWidget* parent);

  void add(frmDocument* document);
  void add(const QList<LateDocument*>& late);                // behind the others; takes them
  void remove(QObject* entry);                               // a LateDocument is destroyed, later
  void replace(LateDocument* late, frmDocument* document);   // the document, which has a tab, takes the place of the other
  void remove(const QList<LateDocument*>& late);             // destroyed, later
  void rename(const QHash<LateDocument*, QString>& paths);   // to these whole paths
  void showAgain(LateDocument* late);                        // after a change of its state
  void setActive(frmDocument* document);
  QObject* entryAt(int tab) const;   // null: no such tab
  frmDocument* documentAt(int tab) const;
  int tabOf(const QObject* entry) const;   // -1: none
  QList<frmDocument*> inOrder() const;
  QList<QObject*> entries() const;   // in order
  QList<LateDocument*> late() const;
  LateDocument* lateOn(const QString& path) const;   // the first one; null: none
  // The caption; of a text whose title others have too, with as much of its folder before it as tells it from them.
  QString nameOf(const QObject* entry) const;
  struct Named {
    QString path, title, caption;   // caption: the title, with "*" behind it while modified
  };
  static Named namesOf(const QObject* entry);

 signals:
  void chosen(QObject* entry);
  void closeWanted(QObject* entry);
  void menuWanted(QObject* entry, const QPoint& globalPosition);
  void newWanted();   // double click beside the tabs

 protected:
  bool event(QEvent* event) override;
  void changeEvent(QEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void contextMenuEvent(QContextMenuEvent* event) override;
  QSize tabSizeHint(int tab) const override;   // fixed bounds: with many tabs the bar scrolls
  QSize minimumTabSizeHint(int tab) const override;

 private:
  void makeClosable(int tab);
  void showCaption(QObject* entry, int tab);
  void showName(const QObject* entry, int tab);
  void changeMany(const std::function<void()>& change);
  void forget(QObject* entry);
  void showNames(const QString& title);       // of all with this title
  QHash<const QObject*, QString> titles_;     // as shown
  QHash<QString, QList<QObject*>> byTitle_;   // the same the other way round
  mutable QHash<QString, QSize> sizes_;       // of tabs without a button, by their text
  bool fills_ = false;                        // in changeMany
  QSet<QString> waiting_;                     // titles whose captions are to be shown at its end
  int pressed_ = -1;
};
