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
  /// On macOS they stand in the main bundle's resource folder, in the folder of the bundle that holds the
  /// library, and in the main bundle's own folder; that branch is not exercised by the tests. Elsewhere they
  /// stand in `share/kestrel` beside the folder of the executable, in the folder of the library (of the
  /// executable, where it is linked statically), and in the executable's folder.
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
