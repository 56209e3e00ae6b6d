#pragma once

#include <QFont>
#include <QObject>
#include <QString>
#include <QtQmlIntegration>

namespace kestrel::companion {

/// Sets digits in cells of equal width, in fonts whose digits differ in width.
class TabularText : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_SINGLETON

 public:
  using QObject::QObject;

  /// `text` as rich text in which every digit takes the width of the font's widest and stands in the middle
  /// of it, but for a digit at the very start, which begins where its strokes do. `text` is plain; what
  /// markup takes as its own is escaped. `font` has no kerning, which would move digits out of their cells.
  Q_INVOKABLE QString markup(const QString& text, const QFont& font) const;

  /// The width of `text` in pixels when its digits stand in such cells.
  Q_INVOKABLE qreal width(const QString& text, const QFont& font) const;
};

}  // namespace kestrel::companion
