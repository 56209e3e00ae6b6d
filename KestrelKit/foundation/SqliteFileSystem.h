#pragma once

namespace kestrel {

/// Puts a file system of our own between SQLite and the platform's, as the default of the whole process. It
/// hands everything through, but for two things:
///
/// - Nameless temporary files (what a sorter or a transient index spills) are kept in memory and never reach
/// a disk.
/// - A database that is opened read-only and whose last page is cut off is refused as SQLITE_CORRUPT. SQLite
/// would
///   read what is missing as zeros, and rows would vanish without a word.
///
/// To be called before SQLite is first used; later calls do nothing. Any thread. False when SQLite did not
/// take it; then temporary files would go to disk.
[[nodiscard]] bool installSqliteFileSystem() noexcept;

}  // namespace kestrel
