#pragma once

#include <sqlite3.h>

#include <memory>

namespace kestrel {

/// Closes a connection. Every statement prepared on it must have been finalized before.
struct SqliteClose {
  void operator()(sqlite3* connection) const noexcept { sqlite3_close(connection); }
};

/// Finalizes a statement.
struct SqliteFinalize {
  void operator()(sqlite3_stmt* statement) const noexcept { sqlite3_finalize(statement); }
};

/// An open connection, closed when it goes out of scope. SQLite hands one out even where opening failed.
using SqliteConnection = std::unique_ptr<sqlite3, SqliteClose>;

/// A prepared statement; declared after its connection, so that it goes first.
using SqliteStatement = std::unique_ptr<sqlite3_stmt, SqliteFinalize>;

}  // namespace kestrel
