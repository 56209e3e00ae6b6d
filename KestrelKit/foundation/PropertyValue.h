#pragma once

#include <KestrelKit/foundation/Instant.h>

#include <string>
#include <variant>

namespace kestrel {

/// Bytes that are no text to whoever keeps or carries them.
struct Data {
  std::string bytes{};

  bool operator==(const Data&) const = default;
};

/// What the shared defaults keep under a key, and what a message between devices carries under one: text, a
/// date, or data.
using PropertyValue = std::variant<std::string, Instant, Data>;

}  // namespace kestrel
