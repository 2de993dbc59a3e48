#include "print/PageThumbnails.h"

#include <QPainter>

void PageThumbnails::setDocument(const PrintDocument* document, double pixelRatio) {
  const int count = document ? static_cast<int>(document->pages.size()) : 0;
  pixelRatio_ = pixelRatio;
  if (document != document_ || count < count_) {
    beginResetModel();
    document_ = document;
    count_ = count;
    pictures_.clear();
    endResetModel();
  } else if (count > count_) {
    beginInsertRows({}, count_, count - 1);
    count_ = count;
    endInsertRows();
  }
}

int PageThumbnails::rowCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : count_; }

QVariant PageThumbnails::data(const QModelIndex& index, int role) const {
  const int page = index.row();
  if (!index.isValid() || page >= count_) return {};
  if (role == Qt::DisplayRole) return QString::number(page + 1);
  if (role == Qt::TextAlignmentRole) return int(Qt::AlignCenter);
  if (role != Qt::DecorationRole) return {};
  if (const QPixmap* known = pictures_.object(page)) return *known;
  const QSizeF sheet(document_->layout.fullRectPoints().size());
  const double scale = std::min(kSize.width() / sheet.width(), kSize.height() / sheet.height());
  auto* picture = new QPixmap((sheet * scale * pixelRatio_).toSize());
  picture->setDevicePixelRatio(pixelRatio_);
  picture->fill(Qt::white);
  {
    QPainter painter(picture);
    painter.setPen(Qt::lightGray);
    painter.drawRect(QRectF(0, 0, sheet.width() * scale - 1, sheet.height() * scale - 1));
    painter.scale(scale, scale);
    drawPage(painter, *document_, page);
  }
  pictures_.insert(page, picture);
  return *picture;
}
