#pragma once

#include <span>

namespace kestrel {

struct JsonField;

/// The fields of a record in the order in which they are written. All that the header of a record needs to know of
/// JSON; its source file declares them with Record.h.
using JsonFields = std::span<const JsonField>;

}  // namespace kestrel
