#pragma once

#include <KestrelKit/foundation/Instant.h>
#include <KestrelKit/foundation/JsonField.h>
#include <KestrelKit/foundation/Uuid.h>
#include <KestrelKit/model/KestrelState.h>

#include <cstdint>
#include <string>

namespace kestrel {

/// The mood state on its way to the watch.
struct WatchStateSnapshot {
  static constexpr std::int64_t currentVersion = 1;

  std::int64_t version = currentVersion;  ///< Of the format.
  Uuid deliveryID{};                      ///< Of this delivery, chosen by the sender.
  std::string stateRaw{};                 ///< A state's raw value; of an older sender, a former name.
  std::int64_t confidencePercent = 0;     ///< 0 to 100.
  Instant generatedAt{};                  ///< When the sender produced the state.

  /// What is sent of `state`; a confidence outside 0 to 100 counts as the nearer of the two.
  static WatchStateSnapshot of(KestrelState state, std::int64_t confidencePercent, Instant generatedAt,
                               const Uuid& deliveryID);

  bool operator==(const WatchStateSnapshot&) const = default;

  static JsonFields jsonFields();
};

}  // namespace kestrel
