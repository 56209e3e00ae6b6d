#include "SymbolicLinks.h"

#include <KestrelKit/foundation/AtomicFile.h>
#include <KestrelKit/foundation/FileDescriptor.h>
#include <KestrelKit/foundation/Uuid.h>

#include <fmt/format.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <boost/uuid/random_generator.hpp>

#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <new>
#include <optional>
#include <string>
#include <system_error>
#include <utility>

namespace kestrel {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view prefix = ".kestrel-replacement-";

std::error_code lastError() { return {errno, std::system_category()}; }

fs::path folderOf(const fs::path& file) { return file.has_parent_path() ? file.parent_path() : "."; }

/// To the disk itself: what only the device's cache holds does not survive a loss of power.
bool flush(int descriptor) {
#if defined(__APPLE__)
  if (uninterrupted([&] { return fcntl(descriptor, F_FULLFSYNC); }) == 0) {
    return true;
  }
#endif
  return uninterrupted([&] { return fsync(descriptor); }) == 0;
}

/// Renames unless something has the new name already.
bool renameToFree(const fs::path& from, const fs::path& to) {
#if defined(__APPLE__)
  return uninterrupted([&] { return renamex_np(from.c_str(), to.c_str(), RENAME_EXCL); }) == 0;
#else
  if (uninterrupted(
          [&] { return renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE); }) == 0) {
    return true;
  }
  struct stat status {};
  if (errno != EINVAL) {  // a file system that cannot do this in one step
    return false;
  }
  if (lstat(to.c_str(), &status) == 0) {
    errno = EEXIST;
    return false;
  }
  return uninterrupted([&] { return std::rename(from.c_str(), to.c_str()); }) == 0;
#endif
}

/// Whether the lock of a writer could be taken; a file system without locks gives none.
bool lock(const FileDescriptor& file) {
  return uninterrupted([&] { return flock(file.number(), LOCK_EX | LOCK_NB); }) == 0;
}

/// A file that is to take the place of another; removed with its object unless it has.
class Replacement {
 public:
  /// Made in `folder` and locked. Where that fails it is not open, and `errno` says why.
  explicit Replacement(const fs::path& folder) : path_(nameIn(folder)), descriptor_(madeAt(path_)) {
    while (descriptor_.isOpen() && wasTakenForAbandoned()) {
      path_ = nameIn(folder);
      descriptor_ = madeAt(path_);
    }
  }
  Replacement(const Replacement&) = delete;
  Replacement& operator=(const Replacement&) = delete;
  ~Replacement() {
    if (descriptor_.isOpen()) {
      unlink(path_.c_str());
    }
  }

  /// False where something failed; `errno` says what.
  bool takePlaceOf(const fs::path& file, std::string_view bytes) {
    return descriptor_.isOpen() && takePermissionsOf(file) && writeAll(bytes) &&
           flush(descriptor_.number()) &&
           uninterrupted([&] { return std::rename(path_.c_str(), file.c_str()); }) == 0 &&
           descriptor_.closeNow();  // last, since it gives up the lock
  }

 private:
  static fs::path nameIn(const fs::path& folder) {
    return folder / fmt::format("{}{}", prefix, uuidText(boost::uuids::random_generator()()));
  }

  static FileDescriptor madeAt(const fs::path& path) {
    return {path, O_WRONLY | O_CREAT | O_EXCL, S_IRUSR | S_IWUSR};
  }

  /// Between its making and its locking somebody who removes abandoned files may have come.
  bool wasTakenForAbandoned() const {
    const bool locked = lock(descriptor_);
    struct stat status {};
    return (!locked && errno == EWOULDBLOCK) ||
           (fstat(descriptor_.number(), &status) == 0 && status.st_nlink == 0);
  }

  bool takePermissionsOf(const fs::path& file) {
    struct stat old {};
    const bool isNew = stat(file.c_str(), &old) != 0;
    if (isNew) {
      old.st_mode = S_IRUSR | S_IWUSR;
    } else if (old.st_uid != geteuid() || old.st_gid != getegid()) {
      // Only the superuser gives files away; to anybody else the file is theirs from now on.
      [[maybe_unused]] const int given = fchown(descriptor_.number(), old.st_uid, old.st_gid);
    }
    return uninterrupted([&] { return fchmod(descriptor_.number(), old.st_mode & 07777U); }) == 0;
  }

  bool writeAll(std::string_view bytes) {
    while (!bytes.empty()) {
      const ssize_t written =
          uninterrupted([&] { return write(descriptor_.number(), bytes.data(), bytes.size()); });
      if (written < 0) {
        return false;
      }
      bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
  }

  fs::path path_;
  FileDescriptor descriptor_;
};

bool flushFolder(const fs::path& folder) {
  FileDescriptor opened(folder, O_RDONLY | O_DIRECTORY);
  // Where the file system's folders need no flushing, that is an invalid argument.
  return opened.isOpen() && (flush(opened.number()) || errno == EINVAL) && opened.closeNow();
}

/// Removes `file`, of a name like a replacement's, unless its writer lives.
void removeIfAbandoned(const fs::path& file) {
  const auto openedFor = [&](int access) { return FileDescriptor(file, access | O_NOFOLLOW | O_NONBLOCK); };
  // For writing, which some network file systems want of who locks, unless its mode forbids it: it may have
  // that of a file that is only read.
  FileDescriptor forWriting = openedFor(O_WRONLY);
  const FileDescriptor opened = forWriting.isOpen() ? std::move(forWriting) : openedFor(O_RDONLY);
  struct stat status {};
  if (opened.isOpen() && fstat(opened.number(), &status) == 0 && S_ISREG(status.st_mode) && lock(opened)) {
    unlink(file.c_str());
  }
}

std::unexpected<FileError> failed(const fs::path& file, std::error_code reason) {
  return std::unexpected(FileError{.file = file, .reason = reason});
}

}  // namespace

std::expected<void, FileError> replaceFile(const fs::path& file, std::string_view bytes) {
  const auto target = followed(file);
  if (!target) {
    return failed(file, target.error());
  }
  const fs::path folder = folderOf(*target);
  Replacement replacement(folder);
  if (!replacement.takePlaceOf(*target, bytes) || !flushFolder(folder)) {
    return failed(file, lastError());
  }
  return {};
}

void removeAbandonedReplacements(const fs::path& file) noexcept {
  try {
    const auto target = followed(file);
    if (!target) {
      return;
    }
    std::error_code cannotBeRead;
    fs::directory_iterator entries(folderOf(*target), cannotBeRead);
    for (; !cannotBeRead && entries != fs::directory_iterator(); entries.increment(cannotBeRead)) {
      const std::string name = entries->path().filename();
      if (name.starts_with(prefix) && uuidFromText(std::string_view(name).substr(prefix.size()))) {
        removeIfAbandoned(entries->path());
      }
    }
  } catch (const std::bad_alloc&) {  // NOLINT(bugprone-empty-catch): they stay for the next start
  }
}

std::expected<fs::path, FileError> setAside(const fs::path& file, std::string_view suffix) {
  const auto target = followed(file);
  if (!target) {
    return failed(file, target.error());
  }
  std::error_code isAbsent;
  const fs::file_status status = fs::status(*target, isAbsent);
  if (fs::is_directory(status)) {
    return failed(file, make_error_code(std::errc::is_a_directory));
  }
  if (fs::is_character_file(status) || fs::is_block_file(status)) {
    return failed(file, make_error_code(std::errc::not_supported));
  }
  for (int number = 1;; ++number) {
    fs::path aside =
        fmt::format("{}{}{}", target->string(), suffix, number == 1 ? "" : fmt::format("-{}", number));
    if (renameToFree(*target, aside)) {
      return aside;
    }
    if (errno != EEXIST) {
      return failed(file, lastError());
    }
  }
}

void putBack(const fs::path& aside, const fs::path& file) {
  if (const auto target = followed(file)) {
    renameToFree(aside, *target);
  }
}

std::expected<void, FileError> removeFile(const fs::path& file) {
  const auto target = followed(file);
  if (!target) {
    return failed(file, target.error());
  }
  if (uninterrupted([&] { return unlink(target->c_str()); }) != 0) {
    return failed(file, lastError());
  }
  return {};
}

}  // namespace kestrel
