#pragma once

#include <KestrelKit/foundation/Instant.h>
#include <KestrelTrackerMac/reading/MessagesAccessState.h>
#include <KestrelTrackerMac/reading/MessagesScanError.h>
#include <KestrelTrackerMac/reading/MessagesScanSummary.h>

#include <QCoroTask>

#include <cstdint>
#include <expected>

namespace kestrel::companion {

/// What the coordinator asks of the Messages history. Both operations are called on the main thread, leave it
/// free while they work, and answer on it.
class MessagesActivityReading {
 public:
  MessagesActivityReading() = default;
  MessagesActivityReading(const MessagesActivityReading&) = delete;
  MessagesActivityReading& operator=(const MessagesActivityReading&) = delete;
  virtual ~MessagesActivityReading() = default;

  /// Whether the history can be read. Never `checking`; every failure is one of the other states.
  virtual QCoro::Task<MessagesAccessState> checkAccess() = 0;

  /// The activity of the `days` calendar days before `now`; `days` outside 1…365 is `queryFailed`.
  virtual QCoro::Task<std::expected<MessagesScanSummary, MessagesScanError>> scan(std::int64_t days,
                                                                                  Instant now) = 0;
};

}  // namespace kestrel::companion
