#pragma once

#include <command-line/ExitStatus.h>
#include <command-line/Program.h>

#include <string>
#include <utility>
#include <vector>

namespace kestrel {

/// The exit statuses of a program, each with a sentence for people.
std::vector<std::pair<ExitStatus, std::string>> statusMeanings(const ProgramDescription& description);

}  // namespace kestrel
