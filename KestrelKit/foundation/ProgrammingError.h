#pragma once

#include <string_view>

namespace kestrel {

/// Stops the program because a rule that the caller had to keep was broken: a sum beyond 64 bits, a count
/// below 1 where one is taken for granted, a missing resource bundle. Never for input that can be foreseen.
///
/// Ends the process as setProgrammingErrorEnding() was told: by default one line with `violation`, which says
/// what was violated, goes to standard error behind "programming error: ", then the process aborts. It holds
/// in every build type.
[[noreturn]] void programmingError(std::string_view violation) noexcept;

/// Says `violation` to whom it may concern and ends the process; if it returns, the process aborts.
using ProgrammingErrorEnding = void (*)(std::string_view violation);

/// Chooses the ending for the whole process; a null pointer is the default. A program calls it once at its start,
/// before it starts a thread.
void setProgrammingErrorEnding(ProgrammingErrorEnding ending) noexcept;

}  // namespace kestrel
