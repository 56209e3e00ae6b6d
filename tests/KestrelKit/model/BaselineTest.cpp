#include <KestrelKit/model/Baseline.h>
#include <KestrelKit/model/JSONCoders.h>
#include <support/RecordFields.h>

#include <gtest/gtest.h>

namespace kestrel {
namespace {

TEST(Baseline, readsAndWritesEachField) {
  EXPECT_EQ(testing::expectStrictFields<Baseline>(
                JSONCoders::decoder, JSONCoders::encoder,
                {{"avgSleep", "6.5", R"("6.5")", "expected a number, found text"},
                 {"avgPosts", "0", "[0]", "expected a number, found a list"},
                 {"avgSentiment", "-0.125", "1e400", "1e400 is too large for a 64-bit float"}}),
            (Baseline{.avgSleep = 6.5, .avgPosts = 0, .avgSentiment = -0.125}));
}

TEST(Baseline, isSevenHoursTenPostsAndNoSentimentByDefault) {
  EXPECT_EQ(Baseline{}, (Baseline{.avgSleep = 7.0, .avgPosts = 10.0, .avgSentiment = 0.0}));
  EXPECT_EQ(JSONCoders::encoder.encode(Baseline{}), R"({"avgSleep":7,"avgPosts":10,"avgSentiment":0})");
}

}  // namespace
}  // namespace kestrel
