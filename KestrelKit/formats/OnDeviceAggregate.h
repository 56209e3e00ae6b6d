#pragma once

#include <KestrelKit/foundation/JsonField.h>

#include <optional>
#include <string>

namespace kestrel {

/// One daily value that a device computed, and how fresh it is. Nothing but the types of its fields is
/// judged: a data type or source type that this library does not know, or an instant that is none, is kept as
/// it came.
struct OnDeviceAggregate {
  std::string date{};      ///< The day key, `yyyy-MM-dd`; see DateKey.
  std::string dataType{};  ///< A raw value of the aggregate data types.
  double value = 0;
  std::string unit{};
  std::string sourceType{};                 ///< A raw value of the source types of an aggregate batch.
  std::string sourceInstanceKey{};          ///< Which collector the value is from.
  std::optional<std::string> capturedAt{};  ///< An ISO 8601 instant, like the other two.
  std::optional<std::string> displayName{};
  std::optional<std::string> lastSuccessfulAt{};   ///< When the collector last succeeded.
  std::optional<std::string> freshnessDeadline{};  ///< After it the value is stale.
  std::optional<bool> stale{};
  std::optional<std::string> classifierStatus{};

  bool operator==(const OnDeviceAggregate&) const = default;

  static JsonFields jsonFields();

  /// What tells it from other values: its collector, day and data type, joined by `|`.
  std::string id() const;
};

}  // namespace kestrel
