#pragma once

#include <cstdint>

namespace kestrel {

/// What a comparison of means needs to know of a list of values.
struct SampleMoments {
  std::int64_t count = 0;
  double mean = 0;
  double variance = 0;  ///< That of a sample (divided by `count` - 1), 0 for fewer than 2 values.
};

}  // namespace kestrel
