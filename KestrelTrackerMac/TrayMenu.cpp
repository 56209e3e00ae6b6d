#include <KestrelTrackerMac/MessagesCompanionCoordinator.h>
#include <KestrelTrackerMac/Palette.h>
#include <KestrelTrackerMac/SymbolImage.h>
#include <KestrelTrackerMac/TrayMenu.h>
#include <KestrelTrackerMac/WindowPresence.h>

#include <QColor>
#include <QCoreApplication>
#include <QCursor>
#include <QIcon>
#include <QPainter>
#include <QPixmap>
#include <QString>

namespace kestrel::companion {

namespace {

/// The symbol in a blue that shows on light panels and on dark ones; macOS tints it itself.
QIcon symbol() {
  const QColor blue = Palette::dark().tint;
  QIcon icon;
  for (const int side : {16, 22, 24, 32, 48, 64}) {
    QPixmap picture{side, side};
    picture.fill(Qt::transparent);
    QPainter painter{&picture};
    SymbolImage::draw(painter, picture.rect(), QStringLiteral("message.badge.waveform"), blue);
    painter.end();
    icon.addPixmap(picture);
  }
  icon.setIsMask(true);
  return icon;
}

}  // namespace

TrayMenu::TrayMenu(MessagesCompanionCoordinator& coordinator, WindowPresence& presence, QObject* parent)
    : QObject(parent), icon_(symbol()) {
  menu_.addAction(tr("Open Tidewell"), &presence, &WindowPresence::comeForward);
  menu_.addAction(tr("Scan Messages Activity"), &presence, [&coordinator, &presence] {
    // First the scan: showing the window probes the access, which would leave no state to scan from.
    coordinator.scan();
    presence.comeForward();
  });
  menu_.addSeparator();
  menu_.addAction(tr("Quit Tidewell"), qApp, &QCoreApplication::quit);

  menu_.setWindowTitle(tr("Tidewell"));  // what screen readers call it
  icon_.setToolTip(tr("Tidewell"));
  icon_.setContextMenu(&menu_);
  connect(&icon_, &QSystemTrayIcon::activated, this, [this](QSystemTrayIcon::ActivationReason reason) {
    if (reason == QSystemTrayIcon::Trigger) {
      menu_.popup(QCursor::pos());
    }
  });
  icon_.show();
}

}  // namespace kestrel::companion
