#include <KestrelKit/model/StateTheme.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <iterator>
#include <limits>
#include <optional>
#include <string_view>

namespace kestrel {
namespace {

TEST(StateTheme, hasTheLookOfEachState) {
  struct Row {
    KestrelState state;
    std::string_view symbol, shortCode, color, label;
  };
  const Row rows[] = {
      {KestrelState::psychosis, "\u2726", "PSY", "purple", "\u2726 Psychosis"},
      {KestrelState::mixedEpisode, "\u2194", "MIX", "pink", "\u2194 Mixed Episode"},
      {KestrelState::mania, "\u2191", "MAN", "red", "\u2191 Mania"},
      {KestrelState::hypomania, "\u2197", "HYP", "orange", "\u2197 Hypomania"},
      {KestrelState::euthymia, "\u2022", "EUT", "green", "\u2022 Euthymia"},
      {KestrelState::dysthymia, "\u2198", "DYS", "teal", "\u2198 Dysthymia"},
      {KestrelState::moderateDepression, "\u2193", "MOD", "blue", "\u2193 Moderate Depression"},
      {KestrelState::severeDepression, "\u21CA", "SEV", "indigo", "\u21CA Severe Depression"},
      {KestrelState::unknown, "?", "?", "gray", "? Unknown"},
  };
  ASSERT_EQ(std::size(rows), KestrelState::allCases.size());
  for (const Row& row : rows) {
    EXPECT_EQ(StateTheme::symbol(row.state), row.symbol);
    EXPECT_EQ(StateTheme::shortCode(row.state), row.shortCode);
    EXPECT_EQ(StateTheme::color(row.state).rawValue(), row.color);
    EXPECT_EQ(StateTheme::label(row.state), row.label);
  }
}

TEST(StateTheme, putsEachStateButUnknownIntoOneGroup) {
  EXPECT_THAT(StateTheme::elevatedStates,
              testing::ElementsAre(KestrelState::psychosis, KestrelState::mixedEpisode, KestrelState::mania,
                                   KestrelState::hypomania));
  EXPECT_THAT(StateTheme::stableStates, testing::ElementsAre(KestrelState::euthymia));
  EXPECT_THAT(StateTheme::depressedStates,
              testing::ElementsAre(KestrelState::dysthymia, KestrelState::moderateDepression,
                                   KestrelState::severeDepression));
}

TEST(StateTheme, tellsTheGroupOfEachState) {
  for (const KestrelState state : KestrelState::allCases) {
    const auto text = state.rawValue();
    const std::string_view group = text == "Unknown"                                      ? "none"
                                   : text == "Euthymia"                                   ? "stable"
                                   : text == "Dysthymia" || text.ends_with(" Depression") ? "depressed"
                                                                                          : "elevated";
    EXPECT_EQ(StateTheme::group(state).rawValue(), group) << text;
  }
}

TEST(StateTheme, tellsNoDetailsWithoutConfidenceAndWithAnEmptySource) {
  EXPECT_EQ(StateTheme::accessibilityDetail(std::nullopt, ""), "No additional details");
  EXPECT_EQ(StateTheme::accessibilityDetail(std::nullopt, std::nullopt), "No additional details");
}

TEST(StateTheme, tellsConfidenceAndSource) {
  EXPECT_EQ(StateTheme::accessibilityDetail(0.5, "keyword"), "Confidence 50 percent, Source keyword");
  EXPECT_EQ(StateTheme::accessibilityDetail(0.734, std::nullopt), "Confidence 73 percent");
  EXPECT_EQ(StateTheme::accessibilityDetail(1, ""), "Confidence 100 percent");
  EXPECT_EQ(StateTheme::accessibilityDetail(std::nullopt, "manual"), "Source manual");
}

TEST(StateTheme, roundsConfidenceHalfAwayFromZero) {
  EXPECT_EQ(StateTheme::accessibilityDetail(0.125, std::nullopt), "Confidence 13 percent");
  EXPECT_EQ(StateTheme::accessibilityDetail(-0.125, std::nullopt), "Confidence -13 percent");
  EXPECT_EQ(StateTheme::accessibilityDetail(0.375, std::nullopt), "Confidence 38 percent");
  EXPECT_EQ(StateTheme::accessibilityDetail(0.1249, std::nullopt), "Confidence 12 percent");
  EXPECT_EQ(StateTheme::accessibilityDetail(-0.001, std::nullopt), "Confidence 0 percent");
}

TEST(StateThemeDeathTest, takesPercentagesOf64BitsOnly) {
  // The least confidences whose hundredfold, as a float, is 2^63 or beyond -2^63, and their neighbours.
  double most = 0x1p63 / 100;
  while (most * 100 < 0x1p63) {
    most = std::nextafter(most, 1e300);
  }
  const double within = std::nextafter(most, 0);
  ASSERT_LT(within * 100, 0x1p63);
  EXPECT_EQ(StateTheme::accessibilityDetail(within, std::nullopt), "Confidence 9223372036854774784 percent");
  EXPECT_DEATH(StateTheme::accessibilityDetail(most, std::nullopt), "confidence");
  EXPECT_EQ(StateTheme::accessibilityDetail(-0x1p63 / 100, std::nullopt),
            "Confidence -9223372036854775808 percent");
  EXPECT_DEATH(StateTheme::accessibilityDetail(-1e17, std::nullopt), "confidence");
  EXPECT_DEATH(StateTheme::accessibilityDetail(std::nan(""), "manual"), "programming error: a confidence");
  EXPECT_DEATH(StateTheme::accessibilityDetail(std::numeric_limits<double>::infinity(), std::nullopt),
               "confidence");
  EXPECT_DEATH(StateTheme::accessibilityDetail(1e308, std::nullopt), "confidence");
}

}  // namespace
}  // namespace kestrel
