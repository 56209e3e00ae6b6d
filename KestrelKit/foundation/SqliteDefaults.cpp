#include "SymbolicLinks.h"

#include <KestrelKit/foundation/SqliteDefaults.h>
#include <KestrelKit/foundation/SqliteFileSystem.h>
#include <KestrelKit/foundation/SqliteHandles.h>
#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <system_error>
#include <thread>
#include <utility>
#include <variant>

namespace kestrel {
namespace {

namespace fs = std::filesystem;

/// How long a suite that another process has locked is waited for. Asking often and at even intervals keeps
/// one process from starving beside others that write without a pause; SQLite's own waiting gets slower and
/// slower.
constexpr auto pauseBetweenTries = std::chrono::milliseconds(1);
constexpr int mostTries = 5'000;

/// What tells a suite from any other database, in its header: "TwDf".
constexpr int applicationId = 0x54'77'44'66;

/// The storage class tells what a value is: TEXT text, REAL a date, in seconds since the reference date, BLOB
/// data. A strict column of any type keeps it as it was given.
constexpr const char* makeTable =
    "CREATE TABLE defaults (key TEXT NOT NULL PRIMARY KEY, value ANY NOT NULL) STRICT, WITHOUT ROWID";

/// Anything at all but what is certain not to exist: that alone is no file yet. A link to nothing is none.
bool mayExist(const fs::path& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 || (errno != ENOENT && errno != ENOTDIR);
}

std::string textOfError(int error) { return std::generic_category().message(error); }

/// A file is not opened while this process creates it: closing it, as create() does, drops all locks that the
/// process has on it (fcntl(2)), those of a connection, too.
std::mutex& opening() {
  static std::mutex mutex;
  return mutex;
}

}  // namespace

/// An open suite. Its functions give SQLite's results.
class SqliteDefaults::Connection {
 public:
  static std::expected<std::unique_ptr<Connection>, std::string> open(const fs::path& file) {
    sqlite3* handle = nullptr;
    const fs::path name = "." / file;  // a name that begins "file:" would be taken for a URI
    const int result =
        sqlite3_open_v2(name.c_str(), &handle, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr);
    std::unique_ptr<Connection> connection(new Connection(SqliteConnection(handle)));
    if (handle == nullptr) {
      return std::unexpected("memory has run out");
    }
    if (result != SQLITE_OK) {
      return std::unexpected(connection->reason());
    }
    sqlite3_busy_handler(
        handle,
        [](void*, int tries) {
          std::this_thread::sleep_for(pauseBetweenTries);
          return tries < mostTries ? 1 : 0;
        },
        nullptr);
    // The removal of the journal, which commits, reaches the disk before the write returns.
    if (!connection->run("PRAGMA synchronous = EXTRA")) {
      return std::unexpected(connection->reason());
    }
    // In this order: who makes the table, at this moment perhaps, says in the same transaction what it is.
    const auto tables = connection->number("SELECT count(*) FROM sqlite_schema");
    const auto identity = tables ? connection->number("PRAGMA application_id") : std::nullopt;
    if (!identity) {
      return std::unexpected(connection->reason());
    }
    if (*identity != applicationId && (*identity != 0 || *tables != 0)) {
      return std::unexpected("is a database, but none of shared defaults");
    }
    return connection;
  }

  /// Whether the file that was opened no longer stands where it stood.
  bool hasMoved() const {
    int moved = 0;
    return sqlite3_file_control(handle_.get(), "main", SQLITE_FCNTL_HAS_MOVED, &moved) == SQLITE_OK &&
           moved != 0;
  }

  /// What went wrong last.
  std::string reason() const {
    const int result = sqlite3_errcode(handle_.get());
    const int error = sqlite3_system_errno(handle_.get());
    const bool isTheSystems = result == SQLITE_IOERR || result == SQLITE_CANTOPEN;
    return isTheSystems && error != 0 ? textOfError(error) : sqlite3_errmsg(handle_.get());
  }

  bool run(const char* sql) {
    return sqlite3_exec(handle_.get(), sql, nullptr, nullptr, nullptr) == SQLITE_OK;
  }

  std::expected<std::optional<PropertyValue>, std::string> read(std::string_view key) {
    constexpr const char* select = "SELECT value FROM defaults WHERE key = ?1";
    if (!read_ && !prepare(read_, select)) {
      // There is no table yet, unless somebody has made it since, or what is there is none of ours.
      const auto tables = number("SELECT count(*) FROM sqlite_schema");
      if (tables == 0) {
        return std::nullopt;
      }
      if (!tables || !prepare(read_, select)) {
        return std::unexpected(reason());
      }
    }
    const Use use(*read_);
    bind(*read_, 1, key);
    switch (sqlite3_step(read_.get())) {
      case SQLITE_ROW:
        return column(*read_);
      case SQLITE_DONE:
        return std::nullopt;
      default:
        return std::unexpected(reason());
    }
  }

  /// Within a transaction.
  std::expected<void, std::string> make(const Change& change) {
    if (!write_ && !prepareWriting()) {
      return std::unexpected(reason());
    }
    sqlite3_stmt& statement = change.value ? *write_ : *remove_;
    const Use use(statement);
    bind(statement, 1, change.key);
    if (change.value) {
      std::visit([&](const auto& value) { bind(statement, 2, value); }, *change.value);
    }
    if (sqlite3_step(&statement) != SQLITE_DONE) {
      return std::unexpected(reason());
    }
    return {};
  }

  bool begin() { return (begin_ || prepare(begin_, "BEGIN IMMEDIATE")) && done(*begin_); }
  bool commit() { return (commit_ || prepare(commit_, "COMMIT")) && done(*commit_); }

  void rollBackWhatIsOpen() {
    if (sqlite3_get_autocommit(handle_.get()) == 0) {
      run("ROLLBACK");
    }
  }

 private:
  /// Makes a statement fit for its next use at the end of this one.
  class Use {
   public:
    explicit Use(sqlite3_stmt& statement) : statement_(&statement) {}
    Use(const Use&) = delete;
    Use& operator=(const Use&) = delete;
    ~Use() { sqlite3_reset(statement_); }

   private:
    sqlite3_stmt* statement_;
  };

  explicit Connection(SqliteConnection handle) : handle_(std::move(handle)) {}

  bool prepare(SqliteStatement& statement, const char* sql) {
    sqlite3_stmt* prepared = nullptr;
    const int result =
        sqlite3_prepare_v3(handle_.get(), sql, -1, SQLITE_PREPARE_PERSISTENT, &prepared, nullptr);
    statement.reset(prepared);
    return result == SQLITE_OK;
  }

  /// The table is made by the first write, in its transaction.
  bool prepareWriting() {
    const auto tables = number("SELECT count(*) FROM sqlite_schema");
    if (!tables) {
      return false;
    }
    if (*tables == 0 &&
        (!run(("PRAGMA application_id = " + std::to_string(applicationId)).c_str()) || !run(makeTable))) {
      return false;
    }
    return prepare(remove_, "DELETE FROM defaults WHERE key = ?1") &&
           prepare(write_, "INSERT OR REPLACE INTO defaults (key, value) VALUES (?1, ?2)");
  }

  std::optional<std::int64_t> number(const char* sql) {
    SqliteStatement statement;
    if (!prepare(statement, sql) || sqlite3_step(statement.get()) != SQLITE_ROW) {
      return std::nullopt;
    }
    return sqlite3_column_int64(statement.get(), 0);
  }

  bool done(sqlite3_stmt& statement) {
    const Use use(statement);
    return sqlite3_step(&statement) == SQLITE_DONE;
  }

  // The bound bytes outlive the use of the statement.

  static void bind(sqlite3_stmt& statement, int place, std::string_view text) {
    sqlite3_bind_text64(&statement, place, text.data(), text.size(), SQLITE_STATIC, SQLITE_UTF8);
  }
  static void bind(sqlite3_stmt& statement, int place, Instant date) {
    sqlite3_bind_double(&statement, place, secondsSinceReferenceDate(date));
  }
  static void bind(sqlite3_stmt& statement, int place, const Data& data) {
    sqlite3_bind_blob64(&statement, place, data.bytes.data(), data.bytes.size(), SQLITE_STATIC);
  }

  static std::optional<PropertyValue> column(sqlite3_stmt& statement) {
    const auto bytes = [&](const void* start) {
      const auto size = static_cast<std::size_t>(sqlite3_column_bytes(&statement, 0));
      return size == 0 ? std::string() : std::string(static_cast<const char*>(start), size);
    };
    switch (sqlite3_column_type(&statement, 0)) {
      case SQLITE_TEXT:
        return bytes(sqlite3_column_text(&statement, 0));
      case SQLITE_FLOAT:
        return instantSinceReferenceDate(sqlite3_column_double(&statement, 0));
      case SQLITE_BLOB:
        return Data{bytes(sqlite3_column_blob(&statement, 0))};
      default:
        return std::nullopt;  // Not one of ours.
    }
  }

  SqliteConnection handle_;
  SqliteStatement begin_;
  SqliteStatement commit_;
  SqliteStatement read_;
  SqliteStatement write_;
  SqliteStatement remove_;
};

SqliteDefaults::SqliteDefaults(fs::path file, std::optional<AppGroupContainer> container)
    : file_(std::move(file)), container_(std::move(container)) {}

SqliteDefaults::~SqliteDefaults() = default;

std::expected<std::shared_ptr<SqliteDefaults>, std::string> SqliteDefaults::open(const fs::path& file) {
  std::error_code error;
  if (!fs::is_directory("." / file.parent_path(), error)) {
    return std::unexpected(textOfError(error ? error.value() : ENOTDIR));
  }
  return opened(file, std::nullopt);
}

std::expected<std::shared_ptr<SqliteDefaults>, std::string> SqliteDefaults::open(
    const AppGroupContainer& container) {
  return opened(container.folder() / "defaults.sqlite", container);
}

std::expected<std::shared_ptr<SqliteDefaults>, std::string> SqliteDefaults::opened(
    const fs::path& file, const std::optional<AppGroupContainer>& container) {
  std::shared_ptr<SqliteDefaults> suite(new SqliteDefaults(file, container));
  if (const auto connected = suite->connect(); !connected) {
    return std::unexpected(connected.error());
  }
  return suite;
}

/// Sees to it that the connection is to the file that is there now; without a file there is none.
std::expected<void, std::string> SqliteDefaults::connect() const {
  if (connection_ && !connection_->hasMoved()) {
    return {};
  }
  const std::lock_guard alone(opening());
  connection_.reset();
  if (!mayExist(file_)) {
    return {};
  }
  if (!installSqliteFileSystem()) {
    return std::unexpected("SQLite does not take its file system");
  }
  auto connection = Connection::open(file_);
  if (!connection) {
    return std::unexpected(connection.error());
  }
  connection_ = *std::move(connection);
  return {};
}

/// An empty file is a suite with nothing in it.
std::expected<void, std::string> SqliteDefaults::create() const {
  if (container_) {
    if (const std::error_code error = container_->create()) {
      return std::unexpected(error.message());
    }
  }
  // Made where a link leads to: it may be a link to nothing, and no link is a file that was not there.
  const auto target = followed(file_);
  if (!target) {
    return std::unexpected(target.error().message());
  }
  const std::lock_guard alone(opening());
  int file = 0;
  do {
    file = ::open(target->c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR);
  } while (file < 0 && errno == EINTR);
  if (file < 0) {
    if (errno == EEXIST) {
      return {};  // Another process was faster.
    }
    return std::unexpected(textOfError(errno));
  }
  ::close(file);
  return {};
}

std::optional<PropertyValue> SqliteDefaults::value(std::string_view key) const {
  const std::lock_guard locked(mutex_);
  const auto connected = connect();
  if (!connected) {
    readFailure_ = connected.error();
    return std::nullopt;
  }
  if (!connection_) {
    return std::nullopt;
  }
  auto stored = connection_->read(key);
  if (!stored) {
    readFailure_ = stored.error();
    return std::nullopt;
  }
  return *std::move(stored);
}

bool SqliteDefaults::write(std::span<const Change> changes) {
  return transact([&](Connection& connection) -> std::expected<void, std::string> {
    for (const Change& change : changes) {
      if (const auto made = connection.make(change); !made) {
        return made;
      }
    }
    return {};
  });
}

bool SqliteDefaults::update(std::string_view key, const Update& update) {
  return transact([&](Connection& connection) -> std::expected<void, std::string> {
    const auto stored = connection.read(key);
    if (!stored) {
      return std::unexpected(stored.error());
    }
    const Change change{.key = key, .value = update(*stored)};
    return change.value ? connection.make(change) : std::expected<void, std::string>();
  });
}

std::optional<std::string> SqliteDefaults::readFailure() const {
  const std::lock_guard locked(mutex_);
  return readFailure_;
}

std::optional<std::string> SqliteDefaults::writeFailure() const {
  const std::lock_guard locked(mutex_);
  return writeFailure_;
}

std::expected<void, std::string> SqliteDefaults::transaction(const Work& work) {
  auto connected = connect();
  if (connected && !connection_) {
    connected = create();
    if (connected) {
      connected = connect();
    }
  }
  if (!connected) {
    return connected;
  }
  if (!connection_) {
    return std::unexpected("the file was removed as it was made");
  }
  struct RollBack {  // Also where `work` throws.
    Connection& connection;
    ~RollBack() { connection.rollBackWhatIsOpen(); }
  };
  const RollBack rollBack{*connection_};
  if (!connection_->begin()) {
    return std::unexpected(connection_->reason());
  }
  if (const auto done = work(*connection_); !done) {
    return done;
  }
  if (!connection_->commit()) {
    return std::unexpected(connection_->reason());
  }
  return {};
}

bool SqliteDefaults::transact(const Work& work) {
  const std::lock_guard locked(mutex_);
  writeFailure_ = "an update was left by an exception";  // Unless it ends.
  auto done = transaction(work);
  writeFailure_ = done ? std::nullopt : std::optional(done.error());
  return done.has_value();
}

}  // namespace kestrel
