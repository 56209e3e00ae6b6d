#include <KestrelKit/model/JSONCoders.h>
#include <KestrelKit/model/Prediction.h>
#include <support/RecordFields.h>

#include <gtest/gtest.h>

namespace kestrel {
namespace {

TEST(Prediction, readsAndWritesEachField) {
  EXPECT_EQ(testing::expectStrictFields<Prediction>(
                JSONCoders::decoder, JSONCoders::encoder,
                {{"date", R"("2024-05-02")", "{}", "expected text, found an object"},
                 {"predictedState", R"("Severe Depression")", "7", "expected text, found a number"},
                 {"probability", "0.7", R"("0.7")", "expected a number, found text"}}),
            (Prediction{
                .date = "2024-05-02", .predictedState = KestrelState::severeDepression, .probability = 0.7}));
}

}  // namespace
}  // namespace kestrel
