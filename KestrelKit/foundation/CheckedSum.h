#pragma once

#include <KestrelKit/foundation/ProgrammingError.h>

#include <cstdint>
#include <string>
#include <string_view>

namespace kestrel {

/// `left` + `right`. A sum beyond 64 bits is a programming error, in which `what` names the sum.
inline std::int64_t checkedSum(std::int64_t left, std::int64_t right, std::string_view what) {
  std::int64_t sum = 0;
  if (__builtin_add_overflow(left, right, &sum)) {
    programmingError(std::string(what) + " lies beyond 64 bits");
  }
  return sum;
}

}  // namespace kestrel
