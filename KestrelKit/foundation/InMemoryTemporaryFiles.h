#pragma once

namespace kestrel {

/// Makes SQLite keep its nameless temporary files (what a sorter or a transient index spills) in memory, for the
/// whole process: registers a default file system that serves those itself and hands everything else through to the
/// platform's. To be called before SQLite is first used; later calls do nothing. Any thread.
///
/// False when SQLite could not register it; then such files would go to disk.
[[nodiscard]] bool keepTemporaryFilesInMemory() noexcept;

}  // namespace kestrel
