#include <KestrelTrackerMac/SymbolImage.h>

#include <QPainter>
#include <QSvgRenderer>

#include <algorithm>

namespace kestrel::companion {

SymbolImage::SymbolImage(QQuickItem* parent) : QQuickPaintedItem(parent) { setAntialiasing(true); }

void SymbolImage::setName(const QString& name) {
  if (name_ != name) {
    name_ = name;
    Q_EMIT nameChanged();
    update();
  }
}

void SymbolImage::setColor(const QColor& color) {
  if (color_ != color) {
    color_ = color;
    Q_EMIT colorChanged();
    update();
  }
}

void SymbolImage::draw(QPainter& painter, const QRectF& place, const QString& name, const QColor& color) {
  QSvgRenderer renderer{QStringLiteral(":/symbols/%1.svg").arg(name)};
  renderer.render(&painter, place);
  painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
  painter.fillRect(place, color);
}

void SymbolImage::paint(QPainter* painter) {
  const qreal side = std::min(width(), height());
  draw(*painter, {(width() - side) / 2, (height() - side) / 2, side, side}, name_, color_);
}

}  // namespace kestrel::companion
