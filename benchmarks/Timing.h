#pragma once

#include <algorithm>
#include <ctime>
#include <vector>

namespace kestrel::benchmark {

/// The processor time, in milliseconds, that this process needs for `work`: what else the machine does counts
/// less than in time by the clock.
template <typename Work>
double processorMilliseconds(const Work& work) {
  const auto used = [] {
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
  };
  const double before = used();
  work();
  return used() - before;
}

/// Of at least one value.
inline double median(std::vector<double> values) {
  std::ranges::sort(values);
  const auto middle = values.size() / 2;
  return values.size() % 2 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

}  // namespace kestrel::benchmark
