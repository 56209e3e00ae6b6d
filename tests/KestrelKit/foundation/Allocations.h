#pragma once

#include <cstddef>

namespace kestrel {

/// What the program that this is linked into holds of memory from `new`, in bytes. One thread.
struct Allocations {
  Allocations() = delete;

  static inline std::size_t live = 0;
  static inline std::size_t peak = 0;
};

}  // namespace kestrel
