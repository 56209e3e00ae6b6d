#pragma once

#include <array>
#include <string_view>

namespace kestrel {

/// A digest in lower-case hexadecimal, two digits a byte.
using Sha256Digits = std::array<char, 64>;

/// The SHA-256 (FIPS 180-4) of the bytes of `text`. Any thread.
Sha256Digits sha256Digits(std::string_view text);

}  // namespace kestrel
