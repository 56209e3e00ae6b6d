#pragma once

#include <QByteArray>
#include <QProcess>
#include <QString>

#include <gtest/gtest.h>

namespace kestrel::companion {

/// The next line that `process` prints, without its end; empty where none comes.
inline QByteArray lineOf(QProcess& process) {
  static constexpr int patience = 60'000;  // milliseconds, on a slow and busy machine
  while (!process.canReadLine() && process.waitForReadyRead(patience)) {
  }
  return process.readLine().trimmed();
}

/// A session bus that no other program is on, and which starts none. Make it before the application object.
class SessionBus {
 public:
  SessionBus() {
    process_.start(QStringLiteral("dbus-daemon"),
                   {QStringLiteral("--config-file=" SESSION_BUS), QStringLiteral("--nofork"),
                    QStringLiteral("--print-address=1")});
    qputenv("DBUS_SESSION_BUS_ADDRESS", lineOf(process_));
  }
  ~SessionBus() {
    process_.kill();
    process_.waitForFinished();
  }
  SessionBus(const SessionBus&) = delete;
  SessionBus& operator=(const SessionBus&) = delete;

 private:
  QProcess process_;
};

/// A desktop portal on the session bus, in a process of its own.
class DesktopPortal {
 public:
  DesktopPortal() {
    process_.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process_.start(QStringLiteral("/usr/bin/python3"), {QStringLiteral(FAKE_PORTAL)});
    EXPECT_EQ(lineOf(process_), "ready");
  }
  ~DesktopPortal() {
    process_.closeWriteChannel();
    process_.waitForFinished();
  }
  DesktopPortal(const DesktopPortal&) = delete;
  DesktopPortal& operator=(const DesktopPortal&) = delete;

  /// Sets and announces a setting: group, key, and value in the text form of GVariant.
  void set(const char* setting) {
    process_.write(QByteArray{"set "} + setting + "\n");
    EXPECT_EQ(lineOf(process_), "done");
  }

 private:
  QProcess process_;
};

}  // namespace kestrel::companion
