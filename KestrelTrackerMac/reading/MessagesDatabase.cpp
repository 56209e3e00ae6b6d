#include <KestrelKit/foundation/Calendar.h>
#include <KestrelKit/foundation/HomeDirectory.h>
#include <KestrelKit/foundation/SqliteFileSystem.h>
#include <KestrelKit/foundation/SqliteHandles.h>
#include <KestrelTrackerMac/reading/MessagesAggregateBuilder.h>
#include <KestrelTrackerMac/reading/MessagesDatabase.h>
#include <KestrelTrackerMac/reading/MessagesQuery.h>
#include <sqlite3.h>

#include <chrono>
#include <exception>
#include <system_error>
#include <utility>

namespace kestrel::companion {
namespace {

constexpr std::int64_t leastDays = 1;
constexpr std::int64_t mostDays = 365;
constexpr int busyMilliseconds = 2000;

bool isVisible(const std::filesystem::path& path) {
  std::error_code unseen;
  return std::filesystem::exists(path, unseen);
}

/// Opens the database read-only: the connection, where there is one, and SQLite's result.
std::pair<SqliteConnection, int> open(const std::filesystem::path& path) {
  sqlite3* connection = nullptr;
  const std::filesystem::path name = "." / path;  // a name that begins "file:" would be taken for a URI
  const int result =
      sqlite3_open_v2(name.c_str(), &connection, SQLITE_OPEN_READONLY | SQLITE_OPEN_FULLMUTEX, nullptr);
  return {SqliteConnection(connection), result};
}

bool lacksPermission(int openResult) { return openResult == SQLITE_CANTOPEN || openResult == SQLITE_AUTH; }

std::expected<MessagesScanSummary, MessagesScanError> scan(const std::filesystem::path& path,
                                                           std::int64_t days, Instant now) {
  if (days < leastDays || days > mostDays) {
    return std::unexpected(MessagesScanError::queryFailed);
  }
  if (!isVisible(path)) {
    return std::unexpected(MessagesScanError::accessRequired);
  }
  if (!installSqliteFileSystem()) {
    return std::unexpected(MessagesScanError::databaseUnavailable);
  }
  const auto [connection, openResult] = open(path);
  if (openResult != SQLITE_OK || !connection) {
    return std::unexpected(lacksPermission(openResult) ? MessagesScanError::accessRequired
                                                       : MessagesScanError::databaseUnavailable);
  }
  sqlite3_busy_timeout(connection.get(), busyMilliseconds);

  sqlite3_stmt* prepared = nullptr;
  const int prepareResult = sqlite3_prepare_v2(connection.get(), MessagesQuery::text, -1, &prepared, nullptr);
  const SqliteStatement statement(prepared);
  if (prepareResult != SQLITE_OK || !statement) {
    return std::unexpected(MessagesScanError::unsupportedDatabase);
  }

  const Calendar calendar = Calendar::current();
  const Instant cutoff = calendar.addingDays(now, -days).value_or(now - std::chrono::days(days));
  sqlite3_bind_double(statement.get(), 1, secondsSinceReferenceDate(cutoff));

  MessagesAggregateBuilder builder(calendar);
  int step = SQLITE_OK;
  while ((step = sqlite3_step(statement.get())) == SQLITE_ROW) {
    builder.add(MessagesQuery::sample(statement.get()));
  }
  if (step != SQLITE_DONE) {
    return std::unexpected(MessagesScanError::queryFailed);
  }
  return MessagesScanSummary{.requestedDays = days, .scannedAt = now, .daily = builder.daily()};
}

}  // namespace

std::filesystem::path defaultMessagesDatabase() {
  return homeDirectory().value_or("/") / "Library/Messages/chat.db";
}

MessagesAccessState probeMessagesAccess(const std::filesystem::path& path) noexcept {
  if (!isVisible(path)) {
    return MessagesAccessState::needsFullDiskAccess;
  }
  if (!installSqliteFileSystem()) {
    return MessagesAccessState::unavailable;
  }
  const auto [connection, result] = open(path);
  if (result == SQLITE_OK) {
    return MessagesAccessState::ready;
  }
  return lacksPermission(result) ? MessagesAccessState::needsFullDiskAccess
                                 : MessagesAccessState::unavailable;
}

std::expected<MessagesScanSummary, MessagesScanError> scanMessages(const std::filesystem::path& path,
                                                                   std::int64_t days, Instant now) noexcept {
  try {
    return scan(path, days, now);
  } catch (const std::exception&) {  // out of memory
    return std::unexpected(MessagesScanError::queryFailed);
  }
}

}  // namespace kestrel::companion
