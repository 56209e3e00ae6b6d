#pragma once

#include <KestrelKit/foundation/JsonField.h>

#include <cstdint>
#include <string>

namespace kestrel {

/// How two signals move together.
struct SignalPairAssociation {
  std::string firstSourceID{};
  std::string firstSignalID{};
  std::string secondSourceID{};
  std::string secondSignalID{};
  std::int64_t pairedDays = 0;  ///< Days on which both have a value.
  double spearmanRho = 0;       ///< Spearman's rank correlation over those days, -1 to 1, four decimals.

  bool operator==(const SignalPairAssociation&) const = default;

  static JsonFields jsonFields();
};

}  // namespace kestrel
