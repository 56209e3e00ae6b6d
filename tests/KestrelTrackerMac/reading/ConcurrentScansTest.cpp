#include <KestrelTrackerMac/reading/MessagesDatabase.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <thread>
#include <vector>

#include "MessagesFile.h"

namespace kestrel::companion {
namespace {

TEST(ConcurrentScans, anyNumberAtOnceSeeTheSame) {
  setenv("TZ", "Europe/Berlin", 1);
  const MessagesFile file;
  file.execute(
      std::string(MessagesFile::schema) +
      "WITH RECURSIVE n(i) AS (VALUES (1) UNION ALL SELECT i + 1 FROM n WHERE i < 20000) "
      "INSERT INTO message (date, text, is_from_me) SELECT 755000000 + i * 391, 'text', i % 2 FROM n;");
  const Instant now = instantSinceReferenceDate(762'876'600);
  const auto expected = scanMessages(file.path(), 365, now);
  ASSERT_TRUE(expected);
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&] {
      for (int turn = 0; turn < 5; ++turn) {
        EXPECT_EQ(probeMessagesAccess(file.path()), MessagesAccessState::ready);
        EXPECT_EQ(scanMessages(file.path(), 365, now), expected);
      }
    });
  }
  for (auto& thread : threads) {
    thread.join();
  }
}

}  // namespace
}  // namespace kestrel::companion
