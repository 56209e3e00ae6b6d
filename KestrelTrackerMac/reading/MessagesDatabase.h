#pragma once

#include <KestrelKit/foundation/Instant.h>
#include <KestrelTrackerMac/reading/MessagesAccessState.h>
#include <KestrelTrackerMac/reading/MessagesScanError.h>
#include <KestrelTrackerMac/reading/MessagesScanSummary.h>

#include <cstdint>
#include <expected>
#include <filesystem>

namespace kestrel::companion {

/// The Messages database of the current user: `Library/Messages/chat.db` in the home directory, which is
/// `$HOME` where it is set, else the user database's entry.
std::filesystem::path defaultMessagesDatabase();

/// Whether the database at `path` can be opened read-only. Runs no query, blocks on the file system; any
/// thread.
MessagesAccessState probeMessagesAccess(const std::filesystem::path& path) noexcept;

/// Reads what the database at `path` holds from `days` calendar days before `now` onward, and reduces it to
/// one aggregate a day, in the user's current calendar. Blocks until the last row is read; any thread, any
/// number of scans at once.
std::expected<MessagesScanSummary, MessagesScanError> scanMessages(const std::filesystem::path& path,
                                                                   std::int64_t days, Instant now) noexcept;

}  // namespace kestrel::companion
