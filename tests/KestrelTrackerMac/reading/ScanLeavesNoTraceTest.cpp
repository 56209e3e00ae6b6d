// Watches the system calls of a whole scan, large enough for SQLite to spill what it sorts and joins.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <tidewell-sample-history/SampleHistory.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <regex>
#include <string>
#include <vector>

#include "MessagesFile.h"

namespace kestrel::companion {
namespace {

constexpr std::int64_t messages = 300'000;

class ScanLeavesNoTrace : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    history.emplace();
    const auto written = writeSampleHistory(history->path(), {.messages = messages,
                                                              .days = 360,
                                                              .seed = 7,
                                                              .end = instantSinceReferenceDate(790'000'000),
                                                              .utcOffset = {}});
    ASSERT_TRUE(written) << written.error();
  }
  static void TearDownTestSuite() { history.reset(); }

  /// Scans under strace and gives the calls that could leave a trace: everything about files and sockets but
  /// opening for reading, looking, and starting the program itself.
  static std::vector<std::string> tracesOfAScan() {
    const auto log = history->path("-strace");
    const auto counted = history->path("-counted");
    const std::string command =
        "ASAN_OPTIONS=detect_leaks=0 strace -f -qq -e signal=none -e trace=%file,%network -o '" +
        log.string() + "' '" SCAN_ONCE "' '" + history->path().string() + "' 365 > '" + counted.string() +
        "'";
    EXPECT_EQ(std::system(command.c_str()), 0) << command;
    EXPECT_EQ(MessagesFile::bytes(counted), std::to_string(messages) + "\n");

    const std::regex harmless(
        R"(^\d+ +(execve|access|faccessat2?|stat|lstat|newfstatat|statx|statfs|readlink|readlinkat|getcwd)\(.*)");
    const std::regex readsOnly(
        R"(^\d+ +openat\(\w+, "[^"]*", O_RDONLY(\|O_(CLOEXEC|NOFOLLOW|DIRECTORY|NONBLOCK|LARGEFILE))*\) .*)");
    const std::regex ended(R"(^\d+ +(\+\+\+|---) .*)");
    std::vector<std::string> traces;
    bool sawDatabase = false;
    std::ifstream stream(log);
    for (std::string line; std::getline(stream, line);) {
      sawDatabase = sawDatabase || line.find("chat.db\"") != std::string::npos;
      if (!std::regex_match(line, harmless) && !std::regex_match(line, readsOnly) &&
          !std::regex_match(line, ended)) {
        traces.push_back(line);
      }
    }
    EXPECT_TRUE(sawDatabase) << "nothing was watched";
    return traces;
  }

  static inline std::optional<MessagesFile> history;
};

constexpr const char* withoutJoinIndex = "DROP INDEX chat_message_join_idx_message_id_only;";

TEST_F(ScanLeavesNoTrace, ofADatabaseWithALogButItsSideFiles) {
  history->execute("PRAGMA journal_mode = WAL");
  ASSERT_EQ(history->bytes().substr(18, 2), "\x02\x02");
  const auto traces = tracesOfAScan();
  EXPECT_THAT(traces,
              testing::Contains(testing::ContainsRegex("openat\\([A-Z_]+, \"[^\"]*/chat[.]db-shm\", ")));
  EXPECT_THAT(traces,
              testing::Each(testing::ContainsRegex("openat\\([A-Z_]+, \"[^\"]*/chat[.]db-(wal|shm)\", ")));
  if (std::filesystem::exists(history->path("-wal"))) {
    EXPECT_EQ(std::filesystem::file_size(history->path("-wal")), 0U);
  }
}

TEST_F(ScanLeavesNoTrace, ofADatabaseWithAnIndexOfTheJoin) {
  history->execute("PRAGMA journal_mode = DELETE");
  EXPECT_THAT(tracesOfAScan(), testing::IsEmpty());
}

TEST_F(ScanLeavesNoTrace, ofADatabaseWithoutAnIndexOfTheJoin) {
  history->execute(std::string("PRAGMA journal_mode = DELETE;") + withoutJoinIndex);
  EXPECT_THAT(tracesOfAScan(), testing::IsEmpty());
}

}  // namespace
}  // namespace kestrel::companion
