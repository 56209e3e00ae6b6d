#pragma once

#include <string_view>

namespace kestrel::companion {

/// Why a scan gave no summary.
enum class MessagesScanError {
  /// The file is not visible to the process, or opening it was refused; also where no file can be opened at
  /// all, such
  /// as a pipe or a socket.
  accessRequired,
  /// Opening it failed for another reason: a folder in its place, a file that ends within a page, an empty
  /// one that has a log.
  databaseUnavailable,
  /// The query cannot be prepared: a table or column is missing, the file is empty or no database, it stayed
  /// locked
  /// for longer than the reader waits, or its log cannot be opened.
  unsupportedDatabase,
  /// A day count outside 1…365, or reading stopped before the last row.
  queryFailed,
};

/// The text that a person is shown for `error`.
std::string_view errorDescription(MessagesScanError error) noexcept;

}  // namespace kestrel::companion
