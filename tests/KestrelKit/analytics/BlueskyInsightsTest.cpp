#include <KestrelKit/analytics/BlueskyInsights.h>

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace kestrel {
namespace {

using Days = std::vector<VizDay>;

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr auto most = std::numeric_limits<std::int64_t>::max();

TEST(BlueskyInsights, daysWithoutPostsGive0DaysAndAveragesOf0) {
  for (const Days& days :
       {Days{}, Days{{.date = "2024-05-01"}}, Days{{.date = "2024-05-01", .posts = 0}},
        Days{{.date = "2024-05-01", .posts = 0, .avgPostLength = 80, .absolutistRate = 0.1},
             {.date = "2024-05-02", .avgPostLength = 80, .absolutistRate = 0.1}}}) {
    EXPECT_EQ(BlueskyInsights::summary(days), BlueskySummary{});
  }
  EXPECT_EQ(BlueskyInsights::summary(Days{{.date = "", .replyCount = 3, .likeCount = 4}}),
            (BlueskySummary{.totalReplies = 3, .totalLikes = 4}));
}

TEST(BlueskyInsights, addsEachCountToItsTotalAndAnAbsentOneAs0) {
  const VizDay first{.date = "2024-05-01",
                     .posts = 3,
                     .replyCount = 10,
                     .quoteCount = 20,
                     .repostCount = 30,
                     .likeCount = 40,
                     .followCount = 50,
                     .mentionCount = 60,
                     .linkCount = 70,
                     .hashtagCount = 80,
                     .lateNightPosts = 90};
  const VizDay second{.date = "2024-05-02",
                      .posts = 1,
                      .replyCount = 1,
                      .quoteCount = 2,
                      .repostCount = 3,
                      .likeCount = 4,
                      .followCount = 5,
                      .mentionCount = 6,
                      .linkCount = 7,
                      .hashtagCount = 8,
                      .lateNightPosts = 9};
  EXPECT_EQ(BlueskyInsights::summary(Days{first, {.date = "2024-05-03"}, second}),
            (BlueskySummary{.days = 2,
                            .totalPosts = 4,
                            .avgPostsPerDay = 2,
                            .totalReplies = 11,
                            .totalQuotes = 22,
                            .totalReposts = 33,
                            .totalLikes = 44,
                            .totalFollows = 55,
                            .totalMentions = 66,
                            .totalLinks = 77,
                            .totalHashtags = 88,
                            .totalLateNightPosts = 99}));
}

TEST(BlueskyInsights, onlyDaysWithAPostAreDays) {
  const auto summary = BlueskyInsights::summary(
      Days{{.date = "a", .posts = 5}, {.date = "b", .posts = 0}, {.date = "a", .posts = 2}, {.date = "c"}});
  EXPECT_EQ(summary.days, 2);
  EXPECT_EQ(summary.avgPostsPerDay, 3.5);
  // A count below 0 is added as it is; its day has no post.
  EXPECT_EQ(BlueskyInsights::summary(Days{{.date = "a", .posts = 5}, {.date = "b", .posts = -1}}),
            (BlueskySummary{.days = 1, .totalPosts = 4, .avgPostsPerDay = 4}));
}

TEST(BlueskyInsights, averagesCountADayAsOftenAsItHasPosts) {
  const auto summary =
      BlueskyInsights::summary(Days{{.date = "a", .posts = 3, .avgPostLength = 100, .absolutistRate = 0.05},
                                    {.date = "b", .posts = 1, .avgPostLength = 20, .absolutistRate = 0.01}});
  EXPECT_EQ(summary.avgPostLength, 80);
  EXPECT_EQ(summary.absolutismRatePct, (0.05 * 3 + 0.01 * 1) / 4 * 100);
}

TEST(BlueskyInsights, aDayWithoutAnAverageIsLeftOutOfThatAverage) {
  const auto summary = BlueskyInsights::summary(Days{{.date = "a", .posts = 3, .avgPostLength = 100},
                                                     {.date = "b", .posts = 1, .absolutistRate = 0.25},
                                                     {.date = "c", .posts = 4}});
  EXPECT_EQ(summary.avgPostLength, 100);
  EXPECT_EQ(summary.absolutismRatePct, 25);
  EXPECT_EQ(summary.totalPosts, 8);
}

TEST(BlueskyInsights, anAverageThatIsNotFiniteCountsAs0) {
  for (const double value : {infinity, -infinity, notANumber}) {
    const auto summary = BlueskyInsights::summary(
        Days{{.date = "a", .posts = 3, .avgPostLength = value, .absolutistRate = value},
             {.date = "b", .posts = 1, .avgPostLength = 20, .absolutistRate = 0.5}});
    EXPECT_EQ(summary.avgPostLength, 5);
    EXPECT_EQ(summary.absolutismRatePct, 12.5);
  }
}

TEST(BlueskyInsights, nothingIsRounded) {
  const auto summary =
      BlueskyInsights::summary(Days{{.date = "a", .posts = 1, .avgPostLength = 1, .absolutistRate = 0.1},
                                    {.date = "b", .posts = 2, .avgPostLength = 2, .absolutistRate = 0.2},
                                    {.date = "c", .posts = 4, .avgPostLength = 3, .absolutistRate = 0.4}});
  EXPECT_EQ(summary.avgPostsPerDay, 7.0 / 3);
  EXPECT_EQ(summary.avgPostLength, 17.0 / 7);
  EXPECT_EQ(summary.absolutismRatePct, (0.1 + 0.4 + 1.6) / 7 * 100);
}

TEST(BlueskyInsightsDeathTest, aTotalBeyond64BitsIsAProgrammingError) {
  const std::pair<std::optional<std::int64_t> VizDay::*, const char*> rows[] = {
      {&VizDay::posts, "the sum of the posts"},
      {&VizDay::replyCount, "the sum of the replies"},
      {&VizDay::quoteCount, "the sum of the quotes"},
      {&VizDay::repostCount, "the sum of the reposts"},
      {&VizDay::likeCount, "the sum of the likes"},
      {&VizDay::followCount, "the sum of the follows"},
      {&VizDay::mentionCount, "the sum of the mentions"},
      {&VizDay::linkCount, "the sum of the links"},
      {&VizDay::hashtagCount, "the sum of the hashtags"},
      {&VizDay::lateNightPosts, "the sum of the late-night posts"},
  };
  for (const auto& [count, message] : rows) {
    Days days(2);
    days[0].*count = most;
    days[1].*count = 0;
    BlueskyInsights::summary(days);
    days[1].*count = 1;
    EXPECT_DEATH(BlueskyInsights::summary(days), message);
  }
}

TEST(BlueskyInsightsDeathTest, anHourBeyond64BitsIsAProgrammingError) {
  Days days(2);
  days[0].postsByHour = {0, most};
  days[1].postsByHour = {most, 0};
  EXPECT_EQ(BlueskyInsights::postsByHour(days)[1].posts, most);
  days[1].postsByHour = {0, 1};
  EXPECT_DEATH(BlueskyInsights::postsByHour(days), "the sum of the posts of an hour");
}

TEST(BlueskyInsights, postsByHourHasABucketForEachOfThe24HoursWithTheSumOverAllDays) {
  std::vector<std::int64_t> hours(24);
  for (std::size_t hour = 0; hour < hours.size(); ++hour) {
    hours[hour] = static_cast<std::int64_t>(hour * hour);
  }
  const auto buckets = BlueskyInsights::postsByHour(
      Days{{.date = "a", .postsByHour = hours}, {.date = "b"}, {.date = "c", .postsByHour = hours}});
  ASSERT_EQ(buckets.size(), 24U);
  for (std::int64_t hour = 0; hour < 24; ++hour) {
    EXPECT_EQ(buckets[static_cast<std::size_t>(hour)], (HourBucket{.hour = hour, .posts = 2 * hour * hour}));
  }
}

TEST(BlueskyInsights, anHourThatADayDoesNotListHas0AndWhatFollowsThe24thIsIgnored) {
  std::vector<std::int64_t> tooMany(26, 1);
  tooMany[24] = most;
  const auto buckets = BlueskyInsights::postsByHour(Days{{.date = "a", .postsByHour = tooMany},
                                                         {.date = "b", .postsByHour = tooMany},
                                                         {.date = "c", .postsByHour = {{10, 20}}},
                                                         {.date = "d", .postsByHour = {{}}}});
  ASSERT_EQ(buckets.size(), 24U);
  EXPECT_EQ(buckets[0].posts, 12);
  EXPECT_EQ(buckets[1].posts, 22);
  EXPECT_EQ(buckets[2].posts, 2);
  EXPECT_EQ(buckets[23].posts, 2);
}

TEST(BlueskyInsights, postsByHourOfNoDaysAre24EmptyBuckets) {
  const auto buckets = BlueskyInsights::postsByHour({});
  ASSERT_EQ(buckets.size(), 24U);
  for (std::int64_t hour = 0; hour < 24; ++hour) {
    EXPECT_EQ(buckets[static_cast<std::size_t>(hour)], (HourBucket{.hour = hour, .posts = 0}));
  }
}

TEST(BlueskyInsights, theSeriesKeepTheOrderGivenWithOneEntryARecord) {
  const Days days{
      {.date = "2024-05-02", .replyCount = 1, .quoteCount = 2, .repostCount = 3, .absolutistRate = 0.5},
      {.date = "2024-05-01", .absolutistRate = 0.25},
      {.date = "2024-05-02", .quoteCount = 7}};
  EXPECT_EQ(BlueskyInsights::interactions(days),
            (std::vector<InteractionDay>{
                {"2024-05-02", 1, 2, 3}, {"2024-05-01", 0, 0, 0}, {"2024-05-02", 0, 7, 0}}));
  EXPECT_EQ(BlueskyInsights::absolutism(days),
            (std::vector<AbsolutismDay>{{"2024-05-02", 50}, {"2024-05-01", 25}, {"2024-05-02", 0}}));
  EXPECT_TRUE(BlueskyInsights::interactions({}).empty());
  EXPECT_TRUE(BlueskyInsights::absolutism({}).empty());
}

TEST(BlueskyInsights, aFractionThatIsNotFiniteIs0InTheSeries) {
  for (const double value : {infinity, -infinity, notANumber}) {
    EXPECT_EQ(BlueskyInsights::absolutism(Days{{.date = "a", .absolutistRate = value}}),
              (std::vector<AbsolutismDay>{{"a", 0}}));
  }
}

TEST(BlueskyInsights, theSummaryDoesNotDependOnTheOrderOfTheDays) {
  EXPECT_TRUE(rc::check([](std::vector<std::uint8_t> numbers) {
    Days days;
    for (const std::uint8_t number : numbers) {  // eighths, so that sums are exact
      days.push_back({.date = "a", .posts = number % 7, .likeCount = number});
      if (number % 3 != 0) days.back().avgPostLength = number / 8.0;
      if (number % 5 != 0) days.back().absolutistRate = number % 8 / 8.0;
    }
    const auto summary = BlueskyInsights::summary(days);
    Days reversed(days.rbegin(), days.rend());
    RC_ASSERT(BlueskyInsights::summary(reversed) == summary);
    std::int64_t posts = 0;
    for (const auto& day : days) posts += *day.posts;
    RC_ASSERT(summary.totalPosts == posts);
    RC_ASSERT(summary.absolutismRatePct >= 0 && summary.absolutismRatePct <= 100);
  }));
}

}  // namespace
}  // namespace kestrel
