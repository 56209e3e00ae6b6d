#pragma once

#include <KestrelKit/circadian/ActivityRhythm.h>
#include <KestrelKit/foundation/JsonField.h>

#include <cstdint>
#include <optional>
#include <string>

namespace kestrel {

/// What one day's window of nights, activity and heart rates says of the person's rhythm. Made by
/// CircadianStatistics::features(), judged by CircadianClassifier. An absent figure had nothing to be made
/// of.
struct CircadianFeatures {
  std::string date{};  ///< The day key.
  std::optional<double>
      phaseDeviationHours{};  ///< The judged mid-sleep minus the usual one, above -12 up to 12 hours;
                              ///< positive is later (delayed), negative earlier (advanced).
  std::optional<double>
      sleepRegularitySDMinutes{};             ///< Circular standard deviation of mid-sleep; may be infinite.
  std::optional<double> durationSDMinutes{};  ///< Standard deviation of the minutes asleep.
  std::optional<ActivityRhythm> activity{};
  std::optional<double> stepVariabilityCV{};  ///< Coefficient of variation of the daily step counts.
  std::optional<double>
      restingHRDeviationBpm{};    ///< Resting heart rate minus its baseline, beats per minute.
  double coverageNights = 0;      ///< Nights seen of nights expected, 0 to 1.
  std::int64_t daysObserved = 0;  ///< Nights with sleep data.

  bool operator==(const CircadianFeatures&) const = default;

  static JsonFields jsonFields();
};

}  // namespace kestrel
