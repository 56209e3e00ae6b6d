#pragma once

#include <KestrelKit/foundation/ProgrammingError.h>

#include <cstdint>

namespace kestrel {

/// `left` + `right`. A sum beyond 64 bits is a programming error.
inline std::int64_t checkedSum(std::int64_t left, std::int64_t right) noexcept {
  std::int64_t sum = 0;
  if (__builtin_add_overflow(left, right, &sum)) {
    programmingError("a sum lies beyond 64 bits");
  }
  return sum;
}

}  // namespace kestrel
