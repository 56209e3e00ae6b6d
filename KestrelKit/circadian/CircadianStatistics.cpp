#include <KestrelKit/circadian/CircadianStatistics.h>
#include <KestrelKit/foundation/CheckedSum.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <functional>
#include <numbers>
#include <numeric>
#include <vector>

namespace kestrel {
namespace {

constexpr double minutesPerDay = 1440;
constexpr double minutesPerHour = 60;
constexpr double fullCircle = 2 * std::numbers::pi;
constexpr std::size_t hoursPerDay = 24;

/// A vector in the plane of the clock's face; 0 minutes points along the cosine.
struct Vector {
  double sine = 0;
  double cosine = 0;
};

Vector unitVector(double clockMinutes) {
  const double angle = clockMinutes / minutesPerDay * fullCircle;
  return {.sine = std::sin(angle), .cosine = std::cos(angle)};
}

/// The unit vectors of the whole minutes. Consolidated nights have no others, and sine and cosine are most of
/// what a year of nights costs.
const auto& unitVectorsOfWholeMinutes() {
  static const auto table = [] {
    std::array<Vector, static_cast<std::size_t>(minutesPerDay)> vectors;
    for (std::size_t minute = 0; minute < vectors.size(); ++minute) {
      vectors[minute] = unitVector(static_cast<double>(minute));
    }
    return vectors;
  }();
  return table;
}

Vector sumOfUnitVectors(std::span<const double> clockMinutes) {
  const auto& wholeMinutes = unitVectorsOfWholeMinutes();
  Vector sum;
  for (const double each : clockMinutes) {
    const bool isOnTheFace = each >= 0 && each < minutesPerDay;
    const auto minute = isOnTheFace ? static_cast<std::size_t>(each) : 0;
    const Vector unit = static_cast<double>(minute) == each ? wholeMinutes[minute] : unitVector(each);
    sum.sine += unit.sine;
    sum.cosine += unit.cosine;
  }
  return sum;
}

double sumOf(std::span<const double> values) { return std::accumulate(values.begin(), values.end(), 0.0); }

double meanOf(std::span<const double> values) { return sumOf(values) / static_cast<double>(values.size()); }

/// Of a population, in a second pass about the mean of the first.
double standardDeviation(std::span<const double> values, double mean) {
  double squares = 0;
  for (const double value : values) {
    squares += (value - mean) * (value - mean);
  }
  return std::sqrt(squares / static_cast<double>(values.size()));
}

struct Window {
  std::size_t onset;
  double mean;
};

/// Of the windows of `length` hours, one from each hour of the day, the first that `isBetter` than all before
/// it.
template <class Better>
Window bestWindow(std::span<const double> hours, std::size_t length, Better isBetter) {
  Window best{};
  for (std::size_t onset = 0; onset < hoursPerDay; ++onset) {
    double sum = 0;
    for (std::size_t hour = onset; hour < onset + length; ++hour) {
      sum += hours[hour % hoursPerDay];
    }
    const double mean = sum / static_cast<double>(length);
    if (onset == 0 || isBetter(mean, best.mean)) {
      best = {.onset = onset, .mean = mean};
    }
  }
  return best;
}

}  // namespace

std::optional<double> CircadianStatistics::circularMeanMinutes(std::span<const double> clockMinutes) {
  if (clockMinutes.empty()) {
    return std::nullopt;
  }
  const Vector sum = sumOfUnitVectors(clockMinutes);
  const double mean = std::atan2(sum.sine, sum.cosine) / fullCircle * minutesPerDay;
  return mean < 0 ? mean + minutesPerDay : mean;
}

std::optional<double> CircadianStatistics::phaseDeviationHours(std::optional<double> judgedMidSleepMinutes,
                                                               std::span<const double> midSleepMinutes) {
  const auto usual = circularMeanMinutes(midSleepMinutes);
  if (!judgedMidSleepMinutes || !usual) {
    return std::nullopt;
  }
  double deviation = std::fmod(*judgedMidSleepMinutes - *usual, minutesPerDay);
  if (deviation > minutesPerDay / 2) {
    deviation -= minutesPerDay;
  }
  if (deviation <= -minutesPerDay / 2) {
    deviation += minutesPerDay;
  }
  return deviation / minutesPerHour;
}

std::optional<double> CircadianStatistics::sleepRegularitySDMinutes(std::span<const double> midSleepMinutes) {
  if (midSleepMinutes.empty()) {
    return std::nullopt;
  }
  const auto& [sine, cosine] = sumOfUnitVectors(midSleepMinutes);
  const double resultant =
      std::sqrt(sine * sine + cosine * cosine) / static_cast<double>(midSleepMinutes.size());
  // Rounding can leave the resultant of identical times just below 1, and their deviation at some millionths
  // of a minute.
  const bool areIdentical =
      std::ranges::adjacent_find(midSleepMinutes, std::not_equal_to()) == midSleepMinutes.end();
  if (resultant >= 1 || (areIdentical && !std::isnan(resultant))) {
    return 0.0;
  }
  return std::sqrt(-2 * std::log(std::max(resultant, 0.0))) / fullCircle * minutesPerDay;
}

std::optional<double> CircadianStatistics::durationSDMinutes(std::span<const double> asleepMinutes) {
  if (asleepMinutes.empty()) {
    return std::nullopt;
  }
  return standardDeviation(asleepMinutes, meanOf(asleepMinutes));
}

std::optional<ActivityRhythm> CircadianStatistics::activityRhythm(std::span<const double> hourlyActivity) {
  if (hourlyActivity.size() != hoursPerDay) {
    return std::nullopt;
  }
  const double total = sumOf(hourlyActivity);
  if (!(total > 0)) {
    return std::nullopt;
  }
  const auto [onset, m10] = bestWindow(hourlyActivity, 10, std::greater());
  const double l5 = bestWindow(hourlyActivity, 5, std::less()).mean;
  return ActivityRhythm{.m10OnsetHour = static_cast<double>(onset),
                        .m10 = m10,
                        .l5 = l5,
                        .mesor = total / static_cast<double>(hoursPerDay),
                        .relativeAmplitude = m10 + l5 > 0 ? (m10 - l5) / (m10 + l5) : 0};
}

std::optional<double> CircadianStatistics::stepVariabilityCV(std::span<const std::int64_t> stepCounts) {
  const std::vector<double> counts(stepCounts.begin(), stepCounts.end());
  const double mean = meanOf(counts);
  if (!(mean > 0)) {  // no counts have no mean, either
    return std::nullopt;
  }
  return standardDeviation(counts, mean) / mean;
}

std::optional<double> CircadianStatistics::restingHRDeviationBpm(
    std::optional<std::int64_t> restingHeartRate, std::span<const std::int64_t> baselineRestingHeartRates) {
  if (!restingHeartRate || baselineRestingHeartRates.empty()) {
    return std::nullopt;
  }
  std::int64_t sum = 0;
  for (const std::int64_t rate : baselineRestingHeartRates) {
    sum = checkedSum(sum, rate);
  }
  return static_cast<double>(*restingHeartRate) -
         static_cast<double>(sum) / static_cast<double>(baselineRestingHeartRates.size());
}

double CircadianStatistics::coverageNights(std::int64_t nights, std::int64_t expectedNights) {
  if (expectedNights < 1) {
    return 0;
  }
  return std::min(static_cast<double>(nights) / static_cast<double>(expectedNights), 1.0);
}

CircadianFeatures CircadianStatistics::features(const CircadianObservations& observations) {
  std::vector<double> midSleepMinutes;
  std::vector<double> asleepMinutes;
  midSleepMinutes.reserve(observations.nights.size());
  asleepMinutes.reserve(observations.nights.size());
  for (const SleepSession& night : observations.nights) {
    midSleepMinutes.push_back(night.midSleepMinutes);
    asleepMinutes.push_back(night.asleepMinutes);
  }
  const auto nights = static_cast<std::int64_t>(observations.nights.size());
  const auto& hours = observations.hourlyActivity;
  return {
      .date = observations.date,
      .phaseDeviationHours = phaseDeviationHours(observations.judgedMidSleepMinutes, midSleepMinutes),
      .sleepRegularitySDMinutes = sleepRegularitySDMinutes(midSleepMinutes),
      .durationSDMinutes = durationSDMinutes(asleepMinutes),
      .activity = hours ? activityRhythm(*hours) : std::nullopt,
      .stepVariabilityCV = stepVariabilityCV(observations.stepCounts),
      .restingHRDeviationBpm =
          restingHRDeviationBpm(observations.restingHeartRate, observations.baselineRestingHeartRates),
      .coverageNights = coverageNights(nights, observations.expectedNights),
      .daysObserved = nights,
  };
}

}  // namespace kestrel
