#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace kestrel {

/// Appends the step to the member `key` of an object: `.key`, `key` at the root, or `["the key"]`.
void appendMember(std::string& path, std::string_view key);

/// Appends the step to an element of a list: `[3]`.
void appendElement(std::string& path, std::size_t index);

/// Whether `path` is `ancestor` or lies below it.
bool isAtOrBelow(std::string_view path, std::string_view ancestor) noexcept;

}  // namespace kestrel
