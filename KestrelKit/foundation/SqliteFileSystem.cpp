#include <KestrelKit/foundation/SqliteFileSystem.h>
#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <map>
#include <mutex>
#include <span>
#include <string>
#include <string_view>

namespace kestrel {
namespace {

/// The platform's file system, and SQLite's own one in memory. Set once, before the file system below is
/// registered.
sqlite3_vfs* platform = nullptr;
sqlite3_vfs* memory = nullptr;

// The formats below: https://www.sqlite.org/fileformat2.html, sections 1.3 (header of a database) and 4.1
// (its log).

std::uint32_t bigEndian(std::span<const unsigned char, 4> bytes) {
  return std::uint32_t{bytes[0]} << 24 | std::uint32_t{bytes[1]} << 16 | std::uint32_t{bytes[2]} << 8 |
         bytes[3];
}

/// Whether a write-ahead log has a whole frame of page `page` since it was begun anew the last time.
bool logHolds(const char* path, sqlite3_int64 page, int pageSize) {
  const int log = ::open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (log < 0) {
    return false;
  }
  constexpr std::size_t saltSize = 8;
  std::array<unsigned char, 32> header{};
  std::array<unsigned char, 24> frame{};
  const auto readsAt = [log](off_t offset, std::span<unsigned char> bytes) {
    return pread(log, bytes.data(), bytes.size(), offset) == static_cast<ssize_t>(bytes.size());
  };
  struct stat status {};
  bool found = false;
  if (fstat(log, &status) == 0 && readsAt(0, header)) {
    const off_t frameSize = static_cast<off_t>(frame.size()) + pageSize;
    for (off_t at = header.size(); !found && at + frameSize <= status.st_size && readsAt(at, frame);
         at += frameSize) {
      const std::span<const unsigned char> salt = std::span(frame).subspan<8, saltSize>();
      found = bigEndian(std::span(frame).first<4>()) == page &&
              std::ranges::equal(salt, std::span(header).subspan<16, saltSize>());
    }
  }
  close(log);
  return found;
}

/// Whether something is in the write-ahead log at `path`, by SQLite's own question.
bool hasLog(const char* path) {
  int exists = 0;
  return platform->xAccess(platform, path, SQLITE_ACCESS_EXISTS, &exists) != SQLITE_OK || exists != 0;
}

/// Whether `file` is what is left of a database: one that ends within a page, which no log completes (a
/// checkpoint that was interrupted leaves such a file, and loses nothing), or nothing beside a log, which
/// SQLite would remove.
bool isCutOff(sqlite3_file* file, sqlite3_filename name) {
  constexpr std::string_view magic("SQLite format 3\0", 16);
  std::array<unsigned char, 20> header{};
  sqlite3_int64 size = 0;
  if (file->pMethods->xFileSize(file, &size) != SQLITE_OK) {
    return false;
  }
  if (size == 0) {
    return hasLog(sqlite3_filename_wal(name));
  }
  if (file->pMethods->xRead(file, header.data(), header.size(), 0) != SQLITE_OK ||
      !std::ranges::equal(std::span(header).first<magic.size()>(), magic)) {
    return false;
  }
  const unsigned written = unsigned{header[16]} << 8 | header[17];
  const unsigned pageSize = written == 1 ? 65'536 : written;
  if (pageSize < 512 || !std::has_single_bit(pageSize) || size % pageSize == 0) {
    return false;  // SQLite refuses any other size by itself
  }
  constexpr unsigned char readThroughLog = 2;
  return header[19] != readThroughLog ||
         !logHolds(sqlite3_filename_wal(name), size / pageSize + 1, static_cast<int>(pageSize));
}

/// Whether a pipe, a socket or a device stands at `name`. Opening a pipe would wait for a writer.
bool isNeitherFileNorFolder(sqlite3_filename name) {
  struct stat status {};
  return stat(name, &status) == 0 && !S_ISREG(status.st_mode) && !S_ISDIR(status.st_mode);
}

/// The functions of a file, but that a flush goes on after a signal.
struct GoingOnAfterSignals {
  sqlite3_io_methods ours;  // First: a file that has these functions leads to the platform's.
  const sqlite3_io_methods* platforms;
};

int sync(sqlite3_file* file, int flags) {
  const auto* const methods = reinterpret_cast<const GoingOnAfterSignals*>(file->pMethods);
  int result = SQLITE_OK;
  do {
    result = methods->platforms->xSync(file, flags);
  } while (result == SQLITE_IOERR_FSYNC && errno == EINTR);
  return result;
}

/// The platform has a table of functions for each of a few kinds of files.
const sqlite3_io_methods* goingOnAfterSignals(const sqlite3_io_methods* platforms) {
  static std::mutex mutex;
  static std::map<const sqlite3_io_methods*, GoingOnAfterSignals> known;
  const std::lock_guard locked(mutex);
  const auto [place, isNew] = known.try_emplace(platforms, GoingOnAfterSignals{*platforms, platforms});
  if (isNew) {
    place->second.ours.xSync = sync;
  }
  return &place->second.ours;
}

int flushFolderOf(const std::string& file) {
  const auto slash = file.rfind('/');
  const std::string folder = slash == std::string::npos ? "." : file.substr(0, slash + 1);
  const int descriptor = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (descriptor < 0) {
    return SQLITE_IOERR_DIR_FSYNC;
  }
  int result = 0;
  do {
    result = fsync(descriptor);
  } while (result != 0 && errno == EINTR);
  close(descriptor);
  return result == 0 ? SQLITE_OK : SQLITE_IOERR_DIR_FSYNC;
}

/// Removing a journal commits: what a signal interrupts is carried to its end.
int remove(sqlite3_vfs*, const char* name, int syncFolder) {
  int result = SQLITE_OK;
  do {
    result = platform->xDelete(platform, name, syncFolder);
  } while (result == SQLITE_IOERR_DELETE && errno == EINTR);
  return result == SQLITE_IOERR_DIR_FSYNC && errno == EINTR ? flushFolderOf(name) : result;
}

int open(sqlite3_vfs*, sqlite3_filename name, sqlite3_file* file, int flags, int* outFlags) {
  file->pMethods = nullptr;
  if (name && isNeitherFileNorFolder(name)) {
    return SQLITE_CANTOPEN;
  }
  sqlite3_vfs* const responsible = name ? platform : memory;
  const int result = responsible->xOpen(responsible, name, file, flags, outFlags);
  constexpr int readOnlyDatabase = SQLITE_OPEN_MAIN_DB | SQLITE_OPEN_READONLY;
  if (result == SQLITE_OK && (flags & readOnlyDatabase) == readOnlyDatabase && isCutOff(file, name)) {
    file->pMethods->xClose(file);
    file->pMethods = nullptr;
    return SQLITE_CORRUPT;
  }
  if (result == SQLITE_OK && responsible == platform) {
    file->pMethods = goingOnAfterSignals(file->pMethods);
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
      .xDelete = remove,
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
