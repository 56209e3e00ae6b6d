#pragma once

#include <KestrelKit/foundation/JsonField.h>

namespace kestrel {

/// A person's usual levels, which a day is judged against. As made, the levels where no personal ones are
/// known; Baselines computes those.
struct Baseline {
  double avgSleep = 7;      ///< Hours asleep a night.
  double avgPosts = 10;     ///< Social posts a day.
  double avgSentiment = 0;  ///< Mean sentiment of a day's posts, about -1 to +1.

  bool operator==(const Baseline&) const = default;

  static JsonFields jsonFields();
};

}  // namespace kestrel
