#pragma once

#include <command-line/Command.h>

namespace kestrel {

/// Adds to `program` the command `check`, over the records of all subsystems.
void addCheckCommand(Command& program);

}  // namespace kestrel
