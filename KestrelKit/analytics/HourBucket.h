#pragma once

#include <KestrelKit/foundation/JsonField.h>

#include <cstdint>

namespace kestrel {

/// The social posts of one hour of the day, over all days.
struct HourBucket {
  std::int64_t hour = 0;  ///< The local hour, 0 to 23.
  std::int64_t posts = 0;

  bool operator==(const HourBucket&) const = default;

  static JsonFields jsonFields();
};

}  // namespace kestrel
