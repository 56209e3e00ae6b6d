#include <KestrelTrackerMac/reading/MessagesDatabase.h>

#include <cstdlib>

namespace kestrel::companion {

std::filesystem::path defaultMessagesDatabase() {
  const char* home = std::getenv("HOME");
  return std::filesystem::path(home ? home : "/") / "Library/Messages/chat.db";
}

MessagesAccessState probeMessagesAccess(const std::filesystem::path& path) noexcept {
  std::error_code ignored;
  return std::filesystem::exists(path, ignored) ? MessagesAccessState::ready
                                                : MessagesAccessState::needsFullDiskAccess;
}

std::expected<MessagesScanSummary, MessagesScanError> scanMessages(const std::filesystem::path&, std::int64_t days,
                                                                   Instant now) noexcept {
  return MessagesScanSummary{.requestedDays = days, .scannedAt = now, .daily = {}};
}

}  // namespace kestrel::companion
