#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <random>
#include <span>
#include <string>
#include <string_view>

namespace kestrel {

/// Random choices that come out the same everywhere: the standard fixes the engine, but not its own
/// distributions. Numbers are whole, so that no rounding differs between machines either.
class Chance {
 public:
  explicit Chance(std::uint64_t seed) : engine_(seed) {}

  /// A number from 0 to `bound` - 1. The bias of the remainder is below one part in 2^20 for all bounds used
  /// here.
  std::uint64_t below(std::uint64_t bound) { return engine_() % bound; }

  /// A number from `first` to `last`, both included.
  std::int64_t between(std::int64_t first, std::int64_t last) {
    return first + static_cast<std::int64_t>(below(static_cast<std::uint64_t>(last - first + 1)));
  }

  /// True `count` times in a thousand.
  bool perMille(std::uint64_t count) { return below(1000) < count; }

  template <typename Item>
  const Item& oneOf(std::span<const Item> items) {
    return items[below(items.size())];
  }

  /// A random UUID (version 4) in upper case.
  std::string uuid() {
    constexpr std::string_view pattern = "xxxxxxxx-xxxx-4xxx-yxxx-xxxxxxxxxxxx";
    constexpr std::string_view digits = "0123456789ABCDEF";
    const std::array<std::uint64_t, 2> bits{engine_(), engine_()};
    std::string text(pattern);
    std::size_t used = 0;
    for (char& character : text) {
      if (character != 'x' && character != 'y') {
        continue;
      }
      const auto digit = (bits[used / 16] >> (used % 16 * 4)) & 0xF;
      character = digits[character == 'x' ? digit : (digit & 0x3) | 0x8];
      ++used;
    }
    return text;
  }

 private:
  std::mt19937_64 engine_;
};

}  // namespace kestrel
