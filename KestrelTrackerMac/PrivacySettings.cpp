#include <KestrelTrackerMac/PrivacySettings.h>

#include <QtGlobal>

#ifdef Q_OS_MACOS
#include <QDesktopServices>
#include <QUrl>
#endif

namespace kestrel::companion {

#ifdef Q_OS_MACOS
// Not exercised by the tests on other systems.
void openPrivacySettings() {
  const QUrl settings{QStringLiteral(
      "x-apple.systempreferences:com.apple.settings.PrivacySecurity.extension?Privacy_AllFiles")};
  if (!settings.isValid() || !QDesktopServices::openUrl(settings)) {
    QDesktopServices::openUrl(
        QUrl{QStringLiteral("x-apple.systempreferences:com.apple.preference.security?Privacy_AllFiles")});
  }
}
#else
void openPrivacySettings() {}
#endif

}  // namespace kestrel::companion
