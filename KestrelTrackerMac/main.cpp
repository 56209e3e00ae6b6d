#include <KestrelTrackerMac/MainWindow.h>
#include <KestrelTrackerMac/MessagesCompanionCoordinator.h>
#include <KestrelTrackerMac/MessagesDatabaseReader.h>

#include <QApplication>
#include <QLocale>
#include <QQmlApplicationEngine>
#include <QTranslator>

#include <memory>

using namespace kestrel::companion;

int main(int argc, char* argv[]) {
  QApplication application{argc, argv};
  QApplication::setApplicationName(QStringLiteral("tidewell"));
  QApplication::setDesktopFileName(QStringLiteral("tidewell"));

  QTranslator translator;
  if (translator.load(QLocale{}, QStringLiteral("tidewell"), QStringLiteral("_"), QStringLiteral(":/i18n"))) {
    QApplication::installTranslator(&translator);
  }

  MessagesCompanionCoordinator coordinator{std::make_unique<MessagesDatabaseReader>()};
  QQmlApplicationEngine engine;
  loadMainWindow(engine, coordinator);
  return QApplication::exec();
}
