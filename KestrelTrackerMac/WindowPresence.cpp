#include <KestrelTrackerMac/WindowPresence.h>

#include <QCoreApplication>
#include <QEvent>
#include <QGuiApplication>
#include <QSystemTrayIcon>
#include <QWindow>

namespace kestrel::companion {

WindowPresence::WindowPresence(QWindow& window, QObject* parent) : QObject(parent), window_(window) {
  QGuiApplication::setQuitOnLastWindowClosed(false);
  window_.installEventFilter(this);
}

void WindowPresence::comeForward() {
  window_.setWindowStates(window_.windowStates() & ~Qt::WindowMinimized);
  window_.show();
  window_.raise();
  window_.requestActivate();
}

bool WindowPresence::eventFilter(QObject* watched, QEvent* event) {
  if (watched == &window_ && event->type() == QEvent::Close && !QSystemTrayIcon::isSystemTrayAvailable()) {
    QCoreApplication::exit();
  }
  return QObject::eventFilter(watched, event);
}

}  // namespace kestrel::companion
