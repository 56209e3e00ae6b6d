#pragma once

#include <command-line/Command.h>

namespace kestrel {

/// Adds what `kestrel` does with the records that cross a process boundary: `identity`, `contract`.
void addFormatCommands(Command& program);

}  // namespace kestrel
