#include <KestrelTrackerMac/Appearance.h>

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QDBusVariant>
#include <QEvent>
#include <QGuiApplication>
#include <QMetaType>
#include <QPalette>
#include <QStringList>

namespace kestrel::companion {

namespace {

const QString portalService = QStringLiteral("org.freedesktop.portal.Desktop");
const QString portalPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString portalSettings = QStringLiteral("org.freedesktop.portal.Settings");
const QString appearanceGroup = QStringLiteral("org.freedesktop.appearance");
const QString desktopGroup = QStringLiteral("org.gnome.desktop.interface");

// Of the portal's color-scheme and reduced-motion; any other value is no preference.
constexpr uint preferDark = 1;
constexpr uint preferLight = 2;
constexpr uint preferReducedMotion = 1;

using SettingGroups = QMap<QString, QVariantMap>;

QDBusMessage readingCall() {
  QDBusMessage call =
      QDBusMessage::createMethodCall(portalService, portalPath, portalSettings, QStringLiteral("ReadAll"));
  call << QStringList{appearanceGroup, desktopGroup};
  return call;
}

bool paletteIsDark() {
  const QPalette palette = QGuiApplication::palette();
  return palette.color(QPalette::WindowText).lightness() > palette.color(QPalette::Window).lightness();
}

}  // namespace

Appearance::Appearance(QObject* parent) : QObject(parent) {
  qDBusRegisterMetaType<SettingGroups>();
  qRegisterMetaType<QDBusVariant>();  // Qt finds the slot below only where the type is known by its name
  qGuiApp->installEventFilter(this);

  QDBusConnection bus = QDBusConnection::sessionBus();
  if (bus.isConnected()) {
    auto* portal =
        new QDBusServiceWatcher{portalService, bus, QDBusServiceWatcher::WatchForOwnerChange, this};
    connect(portal, &QDBusServiceWatcher::serviceRegistered, this, &Appearance::readPortal);
    connect(portal, &QDBusServiceWatcher::serviceUnregistered, this, &Appearance::forgetPortal);
    bus.connect(portalService, portalPath, portalSettings, QStringLiteral("SettingChanged"), this,
                SLOT(settingChanged(QString, QString, QDBusVariant)));

    // A portal that runs answers at once, and the window does not start in the wrong scheme. One that the bus
    // has to start first is not waited for.
    static constexpr int patience = 200;  // milliseconds
    const bool runs = bus.interface()->isServiceRegistered(portalService);
    const QDBusMessage reply = runs ? bus.call(readingCall(), QDBus::Block, patience) : QDBusMessage{};
    if (reply.type() == QDBusMessage::ReplyMessage) {
      take(QDBusPendingCall::fromCompletedCall(reply));
    } else {
      readPortal();
    }
  }
  decide();
}

bool Appearance::eventFilter(QObject* watched, QEvent* event) {
  if (watched == qGuiApp && event->type() == QEvent::ApplicationPaletteChange) {
    decide();
  }
  return QObject::eventFilter(watched, event);
}

void Appearance::readPortal() {
  auto* watcher = new QDBusPendingCallWatcher{QDBusConnection::sessionBus().asyncCall(readingCall()), this};
  connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
    take(*watcher);
    watcher->deleteLater();
  });
}

void Appearance::take(const QDBusPendingCall& reply) {
  const QDBusPendingReply<SettingGroups> settings = reply;
  if (!settings.isValid()) {
    return;
  }
  const SettingGroups groups = settings.value();
  for (auto group = groups.begin(); group != groups.end(); ++group) {
    for (auto setting = group->begin(); setting != group->end(); ++setting) {
      note(group.key(), setting.key(), setting.value());
    }
  }
  decide();
}

void Appearance::settingChanged(const QString& group, const QString& key, const QDBusVariant& value) {
  note(group, key, value.variant());
  decide();
}

void Appearance::forgetPortal() {
  portalDark_.reset();
  portalReducedMotion_.reset();
  portalAnimations_.reset();
  decide();
}

void Appearance::note(const QString& group, const QString& key, const QVariant& value) {
  const bool isNumber = value.typeId() == QMetaType::UInt;
  if (group == appearanceGroup && key == QLatin1String{"color-scheme"} && isNumber) {
    const uint scheme = value.toUInt();
    portalDark_ =
        scheme == preferDark || scheme == preferLight ? std::optional{scheme == preferDark} : std::nullopt;
  } else if (group == appearanceGroup && key == QLatin1String{"reduced-motion"} && isNumber) {
    portalReducedMotion_ = value.toUInt() == preferReducedMotion ? std::optional{true} : std::nullopt;
  } else if (group == desktopGroup && key == QLatin1String{"enable-animations"} &&
             value.typeId() == QMetaType::Bool) {
    portalAnimations_ = value.toBool();
  }
}

void Appearance::decide() {
  const bool dark = portalDark_.value_or(paletteIsDark());
  if (dark_ != dark) {
    dark_ = dark;
    Q_EMIT darkChanged();
  }
  const bool reduceMotion = portalReducedMotion_.value_or(!portalAnimations_.value_or(true));
  if (reduceMotion_ != reduceMotion) {
    reduceMotion_ = reduceMotion;
    Q_EMIT reduceMotionChanged();
  }
}

}  // namespace kestrel::companion
