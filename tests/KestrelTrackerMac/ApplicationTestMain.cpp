#include <QApplication>
#include <QQuickWindow>
#include <gtest/gtest.h>

int main(int argc, char* argv[]) {
  // A screen of Qt's own, three times as fine as most, on which the colours of thin strokes can be told.
  qputenv("QT_QPA_PLATFORM", "offscreen");
  qputenv("QT_SCALE_FACTOR", "3");
  QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
  const QApplication application{argc, argv};
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
