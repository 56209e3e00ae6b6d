#include "DesktopPortal.h"

#include <gtest/gtest.h>
#include <QApplication>
#include <QQuickWindow>

int main(int argc, char* argv[]) {
  // A screen of Qt's own, three times as fine as most, on which the colours of thin strokes can be told.
  qputenv("QT_QPA_PLATFORM", "offscreen");
  qputenv("QT_SCALE_FACTOR", "3");
  QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
  const kestrel::companion::SessionBus bus;
  const QApplication application{argc, argv};
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
