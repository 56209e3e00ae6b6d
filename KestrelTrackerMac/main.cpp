#include <KestrelKit/foundation/QuotedText.h>
#include <KestrelTrackerMac/DiskCaches.h>
#include <KestrelTrackerMac/MainWindow.h>
#include <KestrelTrackerMac/MessagesCompanionCoordinator.h>
#include <KestrelTrackerMac/MessagesDatabaseReader.h>
#include <KestrelTrackerMac/SingleInstance.h>
#include <KestrelTrackerMac/Translation.h>
#include <KestrelTrackerMac/TrayMenu.h>
#include <KestrelTrackerMac/WindowPresence.h>
#include <KestrelTrackerMac/WriteProtection.h>

#include <QApplication>
#include <QCommandLineParser>
#include <QLocale>
#include <QQmlApplicationEngine>
#include <QQuickWindow>
#include <QTranslator>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <utility>

using namespace kestrel;
using namespace kestrel::companion;

namespace {

/// There are none but those of Qt, which has taken its own, and the usual two.
void obeyArguments() {
  QCommandLineParser parser;
  parser.setApplicationDescription(
      QStringLiteral("Shows per-day activity figures of the local Messages database, in a window."));
  const QCommandLineOption help = parser.addHelpOption();
  const QCommandLineOption version = parser.addVersionOption();
  const bool understood = parser.parse(QApplication::arguments());
  if (understood && parser.isSet(help)) {
    parser.showHelp();
  }
  if (understood && parser.isSet(version)) {
    parser.showVersion();
  }
  if (!understood || !parser.positionalArguments().isEmpty()) {
    constexpr int wrongUse = 2;
    const QString what = understood ? QStringLiteral("It takes no files or words.") : parser.errorText();
    std::fprintf(stderr, "tidewell: %s\n", onOneLine(what.toStdString()).c_str());
    std::_Exit(wrongUse);
  }
}

}  // namespace

int main(int argc, char* argv[]) {
  switchOffDiskCaches();
  // Its threads come before the protection and are not bound by it: beside a database in WAL mode SQLite
  // keeps side files, wherever that database turns out to be by then.
  auto reader = std::make_unique<MessagesDatabaseReader>();
  // Devices, and what a session keeps in memory.
  forbidWritesExceptIn(
      std::array<std::filesystem::path, 2>{"/dev", qEnvironmentVariable("XDG_RUNTIME_DIR").toStdString()});

  QApplication application{argc, argv};
  QApplication::setApplicationName(QStringLiteral("tidewell"));
  QApplication::setApplicationVersion(QStringLiteral(TIDEWELL_VERSION));
  QApplication::setDesktopFileName(QStringLiteral("tidewell"));
  obeyArguments();

  SingleInstance instance;
  if (!instance.claim()) {
    return 0;
  }

  QTranslator translator;
  if (translator.load(translationTable(QLocale{}.uiLanguages()))) {
    QApplication::installTranslator(&translator);
  }

  MessagesCompanionCoordinator coordinator{std::move(reader)};
  QQmlApplicationEngine engine;
  WindowPresence presence{loadMainWindow(engine, coordinator)};
  QObject::connect(&instance, &SingleInstance::startedAgain, &presence, &WindowPresence::comeForward);
  const TrayMenu tray{coordinator, presence};
  // A display that goes away ends the process from the midst of Qt, on any thread, and the others cannot bear
  // what destructors would take from them. What is registered last runs first.
  std::atexit([] { std::_Exit(EXIT_FAILURE); });
  // Nothing is to be saved, so that nothing is taken down: nobody waits for a scan or a probe that is under
  // way, nor for Qt 6.4, which now and then falls over the parts of a hidden window.
  std::_Exit(QApplication::exec());
}
