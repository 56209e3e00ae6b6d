#pragma once

#include <KestrelKit/foundation/JsonField.h>

#include <cstdint>
#include <string>

namespace kestrel {

/// How often a person answered, quoted and passed on the posts of others on one day.
struct InteractionDay {
  std::string date{};  ///< The day key, `yyyy-MM-dd`; see DateKey.
  std::int64_t replies = 0;
  std::int64_t quotes = 0;
  std::int64_t reposts = 0;

  bool operator==(const InteractionDay&) const = default;

  static JsonFields jsonFields();
};

}  // namespace kestrel
