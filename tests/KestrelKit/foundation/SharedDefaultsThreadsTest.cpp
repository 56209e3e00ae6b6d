#include <KestrelKit/foundation/MemoryDefaults.h>
#include <KestrelKit/foundation/SqliteDefaults.h>
#include <support/TemporaryFolder.h>

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace kestrel {
namespace {

std::optional<PropertyValue> incremented(const std::optional<PropertyValue>& stored) {
  return std::to_string(stored ? std::stoi(std::get<std::string>(*stored)) + 1 : 1);
}

/// Four threads for each of `suites`, which are of one file, or the same one.
void expectNoIncrementToBeLost(const std::vector<std::shared_ptr<SharedDefaults>>& suites) {
  constexpr int threads = 4;
  constexpr int rounds = 25;
  {
    std::vector<std::jthread> all;
    for (const auto& suite : suites) {
      for (int thread = 0; thread < threads; ++thread) {
        all.emplace_back([suite, thread] {
          const std::string own = "of thread " + std::to_string(thread);
          for (int round = 0; round < rounds; ++round) {
            EXPECT_TRUE(suite->update("count", incremented));
            const SharedDefaults::Change changes[] = {{own, Data{std::to_string(round)}},
                                                      {"gone", std::nullopt}};
            EXPECT_TRUE(suite->write(changes));
            EXPECT_TRUE(suite->get<std::string>("count"));
            EXPECT_TRUE(suite->get<Data>(own));
          }
        });
      }
    }
  }
  const int increments = static_cast<int>(suites.size()) * threads * rounds;
  for (const auto& suite : suites) {
    EXPECT_EQ(suite->get<std::string>("count"), std::to_string(increments));
  }
}

TEST(SharedDefaultsThreads, loseNoIncrementInMemory) {
  expectNoIncrementToBeLost({std::make_shared<MemoryDefaults>()});
}

TEST(SharedDefaultsThreads, loseNoIncrementThroughOneSuite) {
  const testing::TemporaryFolder folder;
  expectNoIncrementToBeLost({SqliteDefaults::open(folder / "suite.sqlite").value()});
}

TEST(SharedDefaultsThreads, loseNoIncrementThroughTwoSuitesOfOneFile) {
  const testing::TemporaryFolder folder;
  const auto file = folder / "suite.sqlite";
  expectNoIncrementToBeLost({SqliteDefaults::open(file).value(), SqliteDefaults::open(file).value()});
}

TEST(SharedDefaultsThreads, createOneFileTogether) {
  for (int round = 0; round < 20; ++round) {
    const testing::TemporaryFolder folder;
    const auto file = folder / "suite.sqlite";
    {
      std::vector<std::jthread> threads;
      for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([&] {
          const auto suite = SqliteDefaults::open(file);
          ASSERT_TRUE(suite) << suite.error();
          EXPECT_TRUE((*suite)->update("count", incremented)) << (*suite)->writeFailure().value_or("");
        });
      }
    }
    EXPECT_EQ(SqliteDefaults::open(file).value()->get<std::string>("count"), "4");
  }
}

TEST(SharedDefaultsThreads, tellTheirFailuresOnAnyThread) {
  const testing::TemporaryFolder folder;
  const auto suite = SqliteDefaults::open(folder / "suite.sqlite").value();
  std::jthread writer([&] {
    for (int round = 0; round < 50; ++round) {
      EXPECT_TRUE(suite->update("count", incremented));
    }
  });
  for (int round = 0; round < 50; ++round) {
    EXPECT_EQ(suite->writeFailure(), std::nullopt);
    EXPECT_EQ(suite->readFailure(), std::nullopt);
  }
}

}  // namespace
}  // namespace kestrel
