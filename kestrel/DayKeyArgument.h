#pragma once

#include <KestrelKit/foundation/CivilDay.h>

#include <optional>
#include <string>

namespace kestrel {

/// The day key `text`, when it names a day that exists.
inline std::optional<std::string> dayKeyArgument(const std::string& text) {
  return civilDayFromText(text) ? std::optional(text) : std::nullopt;
}

/// What an argument that is none is not.
inline constexpr const char* dayKeyExpected = "a day such as 2024-05-01";

}  // namespace kestrel
