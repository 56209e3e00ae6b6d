#pragma once

#include <KestrelKit/formats/SyncRecord.h>
#include <KestrelKit/foundation/JsonField.h>

#include <vector>

namespace kestrel {

/// The records of one transfer to the receiving service. One that does not decode costs the request.
struct SyncRequest {
  std::vector<SyncRecord> records{};

  bool operator==(const SyncRequest&) const = default;

  static JsonFields jsonFields();
};

}  // namespace kestrel
