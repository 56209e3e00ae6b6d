#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace kestrel {

/// The number that `text` is in JSON's grammar (RFC 8259, section 6), as its nearest 64-bit float. Absent for
/// any other text (`+5`, `0x10`, `.5`, `05`, ` 5`) and for a number too large for a float.
std::optional<double> numberArgument(std::string_view text);

/// The same for whole numbers, of which `5.0` and `5e0` are two; absent for `5.5`.
std::optional<double> wholeNumberArgument(std::string_view text);

/// The same for whole numbers that signed 64 bits hold, exactly.
std::optional<std::int64_t> integerArgument(std::string_view text);

/// The same for a number of things, from 1. One beyond a milliard, of which there are never as many, is a
/// milliard.
std::optional<std::int64_t> countArgument(std::string_view text);

}  // namespace kestrel
