#pragma once

#include <cstddef>

namespace kestrel {

/// What the program that this is linked into takes of memory from `new`. One thread.
struct Allocations {
  Allocations() = delete;

  static inline std::size_t live = 0;   ///< Bytes held now.
  static inline std::size_t peak = 0;   ///< The most bytes held at a time.
  static inline std::size_t count = 0;  ///< How often memory was taken.
};

}  // namespace kestrel
