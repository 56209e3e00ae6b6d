#pragma once

#include <KestrelKit/formats/SignalProcessingContractEntry.h>
#include <KestrelKit/foundation/JsonField.h>

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace kestrel {

/// How each signal may be collected, kept, synced, processed and erased, and which of them each collector
/// emits.
struct SignalProcessingContract {
  std::int64_t schemaVersion = 2;
  std::vector<SignalProcessingContractEntry> signals{};
  /// The data types that a collector emits, by its name, such as `ios`.
  std::optional<std::map<std::string, std::vector<std::string>>> collectorEmissionSets{};

  bool operator==(const SignalProcessingContract&) const = default;

  static JsonFields jsonFields();
};

}  // namespace kestrel
