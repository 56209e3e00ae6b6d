#pragma once

#include "StatusMeanings.h"

#include <command-line/Command.h>

#include <string>
#include <string_view>

namespace kestrel {

/// The manual page of a program with all of its commands, section 1, in the man(7) macros.
std::string manPage(const Command& program, const StatusMeanings& statuses, std::string_view version);

}  // namespace kestrel
