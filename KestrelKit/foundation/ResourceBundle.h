#pragma once

#include <filesystem>
#include <optional>
#include <string_view>
#include <utility>

namespace kestrel {

/// A folder of resources that travels with the library: `KestrelKit_KestrelKit.bundle`.
class ResourceBundle {
 public:
  /// The library's bundle: the first that opens of three candidates, looked for at the first call and kept.
  ///
  /// They stand where bundleFoldersOnMac() or, elsewhere, bundleFolders() has them. How the paths of the
  /// executable and the library are asked for on macOS is not exercised by the tests.
  ///
  /// Where none opens the process ends, through programmingError() and so behind its usual beginning, with
  /// "unable to find bundle named KestrelKit_KestrelKit". Any thread.
  static const ResourceBundle& kestrelKit();

  /// The file `name`.`extension` in the bundle; absent when there is no such file.
  std::optional<std::filesystem::path> resource(std::string_view name, std::string_view extension) const;

  const std::filesystem::path& folder() const noexcept { return folder_; }

 private:
  explicit ResourceBundle(std::filesystem::path folder) : folder_(std::move(folder)) {}

  static ResourceBundle found();

  std::filesystem::path folder_;
};

}  // namespace kestrel
