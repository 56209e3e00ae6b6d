#pragma once

#include <command-line/Command.h>

namespace kestrel {

/// Adds to `program` the commands over the mood states and the classification of days: `states`, `state`,
/// `baseline`, `classify`, `predict` and `shadow`.
void addMoodStateCommands(Command& program);

}  // namespace kestrel
