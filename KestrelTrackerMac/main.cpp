#include <KestrelTrackerMac/DiskCaches.h>
#include <KestrelTrackerMac/MainWindow.h>
#include <KestrelTrackerMac/MessagesCompanionCoordinator.h>
#include <KestrelTrackerMac/MessagesDatabaseReader.h>
#include <KestrelTrackerMac/SingleInstance.h>
#include <KestrelTrackerMac/Translation.h>
#include <KestrelTrackerMac/TrayMenu.h>
#include <KestrelTrackerMac/WindowPresence.h>
#include <KestrelTrackerMac/WriteProtection.h>
#include <KestrelTrackerMac/reading/MessagesDatabase.h>

#include <QApplication>
#include <QLocale>
#include <QQmlApplicationEngine>
#include <QQuickWindow>
#include <QTranslator>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <memory>

using namespace kestrel::companion;

int main(int argc, char* argv[]) {
  switchOffDiskCaches();
  // Devices, what a session keeps in memory, and the side files that SQLite keeps beside a database in WAL
  // mode.
  forbidWritesExceptIn(
      std::array<std::filesystem::path, 3>{"/dev", qEnvironmentVariable("XDG_RUNTIME_DIR").toStdString(),
                                           defaultMessagesDatabase().parent_path()});

  QApplication application{argc, argv};
  QApplication::setApplicationName(QStringLiteral("tidewell"));
  QApplication::setDesktopFileName(QStringLiteral("tidewell"));

  SingleInstance instance;
  if (!instance.claim()) {
    return 0;
  }

  QTranslator translator;
  if (translator.load(translationTable(QLocale{}.uiLanguages()))) {
    QApplication::installTranslator(&translator);
  }

  MessagesCompanionCoordinator coordinator{std::make_unique<MessagesDatabaseReader>()};
  QQmlApplicationEngine engine;
  WindowPresence presence{loadMainWindow(engine, coordinator)};
  QObject::connect(&instance, &SingleInstance::startedAgain, &presence, &WindowPresence::comeForward);
  const TrayMenu tray{coordinator, presence};
  // Nothing is to be saved, so that nothing is taken down: nobody waits for a scan or a probe that is under
  // way, nor for Qt 6.4, which now and then falls over the parts of a hidden window.
  std::_Exit(QApplication::exec());
}
