#pragma once

class QQmlApplicationEngine;
class QQuickWindow;

namespace kestrel::companion {

class MessagesCompanionCoordinator;

/// Shows the application's one window, a view of `coordinator`. The window belongs to `engine`, which belongs
/// to the main thread and goes before the coordinator. Views that do not load are a programming error.
QQuickWindow& loadMainWindow(QQmlApplicationEngine& engine, MessagesCompanionCoordinator& coordinator);

}  // namespace kestrel::companion
