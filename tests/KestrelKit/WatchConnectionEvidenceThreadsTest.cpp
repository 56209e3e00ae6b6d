#include <KestrelKit/WatchConnectionEvidenceStore.h>
#include <KestrelKit/foundation/MemoryDefaults.h>
#include <KestrelKit/foundation/SqliteDefaults.h>
#include <support/TemporaryFolder.h>

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <thread>
#include <vector>

namespace kestrel {
namespace {

void increment(WatchConnectionEvidenceStore& store) {
  store.update([](WatchConnectionEvidence& evidence) {
    evidence.lastReceivedConfidence = evidence.lastReceivedConfidence.value_or(0) + 1;
  });
}

/// `whole` where there is time, and a two-hundredth of it otherwise.
std::int64_t count(std::int64_t whole) {
  // NOLINTNEXTLINE(concurrency-mt-unsafe): nothing changes it
  return std::getenv("TIDEWELL_LONG_TESTS") != nullptr ? whole : whole / 200;
}

void expectEightThreadsToLoseNothing(std::shared_ptr<SharedDefaults> defaults) {
  constexpr std::int64_t threads = 8;
  const std::int64_t increments = count(100'000) / threads * threads;
  WatchConnectionEvidenceStore store(std::move(defaults));
  std::atomic<std::int64_t> announced = 0;
  const auto observation =
      Notifications::observe(WatchConnectionEvidenceStore::didChange, store.object, [&] { ++announced; });
  {
    std::vector<std::jthread> all;
    for (std::int64_t thread = 0; thread < threads; ++thread) {
      all.emplace_back([&] {
        for (std::int64_t number = 0; number < increments / threads; ++number) {
          increment(store);
        }
      });
    }
  }
  EXPECT_EQ(store.current().lastReceivedConfidence, increments);
  EXPECT_EQ(announced, increments);
}

TEST(WatchConnectionEvidenceThreads, eightLoseNoIncrementThroughOneStoreInMemory) {
  expectEightThreadsToLoseNothing(std::make_shared<MemoryDefaults>());
}

TEST(WatchConnectionEvidenceThreads, eightLoseNoIncrementThroughOneStoreOnASuite) {
  const testing::TemporaryFolder folder;
  expectEightThreadsToLoseNothing(SqliteDefaults::open(folder / "suite.sqlite").value());
}

TEST(WatchConnectionEvidenceProcesses, fourLoseNoIncrementOnOneSuite) {
  const testing::TemporaryFolder folder;
  const auto file = folder / "suite.sqlite";
  constexpr std::int64_t processes = 4;
  const std::int64_t increments = count(20'000);
  std::vector<pid_t> children;
  for (std::int64_t process = 0; process < processes; ++process) {
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      const auto suite = SqliteDefaults::open(file);
      if (!suite) {
        _exit(1);
      }
      WatchConnectionEvidenceStore store(*suite);
      for (std::int64_t number = 0; number < increments / processes; ++number) {
        increment(store);
        if ((*suite)->writeFailure()) {
          _exit(2);
        }
      }
      _exit(0);
    }
    children.push_back(child);
  }
  for (const pid_t child : children) {
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
  }
  EXPECT_EQ(WatchConnectionEvidenceStore(SqliteDefaults::open(file).value()).current().lastReceivedConfidence,
            increments);
}

}  // namespace
}  // namespace kestrel
