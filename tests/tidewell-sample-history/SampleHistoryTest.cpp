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
#include <optional>
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
    folder.emplace();
    ASSERT_TRUE(writeSampleHistory(database(), history(20'000, 365, 7)));
  }
  static void TearDownTestSuite() { folder.reset(); }
  static std::filesystem::path database() { return *folder / "chat.db"; }

 private:
  static inline std::optional<TemporaryFolder> folder;
};

TEST_F(SampleHistoryOfAYear, isWhollyIntact) {
  EXPECT_EQ(rows(database(), "PRAGMA integrity_check"), std::vector<Row>{{"ok"}});
  EXPECT_TRUE(rows(database(), "PRAGMA foreign_key_check").empty());
}

TEST_F(SampleHistoryOfAYear, hasTheTablesOfTheMessagesDatabase) {
  EXPECT_THAT(names(database(), "SELECT name FROM sqlite_schema WHERE type = 'table'"),
              IsSupersetOf({"message", "chat", "handle", "attachment", "chat_message_join",
                            "chat_handle_join", "message_attachment_join", "_SqliteDatabaseProperties"}));
}

/// A table of the Messages database: its columns in their order, and its indexes by name.
struct TableOfTheMessagesDatabase {
  std::string name;
  std::string columns;
  std::set<std::string> indexes;
};

TEST_F(SampleHistoryOfAYear, hasExactlyTheColumnsAndIndexesOfTheMessagesDatabase) {
  const std::vector<TableOfTheMessagesDatabase> tables{
      {.name = "message",
       .columns =
           "ROWID guid text replace service_center handle_id subject country attributedBody version type "
           "service account account_guid error date date_read date_delivered is_delivered is_finished "
           "is_emote is_from_me is_empty is_delayed is_auto_reply is_prepared is_read is_system_message "
           "is_sent has_dd_results is_service_message is_forward was_downgraded is_archive "
           "cache_has_attachments cache_roomnames was_data_detected was_deduplicated is_audio_message "
           "is_played date_played item_type other_handle group_title group_action_type share_status "
           "share_direction is_expirable expire_state message_action_type message_source "
           "associated_message_guid associated_message_type balloon_bundle_id payload_data "
           "expressive_send_style_id associated_message_range_location associated_message_range_length "
           "time_expressive_send_played message_summary_info ck_sync_state ck_record_id "
           "ck_record_change_tag destination_caller_id is_corrupt reply_to_guid sort_id is_spam "
           "has_unseen_mention thread_originator_guid thread_originator_part syndication_ranges "
           "synced_syndication_ranges was_delivered_quietly did_notify_recipient date_retracted "
           "date_edited was_detonated part_count is_stewie is_sos is_critical bia_reference_id "
           "is_kt_verified fallback_hash associated_message_emoji is_pending_satellite_send needs_relay "
           "schedule_type schedule_state sent_or_received_off_grid date_recovered is_time_sensitive "
           "ck_chat_id",
       .indexes = {"message_idx_associated_message2", "message_idx_cache_has_attachments", "message_idx_date",
                   "message_idx_expire_state", "message_idx_failed", "message_idx_fallback_hash",
                   "message_idx_handle", "message_idx_handle_id", "message_idx_isRead_isFromMe_itemType",
                   "message_idx_is_pending_satellite_message", "message_idx_is_read",
                   "message_idx_is_sent_is_from_me_error", "message_idx_other_handle",
                   "message_idx_schedule_state", "message_idx_thread_originator_guid",
                   "message_idx_undelivered_one_to_one_imessage", "message_idx_was_downgraded"}},
      {.name = "chat",
       .columns =
           "ROWID guid style state account_id properties chat_identifier service_name room_name "
           "account_login is_archived last_addressed_handle display_name group_id is_filtered "
           "successful_query engram_id server_change_token ck_sync_state original_group_id "
           "last_read_message_timestamp sr_server_change_token sr_ck_sync_state cloudkit_record_id "
           "sr_cloudkit_record_id last_addressed_sim_id is_blackholed syndication_date syndication_type "
           "is_recovered is_deleting_incoming_messages is_pending_review",
       .indexes = {"chat_idx_chat_identifier", "chat_idx_chat_identifier_service_name",
                   "chat_idx_chat_room_name_service_name", "chat_idx_group_id", "chat_idx_is_archived"}},
      {.name = "handle",
       .columns = "ROWID id country service uncanonicalized_id person_centric_id",
       .indexes = {}},
      {.name = "chat_message_join",
       .columns = "chat_id message_id message_date",
       .indexes = {"chat_message_join_idx_chat_id", "chat_message_join_idx_message_date_id_chat_id",
                   "chat_message_join_idx_message_id_only"}},
  };
  for (const auto& table : tables) {
    const auto of = [&table](const char* pragma, const char* where) {
      return "SELECT name FROM " + std::string(pragma) + "('" + table.name + "') WHERE " + where;
    };
    std::string columns;
    for (const Row& row : rows(database(), of("pragma_table_info", "1 ORDER BY cid"))) {
      columns += (columns.empty() ? "" : " ") + row.at(0);
    }
    EXPECT_EQ(columns, table.columns) << table.name;
    // Those that a CREATE INDEX made; the others belong to UNIQUE and PRIMARY KEY.
    EXPECT_EQ(names(database(), of("pragma_index_list", "origin = 'c'")), table.indexes) << table.name;
  }
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
  EXPECT_THAT(result.error(), HasSubstr("chat.db: it already exists"));
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
  EXPECT_THAT(result.error(), HasSubstr("its folder does not exist"));
}

TEST(SampleHistory, removesNothingThatItDidNotMake) {
  const TemporaryFolder folder;
  std::ofstream(folder / "chat.db.partial") << "mine";
  std::filesystem::create_directory(folder / "chat.db.partial-AbCdEf");
  ASSERT_TRUE(writeSampleHistory(folder / "chat.db", history(10, 1, 1)));
  EXPECT_EQ(bytes(folder / "chat.db.partial"), "mine");
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()), {}), 3);
}

TEST(SampleHistory, replacesNothingThatComesWhileItWrites) {
  const TemporaryFolder folder;
  static std::filesystem::path path;
  path = folder / "chat.db";
  // SQLite calls this when the connection is opened that the rows go through.
  const auto somebodyWrites = reinterpret_cast<void (*)()>(+[](sqlite3*, const char**, const void*) {
    std::ofstream(path) << "mine";
    return SQLITE_OK;
  });
  sqlite3_auto_extension(somebodyWrites);
  const auto result = writeSampleHistory(path, history(10, 1, 1));
  sqlite3_cancel_auto_extension(somebodyWrites);
  ASSERT_FALSE(result);
  EXPECT_THAT(result.error(), HasSubstr("chat.db: it already exists"));
  EXPECT_EQ(bytes(path), "mine");
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()), {}), 1);
}

TEST(SampleHistory, givesEveryRoomANumberOfItsOwn) {
  const TemporaryFolder folder;
  ASSERT_TRUE(writeSampleHistory(folder / "chat.db", history(10, 1, 1)));
  EXPECT_EQ(rows(folder / "chat.db",
                 "SELECT DISTINCT SUBSTR(room_name, -3) FROM chat WHERE room_name IS NOT NULL ORDER BY 1"),
            (std::vector<Row>{{"001"}, {"005"}, {"009"}, {"013"}, {"017"}, {"021"}}));
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
