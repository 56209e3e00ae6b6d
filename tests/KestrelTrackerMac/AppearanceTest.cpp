#include "DesktopPortal.h"

#include <KestrelTrackerMac/Appearance.h>

#include <QColor>
#include <QDeadlineTimer>
#include <QEventLoop>
#include <QGuiApplication>
#include <QPalette>

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <functional>
#include <optional>
#include <string>

namespace kestrel::companion {
namespace {

constexpr std::chrono::seconds patience{60};  // on a slow and busy machine

bool eventually(const std::function<bool()>& condition) {
  for (const QDeadlineTimer deadline{patience}; !condition() && !deadline.hasExpired();) {
    QGuiApplication::processEvents(QEventLoop::AllEvents, 10);
  }
  return condition();
}

constexpr auto dark = "org.freedesktop.appearance color-scheme uint32 1";
constexpr auto light = "org.freedesktop.appearance color-scheme uint32 2";
constexpr auto noPreference = "org.freedesktop.appearance color-scheme uint32 0";

/// An application on a bus of its own.
class AppearanceTest : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    bus_.emplace();
    qputenv("QT_QPA_PLATFORM", "offscreen");
    application_.emplace(argumentCount, arguments.data());
  }
  static void TearDownTestSuite() {
    application_.reset();
    bus_.reset();
  }
  void SetUp() override { usePalette(Qt::black, Qt::white); }

  static void usePalette(const QColor& text, const QColor& window) {
    QPalette palette;
    palette.setColor(QPalette::WindowText, text);
    palette.setColor(QPalette::Window, window);
    QGuiApplication::setPalette(palette);
  }

 private:
  static inline int argumentCount = 1;
  static inline std::string programName = "test";
  static inline std::array<char*, 2> arguments{programName.data(), nullptr};
  static inline std::optional<SessionBus> bus_;
  static inline std::optional<QGuiApplication> application_;
};

TEST_F(AppearanceTest, withoutAPortalItIsThePalettes) {
  const Appearance appearance;
  EXPECT_FALSE(appearance.dark());
  EXPECT_FALSE(appearance.reduceMotion());
  usePalette(Qt::white, Qt::black);
  EXPECT_TRUE(eventually([&] { return appearance.dark(); }));
}

TEST_F(AppearanceTest, startsInTheSchemeOfThePortal) {
  DesktopPortal portal;
  portal.set(dark);
  const Appearance appearance;
  EXPECT_TRUE(eventually([&] { return appearance.dark(); }));
}

TEST_F(AppearanceTest, followsThePortalBothWays) {
  DesktopPortal portal;
  const Appearance appearance;
  int changes = 0;
  QObject::connect(&appearance, &Appearance::darkChanged, [&changes] { ++changes; });
  portal.set(dark);
  EXPECT_TRUE(eventually([&] { return appearance.dark(); }));
  portal.set(dark);
  portal.set(light);
  EXPECT_TRUE(eventually([&] { return !appearance.dark(); }));
  EXPECT_EQ(changes, 2);
}

TEST_F(AppearanceTest, thePortalOutranksThePalette) {
  DesktopPortal portal;
  portal.set(light);
  const Appearance appearance;
  usePalette(Qt::white, Qt::black);
  QGuiApplication::processEvents();
  EXPECT_TRUE(eventually([&] { return !appearance.dark(); }));
  portal.set(noPreference);
  EXPECT_TRUE(eventually([&] { return appearance.dark(); }));
}

TEST_F(AppearanceTest, aPortalThatStartsLaterIsHeard) {
  const Appearance appearance;
  EXPECT_FALSE(appearance.dark());
  DesktopPortal portal;
  portal.set(dark);
  EXPECT_TRUE(eventually([&] { return appearance.dark(); }));
}

TEST_F(AppearanceTest, aPortalThatEndsIsForgotten) {
  std::optional<DesktopPortal> portal{std::in_place};
  portal->set(dark);
  const Appearance appearance;
  EXPECT_TRUE(eventually([&] { return appearance.dark(); }));
  portal.reset();
  EXPECT_TRUE(eventually([&] { return !appearance.dark(); }));
}

TEST_F(AppearanceTest, reducedMotionIsThePortals) {
  DesktopPortal portal;
  portal.set("org.freedesktop.appearance reduced-motion uint32 1");
  const Appearance appearance;
  EXPECT_TRUE(eventually([&] { return appearance.reduceMotion(); }));
  portal.set("org.freedesktop.appearance reduced-motion uint32 0");
  EXPECT_TRUE(eventually([&] { return !appearance.reduceMotion(); }));
}

TEST_F(AppearanceTest, desktopsWithoutAnimationsReduceMotion) {
  DesktopPortal portal;
  portal.set("org.gnome.desktop.interface enable-animations false");
  const Appearance appearance;
  EXPECT_TRUE(eventually([&] { return appearance.reduceMotion(); }));
  portal.set("org.gnome.desktop.interface enable-animations true");
  EXPECT_TRUE(eventually([&] { return !appearance.reduceMotion(); }));
}

TEST_F(AppearanceTest, valuesOfOtherTypesAreNoPreference) {
  DesktopPortal portal;
  portal.set("org.freedesktop.appearance color-scheme 'dark'");
  portal.set("org.gnome.desktop.interface enable-animations 0");
  const Appearance appearance;
  portal.set("org.freedesktop.appearance color-scheme uint32 7");
  portal.set("org.freedesktop.appearance reduced-motion uint32 1");  // the last one is known to have arrived
  EXPECT_TRUE(eventually([&] { return appearance.reduceMotion(); }));
  EXPECT_FALSE(appearance.dark());
}

}  // namespace
}  // namespace kestrel::companion
