#include <KestrelKit/foundation/Iso8601.h>
#include <KestrelKit/model/DateKey.h>
#include <KestrelKit/model/JSONCoders.h>
#include <KestrelKit/model/StateClassification.h>

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <thread>
#include <vector>

namespace kestrel {
namespace {

// One test: the shared formatter is made once in a process.
TEST(DateKey, isOfTheDevicesZoneAsItWasAtTheFirstUseForAllThreads) {
  setenv("TZ", "America/Los_Angeles", /*overwrite=*/1);
  std::atomic<int> wrong = 0;
  {
    std::vector<std::jthread> threads;
    for (int thread = 0; thread < 4; ++thread) {
      threads.emplace_back([&wrong] {
        for (int round = 0; round < 200; ++round) {
          const auto instant = DateKey::date("2024-05-01");
          wrong += !instant || DateKey::key(*instant) != "2024-05-01" ? 1 : 0;
          const auto json = JSONCoders::encoder.encode(StateClassification{.date = "2024-05-01"});
          wrong += !json || !JSONCoders::decoder.decode<StateClassification>(*json) ? 1 : 0;
        }
      });
    }
  }
  EXPECT_EQ(wrong, 0);

  setenv("TZ", "Pacific/Auckland", /*overwrite=*/1);
  const Instant evening = instantFromIso8601("2024-05-02T06:30:00Z").value();
  EXPECT_EQ(DateKey::key(evening), "2024-05-01");
  EXPECT_EQ(DateKey::date("2024-05-01"), instantFromIso8601("2024-05-01T07:00:00Z"));
  EXPECT_EQ(DateKey::date("2024-5-1"), std::nullopt);
}

}  // namespace
}  // namespace kestrel
