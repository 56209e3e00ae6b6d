#pragma once

#include <expected>
#include <filesystem>
#include <system_error>

namespace kestrel {

/// Where `file` leads to through symbolic links, whether or not something stands there; `file` itself where
/// it is none. Fails where the links lead in a circle.
[[nodiscard]] std::expected<std::filesystem::path, std::error_code> followed(std::filesystem::path file);

}  // namespace kestrel
