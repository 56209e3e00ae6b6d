#pragma once

#include <KestrelKit/foundation/JsonField.h>

#include <cstdint>
#include <optional>
#include <string>

namespace kestrel {

/// The health values of one day. Heart-rate variability and heart rate have two spellings each, of different
/// producers; both are kept as they came, and which one counts where both are there is the reader's choice.
struct HealthDay {
  std::string date{};  ///< The day key, `yyyy-MM-dd`; see DateKey.
  std::optional<std::int64_t> steps{};
  std::optional<double> sleepHours{};
  std::optional<double> avgHrv{};        ///< Heart-rate variability, milliseconds.
  std::optional<double> hrvAvg{};        ///< The same in its other spelling.
  std::optional<double> avgHeartRate{};  ///< Beats per minute.
  std::optional<double> heartRateAvg{};  ///< The same in its other spelling.
  /// Oxygen saturation; whether in percent or as a fraction the producer decides.
  std::optional<double> spo2Avg{};
  std::optional<std::string> source{};  ///< Where the values come from.

  bool operator==(const HealthDay&) const = default;

  static JsonFields jsonFields();
};

}  // namespace kestrel
