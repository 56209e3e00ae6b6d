#include <KestrelKit/foundation/AppGroupContainer.h>
#include <KestrelKit/foundation/HomeDirectory.h>

#include <sys/stat.h>

#include <cerrno>
#include <cstdlib>

namespace kestrel {
namespace {

namespace fs = std::filesystem;

/// Where the containers of all groups stand.
std::optional<fs::path> folderOfContainers() {
#if defined(__APPLE__)
  constexpr std::string_view underHome = "Library/Group Containers";
#else
  constexpr std::string_view underHome = ".local/share";
  // NOLINTNEXTLINE(concurrency-mt-unsafe): nothing changes it
  if (const char* data = std::getenv("XDG_DATA_HOME"); data != nullptr && *data == '/') {
    return data;
  }
#endif
  const auto home = homeDirectory();
  if (!home || !home->is_absolute()) {
    return std::nullopt;
  }
  return *home / underHome;
}

/// Makes `folder` and what is missing above it, for the user alone.
std::error_code createPrivately(const fs::path& folder) {
  const auto make = [&] { return mkdir(folder.c_str(), S_IRWXU) == 0 ? 0 : errno; };
  int error = make();
  if (error == ENOENT && folder.has_relative_path()) {
    if (const auto above = createPrivately(folder.parent_path())) {
      return above;
    }
    error = make();
  }
  struct stat status {};
  if (error != 0 && stat(folder.c_str(), &status) == 0) {
    error = S_ISDIR(status.st_mode) ? 0 : ENOTDIR;
  }
  return {error, std::system_category()};
}

}  // namespace

std::optional<AppGroupContainer> AppGroupContainer::of(std::string_view identifier) {
  const auto containers = folderOfContainers();
  if (!containers) {
    return std::nullopt;
  }
  return AppGroupContainer{*containers / identifier};
}

std::error_code AppGroupContainer::create() const { return createPrivately(folder_); }

}  // namespace kestrel
