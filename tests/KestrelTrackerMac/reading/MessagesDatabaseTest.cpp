#include <KestrelTrackerMac/reading/MessagesDatabase.h>
#include <KestrelTrackerMac/reading/MessagesQuery.h>
#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pwd.h>
#include <sqlite3.h>
#include <unistd.h>

#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "MessagesFile.h"

namespace kestrel::companion {
namespace {

using namespace std::chrono;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr auto day = 86'400.0;

/// 2025-03-05 14:10:00 UTC.
const Instant now = ReferenceClock::fromSystem(sys_days{2025y / March / 5} + 14h + 10min);

class MessagesDatabase : public testing::Test {
 protected:
  void SetUp() override {
    setenv("TZ", "UTC", 1);
    setenv("LC_ALL", "C", 1);
    file.execute(MessagesFile::schema);
  }

  void addMessage(const std::string& date, const std::string& text = "NULL",
                  const std::string& isFromMe = "0") const {
    file.execute("INSERT INTO message (date, text, is_from_me) VALUES (" + date + "," + text + "," +
                 isFromMe + ")");
  }
  void addMessage(Instant date, const std::string& text = "NULL", const std::string& isFromMe = "0") const {
    addMessage(fmt::format("{:.17g}", secondsSinceReferenceDate(date)), text, isFromMe);
  }

  std::vector<MessageDayAggregate> scanned(std::int64_t days = 90, Instant at = now) const {
    const auto summary = scanMessages(file.path(), days, at);
    EXPECT_TRUE(summary);
    return summary ? summary->daily : std::vector<MessageDayAggregate>();
  }

  /// The rows of the query from `cutoff` onward, as the reader takes them.
  std::vector<MessageActivitySample> samples(double cutoff) const {
    const auto connection = file.open();
    sqlite3_stmt* prepared = nullptr;
    EXPECT_EQ(sqlite3_prepare_v2(connection.get(), MessagesQuery::text, -1, &prepared, nullptr), SQLITE_OK);
    const SqliteStatement statement(prepared);
    sqlite3_bind_double(prepared, 1, cutoff);
    std::vector<MessageActivitySample> result;
    while (sqlite3_step(prepared) == SQLITE_ROW) {
      result.push_back(MessagesQuery::sample(prepared));
    }
    return result;
  }

  MessagesFile file;
};

std::string keys(const std::vector<MessageDayAggregate>& daily) {
  std::string joined;
  for (const auto& each : daily) {
    joined += (joined.empty() ? "" : " ") + each.date;
  }
  return joined;
}

TEST(MessagesQuery, isTheQueryToTheByte) {
  EXPECT_STREQ(MessagesQuery::text, R"(SELECT
    m.ROWID,
    m.date,
    m.is_from_me,
    COALESCE(MIN(cmj.chat_id), -m.ROWID),
    CASE WHEN m.text IS NULL THEN NULL ELSE length(m.text) END
FROM message AS m
LEFT JOIN chat_message_join AS cmj ON cmj.message_id = m.ROWID
WHERE (CASE
    WHEN ABS(m.date) > 1000000000000 THEN m.date / 1000000000.0
    ELSE m.date
END) >= ?
GROUP BY m.ROWID
ORDER BY m.date ASC)");
}

TEST(MessagesScanError, eachSaysItsText) {
  EXPECT_EQ(errorDescription(MessagesScanError::accessRequired),
            "Tidewell can’t read Messages yet. Enable Full Disk Access, then try again.");
  EXPECT_EQ(errorDescription(MessagesScanError::databaseUnavailable),
            "Messages history isn’t available on this Mac.");
  EXPECT_EQ(errorDescription(MessagesScanError::unsupportedDatabase),
            "This version of the Messages database isn’t supported yet.");
  EXPECT_EQ(errorDescription(MessagesScanError::queryFailed),
            "Messages activity couldn’t be summarized. No history was saved or sent.");
}

TEST(MessagesDatabaseLocation, isInTheHomeThatTheEnvironmentNames) {
  setenv("HOME", "/somewhere/else", 1);
  EXPECT_EQ(defaultMessagesDatabase(), "/somewhere/else/Library/Messages/chat.db");
}

TEST(MessagesDatabaseLocation, elseInTheHomeOfTheUserDatabase) {
  const passwd* entry = getpwuid(getuid());
  ASSERT_NE(entry, nullptr);
  const std::string expected = std::string(entry->pw_dir) + "/Library/Messages/chat.db";
  unsetenv("HOME");
  EXPECT_EQ(defaultMessagesDatabase(), expected);
  setenv("HOME", "", 1);
  EXPECT_EQ(defaultMessagesDatabase(), expected);
}

TEST_F(MessagesDatabase, rowIsReadAsItsSample) {
  addMessage("762868800", "'Grüße'", "1");
  addMessage("762868801500000000", "'reply'");
  file.execute("INSERT INTO chat_message_join (chat_id, message_id) VALUES (9, 1), (3, 1)");
  EXPECT_THAT(samples(0),
              ElementsAre(MessageActivitySample{.timestamp = instantSinceReferenceDate(762'868'800),
                                                .isFromMe = true,
                                                .conversationID = 3,
                                                .textLength = 5},
                          MessageActivitySample{.timestamp = instantSinceReferenceDate(762'868'801.5),
                                                .isFromMe = false,
                                                .conversationID = -2,
                                                .textLength = 5}));
}

TEST_F(MessagesDatabase, nullTextGivesNoLengthAndAnEmptyOne0) {
  addMessage(now, "NULL");
  addMessage(now, "''");
  addMessage(now, "'a'");
  addMessage(now, "x''");
  std::vector<std::optional<std::int64_t>> lengths;
  for (const auto& sample : samples(0)) {
    lengths.push_back(sample.textLength);
  }
  EXPECT_THAT(lengths, ElementsAre(std::nullopt, 0, 1, 0));
}

TEST_F(MessagesDatabase, pathIsNeverTakenForAUriOrADatabaseInMemory) {
  const auto before = std::filesystem::current_path();
  std::filesystem::current_path(file.folder());
  addMessage(now);
  for (const char* name : {"file:chat.db", ":memory:", "file:other.db?mode=memory"}) {
    EXPECT_EQ(probeMessagesAccess(name), MessagesAccessState::needsFullDiskAccess) << name;
    std::filesystem::copy_file("chat.db", std::filesystem::path(".") / name);
    EXPECT_EQ(probeMessagesAccess(name), MessagesAccessState::ready) << name;
    const auto summary = scanMessages(name, 90, now);
    ASSERT_TRUE(summary) << name;
    EXPECT_EQ(keys(summary->daily), "2025-03-05") << name;
  }
  std::filesystem::current_path(before);
}

TEST_F(MessagesDatabase, dayCountOutside1To365FailsBeforeAnyFileAccess) {
  const auto missing = file.path("-missing");  // would be accessRequired if it were looked for
  for (const std::int64_t days :
       {std::int64_t{0}, std::int64_t{-1}, std::int64_t{366}, std::numeric_limits<std::int64_t>::min(),
        std::numeric_limits<std::int64_t>::max()}) {
    EXPECT_EQ(scanMessages(missing, days, now).error(), MessagesScanError::queryFailed) << days;
  }
  EXPECT_EQ(scanMessages(missing, 1, now).error(), MessagesScanError::accessRequired);
  EXPECT_EQ(scanMessages(missing, 365, now).error(), MessagesScanError::accessRequired);
  EXPECT_TRUE(scanMessages(file.path(), 1, now));
  EXPECT_TRUE(scanMessages(file.path(), 365, now));
}

TEST_F(MessagesDatabase, missingFileIsTakenForMissingPermission) {
  EXPECT_EQ(probeMessagesAccess(file.path("-missing")), MessagesAccessState::needsFullDiskAccess);
  EXPECT_EQ(scanMessages(file.path("-missing"), 90, now).error(), MessagesScanError::accessRequired);
  EXPECT_FALSE(std::filesystem::exists(file.path("-missing")));
}

TEST_F(MessagesDatabase, withoutTheJoinTableIsUnsupportedAndYetReady) {
  file.execute("DROP TABLE chat_message_join");
  EXPECT_EQ(probeMessagesAccess(file.path()), MessagesAccessState::ready);
  EXPECT_EQ(scanMessages(file.path(), 90, now).error(), MessagesScanError::unsupportedDatabase);
}

TEST_F(MessagesDatabase, withoutAnyColumnOfTheQueryIsUnsupportedAndYetReady) {
  for (const char* column : {"message.text", "message.date", "message.is_from_me",
                             "chat_message_join.chat_id", "chat_message_join.message_id"}) {
    const MessagesFile lacking;
    lacking.execute(MessagesFile::schema);
    const std::string name(column);
    const auto dot = name.find('.');
    if (name.ends_with("message_id")) {
      lacking.execute("DROP INDEX chat_message_join_idx_message_id_only");
    }
    lacking.execute("ALTER TABLE " + name.substr(0, dot) + " DROP COLUMN " + name.substr(dot + 1));
    EXPECT_EQ(probeMessagesAccess(lacking.path()), MessagesAccessState::ready) << column;
    EXPECT_EQ(scanMessages(lacking.path(), 90, now).error(), MessagesScanError::unsupportedDatabase)
        << column;
  }
}

TEST_F(MessagesDatabase, withoutRowsAfterTheCutoffTheListIsEmpty) {
  EXPECT_THAT(scanned(), IsEmpty());
  addMessage(now - Seconds(91 * day));
  EXPECT_THAT(scanned(), IsEmpty());
}

TEST_F(MessagesDatabase, summaryRepeatsTheQuestion) {
  const auto summary = scanMessages(file.path(), 30, now);
  ASSERT_TRUE(summary);
  EXPECT_EQ(summary->requestedDays, 30);
  EXPECT_EQ(summary->scannedAt, now);
}

TEST_F(MessagesDatabase, windowBeginsAtTheSameTimeOfDay) {
  const Instant cutoff = now - Seconds(90 * day);  // 2024-12-05 14:10
  addMessage(cutoff);
  EXPECT_EQ(keys(scanned()), "2024-12-05");
  file.execute("DELETE FROM message");
  addMessage(Instant(Seconds(std::nextafter(secondsSinceReferenceDate(cutoff), 0))));
  EXPECT_THAT(scanned(), IsEmpty());
}

TEST_F(MessagesDatabase, windowIsCountedInCalendarDaysAcrossAClockChange) {
  setenv("TZ", "America/New_York", 1);  // summer time begins on 9 March 2025
  const Instant noonAfter = ReferenceClock::fromSystem(sys_days{2025y / March / 10} + 16h);
  const Instant noonBefore = ReferenceClock::fromSystem(sys_days{2025y / March / 8} + 17h);
  addMessage(noonBefore - Seconds(1));
  EXPECT_THAT(scanned(2, noonAfter), IsEmpty());
  addMessage(noonBefore);
  EXPECT_EQ(keys(scanned(2, noonAfter)), "2025-03-08");
}

TEST_F(MessagesDatabase, messagesAfterTheScanCountToo) {
  addMessage(now + Seconds(10 * day));
  EXPECT_EQ(keys(scanned()), "2025-03-15");
}

TEST_F(MessagesDatabase, instantThatTheCalendarCannotHoldGivesNoSpuriousError) {
  addMessage(now);
  for (const double strange : {HUGE_VAL, 1e300, std::numeric_limits<double>::quiet_NaN()}) {
    EXPECT_THAT(scanned(90, instantSinceReferenceDate(strange)), IsEmpty()) << strange;
  }
  EXPECT_EQ(keys(scanned(90, instantSinceReferenceDate(-HUGE_VAL))), "2025-03-05");
  EXPECT_EQ(keys(scanned(90, instantSinceReferenceDate(-1e300))), "2025-03-05");
}

TEST_F(MessagesDatabase, dateUpTo1000000000000IsSecondsAndBeyondNanoseconds) {
  const Instant early = instantSinceReferenceDate(100 * day);
  addMessage("1000000000001");
  EXPECT_EQ(keys(scanned(365, early)), "2001-01-01");
  EXPECT_EQ(scanned(365, early).at(0).lateNightCount, 1);  // a quarter of an hour after midnight
  file.execute("DELETE FROM message");
  addMessage("1000000000000");
  EXPECT_EQ(keys(scanned(365, early)), "33689-09-27");
}

TEST_F(MessagesDatabase, fractionsNextToTheBoundaryAreJudgedAlikeByTheQueryAndTheReader) {
  const double above = std::nextafter(1e12, 2e12);
  const double below = std::nextafter(1e12, 0);
  const auto secondsOf = [this](double date, double cutoff) -> std::optional<double> {
    file.execute("DELETE FROM message");
    addMessage(fmt::format("{:.17g}", date));
    const auto found = samples(cutoff);
    return found.empty() ? std::nullopt : std::optional(secondsSinceReferenceDate(found.at(0).timestamp));
  };
  // Beyond the boundary a date is nanoseconds, so that a thousand seconds are what both compare and give.
  EXPECT_EQ(secondsOf(above, 0), above / 1e9);
  EXPECT_EQ(secondsOf(above, above / 1e9), above / 1e9);
  EXPECT_EQ(secondsOf(above, 1001), std::nullopt);
  EXPECT_EQ(secondsOf(-above, -1001), -above / 1e9);
  EXPECT_EQ(secondsOf(-above, -999), std::nullopt);
  // Up to it, seconds.
  for (const double date : {below, 1e12}) {
    EXPECT_EQ(secondsOf(date, date), date);
    EXPECT_EQ(secondsOf(date, above), std::nullopt);
    EXPECT_EQ(secondsOf(-date, -above), -date);
    EXPECT_EQ(secondsOf(-date, -1001), std::nullopt);
  }
}

TEST_F(MessagesDatabase, negativeDatesAreJudgedByMagnitude) {
  const Instant early = instantSinceReferenceDate(100 * day);
  addMessage("-1000000000001");
  addMessage("-1000");
  EXPECT_EQ(keys(scanned(365, early)), "2000-12-31");
  EXPECT_EQ(scanned(365, early).at(0).receivedCount, 2);
  file.execute("DELETE FROM message");
  addMessage("-1000000000000");
  EXPECT_THAT(scanned(365, early), IsEmpty());
}

TEST_F(MessagesDatabase, secondsAndNanosecondsOfOneDayMeet) {
  addMessage("762868800");           // 2025-03-05 12:00
  addMessage("762868800000000000");  // the same
  addMessage("762868799.5");
  EXPECT_EQ(keys(scanned()), "2025-03-05");
  EXPECT_EQ(scanned().at(0).receivedCount, 3);
}

TEST_F(MessagesDatabase, messageInTwoChatsCountsForTheSmallerOne) {
  for (int i = 0; i < 3; ++i) {
    addMessage(now);
  }
  file.execute("INSERT INTO chat_message_join (chat_id, message_id) VALUES (9, 1), (3, 1), (3, 2), (9, 3)");
  EXPECT_EQ(scanned().at(0).receivedCount, 3);
  EXPECT_EQ(scanned().at(0).activeConversationCount, 2);
}

TEST_F(MessagesDatabase, messageInNoChatIsAConversationOfItsOwn) {
  addMessage(now);
  addMessage(now);
  EXPECT_EQ(scanned().at(0).activeConversationCount, 2);
  file.execute("INSERT INTO chat_message_join (chat_id, message_id) VALUES (-1, 2)");  // the first message's
                                                                                       // number, negated
  EXPECT_EQ(scanned().at(0).activeConversationCount, 1);
  file.execute("UPDATE chat_message_join SET chat_id = NULL");
  EXPECT_EQ(scanned().at(0).activeConversationCount, 2);
}

TEST_F(MessagesDatabase, textIsMeasuredInCharacters) {
  const auto averageOf = [this](const std::string& text) {
    file.execute("DELETE FROM message");
    addMessage(now, text);
    return scanned().at(0).averageMessageLength;
  };
  EXPECT_EQ(averageOf("NULL"), std::nullopt);
  EXPECT_EQ(averageOf("''"), std::nullopt);
  EXPECT_EQ(averageOf("'a'"), 1);
  EXPECT_EQ(averageOf("'Grüße 👋'"), 7);
  EXPECT_EQ(averageOf("x'00ff00'"), 3);  // not text at all: counted in bytes
  EXPECT_EQ(averageOf("CAST(x'610062' AS TEXT)"), 1);
  EXPECT_EQ(averageOf("zeroblob(3000000)"), 3'000'000);
  EXPECT_EQ(averageOf("12.5"), 4);
}

TEST_F(MessagesDatabase, sentIsWhatIsNotZeroIn32Bits) {
  const auto sentOf = [this](const std::string& value) {
    file.execute("DELETE FROM message");
    addMessage(now, "NULL", value);
    const auto daily = scanned();
    EXPECT_EQ(daily.at(0).sentCount + daily.at(0).receivedCount, 1);
    return daily.at(0).sentCount;
  };
  EXPECT_EQ(sentOf("0"), 0);
  EXPECT_EQ(sentOf("1"), 1);
  EXPECT_EQ(sentOf("-1"), 1);
  EXPECT_EQ(sentOf("2"), 1);
  EXPECT_EQ(sentOf("NULL"), 0);
  EXPECT_EQ(sentOf("'yes'"), 0);
  EXPECT_EQ(sentOf("'1 of many'"), 1);
  EXPECT_EQ(sentOf("0.9"), 0);
  EXPECT_EQ(sentOf("4294967296"), 0);
  EXPECT_EQ(sentOf("4294967297"), 1);
}

TEST_F(MessagesDatabase, dateThatIsNullIsNotCounted) {
  addMessage("NULL");
  EXPECT_THAT(scanned(), IsEmpty());
}

TEST_F(MessagesDatabase, dateThatIsNoNumberIsReadAsZero) {
  addMessage("'yesterday'");
  addMessage("x'00'");
  EXPECT_EQ(keys(scanned()), "2001-01-01");
  EXPECT_EQ(scanned().at(0).receivedCount, 2);
}

TEST_F(MessagesDatabase, dateBeyondEveryCalendarIsIgnored) {
  addMessage("9e999");
  addMessage("1e300");
  addMessage("1e24");
  addMessage("-9e999");
  EXPECT_THAT(scanned(), IsEmpty());
  addMessage("9223372036854775807");
  EXPECT_EQ(keys(scanned()), "2293-04-11");
}

TEST_F(MessagesDatabase, dateWhoseMagnitudeDoesNotExistFailsTheQuery) {
  addMessage(now);
  addMessage("-9223372036854775807 - 1");
  EXPECT_EQ(scanMessages(file.path(), 90, now).error(), MessagesScanError::queryFailed);
}

TEST_F(MessagesDatabase, userCalendarNamesTheDays) {
  addMessage(now);
  setenv("LC_ALL", "th_TH.UTF-8", 1);
  EXPECT_EQ(keys(scanned()), "2568-03-05");
  setenv("LC_ALL", "C", 1);
  setenv("TZ", "Pacific/Kiritimati", 1);
  EXPECT_EQ(keys(scanned()), "2025-03-06");
}

TEST_F(MessagesDatabase, viewsOfTheSameNamesServeAsWell) {
  file.execute(
      "ALTER TABLE message RENAME TO stored; ALTER TABLE stored ADD COLUMN extra;"
      "CREATE VIEW message AS SELECT rowid AS ROWID, text, date, is_from_me FROM stored");
  file.execute("INSERT INTO stored (date) VALUES (762868800)");
  EXPECT_EQ(keys(scanned()), "2025-03-05");
}

}  // namespace
}  // namespace kestrel::companion
