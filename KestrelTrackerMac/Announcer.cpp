#include <KestrelTrackerMac/Announcer.h>

#include <QAccessible>

namespace kestrel::companion {

void Announcer::announce(QQuickItem* item) {
  QAccessibleEvent event{item, QAccessible::Alert};
  QAccessible::updateAccessibility(&event);
}

}  // namespace kestrel::companion
