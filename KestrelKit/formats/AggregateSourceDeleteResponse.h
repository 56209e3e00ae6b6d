#pragma once

#include <KestrelKit/foundation/JsonField.h>

#include <cstdint>
#include <string>

namespace kestrel {

/// What the receiving service answers when all that one source instance sent was erased.
struct AggregateSourceDeleteResponse {
  std::int64_t deleted = 0;         ///< How many records it erased.
  std::string sourceInstanceKey{};  ///< See AggregateBatchV2.

  bool operator==(const AggregateSourceDeleteResponse&) const = default;

  static JsonFields jsonFields();
};

}  // namespace kestrel
