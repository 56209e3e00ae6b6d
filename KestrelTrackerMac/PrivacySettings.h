#pragma once

namespace kestrel::companion {

/// Opens the pane of the system's settings in which a person grants Full Disk Access: on macOS the newer
/// address, and where that does not open the older one. Does nothing on other platforms, which have no such
/// pane. Main thread.
void openPrivacySettings();

}  // namespace kestrel::companion
