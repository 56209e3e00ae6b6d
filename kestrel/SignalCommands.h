#pragma once

#include <command-line/Command.h>

namespace kestrel {

/// Adds to `program` the commands over signals: `evidence`, `pairs` and `trend`.
void addSignalCommands(Command& program);

}  // namespace kestrel
