#include <KestrelKit/foundation/CheckedSum.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

namespace kestrel {
namespace {

constexpr auto least = std::numeric_limits<std::int64_t>::min();
constexpr auto most = std::numeric_limits<std::int64_t>::max();

TEST(CheckedSum, reachesBothEndsExactly) {
  EXPECT_EQ(checkedSum(2, -5), -3);
  EXPECT_EQ(checkedSum(most - 1, 1), most);
  EXPECT_EQ(checkedSum(most, 0), most);
  EXPECT_EQ(checkedSum(least + 1, -1), least);
  EXPECT_EQ(checkedSum(least, 0), least);
  EXPECT_EQ(checkedSum(least, most), -1);
}

TEST(CheckedSumDeathTest, stopsBeyondEitherEnd) {
  constexpr const char* message = "programming error: a sum lies beyond 64 bits";
  EXPECT_DEATH(checkedSum(most, 1), message);
  EXPECT_DEATH(checkedSum(1, most), message);
  EXPECT_DEATH(checkedSum(most, most), message);
  EXPECT_DEATH(checkedSum(least, -1), message);
  EXPECT_DEATH(checkedSum(-1, least), message);
  EXPECT_DEATH(checkedSum(least, least), message);
}

}  // namespace
}  // namespace kestrel
