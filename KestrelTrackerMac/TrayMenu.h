#pragma once

#include <QMenu>
#include <QObject>
#include <QSystemTrayIcon>

namespace kestrel::companion {

class MessagesCompanionCoordinator;
class WindowPresence;

/// The application's symbol in the desktop's tray and the menu behind it: open, scan, quit. Invisible while
/// the desktop has no tray. Main thread only, beside a QApplication; the two that it works on outlive it.
class TrayMenu : public QObject {
  Q_OBJECT

 public:
  TrayMenu(MessagesCompanionCoordinator& coordinator, WindowPresence& presence, QObject* parent = nullptr);

 private:
  QMenu menu_;
  QSystemTrayIcon icon_;
};

}  // namespace kestrel::companion
