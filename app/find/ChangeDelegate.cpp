#include "app/find/ChangeDelegate.h"

#include <QApplication>
#include <QPainter>
#include <algorithm>

#include "control/view/ColorScheme.h"

namespace {
constexpr int kBeforePart =
    3;   // at least so many parts of the width are left to the change and what is behind it, of one more in all
}   // namespace

QStringList ChangeDelegate::fitted(QStringList parts, const QFontMetrics& metrics, int width) {
  QString& before = parts[0];
  const int change = metrics.horizontalAdvance(parts[1]), behind = metrics.horizontalAdvance(parts[2]);
  const int room = std::max(width - change - behind, width / (kBeforePart + 1));
  if (metrics.horizontalAdvance(before) > room &&
      change + metrics.horizontalAdvance(before) > width - metrics.averageCharWidth() * 8)
    before = metrics.elidedText(before, Qt::ElideLeft, room);
  const int left = width - metrics.horizontalAdvance(before);
  parts[1] = metrics.elidedText(parts[1], Qt::ElideRight, left);
  parts[2] = metrics.elidedText(parts[2], Qt::ElideRight, left - metrics.horizontalAdvance(parts[1]));
  return parts;
}

void ChangeDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const {
  QStringList parts = index.data(kParts).toStringList();
  if (parts.size() != 3) return QStyledItemDelegate::paint(painter, option, index);
  QStyleOptionViewItem item = option;
  initStyleOption(&item, index);
  item.text.clear();
  const QStyle* const style = item.widget ? item.widget->style() : QApplication::style();
  style->drawControl(QStyle::CE_ItemViewItem, &item, painter, item.widget);
  const QRect cell = item.rect.adjusted(4, 0, -4, 0);
  parts = fitted(parts, item.fontMetrics, cell.width());

  const bool dark = ColorScheme::isDark(item.palette), selected = item.state.testFlag(QStyle::State_Selected);
  const QColor mark = side_ == Side::now ? (dark ? QColor(0x78, 0x30, 0x30) : QColor(0xFF, 0xD0, 0xCC))
                                         : (dark ? QColor(0x24, 0x60, 0x34) : QColor(0xC4, 0xF0, 0xC8));
  const QPalette::ColorGroup group = item.state.testFlag(QStyle::State_Active) ? QPalette::Active : QPalette::Inactive;
  const QColor plain = item.palette.color(group, selected ? QPalette::HighlightedText : QPalette::Text);
  painter->save();
  painter->setFont(item.font);
  painter->setClipRect(cell);
  int x = cell.left();
  for (int i = 0; i < 3; ++i) {
    const int width = item.fontMetrics.horizontalAdvance(parts[i]);
    if (i == 1)
      painter->fillRect(QRect(x, cell.top() + 1, std::max(width, 2), cell.height() - 2), mark);   // thin: nothing is there
    painter->setPen(i == 1 ? item.palette.color(QPalette::Active, QPalette::Text) : plain);
    painter->drawText(QRect(x, cell.top(), width + 1, cell.height()), Qt::AlignVCenter | Qt::TextSingleLine, parts[i]);
    x += width;
  }
  painter->restore();
}
