#pragma once

#include <filesystem>
#include <optional>
#include <string_view>
#include <system_error>
#include <utility>

namespace kestrel {

/// The folder that the programs of one application group share.
class AppGroupContainer {
 public:
  /// The container of the group `identifier`: on a Linux desktop the folder of that name under
  /// `$XDG_DATA_HOME` where that is an absolute path, else under `.local/share` in the home directory (XDG
  /// Base Directory Specification); on macOS, which the tests do not exercise, under `Library/Group
  /// Containers` in the home directory. Absent when there is no absolute path to form it from. It need not
  /// exist yet. Any thread, as long as none changes the environment.
  static std::optional<AppGroupContainer> of(std::string_view identifier);

  const std::filesystem::path& folder() const noexcept { return folder_; }

  /// Makes the folder where it is missing, to be done before the first file is written into it. It and what
  /// is missing above it get the mode 0700. Fails with the system's reason; any thread, any number of
  /// processes.
  [[nodiscard]] std::error_code create() const;

 private:
  explicit AppGroupContainer(std::filesystem::path folder) : folder_(std::move(folder)) {}

  std::filesystem::path folder_;
};

}  // namespace kestrel
