#include <KestrelKit/foundation/ProgrammingError.h>
#include <KestrelKit/model/Disclaimer.h>
#include <KestrelTrackerMac/MainWindow.h>
#include <KestrelTrackerMac/MessagesCompanionCoordinator.h>

#include <QCoreApplication>
#include <QIcon>
#include <QQmlApplicationEngine>
#include <QQuickWindow>
#include <QUrl>
#include <QVariant>

#include <string>

// Made by Qt's build from the declarations in the classes. Nothing else refers to it, so that a linker would
// leave it in the static library.
void qml_register_types_Tidewell();

namespace kestrel::companion {

QQuickWindow& loadMainWindow(QQmlApplicationEngine& engine, MessagesCompanionCoordinator& coordinator) {
  qml_register_types_Tidewell();
  engine.addImportPath(QStringLiteral("qrc:/qt/qml"));
  engine.setInitialProperties(
      {{QStringLiteral("coordinator"), QVariant::fromValue(&coordinator)},
       {QStringLiteral("disclaimer"),
        QCoreApplication::translate("Disclaimer", std::string{Disclaimer::text}.c_str())}});
  engine.load(QUrl{QStringLiteral("qrc:/qt/qml/Tidewell/ui/MainWindow.qml")});
  auto* window =
      engine.rootObjects().isEmpty() ? nullptr : qobject_cast<QQuickWindow*>(engine.rootObjects().first());
  if (!window) {
    programmingError("the views of the window do not load");
  }
  window->setIcon(QIcon{QStringLiteral(":/tidewell.svg")});
  return *window;
}

}  // namespace kestrel::companion
