#include <KestrelKit/foundation/Instant.h>
#include <KestrelTrackerMac/reading/MessagesScanSummary.h>
#include <gtest/gtest.h>
#include <tidewell-scan/ScanTable.h>

#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <optional>
#include <string>
#include <utility>

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
            "Messages activity since 2025-03-01 (the last 30 days before 2025-03-31)\n"
            "\n"
            "Day            Sent  Received  Conversations  Late night  Average length\n"
            "------------------------------------------------------------------------\n"
            "2025-03-05     1234         9              3           0            41.3\n"
            "2025-03-30        1   1000000             12           7               -\n"
            "------------------------------------------------------------------------\n"
            "2 active days  1235   1000009                          7\n");
}

TEST_F(ScanTable, groupsDigitsAsTheLocaleDoes) {
  EXPECT_EQ(scanTable(summary, "de_DE.UTF-8"),
            "Messages activity since 2025-03-01 (the last 30 days before 2025-03-31)\n"
            "\n"
            "Day             Sent   Received  Conversations  Late night  Average length\n"
            "--------------------------------------------------------------------------\n"
            "2025-03-05     1.234          9              3           0            41,3\n"
            "2025-03-30         1  1.000.000             12           7               -\n"
            "--------------------------------------------------------------------------\n"
            "2 active days  1.235  1.000.009                          7\n");
}

TEST_F(ScanTable, alignsCharactersOfSeveralBytes) {
  EXPECT_EQ(scanTable(summary, "ar_EG.UTF-8"),
            "Messages activity since 2025-03-01 (the last ٣٠ days before 2025-03-31)\n"
            "\n"
            "Day             Sent   Received  Conversations  Late night  Average length\n"
            "--------------------------------------------------------------------------\n"
            "2025-03-05     ١٬٢٣٤          ٩              ٣           ٠            ٤١٫٣\n"
            "2025-03-30         ١  ١٬٠٠٠٬٠٠٠             ١٢           ٧               -\n"
            "--------------------------------------------------------------------------\n"
            "٢ active days  ١٬٢٣٥  ١٬٠٠٠٬٠٠٩                          ٧\n");
}

TEST_F(ScanTable, writesNumbersPlainlyWhereTheLocaleIsNoOnes) {
  for (const char* locale : {"", "C", "C.UTF-8", "POSIX"}) {
    EXPECT_EQ(scanTable(summary, locale), scanTable(summary, "C")) << locale;
  }
}

TEST_F(ScanTable, roundsAHalfToTheEvenNeighbour) {
  // As written in decimals: 41.25 and 0.35 both lie in the middle, whatever the nearest 64-bit float lies at.
  for (const auto& [length, text] : {std::pair{41.25, "41.2"},
                                     {41.35, "41.4"},
                                     {0.35, "0.4"},
                                     {0.45, "0.4"},
                                     {std::nextafter(41.25, 42.0), "41.3"},
                                     {2.0, "2.0"}}) {
    summary.daily[0].averageMessageLength = length;
    EXPECT_NE(scanTable(summary, "C").find(' ' + std::string(text) + '\n'), std::string::npos) << length;
  }
}

TEST_F(ScanTable, writesNumbersPlainlyWhereTheLocalesWayOfWritingIsUnknown) {
  for (const char* locale : {"en_US@numbers=bogus", "de_DE.UTF-8@numbers=none", "@numbers=x"}) {
    EXPECT_EQ(scanTable(summary, locale), scanTable(summary, "C")) << locale;
  }
}

TEST_F(ScanTable, alignsCharactersOfTwoColumns) {
  EXPECT_EQ(scanTable(summary, "zh_CN.UTF-8@numbers=hanidec"),
            "Messages activity since 2025-03-01 (the last 三〇 days before 2025-03-31)\n"
            "\n"
            "Day                  Sent          Received  Conversations  Late night  Average length\n"
            "--------------------------------------------------------------------------------------\n"
            "2025-03-05      一,二三四                九             三          〇         四一.三\n"
            "2025-03-30             一  一,〇〇〇,〇〇〇           一二          七               -\n"
            "--------------------------------------------------------------------------------------\n"
            "二 active days  一,二三五  一,〇〇〇,〇〇九                         七\n");
}

TEST_F(ScanTable, saysThatNothingWasFound) {
  summary.daily.clear();
  summary.requestedDays = 1;
  EXPECT_EQ(scanTable(summary, "C"),
            "Messages activity since 2025-03-30 (the last day before 2025-03-31)\n"
            "\n"
            "No Messages activity was found in the selected window.\n");
}

TEST_F(ScanTable, countsOneDayAsOne) {
  summary.daily.pop_back();
  EXPECT_NE(scanTable(summary, "C").find("\n1 active day  1234"), std::string::npos);
}

TEST_F(ScanTable, stopsOnASumBeyond64Bits) {
  summary.daily[0].sentCount = std::numeric_limits<std::int64_t>::max();
  EXPECT_DEATH(scanTable(summary, "C"), "beyond 64 bits");
}

}  // namespace
}  // namespace kestrel::companion
