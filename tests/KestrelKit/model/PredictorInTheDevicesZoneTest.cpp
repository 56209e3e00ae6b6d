#include <KestrelKit/model/Predictor.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <vector>

namespace kestrel {
namespace {

// One test: the shared formatter is made once in a process.
TEST(PredictorInTheDevicesZone, takesTheSharedFormatterUnlessItIsGivenOne) {
  setenv("TZ", "Europe/Berlin", /*overwrite=*/1);
  const std::vector<StateClassification> history(3, {.date = "2024-10-26"});
  const auto predictions = Predictor::predict(history, 3);  // 2024-10-27 has 25 hours there
  ASSERT_EQ(predictions.size(), 3U);
  EXPECT_EQ(predictions[0].date, "2024-10-27");
  EXPECT_EQ(predictions[1].date, "2024-10-27");
  EXPECT_EQ(predictions[2].date, "2024-10-28");
}

}  // namespace
}  // namespace kestrel
