#pragma once

#include <KestrelKit/foundation/Instant.h>
#include <KestrelKit/foundation/JsonField.h>

namespace kestrel {

/// One recorded segment of sleep. A segment that does not end after it starts counts for nothing.
struct SleepInterval {
  Instant start{};
  Instant end{};

  bool operator==(const SleepInterval&) const = default;

  static JsonFields jsonFields();
};

}  // namespace kestrel
