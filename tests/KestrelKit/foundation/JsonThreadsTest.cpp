#include <KestrelKit/foundation/JsonDecoder.h>
#include <KestrelKit/foundation/JsonEncoder.h>
#include <support/Specimen.h>

#include <gtest/gtest.h>

#include <atomic>
#include <cstddef>
#include <string>
#include <thread>
#include <vector>

#include <pthread.h>

namespace kestrel {
namespace {

constexpr JsonEncoder encoder{DateStrategy::iso8601};
constexpr JsonDecoder decoder{DateStrategy::iso8601};

TEST(JsonThreads, shareOneEncoderAndOneDecoder) {
  std::atomic<int> wrong = 0;
  {
    std::vector<std::jthread> threads;
    threads.reserve(4);
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

/// Records within records, `levels` of objects and lists in all, an even number.
std::string nestedRings(int levels) {
  std::string json;
  for (int level = 2; level < levels; level += 2) {
    json += R"({"date":"d","inner":[)";
  }
  json += R"({"date":"d","inner":[]})";
  for (int level = 2; level < levels; level += 2) {
    json += "]}";
  }
  return json;
}

TEST(JsonThreads, readTheDeepestDocumentOnAThreadWithAMegabyteOfStack) {
  pthread_attr_t settings;
  ASSERT_EQ(pthread_attr_init(&settings), 0);
  ASSERT_EQ(pthread_attr_setstacksize(&settings, std::size_t{1} << 20U), 0);
  pthread_t thread{};
  ASSERT_EQ(pthread_create(
                &thread, &settings,
                [](void*) -> void* {
                  // Records within records, what no field takes, and what a field refuses.
                  const std::string lists = std::string(511, '[') + std::string(511, ']');
                  const bool right =
                      decoder.decode<testing::Ring>(nestedRings(512)) &&
                      !decoder.decode<testing::Ring>(nestedRings(514)) &&
                      decoder.decode<testing::Ring>(R"({"date":"d","inner":[],"x":)" + lists + "}") &&
                      !decoder.decode<testing::Ring>(R"({"date":)" + lists + "}");
                  static constinit int token = 0;
                  return right ? &token : nullptr;
                },
                nullptr),
            0);
  void* result = nullptr;
  ASSERT_EQ(pthread_join(thread, &result), 0);
  EXPECT_NE(result, nullptr);
  pthread_attr_destroy(&settings);
}

}  // namespace
}  // namespace kestrel
