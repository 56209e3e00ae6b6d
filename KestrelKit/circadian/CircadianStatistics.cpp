#include <KestrelKit/circadian/CircadianStatistics.h>
#include <KestrelKit/foundation/CheckedSum.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <functional>
#include <numbers>
#include <numeric>
#include <ranges>

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

/// The unit vectors of clock times, added up.
struct Resultant {
  Vector sum{};
  double count = 0;
  bool isOfIdenticalTimes = true;
};

/// Nothing without times.
std::optional<Resultant> resultantOf(const auto& clockMinutes) {
  if (clockMinutes.empty()) {
    return std::nullopt;
  }
  const auto& wholeMinutes = unitVectorsOfWholeMinutes();
  Resultant resultant{.count = static_cast<double>(clockMinutes.size())};
  for (const double each : clockMinutes) {
    const bool isOnTheFace = each >= 0 && each < minutesPerDay;
    const auto minute = isOnTheFace ? static_cast<std::size_t>(each) : 0;
    const Vector unit = static_cast<double>(minute) == each ? wholeMinutes[minute] : unitVector(each);
    resultant.sum.sine += unit.sine;
    resultant.sum.cosine += unit.cosine;
    resultant.isOfIdenticalTimes &= each == clockMinutes.front();
  }
  return resultant;
}

std::optional<double> meanDirection(const std::optional<Resultant>& resultant) {
  if (!resultant) {
    return std::nullopt;
  }
  const double mean = std::atan2(resultant->sum.sine, resultant->sum.cosine) / fullCircle * minutesPerDay;
  return mean < 0 ? mean + minutesPerDay : mean;
}

std::optional<double> deviationHours(std::optional<double> judgedMinutes,
                                     std::optional<double> usualMinutes) {
  if (!judgedMinutes || !usualMinutes) {
    return std::nullopt;
  }
  double deviation = std::fmod(*judgedMinutes - *usualMinutes, minutesPerDay);
  if (deviation > minutesPerDay / 2) {
    deviation -= minutesPerDay;
  }
  if (deviation <= -minutesPerDay / 2) {
    deviation += minutesPerDay;
  }
  return deviation / minutesPerHour;
}

std::optional<double> circularDeviation(const std::optional<Resultant>& resultant) {
  if (!resultant) {
    return std::nullopt;
  }
  const auto& [sine, cosine] = resultant->sum;
  const double length = std::sqrt(sine * sine + cosine * cosine) / resultant->count;
  // Rounding can leave the resultant of identical times just below 1, and their deviation at some millionths
  // of a minute.
  if (length >= 1 || (resultant->isOfIdenticalTimes && !std::isnan(length))) {
    return 0.0;
  }
  return std::sqrt(-2 * std::log(std::max(length, 0.0))) / fullCircle * minutesPerDay;
}

double sumOf(const auto& values) { return std::accumulate(values.begin(), values.end(), 0.0); }

struct Spread {
  double mean;
  double deviation;
};

/// The mean of a population and, in a second pass about it, the standard deviation. Nothing without values.
std::optional<Spread> spreadOf(const auto& values) {
  if (values.empty()) {
    return std::nullopt;
  }
  const auto count = static_cast<double>(values.size());
  const double mean = sumOf(values) / count;
  double squares = 0;
  for (const double value : values) {
    squares += (value - mean) * (value - mean);
  }
  return Spread{.mean = mean, .deviation = std::sqrt(squares / count)};
}

std::optional<double> deviationOf(const std::optional<Spread>& spread) {
  return spread ? std::optional(spread->deviation) : std::nullopt;
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
  return meanDirection(resultantOf(clockMinutes));
}

std::optional<double> CircadianStatistics::phaseDeviationHours(std::optional<double> judgedMidSleepMinutes,
                                                               std::span<const double> midSleepMinutes) {
  return deviationHours(judgedMidSleepMinutes, circularMeanMinutes(midSleepMinutes));
}

std::optional<double> CircadianStatistics::sleepRegularitySDMinutes(std::span<const double> midSleepMinutes) {
  return circularDeviation(resultantOf(midSleepMinutes));
}

std::optional<double> CircadianStatistics::durationSDMinutes(std::span<const double> asleepMinutes) {
  return deviationOf(spreadOf(asleepMinutes));
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
  const auto toDouble = [](std::int64_t count) { return static_cast<double>(count); };
  const auto spread = spreadOf(stepCounts | std::views::transform(toDouble));
  if (!spread || !(spread->mean > 0)) {
    return std::nullopt;
  }
  return spread->deviation / spread->mean;
}

std::optional<double> CircadianStatistics::restingHRDeviationBpm(
    std::optional<std::int64_t> restingHeartRate, std::span<const std::int64_t> baselineRestingHeartRates) {
  if (!restingHeartRate || baselineRestingHeartRates.empty()) {
    return std::nullopt;
  }
  std::int64_t sum = 0;
  for (const std::int64_t rate : baselineRestingHeartRates) {
    sum = checkedSum(sum, rate, "the sum of the baseline resting heart rates");
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
  const auto& nights = observations.nights;
  const auto& hours = observations.hourlyActivity;
  const auto count = static_cast<std::int64_t>(nights.size());
  // Once for two figures, and without gathering the minutes first: what a year of nights costs is going
  // through them.
  const auto resultant = resultantOf(nights | std::views::transform(&SleepSession::midSleepMinutes));
  return {
      .date = observations.date,
      .phaseDeviationHours = deviationHours(observations.judgedMidSleepMinutes, meanDirection(resultant)),
      .sleepRegularitySDMinutes = circularDeviation(resultant),
      .durationSDMinutes =
          deviationOf(spreadOf(nights | std::views::transform(&SleepSession::asleepMinutes))),
      .activity = hours ? activityRhythm(*hours) : std::nullopt,
      .stepVariabilityCV = stepVariabilityCV(observations.stepCounts),
      .restingHRDeviationBpm =
          restingHRDeviationBpm(observations.restingHeartRate, observations.baselineRestingHeartRates),
      .coverageNights = coverageNights(count, observations.expectedNights),
      .daysObserved = count,
  };
}

}  // namespace kestrel
