#pragma once

#include <KestrelKit/foundation/JsonField.h>

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace kestrel {

/// The policy of one signal. The words of its texts are those of the page "Signal-processing contract"
/// (docs/reference/signal-contract.md); decoding takes any.
struct SignalProcessingContractEntry {
  std::string dataType{};  ///< The raw value of the data type; each stands in a contract once.
  std::string displayName{};
  std::vector<std::string> sources{};
  std::string valueKind{};
  std::string unit{};
  std::optional<double> minimum{};  ///< In `unit`, inclusive; absent: no limit.
  std::optional<double> maximum{};  ///< Likewise.
  bool integer = false;             ///< Whether the values are whole numbers.
  std::string consentTier{};
  std::string retention{};
  std::string backfill{};
  std::string localProcessing{};
  std::string cloudSync{};
  std::string serverProcessing{};
  std::string classifierPosture{};
  std::map<std::string, std::string> classifierPostureBySource{};  ///< Of sources with one of their own.
  std::string eraseScope{};
  std::optional<std::string> unevaluatedReason{};  ///< Why no analysis has judged the signal's worth yet.

  bool operator==(const SignalProcessingContractEntry&) const = default;

  static JsonFields jsonFields();
};

}  // namespace kestrel
