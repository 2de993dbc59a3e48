#include "base/ArrowIcon.h"

#include <QApplication>
#include <QPalette>

#include "base/PaintedIcon.h"

namespace {

class ArrowEngine : public PaintedIcon {
 public:
  explicit ArrowEngine(Arrow arrow) : arrow_(arrow) {}

  void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State) override {
    const bool off = mode == QIcon::Disabled;
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(Qt::NoPen);
    painter->setBrush(QApplication::palette().color(off ? QPalette::Disabled : QPalette::Active, QPalette::ButtonText));
    painter->translate(QRectF(rect).center());
    const double unit = std::min(rect.width(), rect.height()) / 16.0;
    painter->scale(unit, unit);
    // The arrow is drawn as one to the right and turned.
    painter->rotate(arrow_ == Arrow::left || arrow_ == Arrow::first ? 180
                    : arrow_ == Arrow::up                           ? 270
                    : arrow_ == Arrow::down                         ? 90
                                                                    : 0);
    painter->drawPolygon(QPolygonF({{-3.5, -5.5}, {3.5, 0}, {-3.5, 5.5}}));
    if (arrow_ == Arrow::first || arrow_ == Arrow::last) painter->drawRect(QRectF(3.5, -5.5, 2, 11));
    painter->restore();
  }
  QIconEngine* clone() const override { return new ArrowEngine(*this); }

 private:
  Arrow arrow_;
};

}   // namespace

QIcon arrowIcon(Arrow arrow) { return QIcon(new ArrowEngine(arrow)); }
