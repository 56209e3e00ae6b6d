#pragma once

#include <KestrelKit/foundation/Instant.h>
#include <KestrelTrackerMac/MessagesActivityReading.h>
#include <KestrelTrackerMac/reading/MessagesAccessState.h>
#include <KestrelTrackerMac/reading/MessagesDatabase.h>
#include <KestrelTrackerMac/reading/MessagesScanError.h>
#include <KestrelTrackerMac/reading/MessagesScanSummary.h>

#include <QCoroTask>
#include <QThreadPool>

#include <cstdint>
#include <expected>
#include <filesystem>

namespace kestrel::companion {

/// Reads the Messages database itself, on two threads: the probes below the priority of the window, the
/// scans, which a person waits for, at the window's own. Both threads start with the reader and last as long,
/// so that what binds threads started later does not bind them. Lives on the main thread; its destructor
/// waits for what is running.
class MessagesDatabaseReader final : public MessagesActivityReading {
 public:
  /// A reader of the database at `databaseURL`, by default the current user's.
  explicit MessagesDatabaseReader(std::filesystem::path databaseURL = defaultMessagesDatabase());

  QCoro::Task<MessagesAccessState> checkAccess() override;
  QCoro::Task<std::expected<MessagesScanSummary, MessagesScanError>> scan(std::int64_t days,
                                                                          Instant now) override;

 private:
  std::filesystem::path databaseURL_;
  QThreadPool probes_;
  QThreadPool scans_;
};

}  // namespace kestrel::companion
