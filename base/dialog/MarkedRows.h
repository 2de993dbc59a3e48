// Rows of a list that show how they fit what was typed: the typed parts in bold, and what follows the name in grey.
#pragma once

#include <QStyledItemDelegate>

class MarkedRows : public QStyledItemDelegate {
 public:
  // Of a row: a list of numbers, in pairs first character and length of what is bold; the first character that is grey.
  static constexpr int kMarks = Qt::UserRole + 1, kGreyFrom = Qt::UserRole + 2;
  using QStyledItemDelegate::QStyledItemDelegate;
  void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
};
