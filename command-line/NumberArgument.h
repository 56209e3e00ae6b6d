#pragma once

#include <optional>
#include <string_view>

namespace kestrel {

/// The number that `text` is in JSON's grammar (RFC 8259, section 6), as its nearest 64-bit float; absent for
/// any other text (`+5`, `0x10`, `.5`, `05`, ` 5`) and for one too large for a float.
std::optional<double> numberArgument(std::string_view text);

/// The same, absent where the number is not whole. `5.0` and `5e0` are.
std::optional<double> wholeNumberArgument(std::string_view text);

}  // namespace kestrel
