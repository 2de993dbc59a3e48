#include "base/dialog/MarkedRows.h"

#include <QPainter>
#include <QTextLayout>

void MarkedRows::paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const {
  QStyleOptionViewItem row = option;
  initStyleOption(&row, index);
  const QString text = row.text;
  row.text.clear();
  QStyle* style = row.widget->style();
  style->drawControl(QStyle::CE_ItemViewItem, &row, painter, row.widget);
  const QRect place = style->subElementRect(QStyle::SE_ItemViewItemText, &row, row.widget).adjusted(2, 0, -2, 0);
  const bool selected = row.state & QStyle::State_Selected;
  QTextLayout layout(text, row.font);
  QList<QTextLayout::FormatRange> formats;
  QTextCharFormat bold, grey;
  bold.setFontWeight(QFont::Bold);
  grey.setForeground(row.palette.brush(QPalette::Normal, selected ? QPalette::HighlightedText : QPalette::PlaceholderText));
  const int greyFrom = index.data(kGreyFrom).toInt();
  formats.append({greyFrom, int(text.size()) - greyFrom, grey});
  const QList<QVariant> marks = index.data(kMarks).toList();
  for (qsizetype i = 0; i + 1 < marks.size(); i += 2) {
    QTextCharFormat mark = bold;
    if (marks[i].toInt() >= greyFrom) mark.merge(grey);
    formats.append({marks[i].toInt(), marks[i + 1].toInt(), mark});
  }
  layout.setFormats(formats);
  QTextOption oneLine;
  oneLine.setWrapMode(QTextOption::NoWrap);
  layout.setTextOption(oneLine);
  layout.beginLayout();
  layout.createLine();
  layout.endLayout();
  painter->save();
  painter->setClipRect(place);
  painter->setPen(row.palette.color(QPalette::Normal, selected ? QPalette::HighlightedText : QPalette::Text));
  layout.draw(painter, QPointF(place.left(), place.top() + (place.height() - layout.boundingRect().height()) / 2));
  painter->restore();
}
