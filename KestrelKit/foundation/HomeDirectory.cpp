#include <KestrelKit/foundation/HomeDirectory.h>

#include <pwd.h>
#include <unistd.h>

#include <array>
#include <cstdlib>

namespace kestrel {

std::optional<std::filesystem::path> homeDirectory() {
  const char* home = std::getenv("HOME");  // NOLINT(concurrency-mt-unsafe): nothing changes it
  if (home != nullptr && *home != '\0') {
    return home;
  }
  std::array<char, 16384> text{};
  passwd entry{};
  passwd* found = nullptr;
  getpwuid_r(getuid(), &entry, text.data(), text.size(), &found);
  if (found == nullptr || found->pw_dir == nullptr || *found->pw_dir == '\0') {
    return std::nullopt;
  }
  return found->pw_dir;
}

}  // namespace kestrel
