#pragma once

#include "StatusMeanings.h"

#include <command-line/Command.h>

#include <string>

namespace kestrel {

/// What `--help` prints of a command: usage, purpose, commands, options, exit statuses where they are given,
/// and the example, in 80 columns.
std::string helpText(const Command& command, const StatusMeanings& statuses);

}  // namespace kestrel
