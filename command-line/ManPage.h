#pragma once

#include <command-line/Program.h>
#include <CLI/CLI.hpp>

#include <string>
#include <string_view>

namespace kestrel {

/// The manual page of a program, section 1, in the man(7) macros.
std::string manPage(const ProgramDescription& description, const CLI::App& app, std::string_view version);

}  // namespace kestrel
