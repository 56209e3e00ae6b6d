#pragma once

#include <KestrelKit/circadian/SleepSession.h>
#include <KestrelKit/foundation/JsonField.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kestrel {

/// What was observed of a person up to a day: all that CircadianStatistics::features() needs. How long the
/// window is and which night is judged is the caller's choice.
struct CircadianObservations {
  std::string date{};                             ///< The day key.
  std::vector<SleepSession> nights{};             ///< Of the window.
  std::optional<double> judgedMidSleepMinutes{};  ///< Of the night that is judged: minutes after midnight.
  std::optional<std::vector<double>>
      hourlyActivity{};                    ///< 24 totals over the window, the first from 00:00 to 01:00.
  std::vector<std::int64_t> stepCounts{};  ///< One a day of the window.
  std::optional<std::int64_t> restingHeartRate{};         ///< The day's, beats per minute.
  std::vector<std::int64_t> baselineRestingHeartRates{};  ///< What it is compared with, beats per minute.
  std::int64_t expectedNights = 0;                        ///< How many nights the window could have.

  bool operator==(const CircadianObservations&) const = default;

  static JsonFields jsonFields();
};

}  // namespace kestrel
