#pragma once

#include <expected>
#include <string>
#include <string_view>

namespace kestrel {

/// Makes sure that no file that is opened later takes the place of a standard stream that the process was
/// started without: writing to that stream stays a failure, and never ends up in the file.
void reserveStandardStreams() noexcept;

/// After a read or write of `descriptor` that failed, `errno` says why: whether it can be tried again, because a
/// signal came between, or because the descriptor's other users have made it non-blocking; then it waits until
/// there is something to read (`POLLIN`) or room to write (`POLLOUT`). Leaves `errno` as it is otherwise.
bool canGoOn(int descriptor, short direction) noexcept;

/// Writes `text` to standard output; fails with the system's reason.
[[nodiscard]] std::expected<void, std::string> writeToStandardOutput(std::string_view text);

/// Writes `program: message` to standard error, as one line whatever is in it (see `onOneLine`), in place of
/// a passing line. Any thread.
void writeErrorLine(std::string_view program, std::string_view message);

/// Shows `line` on the terminal that standard error is, in place of the passing line before it. Nothing after
/// an error line. Any thread.
void showPassingLine(std::string_view line);

/// Wipes the passing line, if there is one. Any thread.
void wipePassingLine();

}  // namespace kestrel
