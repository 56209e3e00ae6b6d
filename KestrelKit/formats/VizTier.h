#pragma once

#include <KestrelKit/formats/LossyArray.h>
#include <KestrelKit/formats/VizDay.h>
#include <KestrelKit/formats/VizSummary.h>
#include <KestrelKit/foundation/JsonField.h>

#include <optional>

namespace kestrel {

/// The social posts of a dashboard snapshot: one record a day, and what they come to.
struct VizTier {
  std::optional<VizSummary> summary{};
  /// As it came, in the producer's order; days may be missing or come twice.
  std::optional<LossyArray<VizDay>> dailyRaw{};

  bool operator==(const VizTier&) const = default;

  static JsonFields jsonFields();
};

}  // namespace kestrel
