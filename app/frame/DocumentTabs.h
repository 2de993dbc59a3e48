// The tab bar above the document windows: one tab for each window; the user may drag tabs into another order. It mirrors the
// windows; closing and activating are requested from the frame by signals.
#pragma once

#include <QHash>
#include <QTabBar>

class frmDocument;

class DocumentTabs : public QTabBar {
  Q_OBJECT
 public:
  explicit DocumentTabs(QWidget* parent);

  void add(frmDocument* document);
  void remove(frmDocument* document);
  void setActive(frmDocument* document);
  frmDocument* documentAt(int tab) const;
  int tabOf(const frmDocument* document) const;   // -1: none
  QList<frmDocument*> inOrder() const;
  // The caption; of a text whose title others have too, with as much of its folder before it as tells it from them.
  QString nameOf(const frmDocument* document) const;

 signals:
  void chosen(frmDocument* document);
  void closeWanted(frmDocument* document);
  void menuWanted(frmDocument* document, const QPoint& globalPosition);
  void newWanted();   // double click beside the tabs

 protected:
  void mousePressEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void contextMenuEvent(QContextMenuEvent* event) override;
  QSize tabSizeHint(int tab) const override;   // fixed bounds: with many tabs the bar scrolls
  QSize minimumTabSizeHint(int tab) const override;

 private:
  void showCaption(frmDocument* document);
  void showNames(const QString& title);         // of all with this title
  QHash<const frmDocument*, QString> titles_;   // as shown
  int pressed_ = -1;
};
