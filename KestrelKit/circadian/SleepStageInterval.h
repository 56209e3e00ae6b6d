#pragma once

#include <KestrelKit/foundation/Instant.h>
#include <KestrelKit/foundation/JsonField.h>

#include <string>

namespace kestrel {

/// One recorded segment of a night and the stage that it was spent in.
struct SleepStageInterval {
  Instant start{};
  Instant end{};
  std::string
      stage{};  ///< The stage's name as the source gave it; SleepConsolidator knows which ones are sleep.

  bool operator==(const SleepStageInterval&) const = default;

  static JsonFields jsonFields();
};

}  // namespace kestrel
