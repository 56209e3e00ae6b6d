#pragma once

#include <KestrelKit/formats/EssentialTier.h>
#include <KestrelKit/formats/HealthTier.h>
#include <KestrelKit/formats/OptionalTier.h>
#include <KestrelKit/foundation/JsonField.h>

#include <optional>

namespace kestrel {

/// What a dashboard is drawn from, as its producer has put it together: a tree in which everything may be
/// absent. It is read tolerantly where it grows, in its lists of days and aggregates (LossyArray), and
/// strictly everywhere else.
struct DashboardSnapshot {
  std::optional<EssentialTier> essential{};
  std::optional<HealthTier> health{};
  std::optional<OptionalTier> optional{};

  bool operator==(const DashboardSnapshot&) const = default;

  static JsonFields jsonFields();
};

}  // namespace kestrel
