#include <KestrelKit/foundation/JsonDecoder.h>
#include <KestrelKit/foundation/JsonEncoder.h>
#include <support/Specimen.h>

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

namespace kestrel {
namespace {

constexpr JsonEncoder encoder{DateStrategy::iso8601};
constexpr JsonDecoder decoder{DateStrategy::iso8601};

TEST(JsonThreads, shareOneEncoderAndOneDecoder) {
  std::atomic<int> wrong = 0;
  {
    std::vector<std::jthread> threads;
    for (int thread = 0; thread < 4; ++thread) {
      threads.emplace_back([&wrong, thread] {
        for (int round = 0; round < 500; ++round) {
          testing::Specimen specimen;
          specimen.name = std::to_string(thread) + '\n' + std::to_string(round);
          specimen.seenAt = instantSinceReferenceDate(round);
          const auto json = encoder.encode(specimen);
          wrong += !json || decoder.decode<testing::Specimen>(*json) != specimen ? 1 : 0;
          const auto refused = decoder.decode<testing::Specimen>(*json + ']');
          wrong += refused ? 1 : 0;
        }
      });
    }
  }
  EXPECT_EQ(wrong, 0);
}

}  // namespace
}  // namespace kestrel
