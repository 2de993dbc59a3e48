// Shows laid-out pages on the screen, one or two side by side, at any zoom, with scroll bars. Draws only visible pages.
#pragma once

#include <QAbstractScrollArea>

#include "page/PrintPages.h"

class PageView : public QAbstractScrollArea {
  Q_OBJECT
 public:
  enum class Fit { page, width, none };
  explicit PageView(QWidget* parent = nullptr);

  void setDocument(const PrintDocument* document);   // null: nothing; call again after pages were added
  void setAcross(int pages);                         // 1 or 2
  void setFit(Fit fit);
  void setZoom(double factor);   // 1 = the size of the paper; switches `fit` off
  double zoom() const { return zoom_; }
  int currentPage() const { return current_; }   // from 0: the page nearest to the top of the view
  void goTo(int page);
  // Marks a part of a page's text (find) and scrolls to it; page -1 marks nothing.
  void mark(int page, qint32 start, qint32 length);

 signals:
  void currentPageChanged(int page);
  void zoomChanged(double factor);

 protected:
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void scrollContentsBy(int dx, int dy) override;
  void wheelEvent(QWheelEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

 private:
  int columns() const;              // pages side by side, at most the number of pages
  QSizeF sheet() const;             // in pixels of the view
  QRectF placeOf(int page) const;   // without scrolling
  void relayout();
  void drawMark(QPainter& painter) const;
  void updateCurrent();

  const PrintDocument* document_ = nullptr;
  int across_ = 1, current_ = 0, markPage_ = -1;
  qint32 markStart_ = 0, markLength_ = 0;
  Fit fit_ = Fit::page;
  double zoom_ = 1;
};
