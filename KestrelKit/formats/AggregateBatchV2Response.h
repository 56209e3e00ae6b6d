#pragma once

#include <KestrelKit/foundation/JsonField.h>
#include <KestrelKit/foundation/Uuid.h>

#include <cstdint>

namespace kestrel {

/// What the receiving service answers to an AggregateBatchV2.
struct AggregateBatchV2Response {
  std::int64_t accepted = 0;  ///< How many records it took.
  Uuid batchId{};             ///< That of the batch.
  std::int64_t schemaVersion = 2;

  bool operator==(const AggregateBatchV2Response&) const = default;

  static JsonFields jsonFields();
};

}  // namespace kestrel
