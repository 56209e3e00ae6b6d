#pragma once

#include <KestrelKit/analytics/SignalEvidenceObservation.h>

#include <compare>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace kestrel {

/// Which signal of which source; ordered by code points.
struct SignalKey {
  std::string sourceID;
  std::string signalID;

  auto operator<=>(const SignalKey&) const = default;
};

/// All that was observed of one signal, in the order of the observations.
struct SignalSeries {
  SignalKey key;
  std::vector<std::int32_t> days;  ///< Of each of `values`: days since 1970-01-01.
  std::vector<double> values;
  std::size_t follower = 0;  ///< The place of the signal that was observed after this one the last time.
};

/// Observations by signal.
struct GroupedObservations {
  std::vector<SignalSeries> signals{};  ///< In the order of their keys.
  std::int32_t firstDay = 0;            ///< All values lie in the `days` days from this one.
  std::size_t days = 0;
};

/// Groups `observations` by signal. One whose value is not finite, or whose date is no day of the years 0001
/// to 9999, is none.
GroupedObservations groupedBySignal(std::span<const SignalEvidenceObservation> observations);

}  // namespace kestrel
