#pragma once

#include <KestrelKit/analytics/SignalEvidenceLabel.h>
#include <KestrelKit/analytics/SignalEvidenceObservation.h>
#include <KestrelKit/foundation/CivilDay.h>

#include <chrono>
#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

namespace kestrel::testing {

/// The day key of the day `number` days after the first of January 2024.
inline std::string dayKey(int number) {
  constexpr std::chrono::local_days first{std::chrono::year{2024} / std::chrono::January / 1};
  return civilDayText(first + std::chrono::days{number}).value();
}

/// One signal's values on the first day and every second day after it. No two such days lie 1, 3 or 7 days
/// apart, so that with labels on these days alone nothing is paired but at lag 0.
inline std::vector<SignalEvidenceObservation> everySecondDay(const std::vector<double>& values,
                                                             const std::string& signalID = "steps",
                                                             const std::string& sourceID = "watch") {
  std::vector<SignalEvidenceObservation> observations;
  for (const double value : values) {
    const int day = 2 * static_cast<int>(observations.size());
    observations.push_back({.date = dayKey(day), .sourceID = sourceID, .signalID = signalID, .value = value});
  }
  return observations;
}

/// So many days of each state, on the first day and every second day after it.
inline std::vector<SignalEvidenceLabel> labelsEverySecondDay(
    std::initializer_list<std::pair<KestrelState, int>> stretches) {
  std::vector<SignalEvidenceLabel> labels;
  for (const auto& [state, days] : stretches) {
    for (int day = 0; day < days; ++day) {
      labels.push_back({.date = dayKey(2 * static_cast<int>(labels.size())), .state = state});
    }
  }
  return labels;
}

}  // namespace kestrel::testing
