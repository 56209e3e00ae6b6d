#pragma once

#include <command-line/Command.h>

namespace kestrel {

/// Adds to `program` the command `log` and its commands, over the event log.
void addLogCommands(Command& program);

}  // namespace kestrel
