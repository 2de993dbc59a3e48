#include "app/look/Icons.h"

#include <QApplication>
#include <QFile>
#include <QHash>
#include <QPalette>
#include <QSvgRenderer>

#include "base/PaintedIcon.h"
#include "base/Workspace.h"

// The pictures are in a static library, from which the linker takes only referenced objects. Must stand outside any namespace.
static void keepPictures() { Q_INIT_RESOURCE(app); }

namespace {

constexpr char kInk[] = "#232629", kAccent[] = "#2980b9";   // the two colours of the drawings

struct Drawings {
  QHash<QString, QByteArray> read;
};

QByteArray drawing(const QString& name) {
  auto& read = Workspace::current().part<Drawings>().read;
  if (read.isEmpty()) keepPictures();
  auto it = read.find(name);
  if (it == read.end()) {
    QFile file(QStringLiteral(":/icons/%1.svg").arg(name));
    it = read.insert(name, file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray());
  }
  return *it;
}

// Draws in the current colours of the palette, so that it follows a change of the desktop's scheme.
class DrawnIcon : public PaintedIcon {
 public:
  explicit DrawnIcon(QString name) : name_(std::move(name)) {}

  void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State) override {
    const QPalette palette = QApplication::palette();
    QColor ink = palette.color(mode == QIcon::Disabled ? QPalette::Disabled : QPalette::Active, QPalette::ButtonText);
    QColor accent = ink;
    if (mode != QIcon::Disabled) {
      const bool dark = palette.color(QPalette::Button).lightness() < 128;
      accent = QColor(dark ? QLatin1String("#5dade2") : QLatin1String(kAccent));
      if (mode == QIcon::Selected) ink = accent = palette.color(QPalette::HighlightedText);
    }
    QByteArray svg = drawing(name_);
    svg.replace(kInk, ink.name().toLatin1()).replace(kAccent, accent.name().toLatin1());
    QSvgRenderer(svg).render(painter, rect);
  }
  QIconEngine* clone() const override { return new DrawnIcon(*this); }
  bool isNull() override { return drawing(name_).isEmpty(); }

 private:
  QString name_;
};

}   // namespace

QIcon icons::byName(const QString& name) {
  if (!name.startsWith(QLatin1String("zelkor-")) && QIcon::hasThemeIcon(name)) return QIcon::fromTheme(name);
  return drawing(name).isEmpty() ? QIcon() : QIcon(new DrawnIcon(name));
}

QIcon icons::application() {
  if (QIcon::hasThemeIcon(QStringLiteral("zelkor"))) return QIcon::fromTheme(QStringLiteral("zelkor"));
  QIcon icon;
  QSvgRenderer renderer(drawing(QStringLiteral("zelkor")));
  for (const int size : {16, 22, 32, 48, 128}) {
    QPixmap drawn(size, size);
    drawn.fill(Qt::transparent);
    QPainter painter(&drawn);
    renderer.render(&painter);
    painter.end();
    icon.addPixmap(drawn);
  }
  return icon;
}
