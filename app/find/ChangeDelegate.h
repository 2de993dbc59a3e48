// Paints a change within its line: the part of the line around it, however narrow the column is, with the change marked.
#pragma once

#include <QStyledItemDelegate>

class ChangeDelegate : public QStyledItemDelegate {
 public:
  // Of an index, as a QStringList: what stands before the change, the change itself, what stands behind it. Others are painted as usual.
  static constexpr int kParts = Qt::UserRole + 1;
  enum class Side { now, then };
  ChangeDelegate(Side side, QObject* parent) : QStyledItemDelegate(parent), side_(side) {}

  // The parts as they fit into `width`: the change is in sight, with some of what stands before it.
  static QStringList fitted(QStringList parts, const QFontMetrics& metrics, int width);

 protected:
  void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;

 private:
  const Side side_;
};
