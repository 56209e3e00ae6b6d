#pragma once

#include <KestrelKit/foundation/JsonField.h>

#include <cstdint>
#include <string>
#include <vector>

namespace kestrel {

/// What the receiving service answers to a SyncRequest.
struct SyncResponse {
  /// A record that it did not take.
  struct SyncRecordError {
    std::int64_t index = 0;  ///< Its place in the request's `records`, from 0.
    std::string reason{};

    bool operator==(const SyncRecordError&) const = default;

    static JsonFields jsonFields();
  };

  std::int64_t accepted = 0;  ///< How many records it took.
  std::vector<SyncRecordError> rejected{};

  bool operator==(const SyncResponse&) const = default;

  static JsonFields jsonFields();
};

}  // namespace kestrel
