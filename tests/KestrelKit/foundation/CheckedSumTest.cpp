#include <KestrelKit/foundation/CheckedSum.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

namespace kestrel {
namespace {

constexpr auto least = std::numeric_limits<std::int64_t>::min();
constexpr auto most = std::numeric_limits<std::int64_t>::max();

TEST(CheckedSum, reachesBothEndsExactly) {
  EXPECT_EQ(checkedSum(2, -5, "a sum"), -3);
  EXPECT_EQ(checkedSum(most - 1, 1, "a sum"), most);
  EXPECT_EQ(checkedSum(most, 0, "a sum"), most);
  EXPECT_EQ(checkedSum(least + 1, -1, "a sum"), least);
  EXPECT_EQ(checkedSum(least, 0, "a sum"), least);
  EXPECT_EQ(checkedSum(least, most, "a sum"), -1);
}

TEST(CheckedSumDeathTest, stopsBeyondEitherEnd) {
  constexpr const char* message = "programming error: a sum lies beyond 64 bits";
  EXPECT_DEATH(checkedSum(most, 1, "a sum"), message);
  EXPECT_DEATH(checkedSum(1, most, "a sum"), message);
  EXPECT_DEATH(checkedSum(most, most, "a sum"), message);
  EXPECT_DEATH(checkedSum(least, -1, "a sum"), message);
  EXPECT_DEATH(checkedSum(-1, least, "a sum"), message);
  EXPECT_DEATH(checkedSum(least, least, "a sum"), message);
}

}  // namespace
}  // namespace kestrel
