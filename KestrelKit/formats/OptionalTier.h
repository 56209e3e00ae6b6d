#pragma once

#include <KestrelKit/formats/CorrelationTier.h>
#include <KestrelKit/foundation/JsonField.h>

#include <optional>

namespace kestrel {

/// What a dashboard can do without.
struct OptionalTier {
  std::optional<CorrelationTier> correlation{};

  bool operator==(const OptionalTier&) const = default;

  static JsonFields jsonFields();
};

}  // namespace kestrel
