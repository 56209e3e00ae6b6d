#pragma once

#include <KestrelKit/formats/CommunicationTier.h>
#include <KestrelKit/formats/VizTier.h>
#include <KestrelKit/foundation/JsonField.h>

#include <optional>

namespace kestrel {

/// What the person writes and how.
struct EssentialTier {
  std::optional<VizTier> viz{};                      ///< The days of social posts.
  std::optional<CommunicationTier> communication{};  ///< What their words show, day by day.

  bool operator==(const EssentialTier&) const = default;

  static JsonFields jsonFields();
};

}  // namespace kestrel
