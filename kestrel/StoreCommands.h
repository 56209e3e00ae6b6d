#pragma once

#include <command-line/Command.h>

namespace kestrel {

/// Adds the commands that read and change what the front ends share on the device.
void addStoreCommands(Command& program);

}  // namespace kestrel
