#include <KestrelKit/circadian/CircadianStatistics.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <rapidcheck.h>
#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <numbers>
#include <numeric>
#include <optional>
#include <string>
#include <vector>

namespace kestrel {
namespace {

using Statistics = CircadianStatistics;
using Times = std::vector<double>;
using Counts = std::vector<std::int64_t>;
using testing::AllOf;
using testing::DoubleNear;
using testing::Gt;
using testing::IsNan;
using testing::Lt;
using testing::Optional;

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();

// A sine or cosine of an angle below ten is off by some 1e-15; on a circle of 1440 minutes that is below
// 1e-12.
constexpr double angleRounding = 1e-9;

/// How far two clock times are from each other, the shorter way round.
double distance(double left, double right) { return std::abs(std::remainder(left - right, 1440)); }

// ---- Circular mean ----

TEST(CircularMean, of1430And10IsMidnightAndNotNoon) {
  EXPECT_LT(distance(Statistics::circularMeanMinutes(Times{1430, 10}).value(), 0), angleRounding);
  EXPECT_LT(distance(Statistics::circularMeanMinutes(Times{10, 1430}).value(), 0), angleRounding);
}

TEST(CircularMean, ofOneTimeIsThatTime) {
  for (const double time : {0.0, 0.25, 210.0, 719.0, 720.0, 721.0, 1439.75}) {
    EXPECT_THAT(Statistics::circularMeanMinutes(Times{time}), Optional(DoubleNear(time, angleRounding)));
  }
}

TEST(CircularMean, isNeverNegative) {
  EXPECT_THAT(Statistics::circularMeanMinutes(Times{1380, 1400}), Optional(DoubleNear(1390, angleRounding)));
  EXPECT_THAT(Statistics::circularMeanMinutes(Times{721}), Optional(DoubleNear(721, angleRounding)));
}

TEST(CircularMean, ofNoTimesIsAbsent) { EXPECT_EQ(Statistics::circularMeanMinutes({}), std::nullopt); }

TEST(CircularMean, takesTimesBeyondTheFaceOfTheClock) {
  EXPECT_THAT(Statistics::circularMeanMinutes(Times{1440 + 30}), Optional(DoubleNear(30, angleRounding)));
  EXPECT_THAT(Statistics::circularMeanMinutes(Times{-30}), Optional(DoubleNear(1410, angleRounding)));
  EXPECT_LT(distance(Statistics::circularMeanMinutes(Times{1440}).value(), 0), angleRounding);
}

TEST(CircularMean, ofWhatIsNotFiniteIsNoNumber) {
  for (const double none : {notANumber, infinity, -infinity}) {
    EXPECT_THAT(Statistics::circularMeanMinutes(Times{10, none}), Optional(IsNan()));
  }
}

/// The formula as it stands, with a sine and a cosine for every time.
double plainCircularMean(const Times& times) {
  constexpr double pi = std::numbers::pi;
  double sines = 0;
  double cosines = 0;
  for (const double time : times) {
    sines += std::sin(time / 1440 * 2 * pi);
    cosines += std::cos(time / 1440 * 2 * pi);
  }
  const double mean = std::atan2(sines, cosines) / (2 * pi) * 1440;
  return mean < 0 ? mean + 1440 : mean;
}

TEST(CircularMean, isTheSameToTheLastBitForWholeMinutesAndOthers) {
  EXPECT_TRUE(rc::check([] {
    auto times = *rc::gen::nonEmpty(rc::gen::container<Times>(
        rc::gen::map(rc::gen::inRange(-4 * 1500, 4 * 3000), [](int quarters) { return quarters / 4.0; })));
    times.push_back(-0.0);
    RC_ASSERT(Statistics::circularMeanMinutes(times) == plainCircularMean(times));
  }));
  Times everyMinute(1440);
  std::iota(everyMinute.begin(), everyMinute.end(), 0.0);
  for (const double minute : everyMinute) {
    ASSERT_EQ(Statistics::circularMeanMinutes(Times{minute}), plainCircularMean({minute}));
  }
}

TEST(CircularMean, isRotatedWhenAllTimesAreRotated) {
  EXPECT_TRUE(rc::check([] {
    const auto quarters = rc::gen::map(rc::gen::inRange(0, 4 * 1440), [](int count) { return count / 4.0; });
    auto times = *rc::gen::nonEmpty(rc::gen::container<Times>(quarters));
    // Times that lie evenly round the circle have no direction to speak of.
    RC_PRE(Statistics::sleepRegularitySDMinutes(times).value() < 600);
    const double before = Statistics::circularMeanMinutes(times).value();
    const double turn = *quarters;
    for (double& time : times) {
      time = std::fmod(time + turn, 1440);
    }
    const double after = Statistics::circularMeanMinutes(times).value();
    // With a spread below 600 minutes the mean length of the resultant is above exp(-(600 / 1440 * 2 pi)^2 /
    // 2), 0.03: rounding grows by at most its inverse.
    RC_ASSERT(distance(after, before + turn) < angleRounding);
    RC_ASSERT(after >= 0 && after <= 1440);
  }));
}

// ---- Phase deviation ----

TEST(PhaseDeviation, of60AgainstAUsual1380IsTwoHoursLate) {
  EXPECT_THAT(Statistics::phaseDeviationHours(60, Times{1380}), Optional(DoubleNear(2.0, angleRounding)));
  EXPECT_THAT(Statistics::phaseDeviationHours(1380, Times{60}), Optional(DoubleNear(-2.0, angleRounding)));
}

TEST(PhaseDeviation, isMeasuredFromTheCircularMean) {
  EXPECT_THAT(Statistics::phaseDeviationHours(90, Times{1430, 10}), Optional(DoubleNear(1.5, angleRounding)));
}

TEST(PhaseDeviation, ofHalfACircleIsTwelveHoursLateEitherWay) {
  EXPECT_EQ(Statistics::phaseDeviationHours(720, Times{0}), 12.0);
  EXPECT_EQ(Statistics::phaseDeviationHours(0, Times{720}), 12.0);
  EXPECT_EQ(Statistics::phaseDeviationHours(719, Times{0}), 719 / 60.0);
  EXPECT_EQ(Statistics::phaseDeviationHours(721, Times{0}), -719 / 60.0);
  EXPECT_EQ(Statistics::phaseDeviationHours(std::nextafter(720, 1000), Times{0}),
            (std::nextafter(720, 1000) - 1440) / 60);
  EXPECT_EQ(Statistics::phaseDeviationHours(1, Times{720}), -719 / 60.0);
}

TEST(PhaseDeviation, ofTimesBeyondTheFaceGoesRoundTheCircle) {
  EXPECT_EQ(Statistics::phaseDeviationHours(5 * 1440 + 90, Times{0}), 1.5);
  EXPECT_EQ(Statistics::phaseDeviationHours(-5 * 1440 - 90, Times{0}), -1.5);
  EXPECT_EQ(Statistics::phaseDeviationHours(-5 * 1440 - 720, Times{0}), 12.0);
}

TEST(PhaseDeviation, isAbsentWithoutAJudgedNightOrWithoutNights) {
  EXPECT_EQ(Statistics::phaseDeviationHours(std::nullopt, Times{60}), std::nullopt);
  EXPECT_EQ(Statistics::phaseDeviationHours(60, {}), std::nullopt);
  EXPECT_EQ(Statistics::phaseDeviationHours(std::nullopt, {}), std::nullopt);
}

TEST(PhaseDeviation, ofWhatIsNotFiniteIsNoNumber) {
  for (const double none : {notANumber, infinity, -infinity}) {
    EXPECT_THAT(Statistics::phaseDeviationHours(none, Times{0}), Optional(IsNan()));
    EXPECT_THAT(Statistics::phaseDeviationHours(0, Times{none}), Optional(IsNan()));
  }
}

TEST(PhaseDeviation, liesAboveMinusTwelveUpToTwelveHours) {
  EXPECT_TRUE(rc::check([] {
    const double judged = *rc::gen::inRange(-5000, 5000);
    const double usual = *rc::gen::inRange(0, 1440);
    const double deviation = Statistics::phaseDeviationHours(judged, Times{usual}).value();
    RC_ASSERT(deviation > -12 && deviation <= 12);
    RC_ASSERT(distance(usual + deviation * 60, judged) < angleRounding);
  }));
}

// ---- Regularity ----

TEST(SleepRegularity, ofIdenticalTimesIsZero) {
  for (int minute = 0; minute < 1440; minute += 7) {
    for (const std::size_t count : {1U, 2U, 3U, 7U, 28U, 365U}) {
      ASSERT_EQ(Statistics::sleepRegularitySDMinutes(Times(count, minute)), 0.0) << minute << " x " << count;
    }
  }
  EXPECT_EQ(Statistics::sleepRegularitySDMinutes(Times{210.123, 210.123, 210.123}), 0.0);
}

TEST(SleepRegularity, ofTimesThatAFloatHardlyTellsApartIsZero) {
  EXPECT_EQ(Statistics::sleepRegularitySDMinutes(Times{0, 1e-9}), 0.0);  // the resultant rounds to 1
}

TEST(SleepRegularity, ofTwoTimesFollowsFromTheCosineOfHalfTheirDistance) {
  // Two unit vectors at an angle of 2a have a mean of length cos a.
  for (const double apart : {1.0, 60.0, 240.0, 700.0}) {
    const double resultant = std::cos(apart / 2 / 1440 * 2 * std::numbers::pi);
    const double expected = std::sqrt(-2 * std::log(resultant)) / (2 * std::numbers::pi) * 1440;
    EXPECT_THAT(Statistics::sleepRegularitySDMinutes(Times{1430, std::fmod(1430 + apart, 1440)}),
                Optional(DoubleNear(expected, 1e-7)))  // near 1 the logarithm takes half of the digits
        << apart;
  }
}

TEST(SleepRegularity, ofOppositeTimesIsBeyondAnySleep) {
  EXPECT_THAT(Statistics::sleepRegularitySDMinutes(Times{0, 720}), Optional(Gt(1440)));
}

TEST(SleepRegularity, isInfiniteWhenTheTimesCancelOut) {
  // The sine of half a circle is not quite 0; of the two half circles, one each way, it cancels out.
  EXPECT_EQ(Statistics::sleepRegularitySDMinutes(Times{720, -720, 0, 0}), infinity);
}

TEST(SleepRegularity, ofNoNightsIsAbsent) {
  EXPECT_EQ(Statistics::sleepRegularitySDMinutes({}), std::nullopt);
}

TEST(SleepRegularity, ofWhatIsNotANumberIsNoNumber) {
  EXPECT_THAT(Statistics::sleepRegularitySDMinutes(Times{notANumber}), Optional(IsNan()));
  EXPECT_THAT(Statistics::sleepRegularitySDMinutes(Times{infinity, infinity}), Optional(IsNan()));
  EXPECT_THAT(Statistics::sleepRegularitySDMinutes(Times{0, -infinity}), Optional(IsNan()));
}

TEST(SleepRegularity, ofNightsCloseTogetherIsNearlyThatOnALine) {
  const Times times{200, 205, 210, 215, 220};
  EXPECT_THAT(Statistics::sleepRegularitySDMinutes(times), Optional(DoubleNear(std::sqrt(50.0), 0.01)));
}

// ---- Duration ----

TEST(DurationDeviation, isDividedByTheNumberOfNights) {
  EXPECT_THAT(Statistics::durationSDMinutes(Times{400, 420, 440}),
              Optional(DoubleNear(std::sqrt(800.0 / 3), 1e-12)));
  EXPECT_EQ(Statistics::durationSDMinutes(Times{2, 4, 4, 4, 5, 5, 7, 9}), 2.0);
}

TEST(DurationDeviation, ofOneNightIsZero) { EXPECT_EQ(Statistics::durationSDMinutes(Times{417.3}), 0.0); }

TEST(DurationDeviation, ofNoNightsIsAbsent) { EXPECT_EQ(Statistics::durationSDMinutes({}), std::nullopt); }

TEST(DurationDeviation, takesTwoPasses) {
  // Squares of these have no room for the differences; one pass would give 0 or worse.
  EXPECT_EQ(Statistics::durationSDMinutes(Times{1e9 + 4, 1e9 + 7, 1e9 + 13, 1e9 + 16}), std::sqrt(22.5));
}

TEST(DurationDeviation, ofWhatIsNotFiniteIsNoNumber) {
  for (const double none : {notANumber, infinity, -infinity}) {
    EXPECT_THAT(Statistics::durationSDMinutes(Times{400, none}), Optional(IsNan()));
  }
}

// ---- Rest and activity ----

Times hours(double value) { return Times(24, value); }

TEST(ActivityRhythm, isAbsentUnlessThereAre24Hours) {
  EXPECT_EQ(Statistics::activityRhythm(Times(23, 100)), std::nullopt);
  EXPECT_EQ(Statistics::activityRhythm(Times(25, 100)), std::nullopt);
  EXPECT_EQ(Statistics::activityRhythm({}), std::nullopt);
  EXPECT_TRUE(Statistics::activityRhythm(Times(24, 100)));
}

TEST(ActivityRhythm, isAbsentUnlessTheTotalIsAboveZero) {
  EXPECT_EQ(Statistics::activityRhythm(hours(0)), std::nullopt);
  EXPECT_EQ(Statistics::activityRhythm(hours(-0.0)), std::nullopt);
  EXPECT_EQ(Statistics::activityRhythm(hours(-1)), std::nullopt);
  auto oneHour = hours(0);
  oneHour[5] = std::numeric_limits<double>::denorm_min();
  EXPECT_TRUE(Statistics::activityRhythm(oneHour));
  oneHour[5] = notANumber;
  EXPECT_EQ(Statistics::activityRhythm(oneHour), std::nullopt);
}

TEST(ActivityRhythm, ofAFlatProfileIsFlat) {
  EXPECT_EQ(Statistics::activityRhythm(hours(100)), (ActivityRhythm{0, 100, 100, 100, 0}));
  const auto uneven = Statistics::activityRhythm(hours(0.1)).value();  // whose sums are rounded
  EXPECT_EQ(uneven.m10OnsetHour, 0);
  EXPECT_DOUBLE_EQ(uneven.m10, 0.1);
  EXPECT_DOUBLE_EQ(uneven.l5, 0.1);
  EXPECT_DOUBLE_EQ(uneven.mesor, 0.1);
  EXPECT_NEAR(uneven.relativeAmplitude, 0, 1e-15);
}

TEST(ActivityRhythm, ofADayWorkerAsCountedByHand) {
  // 600 an hour from 08:00 to 18:00, 120 from 18:00 to 23:00, 0 at night but for 24 at four.
  auto profile = hours(0);
  std::fill(profile.begin() + 8, profile.begin() + 18, 600);
  std::fill(profile.begin() + 18, profile.begin() + 23, 120);
  profile[4] = 24;
  const auto rhythm = Statistics::activityRhythm(profile).value();
  EXPECT_EQ(rhythm.m10OnsetHour, 8);
  EXPECT_EQ(rhythm.m10, 600);
  EXPECT_EQ(rhythm.l5, 0);  // 23:00 to 04:00
  EXPECT_EQ(rhythm.mesor, (10 * 600 + 5 * 120 + 24) / 24.0);
  EXPECT_EQ(rhythm.relativeAmplitude, 1);
}

TEST(ActivityRhythm, windowsWrapPastMidnight) {
  // A night worker: 10 hours from 20:00, and no other hour without 60.
  auto profile = hours(60);
  for (const std::size_t hour : {20U, 21U, 22U, 23U, 0U, 1U, 2U, 3U, 4U, 5U}) {
    profile[hour] = 240;
  }
  const auto rhythm = Statistics::activityRhythm(profile).value();
  EXPECT_EQ(rhythm.m10OnsetHour, 20);
  EXPECT_EQ(rhythm.m10, 240);
  EXPECT_EQ(rhythm.l5, 60);
  EXPECT_EQ(rhythm.relativeAmplitude, 180.0 / 300);

  auto quiet = hours(60);
  for (const std::size_t hour : {22U, 23U, 0U, 1U, 2U}) {
    quiet[hour] = 12;
  }
  EXPECT_EQ(Statistics::activityRhythm(quiet)->l5, 12);
}

TEST(ActivityRhythm, earliestOfEqualWindowsCounts) {
  auto profile = hours(0);
  profile[9] = 100;  // in every window from 0 to 9
  EXPECT_EQ(Statistics::activityRhythm(profile)->m10OnsetHour, 0);
  profile[9] = 0;
  profile[10] = 100;  // from 1 to 10
  EXPECT_EQ(Statistics::activityRhythm(profile)->m10OnsetHour, 1);
  profile[10] = 0;
  profile[0] = 100;  // in the windows from 0 and from 15 to 23
  EXPECT_EQ(Statistics::activityRhythm(profile)->m10OnsetHour, 0);
}

TEST(ActivityRhythm, laterWindowReplacesOnlyAStrictlyBetterOne) {
  auto profile = hours(100);
  profile[23] = std::nextafter(100, 200);
  // The last bit of one hour is lost in the sum of ten, so the first window stands.
  EXPECT_EQ(Statistics::activityRhythm(profile)->m10OnsetHour, 0);
  profile[23] = 101;  // first in the window from 14
  EXPECT_EQ(Statistics::activityRhythm(profile)->m10OnsetHour, 14);
}

TEST(ActivityRhythm, relativeAmplitudeIsZeroWhereItsSumIsNotAboveZero) {
  auto profile = hours(10);
  std::fill(profile.begin(), profile.begin() + 5, -20);  // the least five hours weigh more than the most ten
  const auto rhythm = Statistics::activityRhythm(profile).value();
  EXPECT_EQ(rhythm.m10, 10);
  EXPECT_EQ(rhythm.l5, -20);
  EXPECT_EQ(rhythm.relativeAmplitude, 0);
  std::fill(profile.begin(), profile.begin() + 5, -10);
  EXPECT_EQ(Statistics::activityRhythm(profile)->relativeAmplitude, 0);
  std::fill(profile.begin(), profile.begin() + 5, -9);
  EXPECT_EQ(Statistics::activityRhythm(profile)->relativeAmplitude, 19);
}

/// M10, L5 and relative amplitude by their definition, from cumulative sums over two days of the same
/// profile.
ActivityRhythm byCumulativeSums(const std::array<std::int64_t, 24>& profile) {
  std::array<std::int64_t, 49> upTo{};
  for (std::size_t hour = 0; hour < 48; ++hour) {
    upTo[hour + 1] = upTo[hour] + profile[hour % 24];
  }
  std::array<std::int64_t, 24> tens{};
  std::array<std::int64_t, 24> fives{};
  for (std::size_t onset = 0; onset < 24; ++onset) {
    tens[onset] = upTo[onset + 10] - upTo[onset];
    fives[onset] = upTo[onset + 5] - upTo[onset];
  }
  const auto most = std::ranges::max_element(tens);
  const double m10 = static_cast<double>(*most) / 10;
  const double l5 = static_cast<double>(*std::ranges::min_element(fives)) / 5;
  return {.m10OnsetHour = static_cast<double>(most - tens.begin()),
          .m10 = m10,
          .l5 = l5,
          .mesor = static_cast<double>(upTo[24]) / 24,
          .relativeAmplitude = (m10 - l5) / (m10 + l5)};
}

TEST(ActivityRhythm, isThatOfCumulativeSumsForRandomCounts) {
  EXPECT_TRUE(rc::check([] {
    // Few distinct counts, so that windows tie.
    const auto most = *rc::gen::elementOf(std::vector<std::int64_t>{2, 10, 10'000});
    const auto counts =
        *rc::gen::container<std::array<std::int64_t, 24>>(rc::gen::inRange<std::int64_t>(0, most));
    RC_PRE(std::ranges::any_of(counts, [](std::int64_t count) { return count > 0; }));
    const Times profile(counts.begin(), counts.end());
    RC_ASSERT(Statistics::activityRhythm(profile) == byCumulativeSums(counts));
  }));
}

// ---- Steps ----

TEST(StepVariability, isTheDeviationOverTheMean) {
  EXPECT_EQ(Statistics::stepVariabilityCV(Counts{2, 4, 4, 4, 5, 5, 7, 9}), 2.0 / 5);
  EXPECT_EQ(Statistics::stepVariabilityCV(Counts{8000, 8000, 8000}), 0.0);
  EXPECT_EQ(Statistics::stepVariabilityCV(Counts{0, 10'000}), 1.0);
}

TEST(StepVariability, isAbsentWithoutCountsOrWithoutSteps) {
  EXPECT_EQ(Statistics::stepVariabilityCV({}), std::nullopt);
  EXPECT_EQ(Statistics::stepVariabilityCV(Counts{0, 0, 0}), std::nullopt);
  EXPECT_EQ(Statistics::stepVariabilityCV(Counts{-5, 5}), std::nullopt);
  EXPECT_EQ(Statistics::stepVariabilityCV(Counts{-5, 4}), std::nullopt);
  EXPECT_TRUE(Statistics::stepVariabilityCV(Counts{-5, 6}));
}

TEST(StepVariability, sumsCountsOfAnySizeAsFloats) {
  constexpr auto most = std::numeric_limits<std::int64_t>::max();
  EXPECT_EQ(Statistics::stepVariabilityCV(Counts{most, most, most}), 0.0);
}

// ---- Resting heart rate ----

TEST(RestingHeartRate, isComparedWithTheMeanOfTheBaseline) {
  EXPECT_EQ(Statistics::restingHRDeviationBpm(66, Counts{60, 60, 61, 61}), 5.5);
  EXPECT_EQ(Statistics::restingHRDeviationBpm(55, Counts{60}), -5.0);
  EXPECT_EQ(Statistics::restingHRDeviationBpm(60, Counts{59, 60, 60}), 60 - 179.0 / 3);
}

TEST(RestingHeartRate, isAbsentWithoutTodaysOrWithoutABaseline) {
  EXPECT_EQ(Statistics::restingHRDeviationBpm(std::nullopt, Counts{60}), std::nullopt);
  EXPECT_EQ(Statistics::restingHRDeviationBpm(60, {}), std::nullopt);
}

TEST(RestingHeartRateDeathTest, sumBeyond64BitsStopsTheProgram) {
  constexpr auto most = std::numeric_limits<std::int64_t>::max();
  constexpr auto least = std::numeric_limits<std::int64_t>::min();
  EXPECT_EQ(Statistics::restingHRDeviationBpm(0, Counts{most - 1, 1}), -static_cast<double>(most) / 2);
  EXPECT_DEATH(Statistics::restingHRDeviationBpm(0, Counts{most, 1}), "the sum of the baseline resting heart rates lies beyond 64 bits");
  EXPECT_DEATH(Statistics::restingHRDeviationBpm(0, Counts{least, -1}), "the sum of the baseline resting heart rates lies beyond 64 bits");
  // Without a rate of today nothing is summed.
  EXPECT_EQ(Statistics::restingHRDeviationBpm(std::nullopt, Counts{most, 1}), std::nullopt);
}

// ---- Coverage ----

TEST(Coverage, ofThreeNightsOfSevenIsThreeSevenths) {
  EXPECT_EQ(Statistics::coverageNights(3, 7), 3.0 / 7);
  EXPECT_NEAR(Statistics::coverageNights(3, 7), 0.4286, 5e-5);
}

TEST(Coverage, ofMoreNightsThanExpectedIsOne) {
  EXPECT_EQ(Statistics::coverageNights(10, 7), 1.0);
  EXPECT_EQ(Statistics::coverageNights(7, 7), 1.0);
  EXPECT_EQ(Statistics::coverageNights(6, 7), 6.0 / 7);
}

TEST(Coverage, isZeroWhenFewerThanOneNightIsExpected) {
  EXPECT_EQ(Statistics::coverageNights(5, 0), 0.0);
  EXPECT_EQ(Statistics::coverageNights(5, -1), 0.0);
  EXPECT_EQ(Statistics::coverageNights(5, std::numeric_limits<std::int64_t>::min()), 0.0);
  EXPECT_EQ(Statistics::coverageNights(0, 7), 0.0);
  EXPECT_EQ(Statistics::coverageNights(1, 1), 1.0);
}

// ---- All of them ----

CircadianObservations observations() {
  return {.date = "2025-03-05",
          .nights = {{"2025-03-02", 1430, 400}, {"2025-03-03", 10, 420}, {"2025-03-04", 0, 440}},
          .judgedMidSleepMinutes = 90,
          .hourlyActivity = hours(100),
          .stepCounts = {0, 10'000},
          .restingHeartRate = 66,
          .baselineRestingHeartRates = {60, 61},
          .expectedNights = 7};
}

TEST(CircadianFeatures, areTheStatisticsOfTheObservations) {
  const auto features = Statistics::features(observations());
  const Times midSleeps{1430, 10, 0};
  EXPECT_EQ(features, (CircadianFeatures{
                          .date = "2025-03-05",
                          .phaseDeviationHours = Statistics::phaseDeviationHours(90, midSleeps),
                          .sleepRegularitySDMinutes = Statistics::sleepRegularitySDMinutes(midSleeps),
                          .durationSDMinutes = Statistics::durationSDMinutes(Times{400, 420, 440}),
                          .activity = ActivityRhythm{0, 100, 100, 100, 0},
                          .stepVariabilityCV = 1.0,
                          .restingHRDeviationBpm = 5.5,
                          .coverageNights = 3.0 / 7,
                          .daysObserved = 3,
                      }));
  EXPECT_THAT(features.phaseDeviationHours, Optional(DoubleNear(1.5, angleRounding)));
  EXPECT_THAT(features.sleepRegularitySDMinutes, Optional(AllOf(Gt(8), Lt(8.2))));  // on a line, 8.16
}

TEST(CircadianFeatures, countTheNights) {
  auto input = observations();
  EXPECT_EQ(Statistics::features(input).daysObserved, 3);
  input.nights.resize(10);
  EXPECT_EQ(Statistics::features(input).daysObserved, 10);
  EXPECT_EQ(Statistics::features(input).coverageNights, 1.0);
}

TEST(CircadianFeatures, ofNothingAreAbsent) {
  EXPECT_EQ(Statistics::features({.date = "2025-03-05"}), CircadianFeatures{.date = "2025-03-05"});
}

TEST(CircadianFeatures, areAbsentOneByOne) {
  const auto whole = Statistics::features(observations());

  auto input = observations();
  auto expected = whole;
  input.judgedMidSleepMinutes.reset();
  expected.phaseDeviationHours.reset();
  EXPECT_EQ(Statistics::features(input), expected);

  input = observations();
  expected = whole;
  input.hourlyActivity.reset();
  expected.activity.reset();
  EXPECT_EQ(Statistics::features(input), expected);
  input.hourlyActivity = Times(23, 100);
  EXPECT_EQ(Statistics::features(input), expected);

  input = observations();
  expected = whole;
  input.stepCounts.clear();
  expected.stepVariabilityCV.reset();
  EXPECT_EQ(Statistics::features(input), expected);

  input = observations();
  expected = whole;
  input.restingHeartRate.reset();
  expected.restingHRDeviationBpm.reset();
  EXPECT_EQ(Statistics::features(input), expected);

  input = observations();
  expected = whole;
  input.nights.clear();
  expected.phaseDeviationHours.reset();
  expected.sleepRegularitySDMinutes.reset();
  expected.durationSDMinutes.reset();
  expected.coverageNights = 0;
  expected.daysObserved = 0;
  EXPECT_EQ(Statistics::features(input), expected);
}

}  // namespace
}  // namespace kestrel
