// A library to preload (LD_PRELOAD) into a program, which lets one of its calls to the system fail: to go
// through everything that can happen while it writes a file. What it does is told by the environment:
//
//   FAILING_CALLS_UNDER  Only calls on this folder, or on what lies in it, are counted. An absolute path
//                        without symbolic links. Without it nothing is counted.
//   FAILING_CALLS_LIST   A file outside that folder: each counted call adds a line, its name, a blank and
//                        what it is called on, so that a test knows which there are.
//   FAILING_CALLS_AT     Which of the counted calls does not do as it should, from 1. Without it none.
//   FAILING_CALLS_WITH   What it does instead:
//                          ENOSPC, EIO, EINTR, EDQUOT, EACCES …
//                                 fails with that error and does nothing; but a close() closes, as Linux does
//                          SHORT  a write or read takes half of the bytes, at least one; others are as ever
//                          KILL   the process ends with SIGKILL, before the call
//                          PAUSE  the process stops (SIGSTOP) before the call, until it is told to go on
//
// Counted are the calls of the table at the end: those that open, read, write, flush, cut, lock, rename, link
// and remove. A call that fails fails once: the next attempt is another call.

#include <dlfcn.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

namespace {

struct NamedError {
  std::string_view name;
  int number;
};

constexpr NamedError errors[] = {
    {"EACCES", EACCES}, {"EDQUOT", EDQUOT}, {"EINTR", EINTR}, {"EIO", EIO},       {"EMFILE", EMFILE},
    {"ENOSPC", ENOSPC}, {"EPERM", EPERM},   {"EROFS", EROFS}, {"EINVAL", EINVAL},
};

enum class Outcome { asEver, fails, isShort };

std::string_view setting(const char* name) {
  const char* value = std::getenv(name);  // NOLINT(concurrency-mt-unsafe): nothing changes it
  return value == nullptr ? std::string_view() : value;
}

bool isCounted(std::string_view path) {
  const std::string_view folder = setting("FAILING_CALLS_UNDER");
  return !folder.empty() && path.starts_with(folder) &&
         (path.size() == folder.size() || path[folder.size()] == '/');
}

void list(const char* call, std::string_view path) {
  const std::string_view file = setting("FAILING_CALLS_LIST");
  if (file.empty()) {
    return;
  }
  char line[PATH_MAX + 64];
  const int length =
      std::snprintf(line, sizeof line, "%s %.*s\n", call, static_cast<int>(path.size()), path.data());
  // Not through the calls that are counted here.
  const long descriptor =
      syscall(SYS_openat, AT_FDCWD, file.data(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0600);
  syscall(SYS_write, descriptor, line, static_cast<std::size_t>(length));
  syscall(SYS_close, descriptor);
}

/// What becomes of this `call` on `path`; errno says how it fails.
Outcome outcome(const char* call, std::string_view path) {
  static std::atomic<long> counted = 0;
  const int before = errno;
  if (!isCounted(path)) {
    return Outcome::asEver;
  }
  list(call, path);
  errno = before;
  const std::string_view at = setting("FAILING_CALLS_AT");
  if (++counted != (at.empty() ? 0 : std::atol(at.data()))) {
    return Outcome::asEver;
  }
  const std::string_view with = setting("FAILING_CALLS_WITH");
  if (with == "KILL" || with == "PAUSE") {
    syscall(SYS_kill, getpid(), with == "KILL" ? SIGKILL : SIGSTOP);
    return Outcome::asEver;
  }
  if (with == "SHORT") {
    return Outcome::isShort;
  }
  for (const NamedError& error : errors) {
    if (error.name == with) {
      errno = error.number;
      return Outcome::fails;
    }
  }
  static constexpr std::string_view unknown = "FAILING_CALLS_WITH names nothing that is known\n";
  syscall(SYS_write, STDERR_FILENO, unknown.data(), unknown.size());
  std::abort();
}

Outcome outcome(const char* call, int descriptor) {
  const int before = errno;
  char link[32];
  char path[PATH_MAX];
  std::snprintf(link, sizeof link, "/proc/self/fd/%d", descriptor);
  const ssize_t length = readlink(link, path, sizeof path);
  errno = before;
  return length < 0 ? Outcome::asEver
                    : outcome(call, std::string_view(path, static_cast<std::size_t>(length)));
}

Outcome outcome(const char* call, const char* path) { return outcome(call, std::string_view(path)); }

/// The function of that name which this library stands before.
template <class Function>
Function* next(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

std::size_t half(std::size_t size) { return size > 1 ? size / 2 : size; }

mode_t modeOf(int flags, va_list arguments) {
  return (flags & (O_CREAT | O_TMPFILE)) != 0 ? static_cast<mode_t>(va_arg(arguments, unsigned)) : 0;
}

}  // namespace

extern "C" {

// A path in the first place, and whatever else.
#define FAILING_ON_PATH(name, parameters, ...)                              \
  int name parameters {                                                     \
    static auto* const real = next<int parameters>(#name);                  \
    return outcome(#name, path) == Outcome::fails ? -1 : real(__VA_ARGS__); \
  }

// A descriptor in the first place, and whatever else.
#define FAILING_ON_DESCRIPTOR(name, parameters, ...)                              \
  int name parameters {                                                           \
    static auto* const real = next<int parameters>(#name);                        \
    return outcome(#name, descriptor) == Outcome::fails ? -1 : real(__VA_ARGS__); \
  }

// A descriptor, bytes, how many, and whatever else.
#define FAILING_WITH_BYTES(name, parameters, ...)              \
  ssize_t name parameters {                                    \
    static auto* const real = next<ssize_t parameters>(#name); \
    const Outcome now = outcome(#name, descriptor);            \
    if (now == Outcome::fails) {                               \
      return -1;                                               \
    }                                                          \
    if (now == Outcome::isShort) {                             \
      size = half(size);                                       \
    }                                                          \
    return real(__VA_ARGS__);                                  \
  }

#define FAILING_OPEN(name)                                                        \
  int name(const char* path, int flags, ...) {                                    \
    static auto* const real = next<int(const char*, int, ...)>(#name);            \
    va_list arguments;                                                            \
    va_start(arguments, flags);                                                   \
    const mode_t mode = modeOf(flags, arguments);                                 \
    va_end(arguments);                                                            \
    return outcome(#name, path) == Outcome::fails ? -1 : real(path, flags, mode); \
  }

#define FAILING_OPENAT(name)                                                              \
  int name(int folder, const char* path, int flags, ...) {                                \
    static auto* const real = next<int(int, const char*, int, ...)>(#name);               \
    va_list arguments;                                                                    \
    va_start(arguments, flags);                                                           \
    const mode_t mode = modeOf(flags, arguments);                                         \
    va_end(arguments);                                                                    \
    return outcome(#name, path) == Outcome::fails ? -1 : real(folder, path, flags, mode); \
  }

FAILING_OPEN(open)
FAILING_OPEN(open64)
FAILING_OPENAT(openat)
FAILING_OPENAT(openat64)
FAILING_WITH_BYTES(read, (int descriptor, void* bytes, std::size_t size), descriptor, bytes, size)
FAILING_WITH_BYTES(pread, (int descriptor, void* bytes, std::size_t size, off_t at), descriptor, bytes, size,
                   at)
FAILING_WITH_BYTES(pread64, (int descriptor, void* bytes, std::size_t size, off64_t at), descriptor, bytes,
                   size, at)
FAILING_WITH_BYTES(write, (int descriptor, const void* bytes, std::size_t size), descriptor, bytes, size)
FAILING_WITH_BYTES(pwrite, (int descriptor, const void* bytes, std::size_t size, off_t at), descriptor, bytes,
                   size, at)
FAILING_WITH_BYTES(pwrite64, (int descriptor, const void* bytes, std::size_t size, off64_t at), descriptor,
                   bytes, size, at)
FAILING_ON_DESCRIPTOR(fsync, (int descriptor), descriptor)
FAILING_ON_DESCRIPTOR(fdatasync, (int descriptor), descriptor)
FAILING_ON_DESCRIPTOR(ftruncate, (int descriptor, off_t size), descriptor, size)
FAILING_ON_DESCRIPTOR(ftruncate64, (int descriptor, off64_t size), descriptor, size)
FAILING_ON_DESCRIPTOR(fchmod, (int descriptor, mode_t mode), descriptor, mode)
FAILING_ON_DESCRIPTOR(flock, (int descriptor, int operation), descriptor, operation)
FAILING_ON_PATH(rename, (const char* path, const char* to), path, to)
FAILING_ON_PATH(link, (const char* path, const char* to), path, to)
FAILING_ON_PATH(unlink, (const char* path), path)
FAILING_ON_PATH(mkdir, (const char* path, mode_t mode), path, mode)

int renameat2(int folder, const char* path, int toFolder, const char* to, unsigned flags) {
  static auto* const real = next<int(int, const char*, int, const char*, unsigned)>("renameat2");
  return outcome("renameat2", path) == Outcome::fails ? -1 : real(folder, path, toFolder, to, flags);
}

int close(int descriptor) {
  static auto* const real = next<int(int)>("close");
  const bool fails = outcome("close", descriptor) == Outcome::fails;
  const int error = errno;
  const int result = real(descriptor);
  if (!fails) {
    return result;
  }
  errno = error;
  return -1;
}

}  // extern "C"
