#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace kestrel {

/// Puts the step to the member `key` of an object before `path`, which starts at that member: `key`, or
/// `["the key"]`; a long key is shortened as in a message.
void prependMember(std::string& path, std::string_view key);

/// Puts the step to an element of a list before `path`, which starts at that element: `[3]`.
void prependElement(std::string& path, std::size_t index);

}  // namespace kestrel
