#pragma once

#include <QLocalServer>
#include <QObject>
#include <QString>

#include <chrono>

namespace kestrel::companion {

/// Makes one process a user of the application: the first one owns a local name, every later one knocks there
/// and ends. Main thread only.
///
/// On Linux the name lies in the abstract namespace of sockets. Taking it is one step for the kernel, so that
/// of several simultaneous starts exactly one gets it, and it is gone with its process however that ends, so
/// that nothing stale is left behind. Any user may take any such name; hence both sides ask the kernel for
/// the other's user, and a name that a stranger sits on is treated as if it did not exist.
class SingleInstance : public QObject {
  Q_OBJECT

 public:
  /// The name is that of the user's runtime folder.
  explicit SingleInstance(QObject* parent = nullptr);

  /// True where this process is the one that runs: it has the name, or there is no way to meet another one.
  /// False where another process of this user has been asked to come forward; blocks for at most `patience`
  /// until it has answered. One that is too busy to answer in time finds the request when it is free.
  [[nodiscard]] bool claim(std::chrono::milliseconds patience = std::chrono::seconds{5});

 Q_SIGNALS:
  /// The user has started the application once more, and expects its window.
  void startedAgain();

 private:
  void answer();

  QString name_;
  QLocalServer server_;
};

}  // namespace kestrel::companion
