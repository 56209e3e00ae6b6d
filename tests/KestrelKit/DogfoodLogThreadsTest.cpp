#include <KestrelKit/DogfoodLog.h>
#include <support/TemporaryFolder.h>

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <thread>
#include <vector>

namespace kestrel {
namespace {

constexpr int threads = 8;
constexpr int reportsOfEach = 250;

TEST(DogfoodLogThreads, losesNoneOfTwoThousandReports) {
  const testing::TemporaryFolder folder;
  DogfoodLog log(folder / "log.jsonl");
  {
    std::vector<std::jthread> writers;
    for (int thread = 0; thread < threads; ++thread) {
      writers.emplace_back([&log, thread] {
        for (int report = 0; report < reportsOfEach; ++report) {
          EXPECT_TRUE(log.logSelfReport(std::to_string(thread * reportsOfEach + report), KestrelState::mania,
                                        SelfReportSource::manual));
        }
      });
    }
  }
  std::set<std::string> dates;
  for (const DogfoodLog::Event& event : log.allEvents()) {
    dates.insert(event.date);
  }
  EXPECT_EQ(log.allEvents().size(), threads * reportsOfEach);
  EXPECT_EQ(dates.size(), threads * reportsOfEach);
}

TEST(DogfoodLogThreads, readsWholeLogsWhileOthersWriteAndClear) {
  const testing::TemporaryFolder folder;
  DogfoodLog log(folder / "log.jsonl");
  {
    std::jthread writer([&log] {
      for (int report = 0; report < 100; ++report) {
        log.logSelfReport("2024-05-01", KestrelState::mania, SelfReportSource::manual);
        log.logClassification("2024-05-01", KestrelState::euthymia, 60);
      }
    });
    std::jthread clearer([&log] {
      for (int count = 0; count < 20; ++count) {
        [[maybe_unused]] const auto cleared = log.clear();
      }
    });
    std::jthread reader([&log] {
      for (int count = 0; count < 100; ++count) {
        EXPECT_LE(log.latestEventsByDate(DogfoodLog::Event::Kind::classifier).size(), 1U);
        EXPECT_EQ(log.unreadable(), std::nullopt);
        EXPECT_GE(log.missedElevatedReports(), 0);
      }
    });
  }
  EXPECT_LE(log.allEvents().size(), 200U);
}

}  // namespace
}  // namespace kestrel
