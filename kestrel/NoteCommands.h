#pragma once

#include <command-line/Command.h>

namespace kestrel {

/// Adds to `program` the commands over notes and posts: `note` and `social`.
void addNoteCommands(Command& program);

}  // namespace kestrel
