#pragma once

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <system_error>

namespace kestrel::testing {

/// A folder for the files that a test makes. It goes with the object, and all in it.
class TemporaryFolder {
 public:
  TemporaryFolder() : path_((std::filesystem::temp_directory_path() / "kestrel-XXXXXX").string()) {
    if (mkdtemp(path_.data()) == nullptr) {
      throw std::runtime_error("cannot make a folder like " + path_);
    }
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  ~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }

  std::filesystem::path path() const { return path_; }
  std::filesystem::path operator/(const std::filesystem::path& name) const { return path() / name; }

 private:
  std::string path_;
};

}  // namespace kestrel::testing
