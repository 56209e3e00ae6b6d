#pragma once

#include <QColor>
#include <QQuickPaintedItem>
#include <QRectF>
#include <QString>
#include <QtQmlIntegration>

class QPainter;

namespace kestrel::companion {

/// Draws one of the symbols in one colour, at the resolution of the screen it is on. Silent to screen
/// readers: the text beside a symbol says it all.
class SymbolImage : public QQuickPaintedItem {
  Q_OBJECT
  QML_ELEMENT
  Q_PROPERTY(QString name READ name WRITE setName NOTIFY nameChanged REQUIRED)
  Q_PROPERTY(QColor color READ color WRITE setColor NOTIFY colorChanged REQUIRED)

 public:
  explicit SymbolImage(QQuickItem* parent = nullptr);

  /// The symbol's name, such as `message.fill`; there is a picture of that name.
  QString name() const { return name_; }
  void setName(const QString& name);

  /// The colour of its lines.
  QColor color() const { return color_; }
  void setColor(const QColor& color);

  /// Draws the symbol `name` in `color` into `place`. What `painter` has painted there before takes the
  /// colour too.
  static void draw(QPainter& painter, const QRectF& place, const QString& name, const QColor& color);

  void paint(QPainter* painter) override;

 Q_SIGNALS:
  void nameChanged();
  void colorChanged();

 private:
  QString name_;
  QColor color_;
};

}  // namespace kestrel::companion
