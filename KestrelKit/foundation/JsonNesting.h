#pragma once

#include <cstddef>

namespace kestrel {

/// How many levels of objects and lists a document has at most; the outermost is the first.
inline constexpr std::size_t deepestJson = 512;

}  // namespace kestrel
