#pragma once

#include <QObject>
#include <QVariantMap>

#include <optional>

class QDBusPendingCall;
class QDBusVariant;
class QEvent;

namespace kestrel::companion {

/// What the system asks of every window: dark or light, motion or none. Follows both while the application
/// runs; a property notifies only when its value differs from the one before. Lives on the main thread,
/// beside a QGuiApplication.
///
/// The desktop says it through its portal (`org.freedesktop.portal.Settings`): `color-scheme` and
/// `reduced-motion` of `org.freedesktop.appearance`, and `enable-animations` of
/// `org.gnome.desktop.interface`, which desktops had before. Where there is no portal, or it has no
/// preference, the scheme is that of the system's palette, and motion is not reduced.
class Appearance : public QObject {
  Q_OBJECT

 public:
  explicit Appearance(QObject* parent = nullptr);

  /// Whether the dark scheme is asked for.
  bool dark() const { return dark_; }

  /// Whether the system asks for no motion.
  bool reduceMotion() const { return reduceMotion_; }

 Q_SIGNALS:
  void darkChanged();
  void reduceMotionChanged();

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private Q_SLOTS:
  void settingChanged(const QString& group, const QString& key, const QDBusVariant& value);

 private:
  void readPortal();
  void take(const QDBusPendingCall& reply);
  void forgetPortal();
  void note(const QString& group, const QString& key, const QVariant& value);
  void decide();

  std::optional<bool> portalDark_;
  std::optional<bool> portalReducedMotion_;
  std::optional<bool> portalAnimations_;
  bool dark_ = false;
  bool reduceMotion_ = false;
};

}  // namespace kestrel::companion
