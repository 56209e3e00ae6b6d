#pragma once

#include <command-line/Program.h>
#include <CLI/CLI.hpp>

#include <string>

namespace kestrel {

/// What `--help` prints: usage, purpose, options, exit statuses and the example, in 80 columns.
std::string helpText(const ProgramDescription& description, const CLI::App& app);

}  // namespace kestrel
