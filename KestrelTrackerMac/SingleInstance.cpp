#include <KestrelTrackerMac/SingleInstance.h>

#include <QCryptographicHash>
#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QLocalSocket>
#include <QThread>

#include <sys/socket.h>
#include <unistd.h>

namespace kestrel::companion {

namespace {

/// Where a session gives every user a folder for such names; also said where the session does not say it, so
/// that a start from a bare terminal meets the one from the desktop.
QString runtimeFolder() {
  const QString named = qEnvironmentVariable("XDG_RUNTIME_DIR");
  return named.isEmpty() ? QStringLiteral("/run/user/%1").arg(getuid()) : named;
}

QString localName() {
#ifdef Q_OS_LINUX
  const QString path = QDir{runtimeFolder()}.filePath(QStringLiteral("tidewell"));
  static constexpr qsizetype room = 107;  // of a name in the kernel, in bytes
  const QByteArray name = path.toUtf8();
  return name.size() <= room
             ? path
             : QString::fromLatin1(QCryptographicHash::hash(name, QCryptographicHash::Sha256).toHex());
#else
  return QDir::temp().filePath(QStringLiteral("tidewell-%1").arg(getuid()));
#endif
}

bool belongsToThisUser(const QLocalSocket& socket) {
  const int descriptor = static_cast<int>(socket.socketDescriptor());
#ifdef Q_OS_LINUX
  ucred peer{};
  socklen_t size = sizeof peer;
  return getsockopt(descriptor, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 && peer.uid == getuid();
#else
  uid_t user = 0;
  gid_t group = 0;
  return getpeereid(descriptor, &user, &group) == 0 && user == getuid();
#endif
}

}  // namespace

SingleInstance::SingleInstance(QObject* parent) : QObject(parent), name_(localName()) {
  server_.setSocketOptions(QLocalServer::AbstractNamespaceOption);
  connect(&server_, &QLocalServer::newConnection, this, &SingleInstance::answer);
}

bool SingleInstance::claim(std::chrono::milliseconds patience) {
  static constexpr unsigned long pause = 10;  // milliseconds, between two tries
  const QDeadlineTimer deadline{patience};
  do {
    if (server_.listen(name_) || server_.serverError() != QAbstractSocket::AddressInUseError) {
      return true;
    }
    QLocalSocket running;
    running.setSocketOptions(QLocalSocket::AbstractNamespaceOption);
    running.connectToServer(name_);
    if (running.waitForConnected(static_cast<int>(deadline.remainingTime()))) {
      if (!belongsToThisUser(running)) {
        return true;
      }
      if (running.waitForReadyRead(static_cast<int>(deadline.remainingTime()))) {
        return false;
      }
    }
#ifndef Q_OS_LINUX
    else {
      QLocalServer::removeServer(name_);  // a file that a process left when it was killed
    }
#endif
    // It was about to end, and took the name with it.
    QThread::msleep(pause);
  } while (!deadline.hasExpired());
  qWarning("tidewell: it runs already and does not answer");
  return false;
}

void SingleInstance::answer() {
  while (QLocalSocket* other = server_.nextPendingConnection()) {
    if (belongsToThisUser(*other)) {
      other->write("1");
      other->flush();
      Q_EMIT startedAgain();
    }
    other->disconnectFromServer();
    other->deleteLater();
  }
}

}  // namespace kestrel::companion
