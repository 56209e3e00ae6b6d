#pragma once

#include <string>
#include <string_view>

namespace kestrel {

/// `text` in double quotes for a message of one line: control characters, the line and paragraph separators,
/// characters that turn the direction of text, quotes and backslashes escaped as in JSON, bytes that are no
/// UTF-8 written as `\xFF`, and what exceeds 80 bytes replaced by an ellipsis, so that a foreign text cannot
/// break, steer or flood the message.
std::string quoted(std::string_view text);

/// `text` without the quotes, shortened and escaped likewise; for numbers and for the keys of a path.
std::string shortened(std::string_view text);

/// A whole message as one line of valid UTF-8: escaped likewise but for quotes and backslashes, and never
/// shortened.
std::string onOneLine(std::string_view text);

}  // namespace kestrel
