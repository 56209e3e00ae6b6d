#pragma once

#include <KestrelKit/formats/HealthDay.h>
#include <KestrelKit/formats/LossyArray.h>
#include <KestrelKit/formats/OnDeviceAggregate.h>
#include <KestrelKit/foundation/JsonField.h>

#include <optional>

namespace kestrel {

/// The health values of a dashboard snapshot, from the server's own sources and from the device.
struct HealthTier {
  /// As it came, in the producer's order; days may be missing or come twice.
  std::optional<LossyArray<HealthDay>> healthRaw{};
  std::optional<LossyArray<OnDeviceAggregate>> onDeviceAggregatesRaw{};  ///< Likewise.

  bool operator==(const HealthTier&) const = default;

  static JsonFields jsonFields();
};

}  // namespace kestrel
