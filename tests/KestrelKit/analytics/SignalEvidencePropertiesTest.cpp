// The analysis on random input: what must hold whatever the input, and the same analysis written a second
// time, the plain way.

#include <KestrelKit/analytics/SignalEvidenceAnalyzer.h>
#include <KestrelKit/analytics/SignalStatistics.h>

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include "SignalDays.h"

namespace kestrel {
namespace {

using Labels = std::vector<SignalEvidenceLabel>;
using Observations = std::vector<SignalEvidenceObservation>;
using Results = std::vector<SignalEvidenceResult>;
using testing::dayKey;

// ---- The plain way.

std::string daysLater(const std::string& date, int days) {
  const auto day = civilDayFromText(date);
  return day ? civilDayText(*day + std::chrono::days{days}).value_or("") : "";
}

struct Figures {
  double d, lower, upper, p;
};

double rounded(double value) { return std::round(value * 10'000) / 10'000; }

/// Nothing where there is none; the error function is that of the standard library.
std::vector<Figures> figuresOf(const std::vector<double>& R, const std::vector<double>& K) {
  if (R.size() < 2 || K.size() < 2) {
    return {};
  }
  const auto nR = static_cast<double>(R.size());
  const auto nK = static_cast<double>(K.size());
  const auto meanOf = [](const std::vector<double>& values) {
    long double sum = 0;
    for (const double value : values) sum += value;
    return sum / static_cast<long double>(values.size());
  };
  const auto squaresOf = [](const std::vector<double>& values, long double mean) {
    long double sum = 0;
    for (const double value : values) sum += (value - mean) * (value - mean);
    return sum;
  };
  const long double mR = meanOf(R);
  const long double mK = meanOf(K);
  const auto s = static_cast<double>(std::sqrt((squaresOf(R, mR) + squaresOf(K, mK)) / (nR + nK - 2)));
  const auto apart = static_cast<double>(mK - mR);
  if (s < 1e-12) {
    return std::abs(apart) < 1e-12 ? std::vector{Figures{0, 0, 0, 1}} : std::vector<Figures>{};
  }
  const double d = apart / s;
  const double se = std::sqrt((nR + nK) / (nR * nK) + d * d / (2 * std::max(nR + nK - 2, 1.0)));
  return {{d, d - 1.96 * se, d + 1.96 * se, std::erfc(std::abs(d) / se / std::sqrt(2.0))}};
}

struct PlainAssociation {
  std::string signalID, comparison;
  int lag;
  std::size_t reference, compared;
  double coverage;
  Figures figures;

  auto key() const { return std::tuple(signalID, comparison, lag); }
};

struct PlainResult {
  std::size_t observedDays = 0, overlappingDays = 0;
  std::vector<PlainAssociation> associations{};
  std::vector<std::tuple<std::string, int, std::string, std::string>> unevaluated{};
};

const std::pair<const char*, std::set<std::string_view>> groups[] = {
    {"elevatedVsEuthymia", {"Mania", "Hypomania"}},
    {"depressedVsEuthymia", {"Dysthymia", "Moderate Depression", "Severe Depression"}},
    {"mixedVsEuthymia", {"Mixed Episode"}},
    {"psychosisVsEuthymia", {"Psychosis"}},
};

PlainResult plainResult(const std::string& source, const Observations& observations, const Labels& labels,
                        std::size_t minimumDays) {
  std::map<std::string, std::string> states;
  for (const auto& label : labels) {
    if (label.state.rawValue() != "Unknown") states[label.date] = label.state.rawValue();
  }
  std::map<std::string, Observations> signals;
  std::set<std::string> days;
  PlainResult result;
  for (const auto& each : observations) {
    if (each.sourceID == source && std::isfinite(each.value) && civilDayFromText(each.date)) {
      signals[each.signalID].push_back(each);
      days.insert(each.date);
    }
  }
  result.observedDays = days.size();
  for (const auto& day : days) result.overlappingDays += states.count(day);
  for (const auto& [signal, values] : signals) {
    std::set<std::string> own;
    for (const auto& each : values) own.insert(each.date);
    for (const int lag : {0, 1, 3, 7}) {
      for (const auto& [comparison, members] : groups) {
        std::vector<double> R;
        std::vector<double> K;
        for (const auto& each : values) {
          const auto state = states.find(daysLater(each.date, lag));
          if (state == states.end()) continue;
          if (state->second == "Euthymia") R.push_back(each.value);
          if (members.contains(state->second)) K.push_back(each.value);
        }
        if (R.size() < minimumDays || K.size() < minimumDays) {
          result.unevaluated.emplace_back(signal, lag, comparison, "insufficient_samples");
          continue;
        }
        const auto figures = figuresOf(R, K);
        if (figures.empty()) {
          result.unevaluated.emplace_back(signal, lag, comparison, "insufficient_variation");
          continue;
        }
        const double coverage = static_cast<double>(R.size() + K.size()) / static_cast<double>(own.size());
        result.associations.push_back(
            {signal, comparison, lag, R.size(), K.size(), std::min(coverage, 1.0), figures[0]});
      }
    }
  }
  std::ranges::sort(result.associations, {}, &PlainAssociation::key);
  return result;
}

// ---- Random input.

/// Days of a year, close together, so that the lags find labels; some states come often.
Labels randomLabels() {
  Labels labels;
  const auto states = *rc::gen::container<std::vector<int>>(rc::gen::inRange(0, 12));
  int day = 0;
  for (const int state : states) {
    labels.push_back({.date = dayKey(day % 50),
                      .state = state < 9 ? KestrelState::allCases[static_cast<std::size_t>(state)]
                                         : KestrelState(KestrelState::euthymia)});
    day += *rc::gen::inRange(0, 3);
  }
  return labels;
}

Observations randomObservations(bool wholeNumbers) {
  Observations observations;
  const auto values = *rc::gen::container<std::vector<int>>(rc::gen::inRange(-40, 40));
  const int signals = *rc::gen::inRange(1, 4);
  const int days = *rc::gen::inRange(2, 50);
  int place = 0;
  for (const int value : values) {
    observations.push_back({.date = dayKey(place / signals % days),
                            .sourceID = place % 5 == 0 ? "ring" : "watch",
                            .signalID = std::string(1, static_cast<char>('a' + place % signals)),
                            .value = wholeNumbers ? value : value / 7.0});
    place += *rc::gen::inRange(1, 3);
  }
  return observations;
}

Results analyzed(const Observations& observations, const Labels& labels, std::int64_t minimumDays = 2) {
  const std::vector<std::string> sources{"watch", "ring", "nobody"};
  return SignalEvidenceAnalyzer::analyze(sources, observations, labels, minimumDays, 0.3);
}

std::vector<double> randomSample() {
  auto sample = *rc::gen::container<std::vector<double>>(
      rc::gen::map(rc::gen::inRange(-100'000, 100'000), [](int value) { return value / 64.0; }));
  sample.push_back(*rc::gen::inRange(-100, 100));
  sample.push_back(*rc::gen::inRange(-100, 100));
  return sample;
}

/// The one association at lag 0 of so many euthymic and hypomanic days, or nothing.
std::vector<SignalEvidenceAssociation> compared(const std::vector<double>& reference,
                                                const std::vector<double>& comparison) {
  auto values = reference;
  values.insert(values.end(), comparison.begin(), comparison.end());
  const auto labels =
      testing::labelsEverySecondDay({{KestrelState::euthymia, static_cast<int>(reference.size())},
                                     {KestrelState::hypomania, static_cast<int>(comparison.size())}});
  return analyzed(testing::everySecondDay(values), labels).at(0).associations;
}

/// Figures of four decimals that were rounded from the same figure, computed in two ways.
bool nearlyEqual(double one, double other) {
  return std::abs(one - other) <= 1.0001e-4 + 1e-9 * std::abs(one);
}

TEST(SignalEvidenceProperties, isTheSameAnalysisWrittenPlainly) {
  EXPECT_TRUE(rc::check([] {
    const auto labels = randomLabels();
    const auto observations = randomObservations(/*wholeNumbers=*/false);
    const auto minimumDays = *rc::gen::inRange(1, 5);
    const auto results = analyzed(observations, labels, minimumDays);
    RC_ASSERT(results.size() == 3U);
    std::size_t place = 0;
    for (const char* source : {"watch", "ring", "nobody"}) {
      const auto& result = results[place++];
      const auto plain = plainResult(source, observations, labels, static_cast<std::size_t>(minimumDays));
      RC_ASSERT(result.sourceID == source);
      RC_ASSERT(result.observedDays == static_cast<std::int64_t>(plain.observedDays));
      RC_ASSERT(result.overlappingDays == static_cast<std::int64_t>(plain.overlappingDays));
      RC_ASSERT(result.associations.size() == plain.associations.size());
      std::set<std::string> evaluated;
      for (std::size_t index = 0; index < plain.associations.size(); ++index) {
        const auto& each = result.associations[index];
        const auto& expected = plain.associations[index];
        RC_ASSERT(std::tuple(each.signalID, std::string(each.comparison.rawValue()),
                             static_cast<int>(each.lagDays)) == expected.key());
        RC_ASSERT(each.referenceDays == static_cast<std::int64_t>(expected.reference));
        RC_ASSERT(each.comparisonDays == static_cast<std::int64_t>(expected.compared));
        RC_ASSERT(each.pairedDays == each.referenceDays + each.comparisonDays);
        RC_ASSERT(each.coverage == rounded(expected.coverage));
        RC_ASSERT(nearlyEqual(each.standardizedDifference, expected.figures.d));
        RC_ASSERT(nearlyEqual(each.confidenceInterval.lower, expected.figures.lower));
        RC_ASSERT(nearlyEqual(each.confidenceInterval.upper, expected.figures.upper));
        RC_ASSERT(nearlyEqual(each.pValue, expected.figures.p));
        RC_ASSERT(each.adjustedPValue >= each.pValue);
        evaluated.insert(each.signalID);
      }
      RC_ASSERT(result.evaluatedSignals == static_cast<std::int64_t>(evaluated.size()));
      std::vector<std::tuple<std::string, int, std::string, std::string>> unevaluated;
      for (const auto& each : result.unevaluated) {
        unevaluated.emplace_back(each.signalID, static_cast<int>(each.lagDays.value()),
                                 each.comparison.rawValue(), each.reason.rawValue());
      }
      RC_ASSERT(unevaluated == plain.unevaluated);
    }
  }));
}

TEST(SignalEvidenceProperties, exchangingTheGroupsFlipsTheSignAndMirrorsTheInterval) {
  EXPECT_TRUE(rc::check([] {
    const auto reference = randomSample();
    const auto comparison = randomSample();
    const auto one = compared(reference, comparison);
    const auto other = compared(comparison, reference);
    RC_ASSERT(one.size() == other.size());
    for (std::size_t place = 0; place < one.size(); ++place) {
      RC_ASSERT(other[place].standardizedDifference == -one[place].standardizedDifference);
      RC_ASSERT(other[place].confidenceInterval.lower == -one[place].confidenceInterval.upper);
      RC_ASSERT(other[place].confidenceInterval.upper == -one[place].confidenceInterval.lower);
      RC_ASSERT(other[place].pValue == one[place].pValue);
      RC_ASSERT(other[place].referenceDays == one[place].comparisonDays);
    }
  }));
}

TEST(SignalEvidenceProperties, aShiftAndAPositiveScaleLeaveTheDifference) {
  EXPECT_TRUE(rc::check([] {
    const auto reference = randomSample();
    const auto comparison = randomSample();
    const double shift = *rc::gen::inRange(-1000, 1000);
    const double scale = *rc::gen::inRange(1, 1000) / 16.0;
    const auto changed = [&](std::vector<double> values) {
      for (double& value : values) {
        value = value * scale + shift;
      }
      return values;
    };
    const auto one = compared(reference, comparison);
    const auto other = compared(changed(reference), changed(comparison));
    RC_ASSERT(one.size() == other.size());
    for (std::size_t place = 0; place < one.size(); ++place) {
      RC_ASSERT(nearlyEqual(other[place].standardizedDifference, one[place].standardizedDifference));
      RC_ASSERT(nearlyEqual(other[place].pValue, one[place].pValue));
    }
  }));
}

TEST(SignalEvidenceProperties, adjustedValuesNeverFallAsPRisesNorLieBelowIt) {
  EXPECT_TRUE(rc::check([] {
    const auto p = *rc::gen::container<std::vector<double>>(
        rc::gen::map(rc::gen::inRange(0, 10'001), [](int value) { return value / 10'000.0; }));
    auto adjusted = SignalStatistics::benjaminiHochberg(p);
    std::ranges::transform(adjusted, adjusted.begin(), SignalStatistics::roundedToFourDecimals);
    RC_ASSERT(adjusted.size() == p.size());
    for (std::size_t one = 0; one < p.size(); ++one) {
      RC_ASSERT(adjusted[one] >= p[one]);
      RC_ASSERT(adjusted[one] <= 1);
      for (std::size_t other = 0; other < p.size(); ++other) {
        RC_ASSERT(p[one] > p[other] || adjusted[one] <= adjusted[other]);
      }
    }
    if (!p.empty()) {
      RC_ASSERT(std::ranges::max(adjusted) == std::ranges::max(p));
    }
  }));
}

TEST(SignalEvidenceProperties, theOrderOfTheObservationsChangesNothing) {
  EXPECT_TRUE(rc::check([] {
    // Of whole numbers sums are exact in any order; deviations from the mean are so but for their last bits.
    const auto labels = randomLabels();
    auto observations = randomObservations(/*wholeNumbers=*/true);
    const auto before = analyzed(observations, labels);
    const auto moves = *rc::gen::container<std::vector<int>>(rc::gen::inRange(0, 1000));
    for (const int move : moves) {
      if (!observations.empty()) {
        std::swap(observations[static_cast<std::size_t>(move) % observations.size()],
                  observations[static_cast<std::size_t>(move) / 7 % observations.size()]);
      }
    }
    const auto after = analyzed(observations, labels);
    for (std::size_t place = 0; place < before.size(); ++place) {
      RC_ASSERT(after[place].observedDays == before[place].observedDays);
      RC_ASSERT(after[place].overlappingDays == before[place].overlappingDays);
      RC_ASSERT(after[place].evaluatedSignals == before[place].evaluatedSignals);
      RC_ASSERT(after[place].unevaluated == before[place].unevaluated);
      RC_ASSERT(after[place].associations.size() == before[place].associations.size());
      for (std::size_t index = 0; index < before[place].associations.size(); ++index) {
        auto one = before[place].associations[index];
        const auto& other = after[place].associations[index];
        RC_ASSERT(nearlyEqual(one.standardizedDifference, other.standardizedDifference));
        RC_ASSERT(nearlyEqual(one.confidenceInterval.lower, other.confidenceInterval.lower));
        RC_ASSERT(nearlyEqual(one.confidenceInterval.upper, other.confidenceInterval.upper));
        RC_ASSERT(nearlyEqual(one.pValue, other.pValue));
        one.standardizedDifference = other.standardizedDifference;
        one.confidenceInterval = other.confidenceInterval;
        one.pValue = other.pValue;
        one.adjustedPValue = other.adjustedPValue;
        RC_ASSERT(one == other);
      }
    }
  }));
}

}  // namespace
}  // namespace kestrel
