#pragma once

#include <KestrelKit/foundation/Instant.h>

#include <cstdint>
#include <optional>

namespace kestrel::companion {

/// What one row of the Messages database says, as the aggregation takes it.
struct MessageActivitySample {
  Instant timestamp;  ///< When the message was sent or received.
  bool isFromMe = false;
  std::int64_t conversationID = 0;  ///< The smallest chat it belongs to, or its own row number negated.
  std::optional<std::int64_t> textLength;  ///< Characters; absent where there is no text.

  bool operator==(const MessageActivitySample&) const = default;
};

}  // namespace kestrel::companion
