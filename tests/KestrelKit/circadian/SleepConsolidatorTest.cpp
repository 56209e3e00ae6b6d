#include <KestrelKit/circadian/SleepConsolidator.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <rapidcheck.h>
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <limits>
#include <optional>
#include <ostream>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kestrel {

void PrintTo(const SleepSession& session, std::ostream* out) {
  *out << session.date << ' ' << session.midSleepMinutes << ' ' << session.asleepMinutes;
}

namespace {

using namespace std::chrono;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Optional;

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

const sys_days march5 = 2025y / March / 5;

Instant at(sys_time<milliseconds> time) { return ReferenceClock::fromSystem(time); }

SleepInterval interval(sys_time<milliseconds> start, sys_time<milliseconds> end) {
  return {.start = at(start), .end = at(end)};
}

SleepInterval intervalInSeconds(double start, double end) {
  return {.start = instantSinceReferenceDate(start), .end = instantSinceReferenceDate(end)};
}

Calendar gregorianIn(std::string_view zone) { return Calendar::gregorian(TimeZone::named(zone).value()); }

std::vector<SleepSession> nightsInUtc(const std::vector<SleepInterval>& intervals,
                                      double gapLimitMinutes = 30) {
  return SleepConsolidator::consolidate(intervals, gapLimitMinutes, gregorianIn("UTC"));
}

TEST(SleepConsolidator, workedExampleGivesTwoNights) {
  EXPECT_THAT(
      nightsInUtc({interval(march5 - 1h, march5 + 1h), interval(march5 + 30min, march5 + 2h),
                   interval(march5 + 2h + 20min, march5 + 6h), interval(march5 + 9h, march5 + 9h + 30min)}),
      ElementsAre(SleepSession{"2025-03-05", 150, 400}, SleepSession{"2025-03-05", 555, 30}));
}

TEST(SleepConsolidator, singleIntervalIsANightDatedByTheDayOfWaking) {
  EXPECT_THAT(nightsInUtc({interval(march5 - 2h, march5 + 6h)}),
              ElementsAre(SleepSession{"2025-03-05", 120, 480}));
}

TEST(SleepConsolidator, nightCentredAt0330HasMidSleep210) {
  EXPECT_EQ(nightsInUtc({interval(march5, march5 + 7h)}).at(0).midSleepMinutes, 210);
}

TEST(SleepConsolidator, emptyInputGivesNoNights) { EXPECT_THAT(nightsInUtc({}), IsEmpty()); }

TEST(SleepConsolidator, intervalsThatDoNotLastGiveNoNights) {
  const auto infinity = std::numeric_limits<double>::infinity();
  EXPECT_THAT(nightsInUtc({interval(march5, march5), interval(march5 + 2h, march5 + 1h),
                           intervalInSeconds(notANumber, 0), intervalInSeconds(0, notANumber),
                           intervalInSeconds(infinity, infinity), intervalInSeconds(0.0, -0.0)}),
              IsEmpty());
}

TEST(SleepConsolidator, intervalsThatDoNotLastNeitherJoinNorSeparate) {
  // The one of length zero would bridge the two nights, were it taken.
  const auto first = interval(march5, march5 + 1h);
  const auto second = interval(march5 + 2h, march5 + 3h);
  const std::vector nights{SleepSession{"2025-03-05", 30, 60}, SleepSession{"2025-03-05", 150, 60}};
  const auto bridge = interval(march5 + 90min, march5 + 90min);
  const auto inverted = interval(march5 + 90min, march5 + 80min);
  EXPECT_EQ(nightsInUtc({first, bridge, inverted, second}), nights);
  EXPECT_EQ(nightsInUtc({inverted, second, first, bridge}), nights);
  EXPECT_EQ(nightsInUtc({intervalInSeconds(notANumber, 7), first, second}), nights);
}

TEST(SleepConsolidator, gapOfExactlyTheLimitJoinsAndOneSecondMoreDoesNot) {
  const auto first = interval(march5, march5 + 1h);
  const auto countWithGap = [&](milliseconds gap) {
    return nightsInUtc({first, interval(march5 + 1h + gap, march5 + 4h)}).size();
  };
  EXPECT_EQ(countWithGap(30min - 1s), 1U);
  EXPECT_EQ(countWithGap(30min), 1U);
  EXPECT_EQ(countWithGap(30min + 1ms), 2U);
  EXPECT_EQ(countWithGap(30min + 1s), 2U);
}

TEST(SleepConsolidator, gapLimitIsComparedBetweenNeighbouringFloats) {
  const std::vector nights{intervalInSeconds(0, 3600), intervalInSeconds(5400, 9000)};
  EXPECT_EQ(nightsInUtc(nights, 30).size(), 1U);
  EXPECT_EQ(nightsInUtc(nights, std::nextafter(30, 0)).size(), 2U);
  const std::vector later{nights[0], intervalInSeconds(std::nextafter(5400, 6000), 9000)};
  EXPECT_EQ(nightsInUtc(later, 30).size(), 2U);
}

TEST(SleepConsolidator, gapIsMeasuredFromTheLatestEndSoFar) {
  // The second interval ends first; the third is near the first's end.
  EXPECT_THAT(nightsInUtc({interval(march5, march5 + 4h), interval(march5 + 1h, march5 + 2h),
                           interval(march5 + 4h + 10min, march5 + 5h)}),
              ElementsAre(SleepSession{"2025-03-05", 150, 290}));
}

TEST(SleepConsolidator, limitOfZeroJoinsWhatTouches) {
  EXPECT_EQ(nightsInUtc({interval(march5, march5 + 1h), interval(march5 + 1h, march5 + 2h)}, 0).size(), 1U);
  EXPECT_EQ(nightsInUtc({interval(march5, march5 + 1h), interval(march5 + 1h + 1ms, march5 + 2h)}, 0).size(),
            2U);
  EXPECT_EQ(nightsInUtc({interval(march5, march5 + 1h), interval(march5 + 1h, march5 + 2h)}, -0.0).size(),
            1U);
}

TEST(SleepConsolidator, negativeLimitAsksForAnOverlap) {
  const auto countWithOverlap = [](milliseconds overlap) {
    return nightsInUtc({interval(march5, march5 + 1h), interval(march5 + 1h - overlap, march5 + 2h)}, -10)
        .size();
  };
  EXPECT_EQ(countWithOverlap(0s), 2U);
  EXPECT_EQ(countWithOverlap(10min - 1ms), 2U);
  EXPECT_EQ(countWithOverlap(10min), 1U);
}

TEST(SleepConsolidator, infiniteLimitJoinsEverythingAndNoNumberNothing) {
  const std::vector twoYears{interval(march5, march5 + 1h),
                             interval(march5 + days(365), march5 + days(365) + 1h)};
  EXPECT_EQ(nightsInUtc(twoYears, std::numeric_limits<double>::infinity()).size(), 1U);
  EXPECT_EQ(nightsInUtc(twoYears, -std::numeric_limits<double>::infinity()).size(), 2U);
  EXPECT_EQ(nightsInUtc({twoYears[0], twoYears[0]}, notANumber).size(), 2U);
}

TEST(SleepConsolidator, identicalIntervalsCountOnce) {
  const auto night = interval(march5 - 1h, march5 + 6h);
  EXPECT_EQ(nightsInUtc({night, night}), nightsInUtc({night}));
}

TEST(SleepConsolidator, containedIntervalNeitherExtendsTheNightNorAddsSleep) {
  const auto night = interval(march5 - 1h, march5 + 6h);
  EXPECT_EQ(nightsInUtc({night, interval(march5 + 1h, march5 + 2h)}), nightsInUtc({night}));
  EXPECT_EQ(nightsInUtc({night, interval(march5 + 1h, march5 + 6h)}), nightsInUtc({night}));
  EXPECT_EQ(nightsInUtc({night, interval(march5 - 1h, march5 + 2h)}), nightsInUtc({night}));
}

TEST(SleepConsolidator, inputInAnyOrderGivesTheNightsOfInputSortedByStart) {
  std::vector intervals{interval(march5 - 1h, march5 + 1h), interval(march5 - 1h, march5 + 20min),
                        interval(march5 + 30min, march5 + 2h), interval(march5 + 2h + 20min, march5 + 6h),
                        interval(march5 + 9h, march5 + 9h + 30min)};
  const auto comesFirst = [](const SleepInterval& left, const SleepInterval& right) {
    return std::pair(left.start, left.end) < std::pair(right.start, right.end);
  };
  std::ranges::sort(intervals, comesFirst);
  const auto expected = nightsInUtc(intervals);
  ASSERT_EQ(expected.size(), 2U);
  while (std::ranges::next_permutation(intervals, comesFirst).found) {
    ASSERT_EQ(nightsInUtc(intervals), expected);
  }
}

TEST(SleepConsolidator, orderDoesNotMatterToALimitThatAsksForAnOverlap) {
  // Taken shortest first, the two that start together would be 30 seconds of overlap, and two nights.
  const auto longer = interval(march5, march5 + 10min);
  const auto shorter = interval(march5, march5 + 30s);
  EXPECT_EQ(nightsInUtc({longer, shorter}, -1), nightsInUtc({shorter, longer}, -1));
  EXPECT_EQ(nightsInUtc({shorter, longer}, -1).size(), 1U);
}

TEST(SleepConsolidator, secondsOfTheMiddleAreDropped) {
  EXPECT_EQ(nightsInUtc({interval(march5, march5 + 7h + 1min + 59s + 998ms)}).at(0).midSleepMinutes, 210);
  EXPECT_EQ(nightsInUtc({interval(march5, march5 + 7h + 2min)}).at(0).midSleepMinutes, 211);
  EXPECT_EQ(nightsInUtc({interval(march5 - 2s, march5)}).at(0).midSleepMinutes, 1439);
}

TEST(SleepConsolidator, minutesAsleepAreNotRounded) {
  EXPECT_EQ(nightsInUtc({intervalInSeconds(0, 100.5)}).at(0).asleepMinutes, 1.675);
}

TEST(SleepConsolidator, nightThatEndsAtMidnightBelongsToTheNewDay) {
  EXPECT_EQ(nightsInUtc({interval(march5 - 2h, march5)}).at(0).date, "2025-03-05");
  EXPECT_EQ(nightsInUtc({interval(march5 - 2h, march5 - 1ms)}).at(0).date, "2025-03-04");
}

TEST(SleepConsolidator, zoneOfTheCalendarDecidesDayAndClockTime) {
  const std::vector night{interval(march5 + 12h, march5 + 20h)};
  EXPECT_THAT(SleepConsolidator::consolidate(night, 30, gregorianIn("Asia/Tokyo")),
              ElementsAre(SleepSession{"2025-03-06", 60, 480}));
  EXPECT_THAT(SleepConsolidator::consolidate(night, 30, gregorianIn("Asia/Kathmandu")),
              ElementsAre(SleepSession{"2025-03-06", 21 * 60 + 45, 480}));
  EXPECT_THAT(SleepConsolidator::consolidate(night, 30, gregorianIn("America/New_York")),
              ElementsAre(SleepSession{"2025-03-05", 11 * 60, 480}));
}

TEST(SleepConsolidator, nightInWhichTheClocksAreSetForwardLastsAnHourLess) {
  // Berlin, 23:00 to 07:00 by the clocks: its middle is half past two of winter, half past three of summer
  // time.
  const sys_days changes = 2025y / March / 30;
  const std::vector night{interval(changes - 2h, changes + 5h)};
  EXPECT_THAT(SleepConsolidator::consolidate(night, 30, gregorianIn("Europe/Berlin")),
              ElementsAre(SleepSession{"2025-03-30", 210, 420}));
}

TEST(SleepConsolidator, nightInWhichTheClocksAreSetBackLastsAnHourMore) {
  const sys_days changes = 2025y / October / 26;
  const std::vector night{interval(changes - 3h, changes + 6h)};
  EXPECT_THAT(SleepConsolidator::consolidate(night, 30, gregorianIn("Europe/Berlin")),
              ElementsAre(SleepSession{"2025-10-26", 150, 540}));
}

TEST(SleepConsolidator, anotherCalendarNamesTheDayInItsOwnWay) {
  const std::vector night{interval(march5 - 2h, march5 + 6h)};
  EXPECT_THAT(SleepConsolidator::consolidate(night, 30, Calendar::ofLocale("th_TH", TimeZone::utc())),
              ElementsAre(SleepSession{"2568-03-05", 120, 480}));
}

TEST(SleepConsolidator, dayKeyIsPaddedWithZerosAndGrowsBeyondFourDigits) {
  const auto dateOf = [](sys_days day) {
    const double midnight = static_cast<double>(
        (sys_seconds(day).time_since_epoch() - ReferenceClock::referenceDateSince1970).count());
    return nightsInUtc({intervalInSeconds(midnight + 3600, midnight + 30'000)}).at(0).date;
  };
  EXPECT_EQ(dateOf(7y / January / 2), "0007-01-02");
  EXPECT_EQ(dateOf(12345y / November / 12), "12345-11-12");
}

TEST(SleepConsolidator, whatTheCalendarCannotNameHasZeros) {
  const double infinity = std::numeric_limits<double>::infinity();
  EXPECT_THAT(nightsInUtc({intervalInSeconds(0, infinity)}),
              ElementsAre(SleepSession{"0000-00-00", 0, infinity}));
  EXPECT_THAT(nightsInUtc({intervalInSeconds(-infinity, 0)}),
              ElementsAre(SleepSession{"2001-01-01", 0, infinity}));
  EXPECT_THAT(nightsInUtc({intervalInSeconds(-infinity, infinity)}),
              ElementsAre(SleepSession{"0000-00-00", 0, infinity}));
  // A float still tells these minutes, but no calendar names a year beyond five million.
  EXPECT_THAT(nightsInUtc({intervalInSeconds(1e15, 1e15 + 6000)}),
              ElementsAre(SleepSession{"0000-00-00", 0, 100}));
  // Here a float tells no seconds apart.
  EXPECT_THAT(nightsInUtc({intervalInSeconds(1e17, 1e17 + 6000)}),
              ElementsAre(SleepSession{"0000-00-00", 0, 100}));
}

// ---- Random input ----

/// Up to 40 intervals within three days, in whole minutes, among them some that do not last.
std::vector<SleepInterval> randomMinutes() {
  const auto pairs = *rc::gen::container<std::vector<std::pair<int, int>>>(
      rc::gen::pair(rc::gen::inRange(0, 4320), rc::gen::inRange(-20, 300)));
  std::vector<SleepInterval> intervals;
  for (const auto& [start, length] : pairs) {
    intervals.push_back(intervalInSeconds(start * 60.0, (start + length) * 60.0));
  }
  return intervals;
}

/// The same with fractions of seconds, in the century around the reference date.
std::vector<SleepInterval> randomSeconds() {
  const double origin = *rc::gen::inRange(-1'500'000'000, 1'500'000'000);
  const auto pairs = *rc::gen::container<std::vector<std::pair<int, int>>>(
      rc::gen::pair(rc::gen::inRange(0, 259'200'000), rc::gen::inRange(-600'000, 18'000'000)));
  std::vector<SleepInterval> intervals;
  for (const auto& [start, length] : pairs) {
    intervals.push_back(
        intervalInSeconds(origin + start / 1000.0, origin + start / 1000.0 + length / 1000.0));
  }
  return intervals;
}

double randomLimit() { return *rc::gen::inRange(0, 7'200) / 60.0; }

/// What the nights are by their definition: minute after minute, covered or not, and a night goes on as long
/// as at most `gapLimit` minutes in a row are not.
std::vector<SleepSession> minuteByMinute(const std::vector<SleepInterval>& intervals, int gapLimit) {
  std::vector<bool> covered(4320 + 300);
  for (const auto& [start, end] : intervals) {
    const auto minute = [](Instant instant) {
      return static_cast<int>(secondsSinceReferenceDate(instant)) / 60;
    };
    for (int each = minute(start); each < minute(end); ++each) {
      covered[static_cast<std::size_t>(each)] = true;
    }
  }
  struct Night {
    int start, end, asleep;
  };
  std::vector<Night> nights;
  for (int minute = 0; minute < static_cast<int>(covered.size()); ++minute) {
    if (!covered[static_cast<std::size_t>(minute)]) {
      continue;
    }
    if (nights.empty() || minute - nights.back().end > gapLimit) {
      nights.push_back({minute, minute, 0});
    }
    nights.back().end = minute + 1;
    ++nights.back().asleep;
  }
  std::vector<SleepSession> sessions;
  for (const auto& [start, end, asleep] : nights) {
    sessions.push_back({.date = "2001-01-0" + std::to_string(end / 1440 + 1),
                        .midSleepMinutes = static_cast<double>((start + end) / 2 % 1440),
                        .asleepMinutes = static_cast<double>(asleep)});
  }
  return sessions;
}

TEST(SleepConsolidator, nightsAreThoseOfCountingMinuteByMinute) {
  EXPECT_TRUE(rc::check([] {
    const auto intervals = randomMinutes();
    const int limit = *rc::gen::inRange(0, 120);
    RC_ASSERT(nightsInUtc(intervals, limit) == minuteByMinute(intervals, limit));
  }));
}

TEST(SleepConsolidator, orderOfRandomInputDoesNotMatter) {
  EXPECT_TRUE(rc::check([] {
    auto intervals = *rc::gen::arbitrary<bool>() ? randomMinutes() : randomSeconds();
    const double limit = randomLimit();
    const auto nights = nightsInUtc(intervals, limit);
    std::ranges::shuffle(intervals, std::minstd_rand(*rc::gen::arbitrary<unsigned>()));
    RC_ASSERT(nightsInUtc(intervals, limit) == nights);
  }));
}

TEST(SleepConsolidator, orderOfThousandsDoesNotMatter) {
  // More than a sort takes at a time, on both sides of the reference date, with many that start together.
  std::mt19937_64 random(3);
  std::vector<SleepInterval> intervals;
  for (int count = 0; count < 20'000; ++count) {
    const double start = std::uniform_int_distribution(-3000, 3000)(random) * 1800.0;
    intervals.push_back(intervalInSeconds(start, start + std::exponential_distribution(1 / 1200.0)(random)));
  }
  intervals.push_back(intervalInSeconds(-0.0, 700));
  intervals.push_back(intervalInSeconds(-std::numeric_limits<double>::infinity(), -5'900'000));
  auto ordered = intervals;
  std::ranges::sort(ordered, [](const SleepInterval& left, const SleepInterval& right) {
    return left.start < right.start || (left.start == right.start && left.end > right.end);
  });
  const auto nights = nightsInUtc(ordered, 10);
  EXPECT_GT(nights.size(), 100U);
  EXPECT_EQ(nightsInUtc(intervals, 10), nights);
  std::ranges::reverse(intervals);
  EXPECT_EQ(nightsInUtc(intervals, 10), nights);
}

/// How long the nights last, in minutes: spans that lie within the limit of each other are joined until none
/// are.
std::vector<double> lengthsOf(std::vector<SleepInterval> spans, double limit) {
  std::erase_if(spans, [](const SleepInterval& span) { return span.end <= span.start; });
  for (std::size_t left = 0; left < spans.size(); ++left) {
    for (std::size_t right = left + 1; right < spans.size(); ++right) {
      const auto gap =
          std::max(spans[left].start, spans[right].start) - std::min(spans[left].end, spans[right].end);
      if (gap <= Seconds(limit * 60)) {
        spans[left] = {std::min(spans[left].start, spans[right].start),
                       std::max(spans[left].end, spans[right].end)};
        spans.erase(spans.begin() + static_cast<std::ptrdiff_t>(right));
        right = left;  // the longer span may reach others now
      }
    }
  }
  std::ranges::sort(spans, {}, &SleepInterval::start);
  std::vector<double> minutes;
  for (const auto& [start, end] : spans) {
    minutes.push_back((end - start).count() / 60);
  }
  return minutes;
}

// Sums of some forty floats of up to 1.5e9 seconds with a spacing of 2.4e-7: far below a hundredth of a
// minute.
constexpr double rounding = 1e-5;

TEST(SleepConsolidator, noMoreMinutesAreCountedThanTheNightsLast) {
  EXPECT_TRUE(rc::check([] {
    const auto intervals = randomSeconds();
    const double limit = randomLimit();
    const auto nights = nightsInUtc(intervals, limit);
    const auto lengths = lengthsOf(intervals, limit);
    RC_ASSERT(nights.size() == lengths.size());
    for (std::size_t index = 0; index < nights.size(); ++index) {
      RC_ASSERT(nights[index].asleepMinutes > 0);
      RC_ASSERT(nights[index].asleepMinutes <= lengths[index] + rounding);
    }
  }));
}

TEST(SleepConsolidator, splittingAnIntervalChangesNothing) {
  EXPECT_TRUE(rc::check([] {
    auto intervals = randomSeconds();
    RC_PRE(!intervals.empty());
    const double limit = randomLimit();
    const auto whole = nightsInUtc(intervals, limit);
    auto& split = intervals[*rc::gen::inRange<std::size_t>(0, intervals.size())];
    const Instant cut = split.start + (split.end - split.start) * (*rc::gen::inRange(0, 1001) / 1000.0);
    const SleepInterval rest{.start = cut, .end = split.end};
    RC_PRE(split.end > split.start);
    split.end = cut;
    intervals.push_back(rest);
    const auto parts = nightsInUtc(intervals, limit);
    RC_ASSERT(parts.size() == whole.size());
    for (std::size_t index = 0; index < whole.size(); ++index) {
      RC_ASSERT(parts[index].date == whole[index].date);
      RC_ASSERT(parts[index].midSleepMinutes == whole[index].midSleepMinutes);
      RC_ASSERT(std::abs(parts[index].asleepMinutes - whole[index].asleepMinutes) <= rounding);
    }
  }));
}

/// The plain way: the C library, asked anew for each of the two instants.
SleepSession plainly(const std::string& zone, const SleepInterval& night) {
  setenv("TZ", zone.c_str(), 1);
  tzset();
  const auto broken = [](double sinceReferenceDate) {
    const auto since1970 = static_cast<std::time_t>(std::floor(sinceReferenceDate)) +
                           ReferenceClock::referenceDateSince1970.count();
    std::tm result{};
    localtime_r(&since1970, &result);
    return result;
  };
  const double start = secondsSinceReferenceDate(night.start);
  const double end = secondsSinceReferenceDate(night.end);
  const std::tm woke = broken(end);
  const std::tm middle = broken((start + end) / 2);
  char date[16];
  std::strftime(date, sizeof date, "%Y-%m-%d", &woke);
  return {.date = date,
          .midSleepMinutes = static_cast<double>(middle.tm_hour * 60 + middle.tm_min),
          .asleepMinutes = (end - start) / 60};
}

TEST(SleepConsolidator, daysAndTimesAgreeWithThePlainWayInAnyZone) {
  const std::vector<std::string> zones{"UTC",
                                       "Europe/Berlin",
                                       "America/New_York",
                                       "America/St_Johns",
                                       "Asia/Kolkata",
                                       "Asia/Kathmandu",
                                       "Australia/Lord_Howe",
                                       "Pacific/Apia",
                                       "Pacific/Chatham",
                                       "Africa/Monrovia",
                                       "Europe/Dublin",
                                       "America/Sao_Paulo"};
  EXPECT_TRUE(rc::check([&] {
    const auto zone = *rc::gen::elementOf(zones);
    const Calendar calendar = gregorianIn(zone);
    // Nights of whole seconds, days to years apart, from the years 1850 to 2150, as likely as not near a
    // change of the clocks.
    double time = *rc::gen::inRange(-4'700'000, 4'000'000) * 1000.0;
    const int step = *rc::gen::elementOf(std::vector{86'400, 2'000'000, 50'000'000});
    std::vector<SleepInterval> nights;
    std::vector<SleepSession> expected;
    for (int count = *rc::gen::inRange(1, 20); count > 0; --count) {
      const double change =
          secondsSinceReferenceDate(calendar.timeZone().stretchAt(instantSinceReferenceDate(time)).end);
      const bool jumps = std::isfinite(change) && change < 5'000'000'000 && *rc::gen::arbitrary<bool>();
      const double start = (jumps ? change : time) - *rc::gen::inRange(0, 40'000);
      const double end = start + *rc::gen::inRange(2, 40'000);
      time = std::max(end, time) + *rc::gen::inRange(43'200, step);
      if (nights.empty() || start > secondsSinceReferenceDate(nights.back().end)) {
        nights.push_back(intervalInSeconds(start, end));
        expected.push_back(plainly(zone, nights.back()));
      }
    }
    RC_ASSERT(SleepConsolidator::consolidate(nights, 0, calendar) == expected);
  }));
}

TEST(SleepConsolidator, dayKeyIsThatOfPrintingTheComponentsOfAnyCalendar) {
  EXPECT_TRUE(rc::check([] {
    // The years before 622 are negative in some of them.
    const auto locale =
        "en@calendar=" + *rc::gen::elementOf(std::vector<std::string>{"gregorian", "buddhist", "hebrew",
                                                                      "persian", "islamic", "japanese"});
    const Calendar calendar = Calendar::ofLocale(locale, TimeZone::named("Europe/Berlin").value());
    const double end = *rc::gen::inRange(-64'000'000, 300'000'000) * 1000.0;
    const auto shown = calendar.components(instantSinceReferenceDate(end)).value();
    char key[40];
    std::snprintf(key, sizeof key, "%04d-%02d-%02d", shown.year, shown.month, shown.day);
    const std::vector night{intervalInSeconds(end - 1, end)};
    RC_ASSERT(SleepConsolidator::consolidate(night, 0, calendar).at(0).date == key);
  }));
}

// ---- Stages ----

SleepStageInterval stage(std::string name, sys_time<milliseconds> start, sys_time<milliseconds> end) {
  return {.start = at(start), .end = at(end), .stage = std::move(name)};
}

std::optional<SleepSession> nightOfMarch5(const std::vector<SleepStageInterval>& intervals,
                                          double gapLimitMinutes = 30) {
  return SleepConsolidator::consolidate(intervals, gapLimitMinutes, gregorianIn("UTC"), "2025-03-05");
}

TEST(SleepStages, eightCountAsAsleepInAnyCase) {
  for (const char* name :
       {"asleep", "asleepUnspecified", "asleepCore", "asleepDeep", "asleepREM", "core", "deep", "rem",
        "ASLEEP", "AsleepRem", "asleepunspecified", "Core", "DEEP", "REM"}) {
    EXPECT_THAT(nightOfMarch5({stage(name, march5, march5 + 1h)}),
                Optional(SleepSession{"2025-03-05", 30, 60}))
        << name;
  }
}

TEST(SleepStages, everyOtherOneDoesNotCount) {
  for (const char* name : {"awake", "inBed", "", "light", "asleep ", " asleep", "asleepcored", "cor", "cores",
                           "asleepREM\n", "unknown", "a\u015Fleep", "d\u00C9ep"}) {
    EXPECT_THAT(nightOfMarch5({stage(name, march5, march5 + 1h)}),
                Optional(SleepSession{"2025-03-05", 30, 0}))
        << name;
  }
}

TEST(SleepStages, wholeNightGivesTheMiddleWhenNothingCountsAsAsleep) {
  EXPECT_THAT(
      nightOfMarch5({stage("inBed", march5 - 1h, march5 + 6h), stage("awake", march5 + 6h, march5 + 7h)}),
      Optional(SleepSession{"2025-03-05", 180, 0}));
}

TEST(SleepStages, asleepPartGivesTheMiddle) {
  // In bed from 22:00 to 08:00, asleep from 00:00 to 06:00.
  EXPECT_THAT(nightOfMarch5({stage("inBed", march5 - 2h, march5 + 8h), stage("core", march5, march5 + 2h),
                             stage("rem", march5 + 3h, march5 + 6h)}),
              Optional(SleepSession{"2025-03-05", 180, 300}));
}

TEST(SleepStages, overlappingSleepCountsOnce) {
  EXPECT_THAT(nightOfMarch5({stage("asleep", march5, march5 + 4h), stage("deep", march5 + 1h, march5 + 2h),
                             stage("rem", march5 + 3h, march5 + 5h), stage("rem", march5 + 3h, march5 + 5h)}),
              Optional(SleepSession{"2025-03-05", 150, 300}));
}

TEST(SleepStages, allOfThemTogetherMakeTheNight) {
  // An hour and a half awake, longer than the limit, joins what is asleep before and after.
  EXPECT_THAT(nightOfMarch5({stage("core", march5, march5 + 1h), stage("awake", march5 + 1h, march5 + 150min),
                             stage("core", march5 + 150min, march5 + 4h)}),
              Optional(SleepSession{"2025-03-05", 120, 150}));
}

TEST(SleepStages, latestEndOfAnyStageDatesTheNight) {
  const std::vector night{stage("core", march5 - 5h, march5 - 1h), stage("awake", march5 - 1h, march5 + 1h)};
  EXPECT_THAT(nightOfMarch5(night), Optional(SleepSession{"2025-03-05", 21 * 60, 240}));
  EXPECT_EQ(SleepConsolidator::consolidate(night, 30, gregorianIn("UTC"), "2025-03-04"), std::nullopt);
}

TEST(SleepStages, calendarDecidesTheDay) {
  const std::vector night{stage("core", march5 + 12h, march5 + 20h)};
  EXPECT_THAT(SleepConsolidator::consolidate(night, 30, gregorianIn("Asia/Tokyo"), "2025-03-06"),
              Optional(SleepSession{"2025-03-06", 60, 480}));
  EXPECT_EQ(SleepConsolidator::consolidate(night, 30, gregorianIn("Asia/Tokyo"), "2025-03-05"), std::nullopt);
}

TEST(SleepStages, gapOfExactlyTheLimitJoinsAndOneSecondMoreDoesNot) {
  const auto asleepWithGap = [](seconds gap) {
    return nightOfMarch5({stage("core", march5, march5 + 1h), stage("core", march5 + 1h + gap, march5 + 3h)})
        ->midSleepMinutes;
  };
  EXPECT_EQ(asleepWithGap(30min), 90);
  EXPECT_EQ(asleepWithGap(30min + 1s), 135);  // the longer of two nights
}

TEST(SleepStages, ofSeveralNightsTheOneWithMostSleepIsGiven) {
  const auto nap = stage("asleep", march5 + 14h, march5 + 15h);
  const auto night = stage("asleep", march5 - 1h, march5 + 6h);
  const auto longRest = stage("inBed", march5 + 16h, march5 + 23h + 30min);
  for (const auto& order :
       {std::vector{nap, night, longRest}, {night, nap, longRest}, {longRest, nap, night}}) {
    EXPECT_THAT(nightOfMarch5(order), Optional(SleepSession{"2025-03-05", 150, 420}));
  }
}

TEST(SleepStages, ofEqualNightsTheEarliestIsGiven) {
  EXPECT_THAT(
      nightOfMarch5({stage("rem", march5 + 14h, march5 + 15h), stage("rem", march5 + 4h, march5 + 5h)}),
      Optional(SleepSession{"2025-03-05", 270, 60}));
  EXPECT_THAT(
      nightOfMarch5({stage("inBed", march5 + 14h, march5 + 15h), stage("awake", march5 + 4h, march5 + 5h)}),
      Optional(SleepSession{"2025-03-05", 270, 0}));
}

TEST(SleepStages, orderOfTheInputDoesNotMatter) {
  std::vector intervals{stage("awake", march5 - 2h, march5 - 1h), stage("core", march5 - 2h, march5 + 1h),
                        stage("inBed", march5 - 2h, march5 + 6h), stage("rem", march5 + 1h, march5 + 2h),
                        stage("deep", march5 + 1h, march5 + 90min)};
  std::vector order{0U, 1U, 2U, 3U, 4U};
  do {
    std::vector<SleepStageInterval> permuted;
    for (const auto index : order) {
      permuted.push_back(intervals[index]);
    }
    ASSERT_THAT(nightOfMarch5(permuted), Optional(SleepSession{"2025-03-05", 0, 240}));
  } while (std::ranges::next_permutation(order).found);
}

TEST(SleepStages, withoutANightOfThatDayThereIsNothing) {
  EXPECT_EQ(nightOfMarch5({}), std::nullopt);
  EXPECT_EQ(nightOfMarch5({stage("core", march5 - 5h, march5 - 1h)}), std::nullopt);
  EXPECT_EQ(nightOfMarch5({stage("core", march5 + 1h, march5 + 1h), stage("core", march5 + 3h, march5 + 2h)}),
            std::nullopt);
  const std::vector night{stage("core", march5, march5 + 1h)};
  EXPECT_EQ(SleepConsolidator::consolidate(night, 30, gregorianIn("UTC"), "2025-3-5"), std::nullopt);
  EXPECT_EQ(SleepConsolidator::consolidate(night, 30, gregorianIn("UTC"), ""), std::nullopt);
}

TEST(SleepStages, nightsOfSleepAloneAreThoseOfPlainIntervals) {
  EXPECT_TRUE(rc::check([] {
    const auto plain = randomSeconds();
    const double limit = randomLimit();
    std::vector<SleepStageInterval> staged;
    for (const auto& [start, end] : plain) {
      staged.push_back({.start = start,
                        .end = end,
                        .stage = *rc::gen::elementOf(std::vector<std::string>{"core", "asleepREM", "Deep"})});
    }
    const auto nights = nightsInUtc(plain, limit);
    for (const auto& night : nights) {
      const auto best = std::ranges::max_element(nights, {}, [&](const SleepSession& each) {
        return each.date == night.date ? each.asleepMinutes : -1;
      });
      RC_ASSERT(SleepConsolidator::consolidate(staged, limit, gregorianIn("UTC"), night.date) == *best);
    }
  }));
}

}  // namespace
}  // namespace kestrel
