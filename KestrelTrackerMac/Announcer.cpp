#include <KestrelTrackerMac/Announcer.h>

#include <QAccessible>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QString>
#include <QVariantMap>

namespace kestrel::companion {

namespace {

/// Qt 6.4 hands alerts to the screen readers of macOS and Windows, and drops them on the way to AT-SPI. There
/// they go as its announcement event, over the connection that Qt has to the accessibility bus.
void announceOverAtSpi(QAccessibleInterface& announced) {
  static constexpr int polite = 1;  // ATSPI_LIVE_POLITE
  const QDBusConnection bus{QStringLiteral("a11y")};
  if (!bus.isConnected()) {
    return;
  }
  const QString path = QStringLiteral("/org/a11y/atspi/accessible/%1").arg(QAccessible::uniqueId(&announced));
  QDBusMessage event = QDBusMessage::createSignal(path, QStringLiteral("org.a11y.atspi.Event.Object"),
                                                  QStringLiteral("Announcement"));
  const QDBusVariant text{announced.text(QAccessible::Name)};
  event << QString{} << polite << 0 << QVariant::fromValue(text) << QVariantMap{};
  bus.send(event);
}

}  // namespace

void Announcer::announce(QQuickItem* item) {
  QAccessibleEvent event{item, QAccessible::Alert};
  QAccessible::updateAccessibility(&event);
  if (QAccessibleInterface* announced =
          QAccessible::isActive() ? QAccessible::queryAccessibleInterface(item) : nullptr) {
    announceOverAtSpi(*announced);
  }
}

}  // namespace kestrel::companion
