#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace kestrel {

/// How many UTF-16 code units `text`, which is valid UTF-8, has in UTF-16.
std::size_t utf16Length(std::string_view text) noexcept;

/// The place of the first byte of `text` with which no UTF-8 code point begins (RFC 3629); absent where all
/// is valid.
std::optional<std::size_t> invalidUtf8(std::string_view text) noexcept;

}  // namespace kestrel
