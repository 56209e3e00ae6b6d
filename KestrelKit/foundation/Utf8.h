#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>

namespace kestrel {

/// How many UTF-16 code units `text`, which is valid UTF-8, has in UTF-16.
std::size_t utf16Length(std::string_view text) noexcept;

/// The place of the first byte of `text` with which no UTF-8 code point begins (RFC 3629); absent where all
/// is valid.
std::optional<std::size_t> invalidUtf8(std::string_view text) noexcept;

/// Whether a text that comes in pieces is valid UTF-8, wherever it was cut.
class Utf8Pieces {
 public:
  /// False once nothing that can follow makes the text valid; true may yet turn out too early by three bytes.
  bool add(std::string_view piece) noexcept;

  /// Whether the text may end here.
  bool isWhole() const noexcept { return begunSize_ == 0; }

 private:
  std::array<char, 4> begun_{};  // the bytes at the end with which no whole code point begins
  std::size_t begunSize_ = 0;
};

}  // namespace kestrel
