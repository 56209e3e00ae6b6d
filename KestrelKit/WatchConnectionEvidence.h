#pragma once

#include <KestrelKit/foundation/Instant.h>
#include <KestrelKit/foundation/JsonField.h>
#include <KestrelKit/foundation/Uuid.h>

#include <cstdint>
#include <optional>
#include <string>

namespace kestrel {

/// What a front end knows of the link between phone and watch, and of what went over it.
struct WatchConnectionEvidence {
  bool isPaired = false;             ///< A watch is paired.
  bool isWatchAppInstalled = false;  ///< The watch has the application.
  bool isReachable = false;          ///< The watch can be reached now.

  std::optional<Instant> lastSentAt{};               ///< When a state was last sent.
  std::optional<Uuid> lastSentDeliveryID{};          ///< The delivery of that state.
  std::optional<Instant> lastAcknowledgedAt{};       ///< When a receipt for the state last sent arrived.
  std::optional<Uuid> lastAcknowledgedDeliveryID{};  ///< The delivery that it names.

  std::optional<Instant> lastReceivedStateAt{};          ///< When a state was last received, on the watch.
  std::optional<std::string> lastReceivedState{};        ///< Its raw value, one of today's.
  std::optional<std::int64_t> lastReceivedConfidence{};  ///< Its confidence in percent, as it came.

  std::optional<std::string> lastError{};  ///< What went wrong since a transfer last went well.

  bool operator==(const WatchConnectionEvidence&) const = default;

  static JsonFields jsonFields();
};

}  // namespace kestrel
