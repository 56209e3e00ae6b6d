#include <KestrelKit/foundation/SqliteFileSystem.h>
#include <sqlite3.h>

#include <algorithm>
#include <array>
#include <string_view>

namespace kestrel {
namespace {

/// The platform's file system, and SQLite's own one in memory. Set once, before the file system below is
/// registered.
sqlite3_vfs* platform = nullptr;
sqlite3_vfs* memory = nullptr;

/// Whether `file` is a database (https://www.sqlite.org/fileformat2.html, 1.3) that ends within a page.
bool isCutOff(sqlite3_file* file) {
  constexpr std::string_view magic("SQLite format 3\0", 16);
  std::array<char, 18> header{};
  sqlite3_int64 size = 0;
  if (file->pMethods->xFileSize(file, &size) != SQLITE_OK ||
      file->pMethods->xRead(file, header.data(), header.size(), 0) != SQLITE_OK ||
      !std::string_view(header.data(), header.size()).starts_with(magic)) {
    return false;
  }
  const int written = static_cast<unsigned char>(header[16]) << 8 | static_cast<unsigned char>(header[17]);
  const int pageSize = written == 1 ? 65'536 : written;
  return pageSize > 0 && size % pageSize != 0;
}

int open(sqlite3_vfs*, sqlite3_filename name, sqlite3_file* file, int flags, int* outFlags) {
  sqlite3_vfs* const responsible = name ? platform : memory;
  const int result = responsible->xOpen(responsible, name, file, flags, outFlags);
  constexpr int readOnlyDatabase = SQLITE_OPEN_MAIN_DB | SQLITE_OPEN_READONLY;
  if (result == SQLITE_OK && (flags & readOnlyDatabase) == readOnlyDatabase && isCutOff(file)) {
    file->pMethods->xClose(file);
    file->pMethods = nullptr;
    return SQLITE_CORRUPT;
  }
  return result;
}

// Each function of a file system is told which one it belongs to, so the platform's are called with the
// platform's.
sqlite3_vfs ourFileSystem() {
  return {
      .iVersion = 2,
      .szOsFile = std::max(platform->szOsFile, memory->szOsFile),
      .mxPathname = platform->mxPathname,
      .pNext = nullptr,
      .zName = "kestrel",
      .pAppData = nullptr,
      .xOpen = open,
      .xDelete = [](sqlite3_vfs*, const char* name,
                    int sync) { return platform->xDelete(platform, name, sync); },
      .xAccess = [](sqlite3_vfs*, const char* name, int flags,
                    int* result) { return platform->xAccess(platform, name, flags, result); },
      .xFullPathname = [](sqlite3_vfs*, const char* name, int size,
                          char* result) { return platform->xFullPathname(platform, name, size, result); },
      .xDlOpen = [](sqlite3_vfs*, const char* name) { return platform->xDlOpen(platform, name); },
      .xDlError = [](sqlite3_vfs*, int size, char* message) { platform->xDlError(platform, size, message); },
      .xDlSym = [](sqlite3_vfs*, void* library,
                   const char* name) { return platform->xDlSym(platform, library, name); },
      .xDlClose = [](sqlite3_vfs*, void* library) { platform->xDlClose(platform, library); },
      .xRandomness = [](sqlite3_vfs*, int size,
                        char* bytes) { return platform->xRandomness(platform, size, bytes); },
      .xSleep = [](sqlite3_vfs*, int microseconds) { return platform->xSleep(platform, microseconds); },
      .xCurrentTime = [](sqlite3_vfs*, double* day) { return platform->xCurrentTime(platform, day); },
      .xGetLastError = [](sqlite3_vfs*, int size,
                          char* message) { return platform->xGetLastError(platform, size, message); },
      .xCurrentTimeInt64 = [](sqlite3_vfs*,
                              sqlite3_int64* time) { return platform->xCurrentTimeInt64(platform, time); },
      .xSetSystemCall = nullptr,
      .xGetSystemCall = nullptr,
      .xNextSystemCall = nullptr,
  };
}

bool registerOnce() noexcept {
  platform = sqlite3_vfs_find(nullptr);
  memory = sqlite3_vfs_find("memdb");
  if (!platform || !memory || platform->iVersion < 2) {
    return false;
  }
  static sqlite3_vfs files = ourFileSystem();
  return sqlite3_vfs_register(&files, /*makeDflt=*/1) == SQLITE_OK;
}

}  // namespace

bool installSqliteFileSystem() noexcept {
  static const bool kept = registerOnce();
  return kept;
}

}  // namespace kestrel
