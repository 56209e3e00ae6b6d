#include <KestrelKit/circadian/SleepConsolidator.h>
#include <gtest/gtest.h>
#include <support/Allocations.h>

#include <cstddef>
#include <utility>
#include <vector>

namespace kestrel {
namespace {

/// Five intervals a night for `nights` nights, in order.
std::vector<SleepInterval> nightsOfFive(int nights) {
  std::vector<SleepInterval> intervals;
  for (int night = 0; night < nights; ++night) {
    for (int part = 0; part < 5; ++part) {
      const double start = night * 86'400.0 + part * 5400.0;
      intervals.push_back({instantSinceReferenceDate(start), instantSinceReferenceDate(start + 5000)});
    }
  }
  return intervals;
}

/// How often consolidating into `nights` nights takes memory.
std::size_t allocationsFor(const std::vector<SleepInterval>& intervals, std::size_t nights) {
  const Calendar calendar = Calendar::gregorian(TimeZone::utc());
  const std::size_t before = Allocations::count;
  const auto sessions = SleepConsolidator::consolidate(intervals, 30, calendar);
  EXPECT_EQ(sessions.size(), nights);
  return Allocations::count - before;
}

TEST(SleepConsolidatorCost, inputInOrderIsNotCopiedAndNothingIsAllocatedForANightByItself) {
  auto intervals = nightsOfFive(1000);
  EXPECT_EQ(allocationsFor(intervals, 1000), 2U);            // the list of sessions, and that of nights
  intervals.insert(intervals.begin() + 7, SleepInterval{});  // one that does not last is passed over
  EXPECT_EQ(allocationsFor(intervals, 1000), 2U);
}

TEST(SleepConsolidatorCost, inputOutOfOrderIsCopied) {
  auto intervals = nightsOfFive(1000);
  std::swap(intervals[0], intervals[1]);
  EXPECT_GT(allocationsFor(intervals, 1000), 2U);
}

}  // namespace
}  // namespace kestrel
