#pragma once

#include <command-line/Command.h>

namespace kestrel {

/// Adds to `program` the commands over sleep and the circadian rhythm: `sleep`, `circadian features` and
/// `circadian classify`.
void addCircadianCommands(Command& program);

}  // namespace kestrel
