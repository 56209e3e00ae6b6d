#pragma once

#include <KestrelKit/model/KestrelState.h>
#include <KestrelKit/model/SelfReportSource.h>

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>

namespace kestrel {

/// What a user's own report of a day says to the classifier.
struct UserReport {
  KestrelState state = KestrelState::unknown;
  std::int64_t percentage = 0;         ///< The confidence, 0 to 100 percent.
  std::optional<std::string> notes{};  ///< Free text; empty text is not absent.
  SelfReportSource origin = SelfReportSource::manual;
  std::optional<std::string> keyword{};  ///< What was matched; for the origin `keyword` only.

  bool operator==(const UserReport&) const = default;
};

/// The reports of many days, by day key.
using UserReports = std::map<std::string, UserReport, std::less<>>;

}  // namespace kestrel
