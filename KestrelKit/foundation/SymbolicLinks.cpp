#include "SymbolicLinks.h"

namespace kestrel {
namespace {

/// What the kernel follows at most.
constexpr int mostLinks = 40;

}  // namespace

std::expected<std::filesystem::path, std::error_code> followed(std::filesystem::path file) {
  for (int links = 0; links <= mostLinks; ++links) {
    std::error_code isNoLink;
    const std::filesystem::path target = std::filesystem::read_symlink(file, isNoLink);
    if (isNoLink) {
      return file;
    }
    file = file.parent_path() / target;
  }
  return std::unexpected(make_error_code(std::errc::too_many_symbolic_link_levels));
}

}  // namespace kestrel
