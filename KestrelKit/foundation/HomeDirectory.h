#pragma once

#include <filesystem>
#include <optional>

namespace kestrel {

/// The home directory of the current user: `$HOME` where it is set and not empty, else the user database's
/// entry; absent where neither names one. Any thread, as long as none changes the environment.
std::optional<std::filesystem::path> homeDirectory();

}  // namespace kestrel
