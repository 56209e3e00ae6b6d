#pragma once

#include <KestrelKit/foundation/Instant.h>
#include <KestrelKit/foundation/JsonField.h>
#include <KestrelKit/foundation/Uuid.h>

namespace kestrel {

/// The watch's receipt for a state that it was sent.
struct WatchStateAcknowledgement {
  Uuid deliveryID{};     ///< Of the delivery that was received.
  Instant receivedAt{};  ///< By the watch.

  bool operator==(const WatchStateAcknowledgement&) const = default;

  static JsonFields jsonFields();
};

}  // namespace kestrel
