// Small pictures of laid-out pages as the rows of a list. A picture is drawn when the list asks for it, so the number of pages does
// not matter.
#pragma once

#include <QAbstractListModel>
#include <QCache>
#include <QPixmap>

#include "page/PrintPages.h"

class PageThumbnails : public QAbstractListModel {
  Q_OBJECT
 public:
  static constexpr QSize kSize{110, 140};   // maximum, in pixels of the view

  using QAbstractListModel::QAbstractListModel;
  // Pages may be appended to the document between calls. Null, or fewer pages than before: all pictures are made again.
  void setDocument(const PrintDocument* document, double pixelRatio);

  int rowCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;

 private:
  const PrintDocument* document_ = nullptr;
  int count_ = 0;
  double pixelRatio_ = 1;
  mutable QCache<int, QPixmap> pictures_{300};
};
