#pragma once

#include <KestrelKit/foundation/JsonForm.h>

#include <optional>

namespace kestrel {

/// What is kept of a list element that does not fit: nothing.
struct Discard {
  bool operator==(const Discard&) const = default;
};

/// Any JSON value is one. What was noted about the value is no error of the document then, but is listed
/// among what was dropped. It is only read: nothing of it is left to be written.
template <>
struct JsonForm<Discard> {
  static std::optional<Discard> read(JsonReader& value) {
    value.drop();
    return Discard{};
  }
};

}  // namespace kestrel
