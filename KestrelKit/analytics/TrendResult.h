#pragma once

#include <KestrelKit/foundation/JsonField.h>

#include <cstdint>
#include <string>

namespace kestrel {

/// A period compared with the one before it. As it is made it says that no comparison was possible.
struct TrendResult {
  std::int64_t value = 0;    ///< The change in percent of the previous aggregate, its fraction dropped.
  std::string label{};       ///< `vs previous 30 days`; empty when no comparison was possible.
  double currentValue = 0;   ///< The aggregate of the current period, in the unit of the values.
  double previousValue = 0;  ///< That of the period before it.

  bool operator==(const TrendResult&) const = default;

  static JsonFields jsonFields();
};

}  // namespace kestrel
