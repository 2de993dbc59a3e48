// Base of icons that are painted when they are shown: their pixmap is made by the painter.
#pragma once

#include <QIconEngine>
#include <QPainter>

class PaintedIcon : public QIconEngine {
 public:
  QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
    QPixmap drawn(size);
    drawn.fill(Qt::transparent);
    QPainter painter(&drawn);
    paint(&painter, drawn.rect(), mode, state);
    return drawn;
  }
};
