#include "base/dialog/FlowLayout.h"

#include <QWidget>
#include <algorithm>

FlowLayout::FlowLayout(QWidget* parent) : QLayout(parent) {
  setContentsMargins(0, 0, 0, 0);
  setSpacing(3);
}

FlowLayout::~FlowLayout() {
  for (const Item& each : items_) delete each.item;
}

void FlowLayout::addGroup(const QList<QWidget*>& widgets) {
  for (QWidget* widget : widgets) {
    addWidget(widget);
    items_.back().follows = widget != widgets.first();
  }
}

QLayoutItem* FlowLayout::itemAt(int index) const {
  return index >= 0 && index < count() ? items_[static_cast<std::size_t>(index)].item : nullptr;
}

QLayoutItem* FlowLayout::takeAt(int index) {
  QLayoutItem* item = itemAt(index);
  if (item) items_.erase(items_.begin() + index);
  return item;
}

std::size_t FlowLayout::groupEnd(std::size_t first) const {
  std::size_t end = first + 1;
  while (end < items_.size() && items_[end].follows) ++end;
  return end;
}

QSize FlowLayout::groupSize(std::size_t first, std::size_t end) const {
  QSize size(-spacing(), 0);
  for (std::size_t i = first; i < end; ++i) {
    const QSize one = items_[i].item->sizeHint();
    size = QSize(size.width() + spacing() + one.width(), std::max(size.height(), one.height()));
  }
  return size;
}

QSize FlowLayout::sizeHint() const { return items_.empty() ? QSize(0, 0) : groupSize(0, items_.size()); }

QSize FlowLayout::minimumSize() const {
  QSize least(0, 0);
  for (std::size_t first = 0; first < items_.size(); first = groupEnd(first))
    least = least.expandedTo(groupSize(first, groupEnd(first)));
  return least;
}

void FlowLayout::setGeometry(const QRect& rect) {
  QLayout::setGeometry(rect);
  place(rect, true);
}

int FlowLayout::place(const QRect& rect, bool move) const {
  int left = rect.left(), top = rect.top(), bottom = top;
  for (std::size_t first = 0; first < items_.size();) {
    const std::size_t end = groupEnd(first);
    const QSize group = groupSize(first, end);
    if (left > rect.left() && left + group.width() > rect.left() + rect.width()) {
      left = rect.left();
      top = bottom + spacing();
    }
    bottom = std::max(bottom, top + group.height());
    for (; first < end; ++first) {
      const QSize size = items_[first].item->sizeHint();
      if (move) items_[first].item->setGeometry({QPoint(left, top + (group.height() - size.height()) / 2), size});
      left += size.width() + spacing();
    }
  }
  return bottom - rect.top();
}
