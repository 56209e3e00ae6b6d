#include <KestrelTrackerMac/WriteProtection.h>

#ifdef __linux__

#include <cstdint>

#include <fcntl.h>
#include <linux/landlock.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace kestrel::companion {

namespace {

// Since versions 2 and 3 of the kernel's interface; the header in use may be older.
constexpr std::uint64_t refer = std::uint64_t{1} << 13U;
constexpr std::uint64_t truncate = std::uint64_t{1} << 14U;

/// Every way of writing that the kernel's version of Landlock can forbid.
std::uint64_t writing(long version) {
  std::uint64_t access = LANDLOCK_ACCESS_FS_WRITE_FILE | LANDLOCK_ACCESS_FS_REMOVE_DIR |
                         LANDLOCK_ACCESS_FS_REMOVE_FILE | LANDLOCK_ACCESS_FS_MAKE_CHAR |
                         LANDLOCK_ACCESS_FS_MAKE_DIR | LANDLOCK_ACCESS_FS_MAKE_REG |
                         LANDLOCK_ACCESS_FS_MAKE_SOCK | LANDLOCK_ACCESS_FS_MAKE_FIFO |
                         LANDLOCK_ACCESS_FS_MAKE_BLOCK | LANDLOCK_ACCESS_FS_MAKE_SYM;
  access |= version >= 2 ? refer : 0;
  access |= version >= 3 ? truncate : 0;
  return access;
}

class Descriptor {
 public:
  explicit Descriptor(long number) : number_(static_cast<int>(number)) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() {
    if (isOpen()) {
      close(number_);
    }
  }

  bool isOpen() const { return number_ >= 0; }
  int number() const { return number_; }

 private:
  int number_;
};

}  // namespace

bool forbidWritesExceptIn(std::span<const std::filesystem::path> folders) {
  const long version = syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION);
  if (version < 1) {
    return false;
  }
  landlock_ruleset_attr forbidden{};
  forbidden.handled_access_fs = writing(version);
  const Descriptor rules{syscall(SYS_landlock_create_ruleset, &forbidden, sizeof forbidden, 0)};
  if (!rules.isOpen()) {
    return false;
  }
  for (const std::filesystem::path& folder : folders) {
    const Descriptor place{open(folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC)};
    if (!place.isOpen()) {
      continue;
    }
    landlock_path_beneath_attr allowed{};
    allowed.allowed_access = forbidden.handled_access_fs;
    allowed.parent_fd = place.number();
    if (syscall(SYS_landlock_add_rule, rules.number(), LANDLOCK_RULE_PATH_BENEATH, &allowed, 0) != 0) {
      return false;
    }
  }
  return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
         syscall(SYS_landlock_restrict_self, rules.number(), 0) == 0;
}

}  // namespace kestrel::companion

#else

namespace kestrel::companion {

bool forbidWritesExceptIn(std::span<const std::filesystem::path>) { return false; }

}  // namespace kestrel::companion

#endif
