#include <KestrelKit/foundation/Instant.h>
#include <KestrelKit/foundation/SqliteHandles.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sqlite3.h>
#include <tidewell-sample-history/SampleHistory.h>
#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace kestrel {
namespace {

using namespace std::chrono_literals;
using testing::Each;
using testing::Gt;
using testing::HasSubstr;
using testing::IsSupersetOf;

/// A folder of the test's own, removed at its end.
class TemporaryFolder {
 public:
  TemporaryFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "sample-history-XXXXXX").string();
    path_ = mkdtemp(name.data());
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  ~TemporaryFolder() { std::filesystem::remove_all(path_); }

  std::filesystem::path operator/(const char* name) const { return path_ / name; }
  std::filesystem::path path() const { return path_; }

 private:
  std::filesystem::path path_;
};

const Instant july2025 =
    ReferenceClock::fromSystem(std::chrono::sys_days{2025y / std::chrono::July / 1} + 14h);

SampleHistory history(std::int64_t messages, std::int64_t days, std::uint64_t seed) {
  return {.messages = messages, .days = days, .seed = seed, .end = july2025, .utcOffset = Seconds(0)};
}

using Row = std::vector<std::string>;

/// Every row of `sql` on the database at `path`, as text, "NULL" for no value.
std::vector<Row> rows(const std::filesystem::path& path, const std::string& sql) {
  sqlite3* opened = nullptr;
  EXPECT_EQ(sqlite3_open_v2(path.c_str(), &opened, SQLITE_OPEN_READONLY, nullptr), SQLITE_OK);
  const SqliteConnection connection(opened);
  std::vector<Row> result;
  const auto collect = [](void* into, int count, char** values, char**) {
    Row row;
    for (int column = 0; column < count; ++column) {
      row.emplace_back(values[column] != nullptr ? values[column] : "NULL");
    }
    static_cast<std::vector<Row>*>(into)->push_back(row);
    return 0;
  };
  EXPECT_EQ(sqlite3_exec(opened, sql.c_str(), collect, &result, nullptr), SQLITE_OK)
      << sqlite3_errmsg(opened);
  return result;
}

std::int64_t number(const std::filesystem::path& path, const std::string& sql) {
  return std::stoll(rows(path, sql).at(0).at(0));
}

std::string bytes(const std::filesystem::path& path) {
  std::ostringstream content;
  content << std::ifstream(path, std::ios::binary).rdbuf();
  return std::move(content).str();
}

std::set<std::string> names(const std::filesystem::path& path, const std::string& sql) {
  std::set<std::string> result;
  for (const Row& row : rows(path, sql)) {
    result.insert(row.at(0));
  }
  return result;
}

/// One history of a year, shared by the tests that only read it.
class SampleHistoryOfAYear : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    folder = new TemporaryFolder;
    ASSERT_TRUE(writeSampleHistory(database(), history(20'000, 365, 7)));
  }
  static void TearDownTestSuite() { delete folder; }
  static std::filesystem::path database() { return *folder / "chat.db"; }

 private:
  static inline TemporaryFolder* folder = nullptr;
};

TEST_F(SampleHistoryOfAYear, isWhollyIntact) {
  EXPECT_EQ(rows(database(), "PRAGMA integrity_check"), std::vector<Row>{{"ok"}});
  EXPECT_TRUE(rows(database(), "PRAGMA foreign_key_check").empty());
}

TEST_F(SampleHistoryOfAYear, hasTheTablesColumnsAndIndexesOfTheMessagesDatabase) {
  EXPECT_THAT(names(database(), "SELECT name FROM sqlite_schema WHERE type = 'table'"),
              IsSupersetOf({"message", "chat", "handle", "attachment", "chat_message_join",
                            "chat_handle_join", "message_attachment_join", "_SqliteDatabaseProperties"}));
  EXPECT_THAT(names(database(), "SELECT name FROM pragma_table_info('message')"),
              IsSupersetOf({"ROWID", "guid", "text", "handle_id", "attributedBody", "service", "date",
                            "date_read", "date_delivered", "is_from_me", "is_read", "cache_has_attachments",
                            "cache_roomnames", "associated_message_guid", "thread_originator_guid",
                            "date_retracted", "date_edited", "schedule_type", "date_recovered"}));
  EXPECT_THAT(names(database(), "SELECT name FROM pragma_table_info('chat_message_join')"),
              IsSupersetOf({"chat_id", "message_id", "message_date"}));
  EXPECT_THAT(names(database(), "SELECT name FROM sqlite_schema WHERE type = 'index'"),
              IsSupersetOf({"message_idx_date", "message_idx_handle", "chat_message_join_idx_message_id_only",
                            "chat_message_join_idx_message_date_id_chat_id", "chat_idx_chat_identifier"}));
}

TEST_F(SampleHistoryOfAYear, hasAsManyMessagesAsWereAskedForAllWithinItsDays) {
  EXPECT_EQ(number(database(), "SELECT COUNT(*) FROM message"), 20'000);
  const auto [first, last] = [] {
    const auto row =
        rows(database(),
             "SELECT MIN(seconds), MAX(seconds) FROM (SELECT CASE WHEN date > 1000000000000 THEN date / "
             "1000000000.0 ELSE date END AS seconds FROM message)")
            .at(0);
    return std::pair(std::stod(row.at(0)), std::stod(row.at(1)));
  }();
  const double end = secondsSinceReferenceDate(july2025);
  EXPECT_GE(first, end - 365 * 86400.0);
  EXPECT_LT(first, end - 364 * 86400.0);
  EXPECT_LE(last, end);
  EXPECT_GT(last, end - 86400.0);
}

TEST_F(SampleHistoryOfAYear, datesItsOlderMessagesInSecondsAndTheLaterInNanoseconds) {
  const auto older = number(database(), "SELECT COUNT(*) FROM message WHERE date <= 1000000000000");
  EXPECT_GT(older, 0);
  EXPECT_LT(older, 20'000);
  EXPECT_EQ(number(database(),
                   "SELECT COUNT(*) FROM message WHERE date <= 1000000000000 AND date > (SELECT MIN(date) / "
                   "1000000000 FROM message WHERE date > 1000000000000)"),
            0);
}

TEST_F(SampleHistoryOfAYear, hasMessagesOfEveryKind) {
  const auto count = [](const char* where) {
    return number(database(), std::string("SELECT COUNT(*) FROM message AS m WHERE ") + where);
  };
  const std::string chats = "(SELECT COUNT(*) FROM chat_message_join WHERE message_id = m.ROWID)";
  EXPECT_THAT(
      (std::map<std::string, std::int64_t>{
          {"sent", count("is_from_me = 1")},
          {"received", count("is_from_me = 0")},
          {"absent text", count("text IS NULL")},
          {"empty text", count("text = ''")},
          {"long text", count("length(text) > 1000")},
          {"Arabic", count("text GLOB '*[ا-ي]*'")},
          {"Hebrew", count("text GLOB '*[א-ת]*'")},
          {"Cyrillic", count("text GLOB '*[а-я]*'")},
          {"Devanagari", count("text GLOB '*[अ-ह]*'")},
          {"Han", count("text GLOB '*[一-龥]*'")},
          {"Kana", count("text GLOB '*[ぁ-ん]*'")},
          {"Hangul", count("text GLOB '*[가-힣]*'")},
          {"emoji", count("text GLOB '*😂*'")},
          {"in no chat", count((chats + " = 0").c_str())},
          {"in two chats", count((chats + " = 2").c_str())},
          {"in a group", count("cache_roomnames IS NOT NULL")},
          {"reaction", count("associated_message_type = 2000")},
          {"attachment", count("cache_has_attachments = 1")},
          {"late night", count("CASE WHEN date > 1000000000000 THEN date / 1000000000 ELSE date END % 86400 "
                               "< 5 * 3600")},
      }),
      Each(testing::Pair(testing::_, Gt(20))));
  EXPECT_EQ(count((chats + " > 2").c_str()), 0);
  EXPECT_GT(number(database(), "SELECT COUNT(*) FROM chat WHERE style = 43"), 3);
  EXPECT_GT(number(database(), "SELECT COUNT(*) FROM chat WHERE style = 45"), 20);
}

TEST_F(SampleHistoryOfAYear, hasLivelyDaysQuietDaysAndDaysOfSilence) {
  const auto days =
      rows(database(),
           "SELECT COUNT(*) FROM message GROUP BY CAST(CASE WHEN date > 1000000000000 THEN date / "
           "1000000000 ELSE date END / 86400 AS INTEGER) ORDER BY 1");
  EXPECT_LT(days.size(), 360U);
  EXPECT_GT(days.size(), 250U);
  EXPECT_GT(std::stoll(days.back().at(0)), 20 * std::stoll(days.front().at(0)));
}

TEST_F(SampleHistoryOfAYear, givesEveryMessageToTheScanOnce) {
  // The statement that a scan runs, and the counts that its rows must add up to, reckoned without a join.
  const std::string scan =
      "SELECT m.ROWID AS message, m.is_from_me AS sent, COALESCE(MIN(cmj.chat_id), -m.ROWID) AS "
      "conversation, "
      "CASE WHEN m.text IS NULL THEN NULL ELSE length(m.text) END AS size "
      "FROM message AS m LEFT JOIN chat_message_join AS cmj ON cmj.message_id = m.ROWID "
      "WHERE (CASE WHEN ABS(m.date) > 1000000000000 THEN m.date / 1000000000.0 ELSE m.date END) >= 0 "
      "GROUP BY m.ROWID ORDER BY m.date ASC";
  EXPECT_EQ(
      rows(database(),
           "SELECT COUNT(*), SUM(sent), SUM(conversation < 0), SUM(size), COUNT(size) FROM (" + scan + ")"),
      rows(database(),
           "SELECT COUNT(*), SUM(is_from_me), SUM(ROWID NOT IN (SELECT message_id FROM chat_message_join)), "
           "SUM(length(text)), COUNT(text) FROM message"));
}

TEST(SampleHistory, isTheSameBytesForTheSameSeedAndOthersForAnother) {
  const TemporaryFolder folder;
  ASSERT_TRUE(writeSampleHistory(folder / "first.db", history(3'000, 40, 1)));
  ASSERT_TRUE(writeSampleHistory(folder / "second.db", history(3'000, 40, 1)));
  ASSERT_TRUE(writeSampleHistory(folder / "other.db", history(3'000, 40, 2)));
  EXPECT_EQ(bytes(folder / "first.db"), bytes(folder / "second.db"));
  EXPECT_NE(bytes(folder / "first.db"), bytes(folder / "other.db"));
}

TEST(SampleHistory, isInWriteAheadModeWithoutSideFiles) {
  const TemporaryFolder folder;
  ASSERT_TRUE(writeSampleHistory(folder / "chat.db", history(100, 1, 1)));
  // The write and read versions of a database in WAL mode.
  EXPECT_EQ(bytes(folder / "chat.db").substr(18, 2), "\x02\x02");
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()), {}), 1);
}

TEST(SampleHistory, holdsWithNoMessagesOneAndOnOneDay) {
  const TemporaryFolder folder;
  for (const std::int64_t messages : {0, 1, 500}) {
    const auto path = folder / std::to_string(messages).c_str();
    ASSERT_TRUE(writeSampleHistory(path, history(messages, 1, 3)));
    EXPECT_EQ(number(path, "SELECT COUNT(*) FROM message"), messages);
    EXPECT_EQ(rows(path, "PRAGMA integrity_check"), std::vector<Row>{{"ok"}});
  }
}

TEST(SampleHistory, sleepsByTheClockOnTheWall) {
  const TemporaryFolder folder;
  // Ordinary days, which every history ends on, have next to nothing from two to five, wherever they are
  // lived.
  for (const double hours : {-9.5, 0.0, 13.0}) {
    SampleHistory few = history(2'000, 3, 5);
    few.utcOffset = Seconds(hours * 3600);
    const auto path = folder / std::to_string(hours).c_str();
    ASSERT_TRUE(writeSampleHistory(path, few));
    const std::string local = "((CASE WHEN date > 1000000000000 THEN date / 1000000000 ELSE date END + " +
                              std::to_string(static_cast<int>(hours * 3600)) + ") % 86400 / 3600)";
    EXPECT_LT(number(path, "SELECT COUNT(*) FROM message WHERE " + local + " IN (2, 3, 4)"), 30) << hours;
    EXPECT_GT(number(path, "SELECT COUNT(*) FROM message WHERE " + local + " IN (18, 19, 20)"), 300) << hours;
  }
}

TEST(SampleHistory, leavesAFileThatExistsAsItIs) {
  const TemporaryFolder folder;
  std::ofstream(folder / "chat.db") << "mine";
  const auto result = writeSampleHistory(folder / "chat.db", history(10, 1, 1));
  ASSERT_FALSE(result);
  EXPECT_THAT(result.error(), HasSubstr("chat.db: it exists already"));
  EXPECT_EQ(bytes(folder / "chat.db"), "mine");
}

TEST(SampleHistory, leavesALinkToNowhereAsItIs) {
  const TemporaryFolder folder;
  std::filesystem::create_symlink("nowhere", folder / "chat.db");
  EXPECT_FALSE(writeSampleHistory(folder / "chat.db", history(10, 1, 1)));
  EXPECT_TRUE(std::filesystem::is_symlink(folder / "chat.db"));
}

TEST(SampleHistory, saysThatAFolderDoesNotExist) {
  const TemporaryFolder folder;
  const auto result = writeSampleHistory(folder / "none/chat.db", history(10, 1, 1));
  ASSERT_FALSE(result);
  EXPECT_THAT(result.error(), HasSubstr("unable to open database file"));
}

TEST(SampleHistory, startsAfreshOverWhatAnInterruptedRunLeft) {
  const TemporaryFolder folder;
  std::ofstream(folder / "chat.db.partial") << "half a database";
  ASSERT_TRUE(writeSampleHistory(folder / "chat.db", history(10, 1, 1)));
  EXPECT_EQ(number(folder / "chat.db", "SELECT COUNT(*) FROM message"), 10);
  EXPECT_FALSE(std::filesystem::exists(folder / "chat.db.partial"));
}

TEST(SampleHistoryDeathTest, stopsOnValuesOutsideTheirRanges) {
  const TemporaryFolder folder;
  const auto path = folder / "chat.db";
  const auto write = [&path](auto change) {
    SampleHistory wrong = history(10, 1, 1);
    change(wrong);
    return writeSampleHistory(path, wrong).has_value();
  };
  EXPECT_DEATH(write([](auto& wrong) { wrong.messages = -1; }), "too few or too many");
  EXPECT_DEATH(write([](auto& wrong) { wrong.messages = SampleHistory::mostMessages + 1; }),
               "too few or too many");
  EXPECT_DEATH(write([](auto& wrong) { wrong.days = 0; }), "too few or too many");
  EXPECT_DEATH(write([](auto& wrong) { wrong.days = SampleHistory::mostDays + 1; }), "too few or too many");
  EXPECT_DEATH(write([](auto& wrong) { wrong.end = SampleHistory::earliest + Seconds(86'399); }),
               "too early");
  EXPECT_DEATH(write([](auto& wrong) { wrong.end = SampleHistory::latest + Seconds(1); }), "too late");
  EXPECT_TRUE(write([](auto& right) { right.end = SampleHistory::earliest + Seconds(86'400); }));
}

}  // namespace
}  // namespace kestrel
