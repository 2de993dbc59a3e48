#include "app/look/Look.h"

#include <QApplication>
#include <QPalette>
#include <QProxyStyle>
#include <QStyleOption>
#include <algorithm>

#include "base/ArrowIcon.h"
#include "base/PaintedIcon.h"
#include "document/CMXRegistry.h"
#include "settings/modRegistry.h"

namespace {

void drawWindowButton(QPainter& painter, const QRect& rect, QStyle::StandardPixmap which, const QColor& ink) {
  painter.save();
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(QPen(ink, 1.5));
  painter.translate(QRectF(rect).center());
  const double unit = std::min(rect.width(), rect.height()) / 16.0;
  painter.scale(unit, unit);
  switch (which) {
    case QStyle::SP_TitleBarMinButton: painter.drawLine(QPointF(-4, 3), QPointF(4, 3)); break;
    case QStyle::SP_TitleBarMaxButton: painter.drawRect(QRectF(-4, -4, 8, 8)); break;
    case QStyle::SP_TitleBarCloseButton:
      painter.drawLine(QPointF(-4, -4), QPointF(4, 4));
      painter.drawLine(QPointF(-4, 4), QPointF(4, -4));
      break;
    default:   // the font's normal size
      painter.drawRect(QRectF(-4.5, -1.5, 6, 6));
      painter.drawPolyline(QPolygonF({{-1.5, -2}, {-1.5, -4.5}, {4.5, -4.5}, {4.5, 1.5}, {2, 1.5}}));
  }
  painter.restore();
}

// Draws the buttons of a maximised document window in the palette's colours: those of the style stay dark on a dark desktop.
class WindowButton : public PaintedIcon {
 public:
  explicit WindowButton(QStyle::StandardPixmap which) : which_(which) {}
  void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State) override {
    const auto group = mode == QIcon::Disabled ? QPalette::Disabled : QPalette::Active;
    drawWindowButton(*painter, rect, which_, QApplication::palette().color(group, QPalette::ButtonText));
  }
  QIconEngine* clone() const override { return new WindowButton(*this); }

 private:
  QStyle::StandardPixmap which_;
};

// The desktop's style, except that a menu higher than the screen scrolls; in columns it would be cut if they do not fit.
class Style : public QProxyStyle {
 public:
  int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget, QStyleHintReturn* returned) const override {
    if (hint == SH_EtchDisabledText) return 0;   // on a dark ground its shadow is brighter than the text
    return hint == SH_Menu_Scrollable ? 1 : QProxyStyle::styleHint(hint, option, widget, returned);
  }
  QIcon standardIcon(StandardPixmap which, const QStyleOption* option, const QWidget* widget) const override {
    const bool ours = which == SP_TitleBarMinButton || which == SP_TitleBarNormalButton || which == SP_TitleBarCloseButton;
    if (which == SP_ToolBarHorizontalExtensionButton) return arrowIcon(Arrow::right);
    if (which == SP_ToolBarVerticalExtensionButton) return arrowIcon(Arrow::down);
    return ours ? QIcon(new WindowButton(which)) : QProxyStyle::standardIcon(which, option, widget);
  }
  // Qt's own style outlines boxes and rings in a colour darker than the window, which is invisible on a dark one.
  void drawPrimitive(PrimitiveElement part, const QStyleOption* option, QPainter* painter, const QWidget* widget) const override {
    QProxyStyle::drawPrimitive(part, option, painter, widget);
    const bool ring = part == PE_IndicatorRadioButton, box = part == PE_IndicatorCheckBox || part == PE_IndicatorItemViewItemCheck;
    if (!(ring || box) || baseStyle()->name() != QLatin1String("fusion") || !ColorScheme::isDark(option->palette)) return;
    QColor ink = option->palette.color(QPalette::WindowText);
    ink.setAlpha(option->state & State_Enabled ? 150 : 70);
    painter->save();
    painter->setPen(ink);
    painter->setBrush(Qt::NoBrush);
    painter->setRenderHint(QPainter::Antialiasing, ring);
    if (ring) painter->drawEllipse(option->rect.adjusted(1, 1, -1, -1));
    else painter->drawRect(option->rect.adjusted(0, 0, -1, -1));
    painter->restore();
  }
  // Qt's own style draws the buttons of an inactive window in black on any colour.
  void drawComplexControl(ComplexControl control, const QStyleOptionComplex* option, QPainter* painter,
                          const QWidget* widget) const override {
    const auto* bar = control == CC_TitleBar ? qstyleoption_cast<const QStyleOptionTitleBar*>(option) : nullptr;
    if (!bar || baseStyle()->name() != QLatin1String("fusion"))
      return QProxyStyle::drawComplexControl(control, option, painter, widget);
    const bool minimised = bar->titleBarState & Qt::WindowMinimized, maximised = bar->titleBarState & Qt::WindowMaximized;
    const bool mayMinimise = bar->titleBarFlags & Qt::WindowMinimizeButtonHint,
               mayMaximise = bar->titleBarFlags & Qt::WindowMaximizeButtonHint;
    const struct {
      SubControl part;
      StandardPixmap picture;
      bool there;
    } buttons[] = {{SC_TitleBarMinButton, SP_TitleBarMinButton, mayMinimise && !minimised},
                   {SC_TitleBarMaxButton, SP_TitleBarMaxButton, mayMaximise && !maximised},
                   {SC_TitleBarNormalButton, SP_TitleBarNormalButton, (mayMinimise && minimised) || (mayMaximise && maximised)},
                   {SC_TitleBarCloseButton, SP_TitleBarCloseButton, bool(bar->titleBarFlags & Qt::WindowSystemMenuHint)}};
    QStyleOptionTitleBar rest(*bar);
    for (const auto& button : buttons) rest.subControls &= ~SubControls(button.part);
    rest.subControls &= ~SubControls(SC_TitleBarLabel);   // with a shadow
    QProxyStyle::drawComplexControl(control, &rest, painter, widget);
    const QColor ink =
        bar->palette.color(bar->titleBarState & QStyle::State_Active ? QPalette::HighlightedText : QPalette::WindowText);
    if (bar->subControls & SC_TitleBarLabel) {
      const QRect place = proxy()->subControlRect(CC_TitleBar, bar, SC_TitleBarLabel, widget);
      painter->setPen(ink);
      painter->drawText(place, Qt::AlignCenter | Qt::TextSingleLine,
                        painter->fontMetrics().elidedText(bar->text, Qt::ElideRight, place.width()));
    }
    for (const auto& button : buttons) {
      if (!button.there || !(bar->subControls & button.part)) continue;
      const QRect place = proxy()->subControlRect(CC_TitleBar, bar, button.part, widget);
      if (bar->activeSubControls & button.part) {   // under the mouse, or pressed
        QColor shade = ink;
        shade.setAlpha(bar->state & State_Sunken ? 90 : 50);
        painter->fillRect(place, shade);
      }
      drawWindowButton(*painter, place, button.picture, ink);
    }
  }
};

QPalette paletteOf(bool dark) {
  const auto slot = [dark](ColorSlot which) { return ColorScheme::schemeColor(static_cast<int>(which), dark); };
  const QColor text = slot(ColorSlot::Text), base = slot(ColorSlot::Window);
  const QColor window(dark ? 0x2B2F36 : 0xEFF0F1), button(dark ? 0x363B44 : 0xFCFCFC), off(dark ? 0x7C828C : 0x9A9DA0);
  QPalette palette(button, window);
  for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText}) {
    palette.setColor(role, text);
    palette.setColor(QPalette::Disabled, role, off);
  }
  palette.setColor(QPalette::Base, base);
  palette.setColor(QPalette::AlternateBase, slot(ColorSlot::LeftMargin));
  palette.setColor(QPalette::ToolTipBase, button);
  palette.setColor(QPalette::PlaceholderText, off);
  palette.setColor(QPalette::Highlight, QColor(dark ? 0x3A6EA5 : 0x3DAEE9));
  palette.setColor(QPalette::HighlightedText, Qt::white);
  palette.setColor(QPalette::Link, slot(ColorSlot::Bookmark));
  return palette;
}

}   // namespace

void useStyle() { QApplication::setStyle(new Style); }

void showLook(ControlOptions::Look look) {
  using Look = ControlOptions::Look;
  if (qApp->property("look").toInt() == static_cast<int>(look)) return;   // a new palette repaints every window
  qApp->setProperty("look", static_cast<int>(look));
  QApplication::setPalette(look == Look::desktop ? QPalette() : paletteOf(look == Look::dark));
}

void showStoredLook() {
  if (!modRegistry::KeyValid(modRegistry::kEditorKey)) return;
  CodeMax stored;
  CMXRegistry::applyTo(stored);
  showLook(ControlOptions::of(stored).look());
}
