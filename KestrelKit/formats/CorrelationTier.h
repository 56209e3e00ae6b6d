#pragma once

#include <KestrelKit/formats/CorrelationSummary.h>
#include <KestrelKit/foundation/JsonField.h>

#include <optional>

namespace kestrel {

/// How posts and health go together.
struct CorrelationTier {
  std::optional<CorrelationSummary> summary{};

  bool operator==(const CorrelationTier&) const = default;

  static JsonFields jsonFields();
};

}  // namespace kestrel
