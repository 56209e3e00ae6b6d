#pragma once

#include <KestrelKit/foundation/JsonForm.h>

#include <optional>

namespace kestrel {

/// A closed interval. In JSON a list of its two ends.
struct ConfidenceInterval {
  double lower = 0;
  double upper = 0;  ///< Not below `lower`.

  bool operator==(const ConfidenceInterval&) const = default;
};

template <>
struct JsonForm<ConfidenceInterval> {
  static std::optional<ConfidenceInterval> read(JsonReader& value);
  static void write(JsonWriter& writer, const ConfidenceInterval& interval);
};

}  // namespace kestrel
