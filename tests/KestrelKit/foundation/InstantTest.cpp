#include <KestrelKit/foundation/Instant.h>

#include <gtest/gtest.h>

namespace kestrel {
namespace {

using namespace std::chrono;

TEST(Instant, countsFromTheReferenceDate) {
  EXPECT_EQ(ReferenceClock::fromSystem(sys_days{2001y / January / 1}), instantSinceReferenceDate(0));
  EXPECT_EQ(ReferenceClock::fromSystem(sys_days{2001y / January / 2} + 500ms), instantSinceReferenceDate(86400.5));
  EXPECT_EQ(ReferenceClock::fromSystem(sys_days{1970y / January / 1}), instantSinceReferenceDate(-978307200));
}

TEST(Instant, givesItsSecondsBack) { EXPECT_EQ(secondsSinceReferenceDate(instantSinceReferenceDate(-0.25)), -0.25); }

TEST(Instant, nowIsBetweenTwoLooksAtTheSystemClock) {
  const auto before = ReferenceClock::fromSystem(system_clock::now());
  const auto now = ReferenceClock::now();
  const auto after = ReferenceClock::fromSystem(system_clock::now());
  EXPECT_LE(before, now);
  EXPECT_LE(now, after);
}

}  // namespace
}  // namespace kestrel
