#pragma once

#include <string_view>

namespace kestrel::companion {

/// Why a scan gave no summary.
enum class MessagesScanError {
  accessRequired,       ///< The file is not visible to the process, or opening it was refused.
  databaseUnavailable,  ///< Opening it failed for another reason.
  unsupportedDatabase,  ///< A schema that the reader does not know: a table or column is missing.
  queryFailed,          ///< A day count outside 1…365, or reading stopped before the last row.
};

/// The text that a person is shown for `error`.
std::string_view errorDescription(MessagesScanError error) noexcept;

}  // namespace kestrel::companion
