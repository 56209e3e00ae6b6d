#include <KestrelKit/foundation/Instant.h>
#include <KestrelTrackerMac/reading/MessagesScanSummary.h>
#include <gtest/gtest.h>
#include <tidewell-scan/ScanTable.h>

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <optional>

namespace kestrel::companion {
namespace {

using namespace std::chrono_literals;

class ScanTable : public testing::Test {
 protected:
  ScanTable() {
    setenv("TZ", "UTC", 1);
    setenv("LC_ALL", "C", 1);
  }

  MessagesScanSummary summary{
      .requestedDays = 30,
      .scannedAt = ReferenceClock::fromSystem(std::chrono::sys_days{2025y / std::chrono::March / 31} + 14h),
      .daily = {{.date = "2025-03-05",
                 .sentCount = 1234,
                 .receivedCount = 9,
                 .activeConversationCount = 3,
                 .lateNightCount = 0,
                 .averageMessageLength = 41.26},
                {.date = "2025-03-30",
                 .sentCount = 1,
                 .receivedCount = 1000000,
                 .activeConversationCount = 12,
                 .lateNightCount = 7,
                 .averageMessageLength = std::nullopt}}};
};

TEST_F(ScanTable, alignsItsColumnsAndAddsUpWhatCanBeAddedUp) {
  EXPECT_EQ(scanTable(summary, "C"),
            "Messages activity since 2025-03-01, 30 days before 2025-03-31\n"
            "\n"
            "Day         Sent  Received  Conversations  Late night  Average length\n"
            "---------------------------------------------------------------------\n"
            "2025-03-05  1234         9              3           0            41.3\n"
            "2025-03-30     1   1000000             12           7               -\n"
            "---------------------------------------------------------------------\n"
            "2 days      1235   1000009                          7\n");
}

TEST_F(ScanTable, groupsDigitsAsTheLocaleDoes) {
  EXPECT_EQ(scanTable(summary, "de_DE.UTF-8"),
            "Messages activity since 2025-03-01, 30 days before 2025-03-31\n"
            "\n"
            "Day          Sent   Received  Conversations  Late night  Average length\n"
            "-----------------------------------------------------------------------\n"
            "2025-03-05  1.234          9              3           0            41,3\n"
            "2025-03-30      1  1.000.000             12           7               -\n"
            "-----------------------------------------------------------------------\n"
            "2 days      1.235  1.000.009                          7\n");
}

TEST_F(ScanTable, alignsCharactersOfSeveralBytes) {
  EXPECT_EQ(scanTable(summary, "ar_EG.UTF-8"),
            "Messages activity since 2025-03-01, ٣٠ days before 2025-03-31\n"
            "\n"
            "Day          Sent   Received  Conversations  Late night  Average length\n"
            "-----------------------------------------------------------------------\n"
            "2025-03-05  ١٬٢٣٤          ٩              ٣           ٠            ٤١٫٣\n"
            "2025-03-30      ١  ١٬٠٠٠٬٠٠٠             ١٢           ٧               -\n"
            "-----------------------------------------------------------------------\n"
            "٢ days      ١٬٢٣٥  ١٬٠٠٠٬٠٠٩                          ٧\n");
}

TEST_F(ScanTable, writesNumbersPlainlyWhereTheLocaleIsNoOnes) {
  for (const char* locale : {"", "C", "C.UTF-8", "POSIX"}) {
    EXPECT_EQ(scanTable(summary, locale), scanTable(summary, "C")) << locale;
  }
}

TEST_F(ScanTable, saysThatNothingWasFound) {
  summary.daily.clear();
  summary.requestedDays = 1;
  EXPECT_EQ(scanTable(summary, "C"),
            "Messages activity since 2025-03-30, 1 day before 2025-03-31\n"
            "\n"
            "No Messages activity was found in the selected window.\n");
}

TEST_F(ScanTable, countsOneDayAsOne) {
  summary.daily.pop_back();
  EXPECT_NE(scanTable(summary, "C").find("\n1 day       1234"), std::string::npos);
}

TEST_F(ScanTable, stopsOnASumBeyond64Bits) {
  summary.daily[0].sentCount = std::numeric_limits<std::int64_t>::max();
  EXPECT_DEATH(scanTable(summary, "C"), "beyond 64 bits");
}

}  // namespace
}  // namespace kestrel::companion
