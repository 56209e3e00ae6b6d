#pragma once

namespace kestrel {

/// Puts a file system of our own between SQLite and the platform's, as the default of the whole process. It
/// hands everything through, but for four things:
///
/// - Nameless temporary files (what a sorter or a transient index spills) are kept in memory and never reach
/// a
///   disk. Each ends at 1 GiB, the limit of SQLite's own file system in memory; a statement that needs more
///   ends with SQLITE_FULL.
/// - A database that is opened read-only and ends within a page is refused as SQLITE_CORRUPT, unless its
///   write-ahead log holds that page. SQLite would read what is missing as zeros, and rows would vanish
///   without a word. So is an empty one that has a log: SQLite would remove the log, though it may only read.
/// - What is neither a file nor a folder is refused as SQLITE_CANTOPEN, as SQLite itself refuses a socket.
///   Opening a pipe would wait for somebody to write into it.
/// - A flush, or the removal of a file, that a signal interrupts is carried to its end. SQLite would take it
/// for a
///   failure of the disk.
///
/// To be called before SQLite is first used; later calls do nothing. Any thread. False when SQLite did not
/// take it; then temporary files would go to disk.
[[nodiscard]] bool installSqliteFileSystem() noexcept;

}  // namespace kestrel
