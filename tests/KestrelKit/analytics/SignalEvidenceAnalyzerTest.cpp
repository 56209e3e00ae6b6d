#include <KestrelKit/analytics/SignalEvidenceAnalyzer.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <numbers>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "SignalDays.h"

namespace kestrel {
namespace {

using testing::dayKey;
using ::testing::Each;
using ::testing::ElementsAre;
using testing::everySecondDay;
using ::testing::Field;
using ::testing::IsEmpty;
using testing::labelsEverySecondDay;
using ::testing::SizeIs;

using Comparison = SignalEvidenceComparison;
using Reason = SignalEvidenceReason;
using State = KestrelState;
using Status = SignalEvidenceStatus;

using Labels = std::vector<SignalEvidenceLabel>;
using Observations = std::vector<SignalEvidenceObservation>;
using Results = std::vector<SignalEvidenceResult>;
using Sources = std::vector<std::string>;

Results analyzed(const Sources& sources, const Observations& observations, const Labels& labels,
                 std::int64_t minimumDays = 2, double minimumEffect = 0.3) {
  return SignalEvidenceAnalyzer::analyze(sources, observations, labels, minimumDays, minimumEffect);
}

/// The one result for the source "watch".
SignalEvidenceResult analyzedWatch(const Observations& observations, const Labels& labels,
                                   std::int64_t minimumDays = 2, double minimumEffect = 0.3) {
  return analyzed({"watch"}, observations, labels, minimumDays, minimumEffect).at(0);
}

Observations together(std::initializer_list<Observations> lists) {
  Observations all;
  for (const Observations& list : lists) {
    all.insert(all.end(), list.begin(), list.end());
  }
  return all;
}

/// What stays for a source whose comparisons could not be evaluated, given the reason for the first signal's
/// comparison at lag 0.
std::vector<std::tuple<std::string, std::int64_t, Comparison, Reason>> reasonsOf(
    const SignalEvidenceResult& result) {
  std::vector<std::tuple<std::string, std::int64_t, Comparison, Reason>> reasons;
  for (const auto& each : result.unevaluated) {
    reasons.emplace_back(each.signalID, each.lagDays.value(), each.comparison, each.reason);
  }
  return reasons;
}

Reason reasonAt(const SignalEvidenceResult& result, std::int64_t lag, Comparison comparison) {
  for (const auto& each : result.unevaluated) {
    if (each.lagDays == lag && each.comparison == comparison) {
      return each.reason;
    }
  }
  ADD_FAILURE() << "evaluated";
  return Reason::insufficientSamples;
}

// ---- What there must be.

TEST(SignalEvidenceAnalyzer, labelsThatAreAllUnknownLeaveEverySourceWithoutPairs) {
  const auto observations = together({everySecondDay({1, 2, 3, 4}), everySecondDay({5, 6}, "pulse", "ring")});
  const auto results =
      analyzed({"ring", "watch"}, observations, labelsEverySecondDay({{State::unknown, 4}}), 1);
  ASSERT_THAT(results, SizeIs(2));
  for (const auto& result : results) {
    EXPECT_EQ(result.status, Status::insufficientOverlap);
    EXPECT_EQ(result.overlappingDays, 0);
    EXPECT_THAT(result.associations, IsEmpty());
    EXPECT_THAT(result.unevaluated, SizeIs(16));
    EXPECT_THAT(result.unevaluated,
                Each(Field(&SignalEvidenceUnevaluated::reason, Reason::insufficientSamples)));
  }
  EXPECT_EQ(results[0].observedDays, 2);
  EXPECT_EQ(results[1].observedDays, 4);
}

TEST(SignalEvidenceAnalyzer, oneEuthymicDayAndManyDepressedDaysAreUnevaluated) {
  const auto labels = labelsEverySecondDay({{State::euthymia, 1}, {State::dysthymia, 6}});
  const auto result = analyzedWatch(everySecondDay({1, 2, 3, 4, 5, 6, 7}), labels, 2);
  EXPECT_THAT(result.associations, IsEmpty());
  EXPECT_EQ(reasonAt(result, 0, Comparison::depressedVsEuthymia), Reason::insufficientSamples);
  EXPECT_EQ(result.status, Status::insufficientOverlap);
  // Also where a caller asks for one day only: a difference needs two on each side.
  const auto asked = analyzedWatch(everySecondDay({1, 2, 3, 4, 5, 6, 7}), labels, 1);
  EXPECT_THAT(asked.associations, IsEmpty());
  EXPECT_EQ(reasonAt(asked, 0, Comparison::depressedVsEuthymia), Reason::insufficientVariation);
  EXPECT_EQ(asked.status, Status::insufficientVariation);
}

TEST(SignalEvidenceAnalyzer, groupsConstantAtTheSameValueAreNoDifferent) {
  const auto labels = labelsEverySecondDay({{State::euthymia, 3}, {State::mania, 2}});
  for (const double value : {7.0, 0.0, -0.1, 1e300}) {
    const auto result = analyzedWatch(everySecondDay({value, value, value, value, value}), labels);
    ASSERT_THAT(result.associations, SizeIs(1)) << value;
    EXPECT_EQ(result.associations[0], (SignalEvidenceAssociation{.signalID = "steps",
                                                                 .comparison = Comparison::elevatedVsEuthymia,
                                                                 .lagDays = 0,
                                                                 .pairedDays = 5,
                                                                 .coverage = 1,
                                                                 .referenceDays = 3,
                                                                 .comparisonDays = 2,
                                                                 .standardizedDifference = 0,
                                                                 .confidenceInterval = {0, 0},
                                                                 .pValue = 1,
                                                                 .adjustedPValue = 1}))
        << value;
    EXPECT_EQ(result.status, Status::noClearAssociation);
  }
}

TEST(SignalEvidenceAnalyzer, groupsConstantAtTheSameValueAreNoDifferentAtAnySizeOfValueOrGroup) {
  for (const double value : {0.1, 1e6 + 0.1, 1e15 + 0.3, 3e-320, 1.3e153, 1.3e200, -1e300, 1.7e308}) {
    for (const int size : {2, 3, 5, 7, 10, 11}) {
      const auto result =
          analyzedWatch(everySecondDay(std::vector<double>(static_cast<std::size_t>(2 * size + 1), value)),
                        labelsEverySecondDay({{State::euthymia, size}, {State::mania, size + 1}}));
      ASSERT_THAT(result.associations, SizeIs(1)) << value << " " << size;
      EXPECT_EQ(result.associations[0].standardizedDifference, 0) << value << " " << size;
      EXPECT_EQ(result.associations[0].pValue, 1) << value << " " << size;
    }
  }
}

TEST(SignalEvidenceAnalyzer, groupsOfTheSameNumbersAreNoDifferentInWhateverOrderTheyCome) {
  const auto labels = labelsEverySecondDay({{State::euthymia, 5}, {State::mania, 5}});
  const auto result =
      analyzedWatch(everySecondDay({546, 1081, 2061, 6649, 9522, 546, 9522, 1081, 6649, 2061}), labels);
  ASSERT_THAT(result.associations, SizeIs(1));
  EXPECT_EQ(result.associations[0].standardizedDifference, 0);
  EXPECT_FALSE(std::signbit(result.associations[0].standardizedDifference));
  EXPECT_EQ(result.associations[0].pValue, 1);
}

TEST(SignalEvidenceAnalyzer, groupsConstantAtDifferentValuesAreUnevaluated) {
  const auto labels = labelsEverySecondDay({{State::euthymia, 3}, {State::psychosis, 3}});
  const auto result = analyzedWatch(everySecondDay({7, 7, 7, 8, 8, 8}), labels);
  EXPECT_THAT(result.associations, IsEmpty());
  EXPECT_EQ(reasonAt(result, 0, Comparison::psychosisVsEuthymia), Reason::insufficientVariation);
  EXPECT_EQ(result.status, Status::insufficientVariation);
  EXPECT_EQ(result.evaluatedSignals, 0);
}

TEST(SignalEvidenceAnalyzer, theLargestPValueIsNotAdjustedAndAdjustedValuesRiseWithP) {
  // Twelve signals, whose groups lie further and further apart.
  Observations observations;
  for (int signal = 0; signal < 12; ++signal) {
    const double apart = signal * 0.35;
    const auto more =
        everySecondDay({1, 2, 3, 4, 5, 6, 1 + apart, 2 + apart, 3 + apart, 4 + apart, 5 + apart, 6.5 + apart},
                       "signal " + std::to_string(signal));
    observations.insert(observations.end(), more.begin(), more.end());
  }
  const auto result =
      analyzedWatch(observations, labelsEverySecondDay({{State::euthymia, 6}, {State::mania, 6}}));
  auto associations = result.associations;
  ASSERT_THAT(associations, SizeIs(12));
  std::ranges::sort(associations, {}, &SignalEvidenceAssociation::pValue);
  EXPECT_EQ(associations.back().adjustedPValue, associations.back().pValue);
  EXPECT_LT(associations.front().pValue, 0.01);
  EXPECT_TRUE(std::ranges::is_sorted(associations, {}, &SignalEvidenceAssociation::adjustedPValue));
  for (std::size_t rank = 0; rank < associations.size(); ++rank) {
    EXPECT_GE(associations[rank].adjustedPValue, associations[rank].pValue);
  }
  EXPECT_GT(associations.front().adjustedPValue, associations.front().pValue);
}

/// Ten euthymic and ten hypomanic days whose means lie `apart`, with the values of each half 1 below and 1
/// above.
SignalEvidenceResult tenDaysOfEach(double apart, double minimumEffect) {
  std::vector<double> values;
  for (int day = 0; day < 20; ++day) {
    values.push_back((day % 2 == 0 ? -1 : 1) + (day < 10 ? 0 : apart));
  }
  return analyzedWatch(everySecondDay(values),
                       labelsEverySecondDay({{State::euthymia, 10}, {State::hypomania, 10}}), 5,
                       minimumEffect);
}

/// The distance for which the p-value is `p`, by bisection with the error function of the standard library.
double distanceOfP(double p) {
  const double deviation = std::sqrt(10.0 / 9.0);
  const auto pOf = [&](double d) {
    return std::erfc(d / std::sqrt(20.0 / 100.0 + d * d / (2 * 18)) / std::numbers::sqrt2);
  };
  double low = 0;
  double high = 5;
  for (int step = 0; step < 200; ++step) {
    const double middle = (low + high) / 2;
    (pOf(middle) > p ? low : high) = middle;
  }
  return low * deviation;
}

TEST(SignalEvidenceAnalyzer, theMinimumEffectAndAnAdjustedPValueOfATenthCount) {
  const double apart = distanceOfP(0.1);
  const auto result = tenDaysOfEach(apart, 0.3);
  ASSERT_THAT(result.associations, SizeIs(1));
  const auto& association = result.associations[0];
  EXPECT_EQ(association.adjustedPValue, 0.1);
  EXPECT_NEAR(association.standardizedDifference, apart / std::sqrt(10.0 / 9.0), 0.5001e-4);

  const double effect = association.standardizedDifference;
  EXPECT_EQ(tenDaysOfEach(apart, effect).status, Status::associationObserved);
  EXPECT_EQ(tenDaysOfEach(apart, std::nextafter(effect, 1)).status, Status::noClearAssociation);
  EXPECT_EQ(tenDaysOfEach(apart, std::nextafter(effect, 0)).status, Status::associationObserved);
  EXPECT_EQ(tenDaysOfEach(-apart, effect).status, Status::associationObserved);
  EXPECT_EQ(tenDaysOfEach(-apart, effect).associations[0].standardizedDifference, -effect);

  const auto above = tenDaysOfEach(distanceOfP(0.1001), 0.3);
  EXPECT_EQ(above.associations[0].adjustedPValue, 0.1001);
  EXPECT_EQ(above.status, Status::noClearAssociation);
  const auto below = tenDaysOfEach(distanceOfP(0.0999), 0.3);
  EXPECT_EQ(below.associations[0].adjustedPValue, 0.0999);
  EXPECT_EQ(below.status, Status::associationObserved);
}

TEST(SignalEvidenceAnalyzer, ofEquallyStrongAssociationsTheFirstInOrderIsTheStrongest) {
  // Depressed days as far below as elevated days are above: "depressed…" comes before "elevated…".
  const auto labels = labelsEverySecondDay({{State::euthymia, 3}, {State::mania, 3}, {State::dysthymia, 3}});
  const std::vector<double> values{1, 2, 3, 4, 5, 6, -2, -1, 0};
  const auto one = analyzedWatch(everySecondDay(values), labels);
  ASSERT_THAT(one.associations, SizeIs(2));
  EXPECT_EQ(one.associations[0].comparison, Comparison::depressedVsEuthymia);
  EXPECT_EQ(one.associations[0].standardizedDifference, -3);
  EXPECT_EQ(one.associations[1].standardizedDifference, 3);
  EXPECT_EQ(one.strongestComparison, Comparison::depressedVsEuthymia);
  EXPECT_EQ(one.standardizedDifference, -3);
  EXPECT_EQ(one.strongestLagDays, 0);

  const auto two =
      analyzedWatch(together({everySecondDay(values, "z"), everySecondDay(values, "Z")}), labels);
  EXPECT_EQ(two.strongestSignalID, "Z");
}

TEST(SignalEvidenceAnalyzer, theStrongestNeedNotBeTheOneThatIsSure) {
  // Two days of each are far apart and unsure; twenty of each are near and sure.
  std::vector<double> values{0, 1, 1.8, 2.8};
  for (int day = 0; day < 80; ++day) {
    values.push_back((day % 2) + (day < 40 ? 0 : 0.9));
  }
  std::vector<double> few(values.begin(), values.begin() + 4);
  const auto labels = labelsEverySecondDay(
      {{State::euthymia, 2}, {State::mania, 2}, {State::euthymia, 40}, {State::mania, 40}});
  std::vector<double> many(values);
  many[0] = many[1] = many[2] = many[3] = 0.5;
  const auto result =
      analyzedWatch(together({everySecondDay(few, "few"), everySecondDay(many, "many")}), labels);
  ASSERT_THAT(result.associations, SizeIs(2));
  EXPECT_GT(result.associations[0].adjustedPValue, 0.1);
  EXPECT_LT(result.associations[1].adjustedPValue, 0.1);
  EXPECT_EQ(result.strongestSignalID, "few");
  EXPECT_EQ(result.status, Status::associationObserved);
}

TEST(SignalEvidenceAnalyzer, anEmptySourceListYieldsAnEmptyList) {
  EXPECT_THAT(analyzed({}, everySecondDay({1, 2}), labelsEverySecondDay({{State::euthymia, 2}})), IsEmpty());
  EXPECT_THAT(analyzed({}, {}, {}), IsEmpty());
}

TEST(SignalEvidenceAnalyzer, oneSignalYieldsSixteenAssociationsAtMost) {
  // Every day a state of another group, in turns; every day twice a value.
  constexpr State turns[] = {State::euthymia, State::mania, State::severeDepression, State::mixedEpisode,
                             State::psychosis};
  Observations observations;
  Labels labels;
  for (int day = 0; day < 100; ++day) {
    labels.push_back({.date = dayKey(day), .state = turns[day % 5]});
    observations.push_back({dayKey(day), "watch", "steps", std::sin(day)});
    observations.push_back({dayKey(day), "watch", "steps", std::cos(day)});
  }
  const auto result = analyzedWatch(observations, labels, 5);
  EXPECT_THAT(result.associations, SizeIs(16));
  EXPECT_THAT(result.unevaluated, IsEmpty());
  EXPECT_EQ(result.evaluatedSignals, 1);
  std::vector<std::pair<std::string, std::int64_t>> order;
  for (const auto& each : result.associations) {
    order.emplace_back(each.comparison.rawValue(), each.lagDays);
  }
  EXPECT_THAT(order, ElementsAre(std::pair("depressedVsEuthymia", 0), std::pair("depressedVsEuthymia", 1),
                                 std::pair("depressedVsEuthymia", 3), std::pair("depressedVsEuthymia", 7),
                                 std::pair("elevatedVsEuthymia", 0), std::pair("elevatedVsEuthymia", 1),
                                 std::pair("elevatedVsEuthymia", 3), std::pair("elevatedVsEuthymia", 7),
                                 std::pair("mixedVsEuthymia", 0), std::pair("mixedVsEuthymia", 1),
                                 std::pair("mixedVsEuthymia", 3), std::pair("mixedVsEuthymia", 7),
                                 std::pair("psychosisVsEuthymia", 0), std::pair("psychosisVsEuthymia", 1),
                                 std::pair("psychosisVsEuthymia", 3), std::pair("psychosisVsEuthymia", 7)));
}

TEST(SignalEvidenceAnalyzer, anObservationOnTheLastLabelledDayPairsAtLag0Only) {
  // Euthymia for two days, then mania; the values of the last day and of the days 1, 3 and 7 before it.
  Labels labels;
  for (int day = 0; day <= 20; ++day) {
    labels.push_back({.date = dayKey(day), .state = day < 10 ? State::euthymia : State::mania});
  }
  const Observations euthymic{{dayKey(0), "watch", "steps", 1}, {dayKey(1), "watch", "steps", 2}};
  const auto manicDaysAtLag = [&](int day) {
    const auto result = analyzedWatch(
        together({euthymic, {{dayKey(day), "watch", "steps", 5}, {dayKey(day), "watch", "steps", 6}}}),
        labels);
    std::vector<std::int64_t> lags;
    for (const auto& each : result.associations) {
      lags.push_back(each.lagDays);
    }
    return lags;
  };
  EXPECT_THAT(manicDaysAtLag(20), ElementsAre(0));
  EXPECT_THAT(manicDaysAtLag(19), ElementsAre(0, 1));
  EXPECT_THAT(manicDaysAtLag(18), ElementsAre(0, 1));
  EXPECT_THAT(manicDaysAtLag(17), ElementsAre(0, 1, 3));
  EXPECT_THAT(manicDaysAtLag(13), ElementsAre(0, 1, 3, 7));
  EXPECT_THAT(manicDaysAtLag(21), IsEmpty());
}

TEST(SignalEvidenceAnalyzer, aGroupOfExactlyTheMinimumIsEvaluated) {
  const auto evaluate = [](int euthymic, int manic) {
    std::vector<double> values;
    for (int day = 0; day < euthymic + manic; ++day) {
      values.push_back(day * day % 7);
    }
    return analyzedWatch(everySecondDay(values),
                         labelsEverySecondDay({{State::euthymia, euthymic}, {State::mania, manic}}), 5);
  };
  EXPECT_THAT(evaluate(5, 5).associations, SizeIs(1));
  for (const auto& [euthymic, manic] : {std::pair(4, 5), std::pair(5, 4), std::pair(4, 4)}) {
    const auto result = evaluate(euthymic, manic);
    EXPECT_THAT(result.associations, IsEmpty());
    EXPECT_EQ(reasonAt(result, 0, Comparison::elevatedVsEuthymia), Reason::insufficientSamples);
  }
}

// ---- Groups, lags, labels, days.

TEST(SignalEvidenceAnalyzer, everyStateButUnknownBelongsToOneGroup) {
  const std::pair<State, Comparison> groups[] = {
      {State::mania, Comparison::elevatedVsEuthymia},
      {State::hypomania, Comparison::elevatedVsEuthymia},
      {State::dysthymia, Comparison::depressedVsEuthymia},
      {State::moderateDepression, Comparison::depressedVsEuthymia},
      {State::severeDepression, Comparison::depressedVsEuthymia},
      {State::mixedEpisode, Comparison::mixedVsEuthymia},
      {State::psychosis, Comparison::psychosisVsEuthymia},
  };
  for (const auto& [state, comparison] : groups) {
    const auto result = analyzedWatch(everySecondDay({1, 2, 3, 4, 5, 6}),
                                      labelsEverySecondDay({{State::euthymia, 3}, {state, 3}}), 3);
    ASSERT_THAT(result.associations, SizeIs(1)) << state.rawValue();
    EXPECT_EQ(result.associations[0].comparison, comparison) << state.rawValue();
  }
}

TEST(SignalEvidenceAnalyzer, lagsAreCivilDaysOverMonthsYearsAndLeapDays) {
  for (const auto& [observed, labelled, lag] :
       {std::tuple("2024-02-28", "2024-02-29", 1), std::tuple("2024-02-29", "2024-03-01", 1),
        std::tuple("2023-02-28", "2023-03-01", 1), std::tuple("2023-12-31", "2024-01-03", 3),
        std::tuple("2024-03-30", "2024-03-31", 1), std::tuple("1900-02-28", "1900-03-07", 7),
        std::tuple("2000-02-28", "2000-03-06", 7), std::tuple("0001-01-01", "0001-01-02", 1),
        std::tuple("9999-12-30", "9999-12-31", 1)}) {
    const Observations observations{{"2010-01-01", "watch", "steps", 1},
                                    {"2010-01-01", "watch", "steps", 2},
                                    {observed, "watch", "steps", 4},
                                    {observed, "watch", "steps", 5}};
    const Labels labels{{"2010-01-01", State::euthymia},
                        {"2010-01-02", State::euthymia},
                        {"2010-01-04", State::euthymia},
                        {"2010-01-08", State::euthymia},
                        {labelled, State::mania}};
    const auto result = analyzedWatch(observations, labels);
    ASSERT_THAT(result.associations, SizeIs(1)) << observed;
    EXPECT_EQ(result.associations[0].lagDays, lag) << observed;
    EXPECT_EQ(result.associations[0].comparisonDays, 2) << observed;
  }
}

TEST(SignalEvidenceAnalyzer, theLastDayOfTheCalendarHasNoDaysAfterIt) {
  const auto result =
      analyzedWatch({{"9999-12-31", "watch", "steps", 1}, {"9999-12-25", "watch", "steps", 1}},
                    {{"9999-12-31", State::euthymia}, {"0001-01-01", State::mania}}, 1);
  EXPECT_EQ(result.observedDays, 2);
  EXPECT_EQ(result.overlappingDays, 1);
  EXPECT_THAT(result.unevaluated, SizeIs(16));
}

TEST(SignalEvidenceAnalyzer, ofTwoLabelsOfADayTheLaterInTheListStands) {
  auto labels = labelsEverySecondDay({{State::mania, 6}});
  const auto later = labelsEverySecondDay({{State::euthymia, 3}, {State::dysthymia, 3}});
  labels.insert(labels.end(), later.begin(), later.end());
  const auto result = analyzedWatch(everySecondDay({1, 2, 3, 4, 5, 6}), labels);
  ASSERT_THAT(result.associations, SizeIs(1));
  EXPECT_EQ(result.associations[0].comparison, Comparison::depressedVsEuthymia);
  // A later one that is unknown is dropped before.
  const auto unknown = labelsEverySecondDay({{State::unknown, 6}});
  labels.insert(labels.end(), unknown.begin(), unknown.end());
  EXPECT_EQ(analyzedWatch(everySecondDay({1, 2, 3, 4, 5, 6}), labels), result);
}

TEST(SignalEvidenceAnalyzer, daysThatDoNotExistAndValuesThatAreNotFiniteCountForNothing) {
  auto observations = everySecondDay({1, 2, 3, 4, 5, 6});
  auto labels = labelsEverySecondDay({{State::euthymia, 3}, {State::mania, 3}});
  const auto before = analyzedWatch(observations, labels);
  for (const char* date : {"2024-02-30", "2023-02-29", "0000-01-01", "2024-1-01", "2024-01-01 ", "",
                           "yesterday", "2024-01-01T00:00:00Z", "２０２４-01-01", "10000-01-01"}) {
    observations.push_back({date, "watch", "steps", 1000});
    labels.push_back({date, State::psychosis});
  }
  constexpr double infinity = std::numeric_limits<double>::infinity();
  for (const double value : {infinity, -infinity, std::numeric_limits<double>::quiet_NaN()}) {
    observations.push_back({dayKey(1), "watch", "steps", value});
    observations.push_back({dayKey(1), "watch", "other", value});
  }
  EXPECT_EQ(analyzedWatch(observations, labels), before);
  EXPECT_EQ(
      analyzedWatch({{"2024-02-30", "watch", "steps", 1}, {dayKey(0), "watch", "steps", infinity}}, labels)
          .status,
      Status::noData);
}

TEST(SignalEvidenceAnalyzer, severalValuesOfADayArePairsOfTheirOwnAndOneObservedDay) {
  const auto labels = labelsEverySecondDay({{State::euthymia, 2}, {State::mania, 2}, {State::unknown, 1}});
  auto observations = everySecondDay({1, 2, 4, 5, 9});
  observations.push_back({dayKey(0), "watch", "steps", 1.5});
  observations.push_back({dayKey(0), "watch", "steps", 1.5});
  observations.push_back({dayKey(1), "watch", "other", 1});
  const auto result = analyzedWatch(observations, labels);
  ASSERT_THAT(result.associations, SizeIs(1));
  EXPECT_EQ(result.associations[0].referenceDays, 4);
  EXPECT_EQ(result.associations[0].comparisonDays, 2);
  EXPECT_EQ(result.associations[0].pairedDays, 6);
  EXPECT_EQ(result.associations[0].coverage, 1);  // 6 of 5 distinct days
  EXPECT_EQ(result.observedDays, 6);
  EXPECT_EQ(result.overlappingDays, 4);
  EXPECT_EQ(result.evaluatedSignals, 1);
}

TEST(SignalEvidenceAnalyzer, coverageIsOfTheSignalsOwnDaysWithFourDecimals) {
  // Four pairs of seven days; another signal of the source has more.
  const auto labels = labelsEverySecondDay({{State::euthymia, 2}, {State::mania, 2}});
  const auto result = analyzedWatch(together({everySecondDay({1, 2, 3, 4, 5, 6, 7}),
                                              everySecondDay(std::vector<double>(50, 1.0), "other")}),
                                    labels);
  ASSERT_THAT(result.associations, SizeIs(2));
  EXPECT_EQ(result.associations[0].coverage, 0.08);
  EXPECT_EQ(result.associations[1].coverage, 0.5714);
}

// ---- Sources.

TEST(SignalEvidenceAnalyzer, resultsComeInTheOrderOfTheSources) {
  const auto observations = together({everySecondDay({1, 2}, "s", "b"), everySecondDay({1}, "s", "a")});
  const auto results = analyzed({"b", "nobody", "a", "", "b"}, observations, {});
  ASSERT_THAT(results, SizeIs(5));
  EXPECT_EQ(results[0].sourceID, "b");
  EXPECT_EQ(results[0].observedDays, 2);
  EXPECT_EQ(results[1].sourceID, "nobody");
  EXPECT_EQ(results[1], SignalEvidenceResult{.sourceID = "nobody"});
  EXPECT_EQ(results[1].status, Status::noData);
  EXPECT_EQ(results[2].observedDays, 1);
  EXPECT_EQ(results[3], SignalEvidenceResult{});
  EXPECT_EQ(results[4], results[0]);
}

TEST(SignalEvidenceAnalyzer, namesMayBeEmptyOrOfEveryScript) {
  const auto labels = labelsEverySecondDay({{State::euthymia, 3}, {State::mania, 3}});
  const Sources names{
      "",  " ", "Ω", "часы",   "時計", "⌚️", "ساعة", "घड़ी", std::string("nul\0inside", 10),
      "a", "A", "é", "e\u0301"};
  Observations observations;
  for (const auto& source : names) {
    for (const auto& signal : names) {
      const auto more = everySecondDay({1, 2, 3, 4, 5, 6}, signal, source);
      observations.insert(observations.end(), more.begin(), more.end());
    }
  }
  const auto results = analyzed(names, observations, labels);
  auto order = names;
  std::ranges::sort(order);  // by bytes, which is by code points in UTF-8
  for (std::size_t place = 0; place < names.size(); ++place) {
    EXPECT_EQ(results[place].sourceID, names[place]);
    EXPECT_EQ(results[place].evaluatedSignals, static_cast<std::int64_t>(names.size()));
    Sources signals;
    for (const auto& each : results[place].associations) {
      signals.push_back(each.signalID);
    }
    EXPECT_EQ(signals, order);
  }
}

TEST(SignalEvidenceAnalyzer, namesAreToldApartWhereverTheyDiffer) {
  // Names of 1 to 40 characters that differ in one of them, as source or as signal.
  const auto labels = labelsEverySecondDay({{State::euthymia, 2}, {State::mania, 2}});
  for (std::size_t length = 1; length <= 40; ++length) {
    const std::string name(length, 'x');
    Sources names{name, name + 'x', name.substr(1)};
    for (std::size_t place = 0; place < length; ++place) {
      names.push_back(name);
      names.back()[place] = 'y';
    }
    Observations asSignals;
    Observations asSources;
    for (int day = 0; day < 4; ++day) {
      for (const auto& each : names) {
        asSignals.push_back({dayKey(2 * day), "watch", each, 1});
        asSources.push_back({dayKey(2 * day), each, "steps", 1});
      }
    }
    EXPECT_EQ(analyzedWatch(asSignals, labels).evaluatedSignals, static_cast<std::int64_t>(names.size()))
        << length;
    for (const auto& result : analyzed(names, asSources, labels)) {
      EXPECT_EQ(result.observedDays, 4) << length;
    }
  }
}

TEST(SignalEvidenceAnalyzer, aSourceGivenTwiceCountsTwiceInTheFamily) {
  const auto labels = labelsEverySecondDay({{State::euthymia, 3}, {State::mania, 3}});
  // One p-value that is small and one that is 1, from two signals.
  const auto observations =
      together({everySecondDay({1, 2, 3, 4, 5, 6}, "a"), everySecondDay({1, 2, 3, 1, 2, 3}, "b")});
  const auto once = analyzed({"watch"}, observations, labels).at(0);
  const auto twice = analyzed({"watch", "watch"}, observations, labels);
  ASSERT_THAT(twice, SizeIs(2));
  EXPECT_EQ(twice[0], twice[1]);
  // Among 2 the smaller p counts twice; among 4, where it stands twice, twice as well.
  EXPECT_EQ(once, twice[0]);
  const auto besides =
      analyzed({"watch", "ring", "ring"},
               together({observations, everySecondDay({1, 2, 3, 1, 2, 3}, "c", "ring")}), labels);
  EXPECT_NEAR(besides[0].associations[0].adjustedPValue, 4 * once.associations[0].pValue, 1e-9);
}

TEST(SignalEvidenceAnalyzer, onlySourcesAskedForCountInTheFamily) {
  const auto labels = labelsEverySecondDay({{State::euthymia, 3}, {State::mania, 3}});
  const auto watch = everySecondDay({1, 2, 3, 4, 5, 6});
  const auto alone = analyzed({"watch"}, watch, labels);
  EXPECT_EQ(analyzed({"watch"}, together({watch, everySecondDay({3, 1, 2, 2, 1, 3}, "s", "ring")}), labels),
            alone);
  EXPECT_EQ(alone[0].associations[0].adjustedPValue, alone[0].associations[0].pValue);
}

TEST(SignalEvidenceAnalyzer, unevaluatedComparisonsComeBySignalLagAndComparison) {
  const auto result = analyzedWatch(together({everySecondDay({1}, "b"), everySecondDay({1}, "a")}), {}, 5);
  auto sorted = reasonsOf(result);
  ASSERT_THAT(sorted, SizeIs(32));
  std::ranges::sort(sorted);
  EXPECT_EQ(reasonsOf(result), sorted);
  EXPECT_EQ(std::get<2>(sorted[0]), Comparison::elevatedVsEuthymia);
  EXPECT_EQ(std::get<2>(sorted[1]), Comparison::depressedVsEuthymia);
  EXPECT_EQ(std::get<1>(sorted[4]), 1);
  EXPECT_EQ(std::get<1>(sorted[8]), 3);
  EXPECT_EQ(std::get<1>(sorted[12]), 7);
}

TEST(SignalEvidenceAnalyzer, theOrderInWhichObservationsComeChangesNothing) {
  // By day, by signal and in between, with days left out; whole numbers, whose sums are exact in any order.
  Observations observations;
  Labels labels;
  for (int day = 0; day < 200; ++day) {
    labels.push_back({dayKey(day), State::allCases[static_cast<std::size_t>(day / 5 % 9)]});
    for (int signal = 0; signal < 7; ++signal) {
      if ((day + signal) % 3 != 0) {
        observations.push_back({dayKey(day), signal < 3 ? "watch" : "ring",
                                "signal " + std::to_string(signal),
                                static_cast<double>(day * (signal + 2) % 11)});
      }
    }
  }
  const auto byDay = analyzed({"watch", "ring"}, observations, labels);
  EXPECT_EQ(byDay[0].evaluatedSignals, 3);
  auto bySignal = observations;
  std::ranges::sort(bySignal, {},
                    [](const SignalEvidenceObservation& each) { return std::tie(each.signalID, each.date); });
  EXPECT_EQ(analyzed({"watch", "ring"}, bySignal, labels), byDay);
  std::ranges::reverse(observations);
  EXPECT_EQ(analyzed({"watch", "ring"}, observations, labels), byDay);
  std::ranges::reverse(labels);
  EXPECT_EQ(analyzed({"watch", "ring"}, observations, labels), byDay);
}

TEST(SignalEvidenceAnalyzer, valuesWhoseFiguresLieBeyondAFloatAreUnevaluated) {
  const auto labels = labelsEverySecondDay({{State::euthymia, 2}, {State::mania, 2}});
  for (const auto& values :
       {std::vector{1e308, 1e308, -1e308, -1e308}, std::vector{-1e200, 1e200, -1e200, 2e200},
        std::vector{0.0, 1e-9, 1e300, 1e300}}) {
    const auto result = analyzedWatch(everySecondDay(values), labels);
    EXPECT_THAT(result.associations, IsEmpty());
    EXPECT_EQ(reasonAt(result, 0, Comparison::elevatedVsEuthymia), Reason::insufficientVariation);
  }
}

}  // namespace
}  // namespace kestrel
