#pragma once

#include <QObject>

class QEvent;
class QWindow;

namespace kestrel::companion {

/// Whether the main window is on the screen, and what closing it means. Where the desktop has a tray, a
/// closed window is hidden and the tray's menu brings it back. Where it has none, nothing would be left to
/// bring it back with, and closing the window ends the application. The tray is asked for at that moment:
/// panels come and go. Main thread only, beside a QApplication.
class WindowPresence : public QObject {
  Q_OBJECT

 public:
  /// `window` outlives the event loop.
  explicit WindowPresence(QWindow& window, QObject* parent = nullptr);

  /// Shows the window before all others, and gives it the keyboard.
  void comeForward();

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  QWindow& window_;
};

}  // namespace kestrel::companion
