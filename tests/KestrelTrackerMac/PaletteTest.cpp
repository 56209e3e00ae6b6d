#include <KestrelTrackerMac/Palette.h>

#include <gtest/gtest.h>
#include <QColor>

#include <utility>
#include <vector>

namespace kestrel::companion {
namespace {

struct Scheme {
  const char* name;
  Palette palette;
};

struct PaletteTest : testing::TestWithParam<Scheme> {};

INSTANTIATE_TEST_SUITE_P(Schemes, PaletteTest,
                         testing::Values(Scheme{"light", Palette::light()}, Scheme{"dark", Palette::dark()}),
                         [](const auto& scheme) { return scheme.param.name; });

TEST_P(PaletteTest, everyTextReadsOnEverySurfaceItStandsOn) {
  const Palette& p = GetParam().palette;
  const std::vector<std::pair<const char*, std::pair<QColor, QColor>>> pairs{
      {"text on the page", {p.text, p.page}},
      {"text in a box", {p.text, p.box}},
      {"text on a tile", {p.text, p.tile}},
      {"text on the badge", {p.text, p.badge}},
      {"text on the picker", {p.text, p.track}},
      {"text on the chosen segment", {p.text, p.segment}},
      {"secondary text on the page", {p.secondaryText, p.page}},
      {"secondary text in a box", {p.secondaryText, p.box}},
      {"secondary text on a tile", {p.secondaryText, p.tile}},
      {"a shortcut in a highlighted menu item", {p.secondaryText, p.track}},
      {"secondary text on the badge", {p.badgeSecondaryText, p.badge}},
      {"blue on the badge", {p.badgeBlue, p.badge}},
      {"text on the prominent button", {p.prominentText, p.prominent}},
      {"text on the pressed prominent button", {p.prominentText, p.prominentPressed}},
      {"an error", {p.red, p.box}},
      {"the health symbol", {p.pink, p.box}},
      {"checking", {p.checkingText, p.checkingFill}},
      {"ready", {p.readyText, p.readyFill}},
      {"permission needed", {p.permissionText, p.permissionFill}},
      {"unavailable", {p.unavailableText, p.unavailableFill}},
  };
  for (const auto& [what, colors] : pairs) {
    EXPECT_GE(contrastRatio(colors.first, colors.second), 4.5) << what;
  }
}

TEST_P(PaletteTest, theFocusRingIsSeenOnEverySurface) {
  const Palette& p = GetParam().palette;
  for (const QColor& surface : {p.page, p.box, p.track}) {
    EXPECT_GE(contrastRatio(p.tint, surface), 3.0);
  }
}

TEST(Palette, theBadgeIsBlueAtOpacity14) {
  // 0.14 × #007aff + 0.86 × #f5f5f7, and 0.14 × #0a84ff + 0.86 × #1e1e20, by hand.
  EXPECT_EQ(Palette::light().badge, QColor(0xd3, 0xe4, 0xf8));
  EXPECT_EQ(Palette::dark().badge, QColor(0x1b, 0x2c, 0x3f));
}

TEST(ContrastRatio, agreesWithItsDefinition) {
  EXPECT_DOUBLE_EQ(contrastRatio(Qt::black, Qt::white), 21.0);
  EXPECT_DOUBLE_EQ(contrastRatio(Qt::white, Qt::white), 1.0);
  // #767676 on white is the well-known lightest grey that passes 4.5 to 1.
  EXPECT_NEAR(contrastRatio(QColor(0x76, 0x76, 0x76), Qt::white), 4.54, 0.005);
  EXPECT_LT(contrastRatio(QColor(0x77, 0x77, 0x77), Qt::white), 4.5);
}

}  // namespace
}  // namespace kestrel::companion
