#include <KestrelKit/foundation/SqliteFileSystem.h>
#include <KestrelKit/foundation/SqliteHandles.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <ios>
#include <memory>
#include <sstream>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

namespace kestrel {
namespace {

class SqliteFileSystem : public testing::Test {
 protected:
  SqliteFileSystem() {
    EXPECT_TRUE(installSqliteFileSystem());
    std::string name = testing::TempDir() + "kestrel-sqlite-XXXXXX";
    EXPECT_NE(mkdtemp(name.data()), nullptr);
    folder = name;
    path = folder / "some.db";
  }
  ~SqliteFileSystem() override {
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
  }

  static constexpr int readOnly = SQLITE_OPEN_READONLY;
  static constexpr int writable = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE;

  /// A connection, through the file system named `system` or the default one.
  SqliteConnection open(int flags, const char* system = nullptr) const {
    sqlite3* connection = nullptr;
    EXPECT_EQ(sqlite3_open_v2(path.c_str(), &connection, flags, system), SQLITE_OK);
    return SqliteConnection(connection);
  }

  /// SQLite's result of opening the file, by itself.
  int opening(int flags = readOnly) const {
    sqlite3* connection = nullptr;
    const int result = sqlite3_open_v2(path.c_str(), &connection, flags, nullptr);
    sqlite3_close(connection);
    return result;
  }

  static void execute(const SqliteConnection& connection, const std::string& sql) {
    EXPECT_EQ(sqlite3_exec(connection.get(), sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK)
        << sqlite3_errmsg(connection.get()) << " in " << sql;
  }

  static int number(const SqliteConnection& connection, const char* sql) {
    sqlite3_stmt* prepared = nullptr;
    EXPECT_EQ(sqlite3_prepare_v2(connection.get(), sql, -1, &prepared, nullptr), SQLITE_OK);
    const SqliteStatement statement(prepared);
    return sqlite3_step(prepared) == SQLITE_ROW ? sqlite3_column_int(prepared, 0) : -1;
  }

  /// A thousand rows, in pages of `pageSize` bytes.
  void fill(int pageSize) const {
    const auto connection = open(writable);
    execute(connection, "PRAGMA page_size = " + std::to_string(pageSize) +
                            ";CREATE TABLE thing (id INTEGER PRIMARY KEY, text TEXT);" + thousandRows);
  }
  static constexpr const char* thousandRows =
      "WITH RECURSIVE n(i) AS (VALUES (1) UNION ALL SELECT i + 1 FROM n WHERE i < 1000)"
      "INSERT INTO thing (text) SELECT printf('%.*c', 200, 'x') FROM n";

  static std::string bytes(const std::filesystem::path& file) {
    std::ostringstream content;
    content << std::ifstream(file, std::ios::binary).rdbuf();
    return std::move(content).str();
  }

  static void overwrite(const std::filesystem::path& file, std::streamoff offset, std::string_view content) {
    std::fstream stream(file, std::ios::binary | std::ios::in | std::ios::out);
    stream.seekp(offset).write(content.data(), static_cast<std::streamsize>(content.size()));
  }

  std::filesystem::path folder;
  std::filesystem::path path;
};

/// How many files without a name this process has open: those that SQLite removes as soon as it has made
/// them.
int deletedFilesThatAreOpen() {
  int count = 0;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
    std::error_code gone;
    count += std::filesystem::read_symlink(entry, gone).string().ends_with(" (deleted)") ? 1 : 0;
  }
  return count;
}

TEST_F(SqliteFileSystem, keepsTemporaryFilesInMemory) {
  const auto filesOf = [this](const char* system) {
    const int before = deletedFilesThatAreOpen();
    const auto connection = open(writable, system);
    execute(connection, std::string("PRAGMA temp_store = FILE; PRAGMA temp.cache_size = 1;"
                                    "CREATE TEMP TABLE thing (id INTEGER PRIMARY KEY, text TEXT);") +
                            thousandRows);
    EXPECT_EQ(number(connection, "SELECT COUNT(*) FROM thing WHERE length(text) = 200"), 1000);
    return deletedFilesThatAreOpen() - before;
  };
  EXPECT_GT(filesOf("unix"), 0) << "nothing was spilled";
  EXPECT_EQ(filesOf(nullptr), 0);
}

TEST_F(SqliteFileSystem, endsATemporaryFileAt1GiB) {
  sqlite3_vfs* const system = sqlite3_vfs_find(nullptr);
  ASSERT_STREQ(system->zName, "kestrel");
  // As sqlite3_file is the beginning of a larger structure, its size is known at run time only.
  const auto memory = std::make_unique<std::max_align_t[]>(
      static_cast<std::size_t>(system->szOsFile) / sizeof(std::max_align_t) + 1);
  auto* const file = reinterpret_cast<sqlite3_file*>(memory.get());
  constexpr int temporary = SQLITE_OPEN_TEMP_DB | SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE |
                            SQLITE_OPEN_EXCLUSIVE | SQLITE_OPEN_DELETEONCLOSE;
  ASSERT_EQ(system->xOpen(system, nullptr, file, temporary, nullptr), SQLITE_OK);
  constexpr sqlite3_int64 limit = 1 << 30;
  EXPECT_EQ(file->pMethods->xWrite(file, "x", 1, 0), SQLITE_OK);
  EXPECT_EQ(file->pMethods->xWrite(file, "x", 1, limit), SQLITE_FULL);
  sqlite3_int64 asked = -1;
  EXPECT_EQ(file->pMethods->xFileControl(file, SQLITE_FCNTL_SIZE_LIMIT, &asked), SQLITE_OK);
  EXPECT_EQ(asked, limit);
  file->pMethods->xClose(file);
}

TEST_F(SqliteFileSystem, refusesADatabaseThatEndsWithinAPage) {
  for (const int pageSize : {512, 1024, 4096, 32'768, 65'536}) {
    std::filesystem::remove(path);
    fill(pageSize);
    const auto size = std::filesystem::file_size(path);
    const auto openingAt = [&](std::size_t length) {
      std::filesystem::resize_file(path, length);
      return opening();
    };
    EXPECT_EQ(openingAt(size), SQLITE_OK) << pageSize;
    EXPECT_EQ(openingAt(size + 1), SQLITE_CORRUPT) << pageSize;
    EXPECT_EQ(openingAt(size - 1), SQLITE_CORRUPT) << pageSize;
    EXPECT_EQ(openingAt(size - static_cast<unsigned>(pageSize) + 1), SQLITE_CORRUPT) << pageSize;
    EXPECT_EQ(openingAt(size - static_cast<unsigned>(pageSize)), SQLITE_OK) << pageSize;
  }
}

TEST_F(SqliteFileSystem, opensACutOffDatabaseForWriting) {
  fill(4096);
  std::filesystem::resize_file(path, std::filesystem::file_size(path) - 1);
  EXPECT_EQ(opening(SQLITE_OPEN_READWRITE), SQLITE_OK);
  EXPECT_EQ(opening(), SQLITE_CORRUPT);
}

TEST_F(SqliteFileSystem, leavesAnImpossiblePageSizeToSqlite) {
  fill(4096);
  std::filesystem::resize_file(path, std::filesystem::file_size(path) - 1);
  for (const unsigned size : {0U, 2U, 256U, 511U, 513U, 1000U, 4095U, 4097U, 65'535U}) {
    overwrite(path, 16, std::string{static_cast<char>(size >> 8), static_cast<char>(size & 0xFF)});
    EXPECT_EQ(opening(), SQLITE_OK) << size;
    const auto connection = open(readOnly);
    EXPECT_EQ(sqlite3_exec(connection.get(), "SELECT * FROM thing", nullptr, nullptr, nullptr), SQLITE_NOTADB)
        << size;
  }
}

TEST_F(SqliteFileSystem, leavesWhatIsNoDatabaseToSqlite) {
  for (const char* content : {"", "x", "SQLite format 3", "SQLite format 4, which is yet to come"}) {
    std::ofstream(path) << content;
    EXPECT_EQ(opening(), SQLITE_OK) << content;
  }
}

/// A database whose log is being written back when its disk is full.
class InterruptedCheckpoint : public SqliteFileSystem {
 protected:
  InterruptedCheckpoint() {
    const pid_t child = fork();
    if (child == 0) {
      // The connection is never closed: that would write the log back.
      sqlite3* writing = open(writable).release();
      const auto run = [writing](const char* sql) {
        return sqlite3_exec(writing, sql, nullptr, nullptr, nullptr);
      };
      run("PRAGMA page_size = 4096; PRAGMA journal_mode = WAL; PRAGMA wal_autocheckpoint = 0;"
          "CREATE TABLE thing (id INTEGER PRIMARY KEY, text TEXT)");
      const bool written = run(thousandRows) == SQLITE_OK;
      std::signal(SIGXFSZ, SIG_IGN);
      const rlimit limit{.rlim_cur = fullAt, .rlim_max = fullAt};
      setrlimit(RLIMIT_FSIZE, &limit);
      std::_Exit(written && run("PRAGMA wal_checkpoint") != SQLITE_OK ? 0 : 1);
    }
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0) << "the checkpoint was not interrupted";
    EXPECT_EQ(std::filesystem::file_size(path), fullAt);
    std::filesystem::remove(folder / "some.db-shm");
  }

  static constexpr rlim_t fullAt = 20 * 4096 + 1000;
  const std::filesystem::path log = folder / "some.db-wal";
};

TEST_F(InterruptedCheckpoint, leavesADatabaseThatIsReadWhole) {
  const auto connection = open(readOnly);
  EXPECT_EQ(number(connection, "SELECT COUNT(*) FROM thing WHERE length(text) = 200"), 1000);
}

TEST_F(InterruptedCheckpoint, withoutItsLogIsRefused) {
  const std::string whole = bytes(log);
  std::filesystem::remove(log);
  EXPECT_EQ(opening(), SQLITE_CORRUPT);
  constexpr std::size_t header = 32;
  constexpr std::size_t frame = 24 + 4096;
  for (const std::size_t length : {std::size_t{0}, header - 1, header, header + frame - 1, header + frame}) {
    std::ofstream(log, std::ios::binary) << whole.substr(0, length);
    EXPECT_EQ(opening(), SQLITE_CORRUPT) << length;
  }
  std::ofstream(log, std::ios::binary) << whole;
  EXPECT_EQ(opening(), SQLITE_OK);
}

TEST_F(InterruptedCheckpoint, withALogThatWasBegunAnewIsRefused) {
  overwrite(log, 16, "new salt");
  EXPECT_EQ(opening(), SQLITE_CORRUPT);
}

TEST_F(InterruptedCheckpoint, ofADatabaseThatIsReadWithoutItsLogIsRefused) {
  overwrite(path, 18, "\x01\x01");
  EXPECT_EQ(opening(), SQLITE_CORRUPT);
}

TEST_F(SqliteFileSystem, refusesAnEmptyDatabaseBesideALogInsteadOfRemovingTheLog) {
  const auto log = folder / "some.db-wal";
  for (const char* content : {"", "x"}) {  // to SQLite, one byte is as none
    std::ofstream(path) << content;
    std::ofstream(log) << "";
    EXPECT_EQ(opening(), SQLITE_OK);
    std::ofstream(log) << "somebody's messages";
    EXPECT_EQ(opening(), SQLITE_CORRUPT);
    EXPECT_EQ(bytes(log), "somebody's messages");
  }
}

TEST_F(SqliteFileSystem, refusesAPipeInsteadOfWaitingForItsWriter) {
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  EXPECT_EQ(opening(), SQLITE_CANTOPEN);
  EXPECT_EQ(opening(writable), SQLITE_CANTOPEN);
}

TEST_F(SqliteFileSystem, refusesADeviceAlsoThroughALink) {
  std::filesystem::create_symlink("/dev/zero", path);
  EXPECT_EQ(opening(), SQLITE_CANTOPEN);
}

TEST_F(SqliteFileSystem, isThePlatformsInAllElse) {
  const auto connection = open(writable);
  const std::time_t before = std::time(nullptr);
  const int now = number(connection, "SELECT strftime('%s', 'now')");
  EXPECT_LE(before, now);
  EXPECT_LE(now, std::time(nullptr));

  sqlite3_vfs* const system = sqlite3_vfs_find("kestrel");
  double day = 0;  // since noon of the first day of the Julian period
  EXPECT_EQ(system->xCurrentTime(system, &day), SQLITE_OK);
  EXPECT_NEAR((day - 2'440'587.5) * 86'400, now, 60);

  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(system->xSleep(system, 1'500), 1'500);
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::microseconds(1'500));

  sqlite3_enable_load_extension(connection.get(), 1);
  const auto loading = [&](const std::string& library) {
    char* message = nullptr;
    const int result = sqlite3_load_extension(connection.get(), library.c_str(), nullptr, &message);
    const std::string text = message == nullptr ? "" : message;
    sqlite3_free(message);
    return std::pair(result, text);
  };
  const auto [none, why] = loading(folder / "none.so");
  EXPECT_EQ(none, SQLITE_ERROR);
  EXPECT_NE(why.find("No such file or directory"), std::string::npos) << why;
  EXPECT_EQ(loading("libm.so.6").first, SQLITE_ERROR) << "is a library, but no extension";
}

}  // namespace
}  // namespace kestrel
