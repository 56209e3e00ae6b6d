#include <KestrelKit/analytics/AbsolutismDay.h>
#include <KestrelKit/analytics/BlueskySummary.h>
#include <KestrelKit/analytics/HourBucket.h>
#include <KestrelKit/analytics/InteractionDay.h>
#include <KestrelKit/analytics/MoodNoteFeatures.h>
#include <KestrelKit/analytics/TrendAggregation.h>
#include <KestrelKit/analytics/TrendResult.h>
#include <KestrelKit/model/JSONCoders.h>
#include <gtest/gtest.h>
#include <support/RecordFields.h>

#include <string>
#include <vector>

namespace kestrel {
namespace {

using testing::FieldRow;

template <class T>
T expectFields(const std::vector<FieldRow>& rows) {
  return testing::expectStrictFields<T>(JSONCoders::decoder, JSONCoders::encoder, rows);
}

constexpr const char* notText = "expected text, found a number";
constexpr const char* notNumber = "expected a number, found text";
constexpr const char* notInteger = "1.5 is not an integer of 64 bits";

const FieldRow dateRow{"date", R"("2024-05-01")", "7", notText};

FieldRow count(const std::string& key, int value) { return {key, std::to_string(value), "1.5", notInteger}; }

TEST(TrendAggregation, isASumOrAnAverage) {
  ASSERT_EQ(TrendAggregation::allCases.size(), 2U);
  EXPECT_EQ(TrendAggregation(TrendAggregation::sum).rawValue(), "sum");
  EXPECT_EQ(TrendAggregation(TrendAggregation::average).rawValue(), "average");
}

TEST(TrendResult, hasItsFields) {
  EXPECT_EQ(expectFields<TrendResult>({count("value", -33),
                                       {"label", R"("vs previous 30 days")", "7", notText},
                                       {"currentValue", "10.5", R"("1")", notNumber},
                                       {"previousValue", "15.75", R"("1")", notNumber}}),
            (TrendResult{-33, "vs previous 30 days", 10.5, 15.75}));
}

TEST(MoodNoteFeatures, hasItsFieldsAndALengthThatIsAFloat) {
  EXPECT_EQ(expectFields<MoodNoteFeatures>({{"sentiment", "-0.4973", R"("1")", notNumber},
                                            {"absolutistRatio", "0.25", R"("1")", notNumber},
                                            {"length", "15.5", R"("1")", notNumber}}),
            (MoodNoteFeatures{-0.4973, 0.25, 15.5}));
}

TEST(BlueskySummary, hasItsFieldsAndTheTenTotalsForItsIdentity) {
  const auto summary = expectFields<BlueskySummary>({
      count("days", 1),
      count("totalPosts", 2),
      {"avgPostsPerDay", "0.5", R"("1")", notNumber},
      {"avgPostLength", "1.25", R"("1")", notNumber},
      {"absolutismRatePct", "2.5", R"("1")", notNumber},
      count("totalReplies", 3),
      count("totalQuotes", 4),
      count("totalReposts", 5),
      count("totalLikes", 6),
      count("totalFollows", 7),
      count("totalMentions", 8),
      count("totalLinks", 9),
      count("totalHashtags", 10),
      count("totalLateNightPosts", 11),
  });
  EXPECT_EQ(summary, (BlueskySummary{1, 2, 0.5, 1.25, 2.5, 3, 4, 5, 6, 7, 8, 9, 10, 11}));
  EXPECT_EQ(summary.id(), "2|3|4|5|6|7|8|9|10|11");
  EXPECT_EQ(BlueskySummary{}.id(), "0|0|0|0|0|0|0|0|0|0");
}

TEST(HourBucket, hasItsFields) {
  EXPECT_EQ(expectFields<HourBucket>({count("hour", 23), count("posts", 5)}), (HourBucket{23, 5}));
}

TEST(InteractionDay, hasItsFields) {
  EXPECT_EQ(
      expectFields<InteractionDay>({dateRow, count("replies", 1), count("quotes", 2), count("reposts", 3)}),
      (InteractionDay{"2024-05-01", 1, 2, 3}));
}

TEST(AbsolutismDay, hasItsFields) {
  EXPECT_EQ(expectFields<AbsolutismDay>({dateRow, {"absolutismPct", "2.5", R"("1")", notNumber}}),
            (AbsolutismDay{"2024-05-01", 2.5}));
}

}  // namespace
}  // namespace kestrel
