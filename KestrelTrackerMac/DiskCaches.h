#pragma once

namespace kestrel::companion {

/// Tells Qt and the graphics drivers to keep no cache on disk: neither compiled views nor shaders nor
/// pipelines, wherever they would look for a folder. Call it before the application object is made.
void switchOffDiskCaches();

}  // namespace kestrel::companion
