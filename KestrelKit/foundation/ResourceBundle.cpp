#include <KestrelKit/foundation/BundleFolders.h>
#include <KestrelKit/foundation/ProgrammingError.h>
#include <KestrelKit/foundation/ResourceBundle.h>

#include <dlfcn.h>

#include <string>
#include <system_error>

#if defined(__APPLE__)
#include <mach-o/dyld.h>

#include <cstdint>
#else
#include <link.h>
#endif

namespace kestrel {
namespace {

namespace fs = std::filesystem;

// candidateFolders(): where the bundle of this process is looked for.

#if defined(__APPLE__)

fs::path executableFile() {
  std::uint32_t size = 0;
  _NSGetExecutablePath(nullptr, &size);
  std::string path(size, '\0');
  _NSGetExecutablePath(path.data(), &size);
  std::error_code error;
  return fs::weakly_canonical(path.c_str(), error);
}

BundleFolders candidateFolders() {
  const fs::path executable = executableFile();
  std::error_code error;
  Dl_info library{};
  const bool found = dladdr(reinterpret_cast<const void*>(&ResourceBundle::kestrelKit), &library) != 0;
  return bundleFoldersOnMac(executable, found ? fs::weakly_canonical(library.dli_fname, error) : executable);
}

#else

BundleFolders candidateFolders() {
  std::error_code error;
  const fs::path executable = fs::read_symlink("/proc/self/exe", error);
  fs::path library = executable;
  Dl_info symbol{};
  void* handle = nullptr;
  // The program itself has no name in the linker's list.
  if (dladdr1(reinterpret_cast<const void*>(&ResourceBundle::kestrelKit), &symbol, &handle,
              RTLD_DL_LINKMAP) != 0) {
    const auto* object = static_cast<const link_map*>(handle);
    if (object != nullptr && object->l_name != nullptr && *object->l_name != '\0') {
      library = fs::weakly_canonical(object->l_name, error);
    }
  }
  return bundleFolders(executable, library);
}

#endif

}  // namespace

const ResourceBundle& ResourceBundle::kestrelKit() {
  static const ResourceBundle bundle = found();
  return bundle;
}

ResourceBundle ResourceBundle::found() {
  constexpr std::string_view name = "KestrelKit_KestrelKit";
  for (const fs::path& folder : candidateFolders()) {
    fs::path bundle = folder / (std::string{name} + ".bundle");
    std::error_code error;
    if (fs::is_directory(bundle, error)) {
      return ResourceBundle{std::move(bundle)};
    }
  }
  programmingError("unable to find bundle named " + std::string{name});
}

std::optional<fs::path> ResourceBundle::resource(std::string_view name, std::string_view extension) const {
  fs::path file = folder_ / (std::string{name} + '.' + std::string{extension});
  std::error_code error;
  if (!fs::is_regular_file(file, error)) {
    return std::nullopt;
  }
  return file;
}

}  // namespace kestrel
