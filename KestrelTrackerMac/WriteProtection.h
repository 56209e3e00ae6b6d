#pragma once

#include <filesystem>
#include <span>

namespace kestrel::companion {

/// Forbids this process, for the rest of its life, to create, change, rename or remove files anywhere but in
/// `folders` and beneath. It also holds for what libraries attempt unasked, caches above all. Files that are
/// open already stay writable. Folders that do not exist are passed over, and stay forbidden when they appear
/// later.
///
/// Call it before the first thread is started: a thread that runs already is not bound.
///
/// Linux keeps it with Landlock. Returns whether it is in force: false on a kernel without Landlock and on
/// other systems, where nothing changes.
bool forbidWritesExceptIn(std::span<const std::filesystem::path> folders);

}  // namespace kestrel::companion
