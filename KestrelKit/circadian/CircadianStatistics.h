#pragma once

#include <KestrelKit/circadian/ActivityRhythm.h>
#include <KestrelKit/circadian/CircadianFeatures.h>
#include <KestrelKit/circadian/CircadianObservations.h>

#include <cstdint>
#include <optional>
#include <span>

namespace kestrel {

/// The figures of a person's circadian rhythm, each by itself, and all of them together.
///
/// Clock times are minutes after midnight on a circle of 1440, so that nights around midnight average as they
/// should; the statistics on the circle are those of K. V. Mardia and P. E. Jupp, "Directional Statistics",
/// Wiley 2000, chapter 2. Sums run in the order of the list; a standard deviation is that of a population
/// (divided by n, not n - 1) and takes two passes. A figure that has nothing to be made of is absent, none
/// fails. A value that is not finite makes the figures that it goes into not finite, or absent.
struct CircadianStatistics {
  CircadianStatistics() = delete;

  /// All figures of one day.
  static CircadianFeatures features(const CircadianObservations& observations);

  /// The mean direction of clock times, in minutes from 0 to 1440: the angle of the sum of their unit
  /// vectors, atan2(sum of sines, sum of cosines). Absent without times.
  static std::optional<double> circularMeanMinutes(std::span<const double> clockMinutes);

  /// By how many hours `judgedMidSleepMinutes` is later than the circular mean of `midSleepMinutes`, the
  /// shorter way round the circle: above -12, up to 12. Absent without either.
  static std::optional<double> phaseDeviationHours(std::optional<double> judgedMidSleepMinutes,
                                                   std::span<const double> midSleepMinutes);

  /// The circular standard deviation of clock times, sqrt(-2 ln R) in minutes, where R is the mean length of
  /// their resultant (Mardia and Jupp, 2.3.14). Exactly 0 for identical times. It grows without bound as the
  /// times spread evenly round the circle and is infinite when their resultant is nothing. Absent without
  /// times.
  static std::optional<double> sleepRegularitySDMinutes(std::span<const double> midSleepMinutes);

  /// The standard deviation of the minutes asleep. Absent without nights.
  static std::optional<double> durationSDMinutes(std::span<const double> asleepMinutes);

  /// M10, L5 and what follows from them. The windows of 10 and of 5 hours wrap past midnight; each is summed
  /// from its first hour, and of equal ones the earliest counts. The mesor is the mean of the 24 hours, which
  /// is the rhythm-adjusted mean of a cosine fitted to them (W. Nelson et al., Chronobiologia 6, 1979,
  /// 305-323). The relative amplitude is 0 where M10 + L5 is not above 0. Absent unless there are 24 hours
  /// with a total above 0.
  static std::optional<ActivityRhythm> activityRhythm(std::span<const double> hourlyActivity);

  /// Standard deviation over mean. Absent without counts, and where their mean is not above 0.
  static std::optional<double> stepVariabilityCV(std::span<const std::int64_t> stepCounts);

  /// The day's heart rate minus the mean of the baseline, beats per minute. Absent without either. A sum of
  /// the baseline beyond 64 bits is a programming error.
  static std::optional<double> restingHRDeviationBpm(std::optional<std::int64_t> restingHeartRate,
                                                     std::span<const std::int64_t> baselineRestingHeartRates);

  /// Nights seen of nights expected, at most 1; 0 when fewer than one night is expected.
  static double coverageNights(std::int64_t nights, std::int64_t expectedNights);
};

}  // namespace kestrel
