#pragma once

#include <KestrelTrackerMac/Appearance.h>
#include <KestrelTrackerMac/Palette.h>

#include <QObject>
#include <QtQmlIntegration>

namespace kestrel::companion {

/// How the views look: the colours of the scheme in force and the sizes of type. One per engine; main thread.
class Theme : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_SINGLETON
  Q_PROPERTY(bool dark READ dark NOTIFY darkChanged)
  Q_PROPERTY(bool reduceMotion READ reduceMotion NOTIFY reduceMotionChanged)
  Q_PROPERTY(kestrel::companion::Palette colors READ colors NOTIFY darkChanged)

  Q_PROPERTY(qreal largeTitle READ largeTitle CONSTANT)
  Q_PROPERTY(qreal title READ title CONSTANT)
  Q_PROPERTY(qreal secondTitle READ secondTitle CONSTANT)
  Q_PROPERTY(qreal thirdTitle READ thirdTitle CONSTANT)
  Q_PROPERTY(qreal body READ body CONSTANT)
  Q_PROPERTY(qreal callout READ callout CONSTANT)
  Q_PROPERTY(qreal footnote READ footnote CONSTANT)
  Q_PROPERTY(qreal caption READ caption CONSTANT)
  Q_PROPERTY(qreal smallestCaption READ smallestCaption CONSTANT)

 public:
  explicit Theme(QObject* parent = nullptr);

  /// Whether the dark scheme is in force.
  bool dark() const { return appearance_.dark(); }

  /// Whether the system asks for no motion.
  bool reduceMotion() const { return appearance_.reduceMotion(); }

  const Palette& colors() const;

  // The sizes of type in pixels, relative to the size of the system's interface font.
  qreal largeTitle() const { return 2.0 * body(); }
  qreal title() const { return 1.57 * body(); }
  qreal secondTitle() const { return 1.3 * body(); }
  qreal thirdTitle() const { return 1.15 * body(); }
  qreal body() const;
  qreal callout() const { return 0.93 * body(); }  ///< Also the subheadline.
  qreal footnote() const { return 0.86 * body(); }
  qreal caption() const { return 0.82 * body(); }
  qreal smallestCaption() const { return 0.79 * body(); }

 Q_SIGNALS:
  void darkChanged();
  void reduceMotionChanged();

 private:
  Appearance appearance_;
};

}  // namespace kestrel::companion
