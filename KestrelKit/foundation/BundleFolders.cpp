#include <KestrelKit/foundation/BundleFolders.h>

#include <system_error>

namespace kestrel {
namespace {

namespace fs = std::filesystem;

fs::path bundleAround(const fs::path& file) {
  const fs::path contents = file.parent_path().parent_path();
  return contents.filename() == "Contents" ? contents.parent_path() : file.parent_path();
}

}  // namespace

BundleFolders bundleFolders(const fs::path& executable, const fs::path& library) {
  const fs::path folder = executable.parent_path();
  return {folder.parent_path() / "share" / "kestrel", library.parent_path(), folder};
}

BundleFolders bundleFoldersOnMac(const fs::path& executable, const fs::path& library) {
  const fs::path mainBundle = bundleAround(executable);
  const fs::path resources = mainBundle / "Contents" / "Resources";
  std::error_code error;
  return {fs::is_directory(resources, error) ? resources : mainBundle, bundleAround(library), mainBundle};
}

}  // namespace kestrel
