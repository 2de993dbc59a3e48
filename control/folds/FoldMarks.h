// What shows a fold: the handle in the margin, and the box behind a folded row that counts what is hidden.
#pragma once

#include <QPainter>
#include <QRectF>
#include <QString>

class TextView;

namespace foldMarks {

int handleWidth(int lineHeight);   // of the column in the margin
void paintHandle(QPainter& painter, const QRectF& cell, bool folded, const QColor& ink);

// Behind the text of a shown line, or at the window's edge if the text goes further; in the pane. Empty: nothing is hidden.
QRectF boxOf(TextView& view, std::int64_t line);
QString boxText(std::int64_t lines);
void paintBox(QPainter& painter, const QRectF& box, std::int64_t lines, const QColor& back, const QColor& edge, const QColor& ink);

}   // namespace foldMarks
