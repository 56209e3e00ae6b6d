#pragma once

#include <array>
#include <filesystem>

namespace kestrel {

/// Where a bundle of resources is looked for, in this order.
using BundleFolders = std::array<std::filesystem::path, 3>;

/// For the program `executable`, a file, with the code of the library in the file `library`, which is the
/// same where it is linked statically: `share/kestrel` beside the executable's folder, the folder of the
/// library, and that of the executable.
BundleFolders bundleFolders(const std::filesystem::path& executable, const std::filesystem::path& library);

/// The same on macOS: the resource folder of the main bundle, the folder of the bundle that holds the
/// library, and the main bundle's own folder. The main bundle is `X.app` for `X.app/Contents/MacOS/program`;
/// its resource folder is `X.app/Contents/Resources`. A file outside a bundle makes a bundle of its folder,
/// which is its resource folder, too.
BundleFolders bundleFoldersOnMac(const std::filesystem::path& executable,
                                 const std::filesystem::path& library);

}  // namespace kestrel
