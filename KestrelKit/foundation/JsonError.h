#pragma once

#include <string>

namespace kestrel {

/// Why a document was not decoded, or a value not encoded.
struct JsonError {
  /// Where, from the root: `records[3].dataType`. Empty when it concerns the document as a whole or its root.
  /// A map key that is no identifier stands in brackets: `reports["2024-05-01"].state`. Of a key of more than
  /// 80 bytes the path shows the start and an ellipsis.
  std::string path;
  std::string message;  ///< What is wrong, in one line.

  /// Path and message as one line, for people.
  std::string text() const { return path.empty() ? message : path + ": " + message; }

  bool operator==(const JsonError&) const = default;
};

}  // namespace kestrel
