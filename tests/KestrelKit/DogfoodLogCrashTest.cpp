#include <KestrelKit/DogfoodLog.h>
#include <support/TemporaryFolder.h>
#include <support/TextFile.h>

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <new>
#include <random>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace kestrel {
namespace {

constexpr std::int64_t days = 50;

/// How often the writer is killed: the preset `long` has it in full.
int kills() { return std::getenv("TIDEWELL_LONG_TESTS") != nullptr ? 2000 : 100; }

/// The number of the last record that is whole, in memory that outlives the writer.
class Progress {
 public:
  Progress()
      : memory_(mmap(nullptr, sizeof(Counter), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0)),
        counter_(new (memory_) Counter(0)) {}
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  ~Progress() { munmap(memory_, sizeof(Counter)); }

  std::int64_t get() const { return *counter_; }
  void set(std::int64_t number) { *counter_ = number; }

 private:
  using Counter = std::atomic<std::int64_t>;

  void* memory_;
  Counter* counter_;
};

/// Records one classification after the other, the numbers as their confidences, until it is killed.
[[noreturn]] void recordFrom(const std::filesystem::path& file, Progress& progress) {
  DogfoodLog log(file);
  while (true) {
    const std::int64_t number = progress.get() + 1;
    if (!log.logClassification(std::to_string(number % days), KestrelState::euthymia, number)) {
      _exit(1);
    }
    progress.set(number);
  }
}

TEST(DogfoodLogCrash, losesAtMostTheChangeUnderWayWhenItsWriterIsKilledAtAnyInstant) {
  const testing::TemporaryFolder folder;
  const auto file = folder / "log.jsonl";
  Progress progress;
  std::minstd_rand random(20010101);
  std::uniform_int_distribution<int> microseconds(0, 8000);
  std::int64_t abandoned = 0;
  for (int kill = 0; kill < kills(); ++kill) {
    const pid_t writer = fork();
    ASSERT_GE(writer, 0);
    if (writer == 0) {
      recordFrom(file, progress);
    }
    std::this_thread::sleep_for(std::chrono::microseconds(microseconds(random)));  // any instant
    ASSERT_EQ(::kill(writer, SIGKILL), 0);
    int status = 0;
    ASSERT_EQ(waitpid(writer, &status, 0), writer);
    ASSERT_TRUE(WIFSIGNALED(status)) << "it could not write";

    abandoned += std::distance(std::filesystem::directory_iterator(folder.path()), {}) > 1 ? 1 : 0;
    const DogfoodLog log(file);
    const auto events = log.allEvents();
    const std::string text = testing::contentOf(file);
    ASSERT_EQ(static_cast<std::size_t>(std::ranges::count(text, '\n')), events.size());
    ASSERT_TRUE(text.empty() || text.ends_with('\n'));
    const std::int64_t last = events.empty() ? 0 : events.back().confidence.value();
    ASSERT_TRUE(last == progress.get() || last == progress.get() + 1) << last << " after " << progress.get();
    ASSERT_EQ(events.size(), static_cast<std::size_t>(std::min(last, days)));
    for (std::size_t place = 0; place < events.size(); ++place) {
      ASSERT_EQ(events[place].confidence, last - static_cast<std::int64_t>(events.size() - 1 - place));
    }
    ASSERT_LE(std::distance(std::filesystem::directory_iterator(folder.path()), {}), 1)
        << "a temporary file outlasted the next start";
    progress.set(last);
  }
  RecordProperty("killedWithin", std::to_string(abandoned));
  EXPECT_GT(progress.get(), 0);
}

}  // namespace
}  // namespace kestrel
