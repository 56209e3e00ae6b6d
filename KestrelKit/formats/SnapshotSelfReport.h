#pragma once

#include <KestrelKit/foundation/Instant.h>
#include <KestrelKit/foundation/JsonField.h>
#include <KestrelKit/model/KestrelState.h>

#include <cstdint>
#include <optional>
#include <string>

namespace kestrel {

/// The user's own statement of the state of a day, in the tolerant form in which it arrives inside a
/// snapshot. See SelfReportData for the strict one.
struct SnapshotSelfReport {
  std::string date{};   ///< The day key, `yyyy-MM-dd`; see DateKey.
  std::string state{};  ///< As it came; see kestrelState().
  /// Percent; 0 to 100 is meant, and not checked. A fraction is rounded half away from zero. Absent, too,
  /// where what came is no number or one too large for a float; one beyond 64 bits is a programming error.
  std::optional<std::int64_t> confidence{};
  std::optional<std::string> source{};  ///< `manual` or `keyword`, or any other text.
  std::optional<std::string> notes{};
  /// Read with a fraction of a second, where it has one; absent, too, where the text is no instant.
  std::optional<Instant> observedAt{};

  bool operator==(const SnapshotSelfReport&) const = default;

  static JsonFields jsonFields();

  /// What `state` stands for: names of earlier releases count, and any other text is unknown.
  KestrelState kestrelState() const;

  /// Whether a keyword in the user's words made the report.
  bool isKeyword() const noexcept;
};

}  // namespace kestrel
