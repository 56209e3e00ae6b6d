#include <KestrelKit/model/Baselines.h>

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <utility>
#include <vector>

namespace kestrel {
namespace {

// The day of 2024 with that number, from 1; at most 99 of one month keep their order as text.
std::string dayKey(int number) {
  return "2024-05-" + std::string(number < 10 ? "0" : "") + std::to_string(number);
}

DailyMetrics dayOf(int number, double sleep, std::int64_t posts, double sentiment) {
  return {.date = dayKey(number), .sleep_hours = sleep, .posts = posts, .sentiment = sentiment};
}

std::vector<DailyMetrics> days(int count) {
  std::vector<DailyMetrics> history;
  for (int number = 1; number <= count; ++number) {
    history.push_back(dayOf(number, 6, 4, 0.5));
  }
  return history;
}

constexpr Baseline ofDays{.avgSleep = 6, .avgPosts = 4, .avgSentiment = 0.5};

TEST(Baselines, areTheDefaultWithFewerThanSevenDaysWithData) {
  EXPECT_EQ(Baselines::personal({}), Baseline{});
  EXPECT_EQ(Baselines::personal(days(6)), Baseline{});
  EXPECT_EQ(Baselines::personal(days(7)), ofDays);
  auto history = days(6);
  history.push_back(dayOf(7, 0, 0, 0.9));  // neither sleep nor posts: no data
  EXPECT_EQ(Baselines::personal(history), Baseline{});
  history.back().posts = 4;
  EXPECT_NE(Baselines::personal(history), Baseline{});
}

TEST(Baselines, areMeansOverTheDaysThatCountForEach) {
  const std::vector<DailyMetrics> history{
      dayOf(1, 8, 0, 0.9),    // no posts: its sentiment is that of none
      dayOf(2, 0, 6, -0.5),   // no sleep data
      dayOf(3, 7, 2, 0.25),   //
      dayOf(4, 6, 4, 0.5),    //
      dayOf(5, 0, 0, 0.7),    // no data
      dayOf(6, 7, 0, 0.9),    //
      dayOf(7, -1, 0, 0.9),   // not over 0, but not without data either
      dayOf(8, 0, -2, -0.9),  // likewise
  };
  // Sleep: 8, 7, 6, 7. Posts: 0, 6, 2, 4, 0, 0, -2. Sentiment: -0.5, 0.25, 0.5.
  EXPECT_EQ(Baselines::personal(history),
            (Baseline{.avgSleep = 7, .avgPosts = 10.0 / 7, .avgSentiment = 0.25 / 3}));
}

TEST(Baselines, keepTheDefaultWhereNothingIsAveraged) {
  std::vector<DailyMetrics> sleepOnly;
  std::vector<DailyMetrics> postsOnly;
  for (int number = 1; number <= 7; ++number) {
    sleepOnly.push_back(dayOf(number, 5, 0, 0.5));
    postsOnly.push_back(dayOf(number, 0, 3, 0.5));
  }
  EXPECT_EQ(Baselines::personal(sleepOnly), (Baseline{.avgSleep = 5, .avgPosts = 0, .avgSentiment = 0}));
  EXPECT_EQ(Baselines::personal(postsOnly), (Baseline{.avgSleep = 7, .avgPosts = 3, .avgSentiment = 0.5}));
}

TEST(Baselines, areOfTheLast28DaysWithDataWhateverTheirOrder) {
  auto history = days(31);
  for (int number = 1; number <= 3; ++number) {  // the three before the last 28
    history[static_cast<std::size_t>(number - 1)].posts = 1000;
  }
  EXPECT_EQ(Baselines::personal(history), ofDays);
  std::ranges::reverse(history);
  EXPECT_EQ(Baselines::personal(history), ofDays);
  history.push_back(dayOf(32, 0, 0, 0));  // without data, it takes nobody's place
  EXPECT_EQ(Baselines::personal(history), ofDays);
  history.pop_back();
  history[0].posts = 0;  // day 31 keeps its sleep, so it is still one of the 28
  EXPECT_EQ(Baselines::personal(history).avgPosts, 27 * 4 / 28.0);
  history[0].sleep_hours = 0;  // now day 3 is one
  EXPECT_EQ(Baselines::personal(history).avgPosts, (27 * 4 + 1000) / 28.0);
}

TEST(Baselines, takeDaysOfOneKeyInTheOrderGiven) {
  std::vector<DailyMetrics> history(29, dayOf(1, 6, 4, 0.5));
  history.front().posts = 1000;
  EXPECT_EQ(Baselines::personal(history), ofDays);
  std::swap(history.front(), history.back());
  EXPECT_EQ(Baselines::personal(history).avgPosts, (27 * 4 + 1000) / 28.0);
}

TEST(Baselines, areOfKeysThatAreTextAndNoDays) {
  auto history = days(28);
  history[0].date = "~";  // the last of all
  history[0].posts = 32;
  history.push_back(dayOf(1, 6, 1000, 0.5));
  EXPECT_EQ(Baselines::personal(history).avgPosts, 5);
}

TEST(Baselines, takeEveryNumber) {
  constexpr double infinity = std::numeric_limits<double>::infinity();
  constexpr auto most = std::numeric_limits<std::int64_t>::max();
  auto history = days(8);
  history[0].sleep_hours = std::nan("");  // not over 0, and no 0 either
  history[0].posts = 0;
  EXPECT_EQ(Baselines::personal(history), (Baseline{.avgSleep = 6, .avgPosts = 3.5, .avgSentiment = 0.5}));
  history[1].sleep_hours = infinity;
  history[1].sentiment = -infinity;
  for (DailyMetrics& day : history) {
    day.posts = most;
  }
  const Baseline baseline = Baselines::personal(history);
  EXPECT_EQ(baseline.avgSleep, infinity);
  EXPECT_EQ(baseline.avgPosts, 0x1p63);
  EXPECT_EQ(baseline.avgSentiment, -infinity);
}

TEST(Baselines, doNotDependOnTheOrderOfDifferentDays) {
  EXPECT_TRUE(rc::check("any order", [] {
    auto history = days(40);
    for (DailyMetrics& day : history) {
      day.sleep_hours = *rc::gen::inRange(0, 12);
      day.posts = *rc::gen::inRange(0, 3);
    }
    const Baseline inOrder = Baselines::personal(history);
    for (std::size_t left = history.size(); left > 1; --left) {
      std::swap(history[left - 1], history[*rc::gen::inRange<std::size_t>(0, left)]);
    }
    RC_ASSERT(Baselines::personal(history) == inOrder);
  }));
}

}  // namespace
}  // namespace kestrel
