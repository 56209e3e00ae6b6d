#pragma once

#include <QObject>
#include <QQuickItem>
#include <QtQmlIntegration>

namespace kestrel::companion {

/// Draws the attention of screen readers to what changed without a person having moved there.
class Announcer : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_SINGLETON

 public:
  using QObject::QObject;

  /// Tells assistive technology that what `item` is named is worth saying now. Does nothing where none
  /// listens.
  Q_INVOKABLE void announce(QQuickItem* item);
};

}  // namespace kestrel::companion
