#pragma once

#include <filesystem>
#include <string>
#include <system_error>

namespace kestrel {

/// Why a file could not be read, written or moved.
struct FileError {
  std::filesystem::path file;
  std::error_code reason;  ///< The system's; `illegal_byte_sequence` where what should be text is not UTF-8.

  /// File and reason as one line, for people.
  std::string text() const;

  bool operator==(const FileError&) const = default;
};

}  // namespace kestrel
