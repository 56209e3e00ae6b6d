#pragma once

#include <KestrelKit/foundation/JsonField.h>
#include <KestrelKit/model/KestrelState.h>
#include <KestrelKit/model/SelfReportSource.h>
#include <KestrelKit/model/UserReport.h>

#include <cstdint>
#include <optional>
#include <string>

namespace kestrel {

/// The user's own statement of the state of a day, as the library writes it; read strictly.
struct SelfReportData {
  KestrelState state = KestrelState::unknown;
  std::int64_t confidence = 0;  ///< Percent; 0 to 100 is meant, and not checked.
  std::optional<std::string> notes{};
  SelfReportSource source = SelfReportSource::manual;
  std::optional<std::string> keyword{};  ///< What triggered a report by keyword.

  bool operator==(const SelfReportData&) const = default;

  static JsonFields jsonFields();

  /// What the classifier needs of it.
  UserReport userReport() const;
};

}  // namespace kestrel
