#pragma once

#include <KestrelKit/foundation/JsonField.h>
#include <KestrelKit/model/HrvInput.h>

#include <cstdint>
#include <optional>
#include <string>

namespace kestrel {

/// The signals of one calendar day. Its members are called what they are called in JSON.
struct DailyMetrics {
  std::string date{};                        ///< The day key, `yyyy-MM-dd`; see DateKey.
  double sleep_hours = 0;                    ///< Asleep in the night of this day; 0 means no sleep data.
  std::int64_t posts = 0;                    ///< Social posts.
  double sentiment = 0;                      ///< Mean over the day's posts, about -1 to +1.
  std::int64_t steps = 0;                    ///< Carried along; no classifier of a day reads it.
  std::optional<double> sentiment_stdev{};   ///< Of the day's posts, their volatility; absent: not known.
  HrvInput avg_hrv = HrvInput::notProvided;  ///< The day's average heart-rate variability.

  bool operator==(const DailyMetrics&) const = default;

  static JsonFields jsonFields();
};

}  // namespace kestrel
