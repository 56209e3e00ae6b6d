// What is in the way of a scan: files that are no database, databases that are damaged, locked or being
// written. Each ends in one of the outcomes that the reader knows.

#include <KestrelTrackerMac/reading/MessagesDatabase.h>
#include <KestrelTrackerMac/reading/MessagesQuery.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sqlite3.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <rapidcheck.h>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "MessagesFile.h"

namespace kestrel::companion {
namespace {

using namespace std::chrono_literals;
using testing::AnyOf;

const Instant now = instantSinceReferenceDate(762'876'600);  // 2025-03-05 14:10:00 UTC

/// The outcome of a scan, or nothing for a summary.
std::optional<MessagesScanError> errorOf(const std::filesystem::path& path) {
  const auto summary = scanMessages(path, 90, now);
  return summary ? std::nullopt : std::optional(summary.error());
}

/// Does `work` in a process without root's rights, for which the permissions of files count. Gives its
/// result, at least 0 and at most 100.
int asNobody(const std::function<int()>& work) {
  constexpr unsigned nobody = 65534;
  const pid_t child = fork();
  if (child == 0) {
    if (geteuid() == 0 &&
        (setresgid(nobody, nobody, nobody) != 0 || setresuid(nobody, nobody, nobody) != 0)) {
      std::_Exit(101);
    }
    std::_Exit(work());
  }
  int status = 0;
  EXPECT_EQ(waitpid(child, &status, 0), child);
  EXPECT_TRUE(WIFEXITED(status));
  return WEXITSTATUS(status);
}

MessagesAccessState accessAsNobody(const std::filesystem::path& path) {
  return static_cast<MessagesAccessState>(
      asNobody([&] { return static_cast<int>(probeMessagesAccess(path)); }));
}

std::optional<MessagesScanError> errorAsNobody(const std::filesystem::path& path) {
  constexpr int none = 100;
  const int code = asNobody([&] {
    const auto error = errorOf(path);
    return error ? static_cast<int>(*error) : none;
  });
  return code == none ? std::nullopt : std::optional(static_cast<MessagesScanError>(code));
}

class UnreadableMessages : public testing::Test {
 protected:
  void SetUp() override {
    setenv("TZ", "UTC", 1);
    setenv("LC_ALL", "C", 1);
  }

  /// Two tables, an index, and enough messages for some dozens of pages.
  void fill(int messages = 400) const {
    file.execute(std::string(MessagesFile::schema) +
                 "WITH RECURSIVE n(i) AS (VALUES (1) UNION ALL SELECT i + 1 FROM n WHERE i < " +
                 std::to_string(messages) +
                 ") INSERT INTO message (date, text, is_from_me) SELECT 762000000 + i * 1000, "
                 "printf('%.*c', i % 300, 'x'), i % 2 FROM n;"
                 "INSERT INTO chat_message_join (chat_id, message_id) SELECT ROWID % 7, ROWID FROM message;");
  }

  MessagesFile file;
};

TEST_F(UnreadableMessages, folderInItsPlaceIsUnavailable) {
  std::filesystem::create_directory(file.path());
  EXPECT_EQ(probeMessagesAccess(file.path()), MessagesAccessState::unavailable);
  EXPECT_EQ(errorOf(file.path()), MessagesScanError::databaseUnavailable);
}

TEST_F(UnreadableMessages, fileWithoutReadPermissionNeedsAccess) {
  fill();
  chmod(file.path().c_str(), 0);
  EXPECT_EQ(accessAsNobody(file.path()), MessagesAccessState::needsFullDiskAccess);
  EXPECT_EQ(errorAsNobody(file.path()), MessagesScanError::accessRequired);
}

TEST_F(UnreadableMessages, fileInAFolderThatHidesItNeedsAccess) {
  fill();
  chmod(file.folder().c_str(), 0);
  EXPECT_EQ(accessAsNobody(file.path()), MessagesAccessState::needsFullDiskAccess);
  EXPECT_EQ(errorAsNobody(file.path()), MessagesScanError::accessRequired);
}

TEST_F(UnreadableMessages, fileAndFolderThatCannotBeWrittenAreEnough) {
  fill();
  chmod(file.path().c_str(), 0444);
  chmod(file.folder().c_str(), 0555);
  EXPECT_EQ(accessAsNobody(file.path()), MessagesAccessState::ready);
  EXPECT_EQ(errorAsNobody(file.path()), std::nullopt);
}

TEST_F(UnreadableMessages, writeAheadLogThatCannotBeOpenedIsUnsupported) {
  // SQLite shares the index of the log through a file beside the database, and may not create one here. That
  // shows only when the statement is prepared.
  fill();
  file.execute("PRAGMA journal_mode = WAL");
  chmod(file.path().c_str(), 0444);
  chmod(file.folder().c_str(), 0555);
  EXPECT_EQ(accessAsNobody(file.path()), MessagesAccessState::ready);
  EXPECT_EQ(errorAsNobody(file.path()), MessagesScanError::unsupportedDatabase);
}

TEST_F(UnreadableMessages, linkToNowhereNeedsAccess) {
  std::filesystem::create_symlink("nowhere", file.path());
  EXPECT_EQ(probeMessagesAccess(file.path()), MessagesAccessState::needsFullDiskAccess);
  EXPECT_EQ(errorOf(file.path()), MessagesScanError::accessRequired);
}

TEST_F(UnreadableMessages, socketInItsPlaceNeedsAccess) {
  const int fd = socket(AF_UNIX, SOCK_STREAM, 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  file.path().string().copy(address.sun_path, sizeof address.sun_path - 1);
  ASSERT_EQ(bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  EXPECT_EQ(probeMessagesAccess(file.path()), MessagesAccessState::needsFullDiskAccess);
  EXPECT_EQ(errorOf(file.path()), MessagesScanError::accessRequired);
  close(fd);
}

TEST_F(UnreadableMessages, pipeInItsPlaceNeedsAccessAndIsNotWaitedFor) {
  ASSERT_EQ(mkfifo(file.path().c_str(), 0600), 0);
  EXPECT_EQ(probeMessagesAccess(file.path()), MessagesAccessState::needsFullDiskAccess);
  EXPECT_EQ(errorOf(file.path()), MessagesScanError::accessRequired);
}

TEST_F(UnreadableMessages, deviceInItsPlaceNeedsAccess) {
  std::filesystem::create_symlink("/dev/zero", file.path());
  EXPECT_EQ(probeMessagesAccess(file.path()), MessagesAccessState::needsFullDiskAccess);
  EXPECT_EQ(errorOf(file.path()), MessagesScanError::accessRequired);
}

TEST_F(UnreadableMessages, emptyFileIsUnsupported) {
  file.overwrite("");
  EXPECT_EQ(probeMessagesAccess(file.path()), MessagesAccessState::ready);
  EXPECT_EQ(errorOf(file.path()), MessagesScanError::unsupportedDatabase);
  EXPECT_EQ(file.bytes(), "");
}

TEST_F(UnreadableMessages, emptyFileBesideALogIsUnavailableAndTheLogStays) {
  file.overwrite("");
  std::ofstream(file.path("-wal")) << "somebody's messages";
  EXPECT_EQ(probeMessagesAccess(file.path()), MessagesAccessState::unavailable);
  EXPECT_EQ(errorOf(file.path()), MessagesScanError::databaseUnavailable);
  EXPECT_EQ(MessagesFile::bytes(file.path("-wal")), "somebody's messages");
}

TEST_F(UnreadableMessages, fileThatIsNoDatabaseIsUnsupported) {
  for (const std::string& content :
       {std::string("x"), std::string("SQLite format 3"), std::string("%PDF-1.7\n"), std::string(100, '\0'),
        std::string(100'000, 'x')}) {
    file.overwrite(content);
    EXPECT_EQ(errorOf(file.path()), MessagesScanError::unsupportedDatabase) << content.substr(0, 20);
    EXPECT_EQ(file.bytes(), content);
  }
}

TEST_F(UnreadableMessages, truncatedDatabaseNeverGivesACountAtAnyLength) {
  fill();
  file.execute(
      "DROP TABLE chat_message_join; CREATE TABLE chat_message_join (chat_id INTEGER, message_id INTEGER)");
  file.execute("INSERT INTO message SELECT ROWID + 1000, text, date, is_from_me FROM message; VACUUM");
  for (const char* mode : {"DELETE", "WAL"}) {
    file.execute(std::string("PRAGMA journal_mode = ") + mode);
    const std::string whole = file.bytes();
    constexpr std::size_t pageSize = 4096;
    constexpr std::size_t header = 20;  // as much as the size of a page and the use of a log need
    const auto outcomeAt = [&](std::size_t size) {
      std::filesystem::resize_file(file.path(), size);  // never longer than before
      return errorOf(file.path());
    };
    EXPECT_EQ(outcomeAt(whole.size()), std::nullopt);
    outcomeAt(whole.size() - 1);
    EXPECT_EQ(probeMessagesAccess(file.path()), MessagesAccessState::unavailable);
    std::vector<std::size_t> sizes;
    for (std::size_t cut = 1; cut < whole.size() - header; cut += cut < 2 * pageSize ? 1 : 509) {
      sizes.push_back(whole.size() - cut);
    }
    sizes.insert(sizes.end(), {header, header - 1, 1, 0});
    for (const std::size_t size : sizes) {
      const auto expected = size < header || size % pageSize == 0 ? MessagesScanError::unsupportedDatabase
                                                                  : MessagesScanError::databaseUnavailable;
      ASSERT_EQ(outcomeAt(size), expected) << size << " of " << whole.size() << " in mode " << mode;
    }
    file.overwrite(whole);
  }
}

TEST_F(UnreadableMessages, damagedPageFailsTheQuery) {
  fill();
  std::string content = file.bytes();
  // The pages after the first four hold rows and index entries; an unknown page type cannot be stepped
  // through.
  constexpr std::size_t pageSize = 4096;
  for (std::size_t page = 4; page < content.size() / pageSize; ++page) {
    content[page * pageSize] = '\x77';
  }
  file.overwrite(content);
  EXPECT_EQ(errorOf(file.path()), MessagesScanError::queryFailed);
}

TEST_F(UnreadableMessages, databaseWithAnyBitsFlippedEndsInAKnownOutcome) {
  fill(40);
  const std::string whole = file.bytes();
  EXPECT_TRUE(rc::check([&] {
    std::string content = whole;
    const auto flips = *rc::gen::nonEmpty(
        rc::gen::container<std::vector<std::size_t>>(rc::gen::inRange<std::size_t>(0, whole.size() * 8)));
    for (const std::size_t bit : flips) {
      content[bit / 8] = static_cast<char>(content[bit / 8] ^ (1 << bit % 8));
    }
    file.overwrite(content);
    const auto summary = scanMessages(file.path(), 90, now);
    if (summary) {
      for (const auto& day : summary->daily) {
        RC_ASSERT(day.sentCount + day.receivedCount > 0);
        RC_ASSERT(day.activeConversationCount >= 1);
        RC_ASSERT(day.activeConversationCount <= day.sentCount + day.receivedCount);
        RC_ASSERT(day.lateNightCount <= day.sentCount + day.receivedCount);
      }
    } else {
      RC_ASSERT(summary.error() != MessagesScanError::accessRequired);
    }
    RC_ASSERT(file.bytes() == content);
    for (const char* suffix : {"-wal", "-shm"}) {  // a flipped version byte makes it a database with a log
      std::filesystem::remove(file.path(suffix));
    }
  }));
}

TEST_F(UnreadableMessages, unfinishedRollbackIsUnsupportedAndLeftAlone) {
  fill();
  // A journal as a power failure leaves it: the pages before a change that is half written.
  const auto connection = file.open();
  MessagesFile::execute(connection, "PRAGMA cache_size = 2; BEGIN; UPDATE message SET text = 'changed'");
  const std::string journal = MessagesFile::bytes(file.path("-journal"));
  const MessagesFile crashed;
  crashed.overwrite(file.bytes());
  std::ofstream(crashed.path("-journal"), std::ios::binary) << journal;
  const std::string before = crashed.bytes();
  EXPECT_EQ(errorOf(crashed.path()), MessagesScanError::unsupportedDatabase);
  EXPECT_EQ(crashed.bytes(), before);
  EXPECT_EQ(MessagesFile::bytes(crashed.path("-journal")), journal);
}

TEST_F(UnreadableMessages, databaseThatStaysLockedIsUnsupportedAfterTheBusyTimeout) {
  fill();
  const auto holder = file.open();
  MessagesFile::execute(holder, "BEGIN EXCLUSIVE");
  EXPECT_EQ(probeMessagesAccess(file.path()), MessagesAccessState::ready);
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(errorOf(file.path()), MessagesScanError::unsupportedDatabase);
  EXPECT_GE(std::chrono::steady_clock::now() - begin, 1900ms);
  MessagesFile::execute(holder, "ROLLBACK");
  EXPECT_EQ(errorOf(file.path()), std::nullopt);
}

/// Locks `path` for good each time the scan's statement begins to run, after it was prepared and before it
/// reads.
struct LockBetweenPreparingAndReading {
  explicit LockBetweenPreparingAndReading(SqliteConnection connection) {
    holder = std::move(connection);
    sqlite3_auto_extension(reinterpret_cast<void (*)()>(&watch));
  }
  LockBetweenPreparingAndReading(const LockBetweenPreparingAndReading&) = delete;
  LockBetweenPreparingAndReading& operator=(const LockBetweenPreparingAndReading&) = delete;
  ~LockBetweenPreparingAndReading() {
    sqlite3_cancel_auto_extension(reinterpret_cast<void (*)()>(&watch));
    holder.reset();
  }

 private:
  static int watch(sqlite3* connection, const char**, const void*) {
    return sqlite3_trace_v2(
        connection, SQLITE_TRACE_STMT,
        [](unsigned, void*, void*, void* sql) {
          if (static_cast<const char*>(sql) == std::string_view(MessagesQuery::text)) {
            MessagesFile::execute(holder, "BEGIN EXCLUSIVE");
          }
          return 0;
        },
        nullptr);
  }

  static inline SqliteConnection holder;
};

TEST_F(UnreadableMessages, databaseThatIsLockedOnceItsQueryIsPreparedFailsTheQuery) {
  fill();
  {
    const LockBetweenPreparingAndReading lock(file.open());
    EXPECT_EQ(errorOf(file.path()), MessagesScanError::queryFailed);
  }
  EXPECT_EQ(errorOf(file.path()), std::nullopt);
}

TEST_F(UnreadableMessages, withoutOurFileSystemUnderSqliteNothingIsOpened) {
  // In a process that has not used SQLite yet, of which the system's part in memory is missing.
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const auto outcome = [this] {
    sqlite3_initialize();
    sqlite3_vfs_unregister(sqlite3_vfs_find("memdb"));
    const bool missing = probeMessagesAccess(file.path()) == MessagesAccessState::needsFullDiskAccess &&
                         errorOf(file.path()) == MessagesScanError::accessRequired;
    file.overwrite("");
    const bool there = probeMessagesAccess(file.path()) == MessagesAccessState::unavailable &&
                       errorOf(file.path()) == MessagesScanError::databaseUnavailable;
    return missing && there ? 0 : 1;
  };
  EXPECT_EXIT(std::_Exit(outcome()), testing::ExitedWithCode(0), "");
}

/// The shell of SQLite: another process that has the database open.
class OtherProcess {
 public:
  explicit OtherProcess(const std::filesystem::path& database)
      : shell_(popen(("exec sqlite3 -bail '" + database.string() + "' 2>&1").c_str(), "w"), &pclose) {
    std::signal(SIGPIPE, SIG_IGN);  // a shell that has ended shows in what it leaves undone
  }

  /// Writes `text` and waits until it is done, or until the shell has ended.
  void finish(const std::string& text, const std::filesystem::path& marker) {
    std::fputs((text + "\n.shell touch '" + marker.string() + "'\n").c_str(), shell_.get());
    std::fflush(shell_.get());
    while (!std::filesystem::exists(marker)) {
      ASSERT_FALSE(hasEnded()) << "sqlite3 is missing, or stopped before " << marker;
      std::this_thread::sleep_for(1ms);
    }
  }

 private:
  /// Whether nobody reads any more what is written to the shell.
  bool hasEnded() const {
    pollfd end{.fd = fileno(shell_.get()), .events = POLLOUT, .revents = 0};
    return poll(&end, 1, 0) == 1 && (end.revents & POLLERR) != 0;
  }

  std::unique_ptr<std::FILE, int (*)(std::FILE*)> shell_;
};

TEST_F(UnreadableMessages, databaseInRollbackModeStaysWhatItWasToTheByte) {
  fill();
  const std::string before = file.bytes();
  const auto written = std::filesystem::last_write_time(file.path());
  EXPECT_EQ(errorOf(file.path()), std::nullopt);
  EXPECT_EQ(file.bytes(), before);
  EXPECT_EQ(std::filesystem::last_write_time(file.path()), written);
  const auto entries = std::filesystem::directory_iterator(file.folder());
  EXPECT_EQ(std::distance(begin(entries), end(entries)), 1) << "something was left beside the database";
}

TEST_F(UnreadableMessages, rowsStillInTheWriteAheadLogOfAnotherProcessAreCounted) {
  fill(10);
  OtherProcess other(file.path());
  other.finish(
      "PRAGMA journal_mode = WAL;\nPRAGMA wal_autocheckpoint = 0;\n"
      "INSERT INTO message (date, is_from_me) VALUES (762868800, 1), (762868801, 1), (762868802, 0);",
      file.path("-marker"));
  const std::string before = file.bytes();
  const std::string log = MessagesFile::bytes(file.path("-wal"));
  EXPECT_GT(log.size(), 0U);

  const auto summary = scanMessages(file.path(), 90, now);
  ASSERT_TRUE(summary);
  EXPECT_EQ(summary->daily.back().date, "2025-03-05");
  EXPECT_EQ(summary->daily.back().sentCount, 2);
  EXPECT_EQ(summary->daily.back().receivedCount, 1);
  EXPECT_EQ(file.bytes(), before);
  EXPECT_EQ(MessagesFile::bytes(file.path("-wal")), log);
}

/// Scans again and again while another process adds messages, always a sent and a received one together.
void scanWhileAnotherProcessWrites(const MessagesFile& file, const std::string& journalMode) {
  constexpr int mostPairs = 3000;
  OtherProcess other(file.path());
  other.finish("PRAGMA journal_mode = " + journalMode + ";\nPRAGMA synchronous = OFF;\n.timeout 60000",
               file.path("-begun"));
  std::string script;
  for (int pair = 0; pair < mostPairs; ++pair) {
    script += "INSERT INTO message (date, is_from_me) VALUES (762868800, 0), (762868800, 1);\n";
  }
  std::atomic<bool> ended = false;
  std::thread writer([&] {
    other.finish(script, file.path("-ended"));
    ended = true;
  });
  std::int64_t counted = 0;
  while (!ended) {
    const auto summary = scanMessages(file.path(), 90, now);
    if (!summary) {  // locked for longer than the busy timeout, on a very slow machine
      EXPECT_THAT(summary.error(),
                  AnyOf(MessagesScanError::unsupportedDatabase, MessagesScanError::queryFailed));
      continue;
    }
    if (!summary->daily.empty()) {
      EXPECT_EQ(summary->daily.at(0).sentCount, summary->daily.at(0).receivedCount);
      EXPECT_GE(summary->daily.at(0).sentCount, counted);
      counted = summary->daily.at(0).sentCount;
    }
  }
  writer.join();
  const auto summary = scanMessages(file.path(), 90, now);
  ASSERT_TRUE(summary && !summary->daily.empty());
  EXPECT_EQ(summary->daily.at(0).sentCount, mostPairs);
}

TEST_F(UnreadableMessages, scanWhileAnotherProcessWritesItsLogSeesWholeTransactions) {
  file.execute(MessagesFile::schema);
  scanWhileAnotherProcessWrites(file, "WAL");
}

TEST_F(UnreadableMessages, scanWhileAnotherProcessWritesTheFileSeesWholeTransactions) {
  file.execute(MessagesFile::schema);
  scanWhileAnotherProcessWrites(file, "DELETE");
}

}  // namespace
}  // namespace kestrel::companion
