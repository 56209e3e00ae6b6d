#include <KestrelKit/foundation/SqliteDefaults.h>
#include <support/TemporaryFolder.h>

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

namespace kestrel {
namespace {

/// Values that a writing process has told to be written, each a byte; what it was killed at is not among
/// them.
std::uint64_t countedIn(int pipe) {
  std::uint64_t count = 0;
  std::vector<char> bytes(65'536);
  for (ssize_t size = 0; (size = ::read(pipe, bytes.data(), bytes.size())) > 0;) {
    count += static_cast<std::uint64_t>(size);
  }
  return count;
}

TEST(SharedDefaultsCrash, aProcessKilledAtAnyInstantLosesAtMostItsLastWrite) {
  const testing::TemporaryFolder folder;
  const auto file = folder / "suite.sqlite";
  // NOLINTNEXTLINE(concurrency-mt-unsafe): nothing changes it
  const int kills = std::getenv("TIDEWELL_LONG_TESTS") != nullptr ? 2'000 : 100;
  std::uint64_t written = 0;
  std::uint64_t random = 20'010'101;
  for (int kill = 0; kill < kills; ++kill) {
    int told[2];
    ASSERT_EQ(pipe(told), 0);
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      const auto suite = SqliteDefaults::open(file).value();
      for (std::uint64_t number = written + 1;; ++number) {
        const std::string text = std::to_string(number);
        const SharedDefaults::Change changes[] = {{"text", text},
                                                  {"data", Data{text + std::string(5'000, 'x')}}};
        if (!suite->write(changes) || ::write(told[1], "x", 1) != 1) {
          _exit(1);
        }
      }
    }
    close(told[1]);
    // Three of four are killed at work, the others as they begin or before.
    std::uint64_t said = written;
    char byte = 0;
    if (kill % 4 != 0) {
      ASSERT_EQ(::read(told[0], &byte, 1), 1);
      ++said;
    }
    random = random * 6'364'136'223'846'793'005U + 1'442'695'040'888'963'407U;
    usleep(static_cast<useconds_t>((random >> 33U) % 5'000));
    ::kill(child, SIGKILL);
    int status = 0;
    waitpid(child, &status, 0);
    ASSERT_TRUE(WIFSIGNALED(status)) << "the writer ended by itself";
    said += countedIn(told[0]);
    close(told[0]);

    const auto suite = SqliteDefaults::open(file).value();
    const auto text = suite->get<std::string>("text");
    ASSERT_EQ(suite->readFailure(), std::nullopt);
    const std::uint64_t found = text ? std::stoull(*text) : 0;
    ASSERT_GE(found, said);
    ASSERT_LE(found, said + 1);
    ASSERT_EQ(suite->get<Data>("data"),
              text ? std::optional(Data{*text + std::string(5'000, 'x')}) : std::nullopt);
    written = found;
  }
  EXPECT_GE(written, static_cast<std::uint64_t>(kills) * 3 / 4);
}

}  // namespace
}  // namespace kestrel
