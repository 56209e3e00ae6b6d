#include <KestrelKit/model/JSONCoders.h>
#include <KestrelKit/model/ShadowSummary.h>
#include <support/RecordFields.h>

#include <gtest/gtest.h>

namespace kestrel {
namespace {

TEST(ShadowSummary, readsAndWritesEachField) {
  EXPECT_EQ(testing::expectStrictFields<ShadowSummary>(
                JSONCoders::decoder, JSONCoders::encoder,
                {{"scoredDays", "12", "12.5", "12.5 is not an integer of 64 bits"},
                 {"circadianAccuracy", "0.75", R"("0.75")", "expected a number, found text"},
                 {"baselineAccuracy", "0.5", "{}", "expected a number, found an object"}}),
            (ShadowSummary{.scoredDays = 12, .circadianAccuracy = 0.75, .baselineAccuracy = 0.5}));
}

}  // namespace
}  // namespace kestrel
