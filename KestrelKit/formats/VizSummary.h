#pragma once

#include <KestrelKit/foundation/JsonField.h>

#include <cstdint>
#include <optional>

namespace kestrel {

/// What the producer counted over all its days of social posts.
struct VizSummary {
  std::optional<std::int64_t> totalPosts{};
  std::optional<std::int64_t> totalDays{};
  std::optional<double> avgSentiment{};  ///< Mean over the posts, about -1 to +1.

  bool operator==(const VizSummary&) const = default;

  static JsonFields jsonFields();
};

}  // namespace kestrel
