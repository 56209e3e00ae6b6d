#pragma once

#include <KestrelKit/foundation/Instant.h>
#include <KestrelKit/foundation/JsonField.h>
#include <KestrelTrackerMac/reading/MessageDayAggregate.h>

#include <cstdint>
#include <vector>

namespace kestrel::companion {

/// The result of one scan.
struct MessagesScanSummary {
  std::int64_t requestedDays = 0;  ///< The window that was asked for, in days, 1 to 365.
  Instant scannedAt;  ///< The instant the scan was taken at: it reads from so many days before, onward.
  std::vector<MessageDayAggregate> daily;  ///< Ascending by date; days without a message are not in it.

  bool operator==(const MessagesScanSummary&) const = default;

  static JsonFields jsonFields();
};

}  // namespace kestrel::companion
