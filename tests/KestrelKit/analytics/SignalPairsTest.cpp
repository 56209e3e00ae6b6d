#include <KestrelKit/analytics/SignalEvidenceAnalyzer.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pthread.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <map>
#include <random>
#include <string>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "SignalDays.h"

namespace kestrel {
namespace {

using testing::dayKey;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

using Observations = std::vector<SignalEvidenceObservation>;
using Pairs = std::vector<SignalPairAssociation>;

/// Values of signals of one source from day 0 on; NaN for none.
Observations daily(const std::vector<std::pair<std::string, std::vector<double>>>& signals) {
  Observations observations;
  for (const auto& [signalID, values] : signals) {
    for (std::size_t day = 0; day < values.size(); ++day) {
      observations.push_back({dayKey(static_cast<int>(day)), "watch", signalID, values[day]});
    }
  }
  return observations;
}

constexpr double none = std::numeric_limits<double>::quiet_NaN();

double rhoOf(const std::vector<double>& first, const std::vector<double>& second) {
  const auto pairs = SignalEvidenceAnalyzer::pairs(daily({{"a", first}, {"b", second}}), 1);
  return pairs.empty() ? none : pairs.at(0).spearmanRho;
}

// ---- By hand.

TEST(SignalPairs, ranksTellWhatMovesTogether) {
  EXPECT_EQ(rhoOf({1, 2, 3, 4}, {10, 20, 30, 1000}), 1);
  EXPECT_EQ(rhoOf({1, 2, 3, 4}, {5, 4, 3, -1e9}), -1);
  EXPECT_EQ(rhoOf({1, 2}, {2, 1}), -1);
  EXPECT_EQ(rhoOf({1, 2, 3, 4}, {2, 1, 4, 3}), 0.6);  // 1 - 6 * 4 / (4 * 15)
  EXPECT_EQ(rhoOf({1, 2, 3}, {1, 3, 2}), 0.5);        // 1 - 6 * 2 / (3 * 8)
  EXPECT_EQ(rhoOf({1, 2, 3, 4}, {3, 1, 4, 2}), 0);    // differences 2, 1, 1, 2: 1 - 6 * 10 / 60
}

TEST(SignalPairs, equalValuesShareTheMeanOfTheirRanks) {
  // Ranks 1, 2.5, 2.5, 4 and 1, 2, 3, 4: 4.5 / sqrt(4.5 * 5) = 0.948683.
  EXPECT_EQ(rhoOf({1, 2, 2, 3}, {1, 2, 3, 4}), 0.9487);
  // Ranks 1.5, 1.5, 3.5, 3.5 and 2, 2, 2, 4: 1.5 / sqrt(4 * 3) = 0.57735 with products 1.5 and 1.5.
  EXPECT_EQ(rhoOf({1, 1, 2, 2}, {5, 5, 5, 6}), 0.5774);
  // 0 and -0 are equal.
  EXPECT_EQ(rhoOf({0.0, -0.0, 1, 2}, {1, 2, 3, 4}), rhoOf({0, 0, 1, 2}, {1, 2, 3, 4}));
  EXPECT_EQ(rhoOf({-0.0, 0.0, 1, 2}, {1, 2, 3, 4}), rhoOf({0, 0, 1, 2}, {1, 2, 3, 4}));
  // Neighbouring numbers are not.
  EXPECT_EQ(rhoOf({1, std::nextafter(1, 2), 3, 4}, {1, 2, 3, 4}), 1);
}

TEST(SignalPairs, whatDoesNotVaryOnTheSharedDaysIsNoPair) {
  EXPECT_TRUE(std::isnan(rhoOf({5, 5, 5}, {1, 2, 3})));
  EXPECT_TRUE(std::isnan(rhoOf({1, 2, 3}, {5, 5, 5})));
  EXPECT_TRUE(std::isnan(rhoOf({5, 5, 5}, {5, 5, 5})));
  EXPECT_TRUE(std::isnan(rhoOf({1}, {1})));
  EXPECT_TRUE(std::isnan(rhoOf({}, {})));
  // It varies, but not where the other has values.
  EXPECT_TRUE(std::isnan(rhoOf({5, 5, 5, 6, 7}, {1, 2, 3, none, none})));
  EXPECT_TRUE(std::isnan(rhoOf({1, 2, none, none}, {none, none, 1, 2})));
}

TEST(SignalPairs, ranksAreThoseAmongTheSharedDays) {
  // Of the shared days 1, 2, 4 and 5 the values are 1, 3, 9, 7 and 2, 4, 6, 8: ranks 1, 2, 4, 3 and 1, 2,
  // 3, 4.
  const auto pairs =
      SignalEvidenceAnalyzer::pairs(daily({{"a", {5, 1, 3, none, 9, 7}}, {"b", {none, 2, 4, 5, 6, 8}}}), 1);
  EXPECT_THAT(pairs, ElementsAre(SignalPairAssociation{"watch", "a", "watch", "b", 4, 0.8}));
}

TEST(SignalPairs, needsAsManySharedDaysAsAskedFor) {
  const auto observations = daily({{"a", {1, 2, 3, none}}, {"b", {1, 2, 4, 5}}});
  for (const std::int64_t minimum : {-1, 0, 1, 2, 3}) {
    EXPECT_EQ(SignalEvidenceAnalyzer::pairs(observations, minimum).size(), 1U) << minimum;
  }
  EXPECT_THAT(SignalEvidenceAnalyzer::pairs(observations, 4), IsEmpty());
  EXPECT_THAT(SignalEvidenceAnalyzer::pairs(observations, std::numeric_limits<std::int64_t>::max()),
              IsEmpty());
}

TEST(SignalPairs, comeInTheOrderOfSourceAndSignal) {
  Observations observations;
  for (const auto& [source, signal] : {std::pair("b", "x"), std::pair("B", "z"), std::pair("b", ""),
                                       std::pair("ä", "a"), std::pair("", "x")}) {
    observations.push_back({dayKey(0), source, signal, 1});
    observations.push_back({dayKey(1), source, signal, 2});
  }
  std::vector<std::string> names;
  for (const auto& pair : SignalEvidenceAnalyzer::pairs(observations, 2)) {
    names.push_back(pair.firstSourceID + '/' + pair.firstSignalID + ' ' + pair.secondSourceID + '/' +
                    pair.secondSignalID);
    EXPECT_EQ(pair.spearmanRho, 1);
  }
  EXPECT_THAT(names, ElementsAre("/x B/z", "/x b/", "/x b/x", "/x ä/a", "B/z b/", "B/z b/x", "B/z ä/a",
                                 "b/ b/x", "b/ ä/a", "b/x ä/a"));
}

TEST(SignalPairs, ofSeveralValuesOfADayTheLastInTheListStands) {
  auto observations = daily({{"a", {1, 2, 3}}, {"b", {1, 2, 3}}});
  observations.push_back({dayKey(2), "watch", "a", 0});
  observations.push_back({dayKey(2), "watch", "a", none});  // is none
  observations.push_back({"2024-02-30", "watch", "a", 9});  // likewise
  observations.insert(observations.begin(), {dayKey(0), "watch", "b", 9});
  const auto pairs = SignalEvidenceAnalyzer::pairs(observations, 1);
  EXPECT_THAT(pairs, ElementsAre(SignalPairAssociation{"watch", "a", "watch", "b", 3, -0.5}));
}

TEST(SignalPairs, ofNothingOrOneSignalThereAreNone) {
  EXPECT_THAT(SignalEvidenceAnalyzer::pairs({}, 1), IsEmpty());
  EXPECT_THAT(SignalEvidenceAnalyzer::pairs(daily({{"a", {1, 2, 3}}}), 1), IsEmpty());
  EXPECT_THAT(SignalEvidenceAnalyzer::pairs(daily({{"a", {none}}, {"b", {none}}}), 1), IsEmpty());
}

TEST(SignalPairs, reachOverAllDaysOfTheCalendar) {
  Observations observations;
  for (const char* signal : {"a", "b"}) {
    for (const char* date : {"0001-01-01", "2024-02-29", "9999-12-31"}) {
      observations.push_back({date, "watch", signal, static_cast<double>(date[0])});
    }
  }
  const auto pairs = SignalEvidenceAnalyzer::pairs(observations, 3);
  ASSERT_EQ(pairs.size(), 1U);
  EXPECT_EQ(pairs[0].spearmanRho, 1);
}

// ---- Beside a plain computation, on random input.

/// By the definition: ranks by counting, day by day in a map.
Pairs plainPairs(const Observations& observations, std::int64_t minimumDays) {
  std::map<std::pair<std::string, std::string>, std::map<std::string, double>> signals;
  for (const auto& each : observations) {
    if (std::isfinite(each.value)) {
      signals[{each.sourceID, each.signalID}][each.date] = each.value;
    }
  }
  const auto ranksOf = [](const std::vector<double>& values) {
    std::vector<long double> ranks;
    for (const double value : values) {
      const auto below = std::ranges::count_if(values, [&](double other) { return other < value; });
      const auto equal = std::ranges::count(values, value);
      ranks.push_back(static_cast<long double>(2 * below + equal + 1) / 2);
    }
    return ranks;
  };
  Pairs pairs;
  for (auto first = signals.begin(); first != signals.end(); ++first) {
    for (auto second = std::next(first); second != signals.end(); ++second) {
      std::vector<double> one;
      std::vector<double> other;
      for (const auto& [day, value] : first->second) {
        if (const auto same = second->second.find(day); same != second->second.end()) {
          one.push_back(value);
          other.push_back(same->second);
        }
      }
      const auto count = static_cast<std::int64_t>(one.size());
      if (count < std::max<std::int64_t>(minimumDays, 2)) {
        continue;
      }
      const auto x = ranksOf(one);
      const auto y = ranksOf(other);
      const long double mean = static_cast<long double>(count + 1) / 2;
      long double xy = 0;
      long double xx = 0;
      long double yy = 0;
      for (std::size_t day = 0; day < x.size(); ++day) {
        xy += (x[day] - mean) * (y[day] - mean);
        xx += (x[day] - mean) * (x[day] - mean);
        yy += (y[day] - mean) * (y[day] - mean);
      }
      if (std::sqrt(xx * yy) > 1e-12L) {
        pairs.push_back({first->first.first, first->first.second, second->first.first, second->first.second,
                         count, static_cast<double>(std::round(xy / std::sqrt(xx * yy) * 10'000) / 10'000)});
      }
    }
  }
  return pairs;
}

/// Signals of days with and without gaps, with and without ties, in order or not, some days twice.
Observations randomObservations(std::mt19937_64& random) {
  Observations observations;
  const int days = 1 + static_cast<int>(random() % 60);
  const auto signals = 2 + random() % 6;
  for (std::size_t signal = 0; signal < signals; ++signal) {
    const auto gaps = random() % 4;  // of so many days one is left out; 0: none
    const auto values = 1 + random() % (random() % 2 == 0 ? 4U : 100'000U);
    for (int day = 0; day < days; ++day) {
      if (gaps != 1 && (gaps == 0 || random() % gaps != 0)) {
        observations.push_back({dayKey(day), signal % 2 == 0 ? "ring" : "watch", "s" + std::to_string(signal),
                                static_cast<double>(random() % values) / 8 - 3});
      }
    }
  }
  if (random() % 3 == 0) {
    std::ranges::shuffle(observations, random);
  }
  if (random() % 3 == 0 && !observations.empty()) {
    for (int more = 0; more < 5; ++more) {
      auto again = observations[random() % observations.size()];
      again.value += 1;
      observations.insert(observations.begin() + static_cast<std::ptrdiff_t>(random() % observations.size()),
                          again);
    }
  }
  return observations;
}

TEST(SignalPairs, areThoseOfAPlainComputation) {
  std::mt19937_64 random(20010101);
  std::size_t pairs = 0;
  for (int run = 0; run < 1500; ++run) {
    const auto observations = randomObservations(random);
    const auto minimum = static_cast<std::int64_t>(random() % 8);
    const auto expected = plainPairs(observations, minimum);
    ASSERT_EQ(SignalEvidenceAnalyzer::pairs(observations, minimum), expected) << run;
    pairs += expected.size();
  }
  EXPECT_GT(pairs, 5000U);
}

/// Of the signals some have a value on every day, some on some days, some but a few different values.
Observations manySignals() {
  std::mt19937_64 random(1);
  Observations observations;
  for (int signal = 0; signal < 40; ++signal) {
    for (int day = 0; day < 120; ++day) {
      if (signal % 3 == 0 || random() % 10 != 0) {
        const double value = std::sin(static_cast<double>(random()));
        observations.push_back({dayKey(day), "watch", "s" + std::to_string(signal),
                                signal % 4 < 2 ? value : std::round(5 * value)});
      }
    }
  }
  return observations;
}

TEST(SignalPairs, ofManySignalsAreThoseOfAPlainComputation) {
  const auto pairs = SignalEvidenceAnalyzer::pairs(manySignals(), 5);
  EXPECT_EQ(pairs.size(), 780U);
  EXPECT_EQ(pairs, plainPairs(manySignals(), 5));
}

TEST(SignalPairs, doNotDependOnTheNumberOfThreads) {
  const auto observations = manySignals();
  const auto pairs = SignalEvidenceAnalyzer::pairs(observations, 5, 1);
  EXPECT_EQ(pairs.size(), 780U);
  for (const unsigned threads : {0U, 2U, 3U, 8U, 39U, 40U, 200U}) {
    EXPECT_EQ(SignalEvidenceAnalyzer::pairs(observations, 5, threads), pairs) << threads;
  }
}

#if defined(__GLIBC__)
TEST(SignalPairs, areAllThereWhereTheSystemGivesNoThreads) {
  // No stack is as large as all memory that can have an address.
  pthread_attr_t before{};
  ASSERT_EQ(pthread_getattr_default_np(&before), 0);
  pthread_attr_t endless = before;
  ASSERT_EQ(pthread_attr_setstacksize(&endless, std::size_t{1} << 60U), 0);
  ASSERT_EQ(pthread_setattr_default_np(&endless), 0);
  EXPECT_THROW(std::thread([] {}), std::system_error);
  const auto pairs = SignalEvidenceAnalyzer::pairs(manySignals(), 5, 4);
  EXPECT_EQ(pthread_setattr_default_np(&before), 0);
  EXPECT_EQ(pairs, SignalEvidenceAnalyzer::pairs(manySignals(), 5, 1));
}
#endif

}  // namespace
}  // namespace kestrel
